// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTEXCHANGE_P_H
#define BWARESTEXCHANGE_P_H

#include "rest/BwaRestReply.h"
#include "rest/BwaRestRouter_p.h"
#include "rest/BwaRestSettings_p.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QSocketNotifier>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class BwaFcgiRequest;
class BwaRestLaterState;
class BwaRestSessions;
struct BwaRestSession;

/** One request from its arrival at a service to its reply; lives in the listener's thread. */
class BwaRestExchange
{
    Q_DISABLE_COPY(BwaRestExchange)

public:
    /** Takes @a request over. @a settings must outlive this. */
    BwaRestExchange(BwaFcgiRequest* request, const BwaRestSettings& settings);
    /** Completes the reply. */
    ~BwaRestExchange();

    /**
     * Sets path, resource and entry. @a mount is the path of the service below the script name.
     * @throws BwaRestProblem 400: the path is no UTF-8
     */
    void find(const BwaRestRouter& router, const QString& mount);

    /** Owned by this. */
    BwaFcgiRequest& request() const { return *m_request; }
    /** Those of the service. */
    const BwaRestSettings& settings() const { return m_settings; }
    /** A CGI variable; null when it is not set. */
    QByteArray variable(const QByteArray& name) const;
    /** A header of the request; null when it is absent. */
    QByteArray header(const QByteArray& name) const;
    /** As BwaRestCall::body(). */
    QByteArray body();
    /** What the group's limit() says, but no more than 4 GiB; in bytes. */
    quint64 bodyLimit() const;
    /** How many bytes the body is to have. @throws BwaRestProblem 400, 411, 413: beyond @a limit */
    quint64 checkBodySize(quint64 limit) const;
    /** The pairs of the query string. @throws BwaRestProblem 400: it is no UTF-8 */
    const QList<QPair<QString, QString>>& queryPairs();

    /** Calls @a function when nobody waits for the reply any more; it may destroy this. */
    void whenGone(const std::function<void()>& function);
    /** Writes the reply, unless it is a stream; to be called once. */
    void write(const BwaRestReply& reply);
    /** Writes the head of @a reply, which goes on with writePiece() and ends with this. */
    void beginStream(const BwaRestReply& reply);
    /** Whether the reply is a stream. */
    bool isStream() const { return m_isStream; }
    /** Sends @a bytes of a stream; waits unless the request could write, and they are few. */
    void writePiece(const QByteArray& bytes);
    /**
     * Calls @a function once when the connection has input, or takes more of the reply; instead of
     * one that was set before. It must not destroy this.
     */
    void whenReady(QSocketNotifier::Type type, const std::function<void()>& function);
    /** Writes a line on the log of the web server. */
    void log(const QByteArray& message);

    QByteArray method;
    QString path;                                      // below the service
    const BwaRestRouter::Resource* resource = nullptr; // not owned; null: no such path
    const BwaRestRouter::Entry* entry = nullptr;       // not owned; null: no such method
    BwaRestRouter::Spans spans;                        // of entry's parameters, within path
    std::shared_ptr<const BwaRestSession> session;     // null unless the group needs one
    const BwaRestSessions* sessions = nullptr;         // whose it is; not owned
    std::shared_ptr<BwaRestLaterState> later;          // null unless the handler has asked for it

private:
    class Notifier;

    bool mayHaveBodyWithoutLength() const;
    void logComplaints(const BwaRestReply& reply);
    bool hasClientsCopy(const BwaRestReply& reply) const;
    QByteArray location(const BwaRestReply& reply) const;
    QByteArray headerBlock(const BwaRestReply& reply, bool isKnown) const;
    QByteArray crossOriginLines(const BwaRestReply& reply) const;
    void addContentLines(QByteArray* block, const BwaRestReply& reply) const;

    BwaFcgiRequest* m_request; // owned
    const BwaRestSettings& m_settings;
    QString m_mount;
    bool m_isStream = false;
    std::unique_ptr<Notifier> m_notifier;                       // null: nobody has waited
    std::optional<QByteArray> m_body;                           // once read
    std::optional<QList<QPair<QString, QString>>> m_queryPairs; // once read
};

#endif
