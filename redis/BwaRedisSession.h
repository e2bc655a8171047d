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
 * A session as Redis had it when it was looked up, with what the application stored in it. What is
 * changed here changes nothing in Redis, but for remove().
 *
 *     if (const auto* session = qobject_cast<BwaRedisSession*>(authenticateRequest(request))) {
 *         const bool isAdmin = session->roles().contains(QStringLiteral("admin"));
 *
 * It belongs to the BwaRedisSessions that returned it, and lives until the control returns to the
 * event loop: copy what a later answer needs. For a new token call BwaRedisSessions::renew();
 * generateNewToken() makes one that no process accepts.
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
