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
 * Sessions of users, with roles and data: in this process, in a BwaWebSessionManager, or in a store
 * that other processes have, too.
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
 * To be used in the listener's thread; must outlive the services whose groups need it.
 */
class BWA_REST_EXPORT BwaRestSessions
{
    Q_DISABLE_COPY(BwaRestSessions)

public:
    /** In this process. @a realm is what a 401 names; both times in milliseconds. */
    explicit BwaRestSessions(const QString& realm, int tokenLifetime = 900000,
                             int graceTime = 10000);
    /** In @a store, which must not be null and has times of its own. */
    BwaRestSessions(const QString& realm, std::unique_ptr<BwaRestSessionStore> store);
    ~BwaRestSessions();

    /** Has browsers send the cookies over plain HTTP as well, for networks without TLS. */
    BwaRestSessions& allowHttp();

    /**
     * Begins a session: the reply sets the cookies, and is {"session", "token", "expiresIn"
     * (seconds), "user", "roles"}. The application has checked who it is.
     * @throws BwaRestProblem and others, as the store says
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
     * @throws BwaRestProblem 403: it comes from a page of another origin; 503: as the store says
     */
    BwaRestReply logout(const BwaRestCall& call);

    /**
     * Owns the sessions: removes those of a user, for example.
     * @throws std::logic_error they are in a store, which has functions of its own
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
    BwaRestProcessSessions* m_inProcess = nullptr; // the store; null when it is another one
};

#endif
