// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAREDISSESSION_H
#define BWAREDISSESSION_H

#include "redis/BwaRedisGlobal.h"
#include "sessions/BwaWebSession.h"

#include <QByteArray>
#include <QStringList>
#include <QVariant>

/**
 * A copy of a session in Redis, made when it was looked up, with the roles and data of the
 * application. Changing the copy changes nothing in Redis, except remove(), which ends the session.
 *
 *     if (const auto* session = qobject_cast<BwaRedisSession*>(authenticateRequest(request))) {
 *         const bool isAdmin = session->roles().contains(QStringLiteral("admin"));
 *
 * The BwaRedisSessions that returned it owns it, and deletes it when control returns to the event
 * loop: copy what a later answer needs. For a new token call BwaRedisSessions::renew(); no process
 * accepts the token of generateNewToken().
 */
class BWA_REDIS_EXPORT BwaRedisSession : public BwaWebSession
{
    Q_OBJECT

public:
    ~BwaRedisSession() override;

    /** The roles that were given when the session was created. */
    QStringList roles() const;
    /** The data that was given when the session was created. */
    QVariantMap data() const;

private:
    friend class BwaRedisSessions;

    BwaRedisSession(const QString& username, const QUuid& sessionId, const QUuid& token,
                    TokenState state, QObject* parent);

    QByteArray m_roles; // JSON; empty: none
    QByteArray m_data;  // JSON; empty: none
};

#endif
