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

/** One request, from its arrival at a service to its reply. It lives in the listener's thread. */
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
    /** The settings of the service. */
    const BwaRestSettings& settings() const { return m_settings; }
    /** A CGI variable; null when it is not set. */
    QByteArray variable(const QByteArray& name) const;
    /** A header of the request; null when it is absent. */
    QByteArray header(const QByteArray& name) const;
    /** See BwaRestCall::body(). */
    QByteArray body();
    /** The group's limit for bodies in bytes, but less than 4 GiB. */
    quint64 bodyLimit() const;
    /**
     * The announced size of the body in bytes. @throws BwaRestProblem 400, 411; 413 when it is
     * beyond @a limit
     */
    quint64 checkBodySize(quint64 limit) const;
    /** The names and values of the query string. @throws BwaRestProblem 400 when it is not UTF-8 */
    const QList<QPair<QString, QString>>& queryPairs();

    /** Has @a function called when nobody waits for the reply any more; it may destroy this. */
    void whenGone(const std::function<void()>& function);
    /** Writes the reply, unless it is a stream; to be called once. */
    void write(const BwaRestReply& reply);
    /**
     * Writes the header block of @a reply. writePiece() goes on with its body, which ends when this
     * is destroyed.
     */
    void beginStream(const BwaRestReply& reply);
    /** Whether the reply is a stream. */
    bool isStream() const { return m_isStream; }
    /**
     * Sends @a bytes of a stream. It may wait, unless canWrite() of the request was true and there
     * are at most 16 KiB.
     */
    void writePiece(const QByteArray& bytes);
    /**
     * Has @a function called once, when the connection has input (Read) or takes more of the reply
     * (Write). It replaces a function that was set before, and must not destroy this.
     */
    void whenReady(QSocketNotifier::Type type, const std::function<void()>& function);
    /** Writes a line into the log of the web server. */
    void log(const QByteArray& message);

    QByteArray method;
    QString path;                                      // below the service
    const BwaRestRouter::Resource* resource = nullptr; // not owned; null: no such path
    const BwaRestRouter::Entry* entry = nullptr;       // not owned; null: no such method
    BwaRestRouter::Spans spans;                        // where in path the parameters of entry are
    std::shared_ptr<const BwaRestSession> session;     // null unless the group needs one
    const BwaRestSessions* sessions = nullptr;         // that session is from; not owned
    std::shared_ptr<BwaRestLaterState> later;          // null unless the handler has called later()

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
    std::unique_ptr<Notifier> m_notifier;                       // null until whenReady() is called
    std::optional<QByteArray> m_body;                           // once read
    std::optional<QList<QPair<QString, QString>>> m_queryPairs; // once read
};

#endif
