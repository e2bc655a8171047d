// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTSESSIONS_H
#define BWARESTSESSIONS_H

#include "rest/BwaRestGlobal.h"
#include "rest/BwaRestReply.h"
#include "rest/BwaRestSessionStore.h"
#include "sessions/BwaWebSessionManager.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>

class BwaRestCall;
class BwaRestExchange;
class BwaRestProcessSessions;

/**
 * Sessions of users, with roles and data. They are in this process, in a BwaWebSessionManager, or
 * in a store that several processes share.
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
 * cookies SESSION-ID and SESSION-TOKEN, which scripts of a page cannot read. When a token expires,
 * its session ends: clients must renew it before. After a renewal the previous token is accepted
 * for a grace time, because other requests with it may be on their way.
 *
 * Use it in the listener's thread only. It must outlive the services whose groups need it.
 */
class BWA_REST_EXPORT BwaRestSessions
{
    Q_DISABLE_COPY(BwaRestSessions)

public:
    /** Sessions in this process. A 401 names @a realm. Both times are in milliseconds. */
    explicit BwaRestSessions(const QString& realm, int tokenLifetime = 900000,
                             int graceTime = 10000);
    /** Sessions in @a store, which must not be null and has times of its own. */
    BwaRestSessions(const QString& realm, std::unique_ptr<BwaRestSessionStore> store);
    ~BwaRestSessions();

    /**
     * Sets the cookies without Secure, so that browsers send them over plain HTTP as well: for
     * networks without TLS.
     */
    BwaRestSessions& allowHttp();

    /**
     * Begins a session for a user whom the application has authenticated. The reply sets the
     * cookies; its body has the members "session", "token", "expiresIn" (seconds), "user" and
     * "roles".
     * @throws BwaRestProblem and other exceptions, as the store says
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
     * Ends the session of @a call, if it has one, and replies with a 204 that deletes the cookies.
     * @throws BwaRestProblem 403 when it comes from a page of another origin; 503 as the store says
     */
    BwaRestReply logout(const BwaRestCall& call);

    /**
     * The manager that owns the sessions, for example to remove those of a user.
     * @throws std::logic_error when the sessions are in a store, which has functions of its own
     */
    BwaWebSessionManager& manager();

private:
    friend class BwaRestGroup;

    BwaRestGrant find(const BwaRestExchange& exchange) const;
    void require(const BwaRestGrant& grant) const;
    void check(BwaRestExchange* exchange, const QString& role) const;
    BwaRestReply granted(const BwaRestGrant& grant) const;

    QByteArray m_challenge;
    bool m_isSecure = true;
    std::unique_ptr<BwaRestSessionStore> m_store;
    BwaRestProcessSessions* m_inProcess = nullptr; // the store; null when it is of another class
};

#endif
