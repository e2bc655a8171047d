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
 * The functions throw BwaRestProblem for what the client did wrong; let it leave the handler, and
 * the service replies with it. Texts are decoded from UTF-8.
 */
class BWA_REST_EXPORT BwaRestCall
{
    Q_DISABLE_COPY(BwaRestCall)

public:
    /** Internal: for the service. @a exchange must outlive this. */
    explicit BwaRestCall(BwaRestExchange& exchange);

    /** The method as sent: "HEAD" for a HEAD request, although the handler of GET answers it. */
    QByteArray method() const;
    /**
     * The path without the script name and the path of the service; percent-decoded by the web
     * server.
     */
    QString path() const;
    /**
     * The value of the pattern's parameter @a name as a text, whatever its kind.
     * @throws std::logic_error when the pattern has no such parameter; number() and uuid() do the
     *         same
     */
    QString text(const char* name) const;
    /**
     * The value of a parameter {name:int}. @throws std::logic_error also for a parameter of another
     * kind
     */
    qint64 number(const char* name) const;
    /**
     * The value of a parameter {name:uuid}. @throws std::logic_error also for a parameter of
     * another kind
     */
    QUuid uuid(const char* name) const;
    /**
     * The values of @a name in the query string, in their order; empty when it is absent.
     * @throws BwaRestProblem 400 when anything in the query is not UTF-8
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
     * @throws BwaRestProblem as body() does; 415 for another media type; 400 when a text is not
     *         UTF-8
     */
    QList<QPair<QString, QString>> formPairs() const;

    /**
     * The CGI variables of the request, such as remoteAddr() and https(). Their texts have one
     * character for each byte that was sent. Valid as long as this call.
     */
    const BwaCgiEnvironment& environment() const;

    /**
     * For handlers that change something: makes sure that the client has seen its current state,
     * whose entity tag is @a tag, as given to BwaRestReply::etag(). A weak tag matches, too,
     * because web servers that compress replies make tags weak.
     * @throws BwaRestProblem 428 when there is no If-Match header, 412 when it does not contain the
     *         tag
     */
    void requireMatch(const QByteArray& tag) const;

    /** The client's session; null unless the group needs one. Valid as long as this call. */
    const BwaRestSession* session() const;

    /**
     * A handle to answer this call later. When the handler returns it, the call stays open for
     * @a deadline milliseconds from then on. Further calls of this function give the same handle.
     */
    BwaRestLater later(int deadline = 30000) const;
    /**
     * Runs @a work in a thread of the service's pool; what it returns is the reply. It must not use
     * this call: capture what it needs. It runs even when the client has gone meanwhile.
     * @a deadline is that of later().
     *
     *     return call.onPool([bus = call.number("bus")](const BwaRestCancel& cancel) {
     *         return BwaRestReply(scan(bus, cancel)); // blocks for seconds
     *     });
     *
     * @throws BwaRestProblem 503 with Retry-After when too many calls wait: see
     *         BwaRestService::setPool()
     */
    BwaRestReply onPool(const std::function<BwaRestReply(const BwaRestCancel&)>& work,
                        int deadline = 30000) const;
    /**
     * As onPool(), but the result of @a work is passed to @a finish, which makes the reply in the
     * listener's thread. It is called even when the client has gone, but not when work has thrown
     * or the service has been destroyed.
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
     * Reads the body piece by piece as @a sink says, and then answers. Other requests are served
     * meanwhile. @a deadline is that of later(), for the whole upload.
     * @throws BwaRestProblem 411 when its length is not announced; 413 when it is beyond the sink's
     *         limit; 400 when its length is no number or a form has no boundary
     */
    BwaRestReply upload(const BwaRestUpload& sink, int deadline = 600000) const;

private:
    friend class BwaRestEvents;
    friend class BwaRestSessions;
    friend class BwaRestSchema;

    using Finisher = std::function<BwaRestReply()>;

    QVariant json(QStringList* repeated) const; // repeated: see BwaJson::parse()
    BwaRestReply start(const std::function<Finisher(const BwaRestCancel&)>& work,
                       int deadline) const;

    BwaRestExchange& m_exchange;
};

#endif
