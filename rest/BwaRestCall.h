// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTCALL_H
#define BWARESTCALL_H

#include "rest/BwaRestCancel.h"
#include "rest/BwaRestGlobal.h"
#include "rest/BwaRestLater.h"
#include "rest/BwaRestReply.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <QVariant>

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

class BwaCgiEnvironment;
class BwaRestExchange;
class BwaRestUpload;
struct BwaRestSession;

/**
 * A request that has reached its handler; valid until that returns, in the listener's thread.
 *
 *     api.put("/devices/{id:int}/name", [&](const BwaRestCall& call) -> BwaRestReply {
 *         Device& device = store.at(call.number("id"));
 *         call.requireMatch(device.tag());
 *         device.name = call.json().toMap().value("name").toString();
 *         return device.json();
 *     });
 *
 * What it throws is for the service, which makes a reply of it. Texts are decoded from UTF-8.
 */
class BWA_REST_EXPORT BwaRestCall
{
    Q_DISABLE_COPY(BwaRestCall)

public:
    /** For the service. @a exchange must outlive this. */
    explicit BwaRestCall(BwaRestExchange& exchange);

    /** As sent: "HEAD" for a HEAD that GET's handler answers. */
    QByteArray method() const;
    /** Without the script name and the path of the service; percent-decoded by the web server. */
    QString path() const;
    /**
     * What the parameter @a name of the pattern holds, whatever its kind, as text.
     * @throws std::logic_error when the pattern has no such parameter; so do the next two
     */
    QString text(const char* name) const;
    /** The number of {name:int}. @throws std::logic_error for other kinds, too */
    qint64 number(const char* name) const;
    /** The UUID of {name:uuid}. @throws std::logic_error for other kinds, too */
    QUuid uuid(const char* name) const;
    /**
     * The values of @a name in the query string, in their order; none when it is absent.
     * @throws BwaRestProblem 400 when any text of the query is no UTF-8
     */
    QStringList query(const char* name) const;
    /** All names and values of the query string, in their order. @throws as query() */
    const QList<QPair<QString, QString>>& queryPairs() const;
    /** The value of a header of the request, as the web server passes it on; null when absent. */
    QByteArray header(const char* name) const;

    /**
     * The body, read at the first call and kept; empty when there is none.
     * @throws BwaRestProblem 411 when its length is not announced; 413 when it is beyond the
     *         group's limit; 400 when its length is no number or it ends early
     */
    QByteArray body() const;
    /**
     * The body as BwaJson::parse() gives it.
     * @throws BwaRestProblem as body() does; 415 when the Content-Type is neither application/json
     *         nor application/...+json, or has a charset other than UTF-8; 400 when it is no JSON
     */
    QVariant json() const;
    /**
     * The names and values of a form (application/x-www-form-urlencoded), in their order.
     * @throws BwaRestProblem as body() does; 415 for another media type; 400 when a text is no
     *         UTF-8
     */
    QList<QPair<QString, QString>> formPairs() const;

    /**
     * What the web server tells of the client and the connection, such as remoteAddr() and https().
     * Its texts have a character for each byte that came. Valid as long as this.
     */
    const BwaCgiEnvironment& environment() const;

    /**
     * For handlers that change what has the entity tag @a tag, as given to BwaRestReply::etag().
     * A weak tag counts, too, because web servers that compress make tags weak.
     * @throws BwaRestProblem 428 without an If-Match header, 412 when that does not hold the tag
     */
    void requireMatch(const QByteArray& tag) const;

    /** Of the client; null unless the group needs one. Valid as long as this. */
    const BwaRestSession* session() const;

    /**
     * Keeps the call open when its handler returns the handle, for @a deadline milliseconds from
     * then on. Further calls give the same handle.
     */
    BwaRestLater later(int deadline = 30000) const;
    /**
     * Has @a work done in a thread of the service's pool, which then replies. It never sees the
     * call: what it needs of it is captured. It is done even when nobody waits any more; @a
     * deadline is that of later().
     *
     *     return call.onPool([bus = call.number("bus")](const BwaRestCancel& cancel) {
     *         return BwaRestReply(scan(bus, cancel)); // blocks for seconds
     *     });
     *
     * @throws BwaRestProblem 503 with Retry-After when too much waits: see
     * BwaRestService::setPool()
     */
    BwaRestReply onPool(const std::function<BwaRestReply(const BwaRestCancel&)>& work,
                        int deadline = 30000) const;
    /**
     * As onPool(), but what @a work returns is given to @a finish, which replies in the listener's
     * thread. Unless work throws or the service goes, finish is called even when nobody waits.
     */
    template <class Work, class Finish>
    BwaRestReply onPoolThen(Work work, Finish finish, int deadline = 30000) const
    {
        return start(
            [work, finish](const BwaRestCancel& cancel) -> Finisher {
                auto result = std::make_shared<std::decay_t<decltype(work(cancel))>>(work(cancel));
                return [finish, result]() -> BwaRestReply { return finish(std::move(*result)); };
            },
            deadline);
    }

    /**
     * Takes the body piece by piece as @a sink says, and then answers; before and meanwhile others
     * are served. @a deadline is that of later(), for the whole upload.
     * @throws BwaRestProblem 411 when its length is not announced; 413 when it is beyond the sink's
     *         limit; 400 when its length is no number, or it is a form without a boundary
     */
    BwaRestReply upload(const BwaRestUpload& sink, int deadline = 600000) const;

private:
    friend class BwaRestEvents;
    friend class BwaRestSessions;
    friend class BwaRestSchema;

    using Finisher = std::function<BwaRestReply()>;

    QVariant json(QStringList* repeated) const; // repeated: as BwaJson::parse() has it
    BwaRestReply start(const std::function<Finisher(const BwaRestCancel&)>& work,
                       int deadline) const;

    BwaRestExchange& m_exchange;
};

#endif
