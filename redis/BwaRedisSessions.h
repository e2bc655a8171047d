// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAREDISSESSIONS_H
#define BWAREDISSESSIONS_H

#include "redis/BwaRedisGlobal.h"
#include "redis/BwaRedisSettings.h"

#include <QByteArray>
#include <QObject>
#include <QStringList>
#include <QUuid>
#include <QVariant>

#include <memory>

class BwaFcgiRequest;
class BwaRedisClient;
class BwaRedisSession;

/**
 * Sessions in Redis 7 or newer, which every process of an application finds.
 *
 *     BwaRedisSettings settings;
 *     settings.addresses = QStringList{QStringLiteral("/run/redis/redis.sock")};
 *     BwaRedisSessions sessions(settings);
 *     BwaRedisSessionTokenFcgiSessionIdentifier identifier(&sessions, QStringLiteral("notes"));
 *     NotesProcessor processor(&identifier); // its hooks call authenticateRequest()
 *     // When a user has logged in, the reply has the id and the token of a new session.
 *     const BwaRedisSession* session = sessions.create(user);
 *     if (!session) {
 *         sessions.sendUnavailable(request);
 *     }
 *
 * Call it in the listener's thread. Each call asks Redis once and waits for the answer. When Redis
 * does not answer within the timeout, the call fails, and so do, at once, further calls until the
 * pause of the settings is over. A warning on Qt's channel tells when Redis stops answering and
 * when it answers again. When another server has become the primary, it is found among the
 * addresses or through the Sentinels.
 *
 * Redis stores only hashes of the tokens (SHA-256). All times are measured by the clock of Redis.
 * Its setting maxmemory-policy must be noeviction: otherwise it ends sessions when its memory is
 * full.
 *
 * It must outlive the identifiers that use it. The sessions that it returns exist until control
 * returns to the event loop, or until it is destroyed.
 */
class BWA_REDIS_EXPORT BwaRedisSessions
{
    Q_DISABLE_COPY(BwaRedisSessions)

public:
    /** Connects to Redis at the first call, not here. */
    explicit BwaRedisSessions(const BwaRedisSettings& settings);
    ~BwaRedisSessions();

    /**
     * A new session, with an id and a token of 122 random bits each. Null when Redis has not stored
     * it. The library does not interpret roles and data.
     * @throws std::invalid_argument when BwaJson cannot write the data
     */
    BwaRedisSession* create(const QString& username, const QStringList& roles = QStringList(),
                            const QVariantMap& data = QVariantMap());
    /**
     * The session of that id, if @a token is its token or, within the grace time, its previous one.
     * Otherwise null; also null when Redis has not answered: see hasAnswered().
     */
    BwaRedisSession* find(const QUuid& sessionId, const QUuid& token);
    /**
     * The same session with a new token; the token of @a session stays valid for the grace time.
     * When another request has renewed the session within that time, the result has the token of
     * that renewal. Null when the session has ended and when Redis has not answered.
     */
    BwaRedisSession* renew(const BwaRedisSession* session);
    /**
     * Ends a session for every process; an unknown id is ignored. Returns false when Redis does not
     * answer.
     */
    bool removeSession(const QUuid& sessionId);
    /**
     * Ends all sessions of a user, whose name must not be empty. Returns false when Redis does not
     * answer.
     */
    bool removeSessions(const QString& username);
    /** Ends all sessions that share the key prefix. Returns false when Redis does not answer. */
    bool removeSessions();

    /**
     * Whether Redis has answered the last call. If it has not, a null result does not mean that
     * there is no session.
     */
    bool hasAnswered() const;
    /** After how many seconds to ask again when Redis has not answered. */
    int retryAfter() const;
    /** How long a new token is valid, in milliseconds. */
    int tokenLifetime() const { return m_settings.tokenLifetime; }
    /** Replies with 503 and retryAfter(). The caller still owns the request. */
    void sendUnavailable(BwaFcgiRequest* request) const;

private:
    BwaRedisSession* adopt(BwaRedisSession* session);
    QByteArray key(const char* kind, const QByteArray& name = QByteArray()) const;

    BwaRedisSettings m_settings;
    std::unique_ptr<BwaRedisClient> m_client;
    QObject m_parent; // of the sessions that the event loop has not deleted yet
};

#endif
