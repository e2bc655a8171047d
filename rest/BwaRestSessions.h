// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTSESSIONS_H
#define BWARESTSESSIONS_H

#include "rest/BwaRestGlobal.h"
#include "rest/BwaRestReply.h"
#include "sessions/BwaWebSessionManager.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <QVariant>

#include <memory>

class BwaRestCall;
class BwaRestExchange;

/** Who has logged in; what BwaRestCall::session() gives. */
struct BwaRestSession {
    QString user;      /**< As given to BwaRestSessions::login(). */
    QStringList roles; /**< What the user may do, in words of the application. */
    QVariantMap data;  /**< The application's own. */
};

/**
 * Sessions of users, with roles and data, beside the BwaWebSessionManager that owns them.
 *
 *     BwaRestSessions sessions(QStringLiteral("notes"));
 *     api.post("/login", [&](const BwaRestCall& call) -> BwaRestReply {
 *         const QVariantMap sent = call.json().toMap();
 *         return isUser(sent) ? sessions.login(sent.value("user").toString(), rolesOf(sent))
 *                             : BwaRestReply(BwaRestProblem(401));
 *     });
 *     api.post("/renew", [&](const BwaRestCall& call) { return sessions.renew(call); });
 *     api.post("/logout", [&](const BwaRestCall& call) { return sessions.logout(call); });
 *     BwaRestGroup& admin = api.group("/admin").needs(sessions, QStringLiteral("admin"));
 *
 * A client proves its session by the header "Authorization: SESSION-TOKEN session:token", or by the
 * cookies SESSION-ID and SESSION-TOKEN, which scripts of a page cannot read. A token that has
 * expired ends its session: clients renew it before. The previous token is still taken for a grace
 * time, as requests may be on their way while another one renews.
 *
 * To be used in the listener's thread; must outlive the services whose groups need it. The sessions
 * are in this process alone.
 */
class BWA_REST_EXPORT BwaRestSessions
{
    Q_DISABLE_COPY(BwaRestSessions)

public:
    /** @a realm is what a 401 names; both times in milliseconds. */
    explicit BwaRestSessions(const QString& realm, int tokenLifetime = 900000,
                             int graceTime = 10000);
    ~BwaRestSessions();

    /** Has browsers send the cookies over plain HTTP as well, for networks without TLS. */
    BwaRestSessions& allowHttp();

    /**
     * Begins a session: the reply sets the cookies, and is {"session", "token", "expiresIn"
     * (seconds), "user", "roles"}. The application has checked who it is.
     */
    BwaRestReply login(const QString& user, const QStringList& roles,
                       const QVariantMap& data = QVariantMap());
    /**
     * Gives the session of @a call a new token, and replies as login() does. A call with the
     * previous token is given the current one.
     * @throws BwaRestProblem as BwaRestGroup::needs() says
     */
    BwaRestReply renew(const BwaRestCall& call);
    /**
     * Ends the session of @a call, if it has one, and takes the cookies away: 204.
     * @throws BwaRestProblem 403: it comes from a page of another origin
     */
    BwaRestReply logout(const BwaRestCall& call);

    /** Owns the sessions: removes those of a user, for example. */
    BwaWebSessionManager& manager() { return m_manager; }

private:
    friend class BwaRestGroup;

    struct Entry {
        std::shared_ptr<const BwaRestSession> session;
        QUuid previousToken; // null: none yet
        QDeadlineTimer grace;
    };

    QUuid find(const BwaRestExchange& exchange) const;
    QUuid require(const BwaRestExchange& exchange) const;
    void check(BwaRestExchange* exchange, const QString& role) const;
    bool isToken(const QUuid& sessionId, const QUuid& token) const;
    BwaRestReply granted(const QUuid& sessionId) const;

    BwaWebSessionManager m_manager;
    QByteArray m_challenge;
    int m_tokenLifetime;
    int m_graceTime;
    bool m_isSecure = true;
    QHash<QUuid, Entry> m_entries; // by session id
};

#endif
