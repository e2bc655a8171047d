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
 * Each call asks Redis once and waits for the answer, in the thread of the caller, which is the
 * listener's. When Redis does not answer within the timeout, the call fails; so do the calls of the
 * next moments, at once, and the next one after these tries again. A warning on Qt's channel tells
 * when Redis is away and when it is back. When it is another server that has become the primary,
 * that one is found among the addresses or through the Sentinels.
 *
 * Redis has hashes of the tokens (SHA-256), not the tokens, and its clock alone counts. Its setting
 * maxmemory-policy must be noeviction: otherwise it ends sessions when its memory is full.
 *
 * Must outlive the identifiers that use it. Its sessions live until the control returns to the
 * event loop, or until it is destroyed.
 */
class BWA_REDIS_EXPORT BwaRedisSessions
{
    Q_DISABLE_COPY(BwaRedisSessions)

public:
    /** Connects at the first call. */
    explicit BwaRedisSessions(const BwaRedisSettings& settings);
    ~BwaRedisSessions();

    /**
     * A new session, with an id and a token of 122 random bits each. Null when Redis has not stored
     * it. Roles and data are the application's own.
     * @throws std::invalid_argument BwaJson cannot write the data
     */
    BwaRedisSession* create(const QString& username, const QStringList& roles = QStringList(),
                            const QVariantMap& data = QVariantMap());
    /**
     * The session of that id, if @a token is its token or, for the grace time, the one before.
     * Otherwise null, and also when Redis has not answered: see hasAnswered().
     */
    BwaRedisSession* find(const QUuid& sessionId, const QUuid& token);
    /**
     * The same session with a new token; the one of @a session is still taken for the grace time.
     * When another request has renewed it within that time, the result has the token of that one.
     * Null when the session has ended, and when Redis has not answered.
     */
    BwaRedisSession* renew(const BwaRedisSession* session);
    /** Ends a session for every process; an unknown id is ignored. False without an answer. */
    bool removeSession(const QUuid& sessionId);
    /** Ends all sessions of a user, whose name must not be empty. False without an answer. */
    bool removeSessions(const QString& username);
    /** Ends all sessions that share the key prefix. False without an answer. */
    bool removeSessions();

    /** Whether Redis has answered the last call. If not, a null session says nothing. */
    bool hasAnswered() const;
    /** When to ask again after Redis has not answered, in seconds. */
    int retryAfter() const;
    /** For how long a new token is taken, in milliseconds. */
    int tokenLifetime() const { return m_settings.tokenLifetime; }
    /** Replies with 503 and retryAfter(). The request stays the caller's. */
    void sendUnavailable(BwaFcgiRequest* request) const;

private:
    BwaRedisSession* adopt(BwaRedisSession* session);
    QByteArray key(const char* kind, const QByteArray& name = QByteArray()) const;

    BwaRedisSettings m_settings;
    std::unique_ptr<BwaRedisClient> m_client;
    QObject m_parent; // of the sessions that the event loop has not deleted yet
};

#endif
