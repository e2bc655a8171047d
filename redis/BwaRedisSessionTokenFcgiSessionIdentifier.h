// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAREDISSESSIONTOKENFCGISESSIONIDENTIFIER_H
#define BWAREDISSESSIONTOKENFCGISESSIONIDENTIFIER_H

#include "redis/BwaRedisGlobal.h"
#include "sessions/BwaSessionTokenFcgiSessionIdentifier.h"

class BwaRedisSessions;

/**
 * Finds a session in Redis by the Authorization header, as BwaSessionTokenFcgiSessionIdentifier
 * does in a manager. Its sessions are BwaRedisSession objects.
 *
 * When Redis does not answer, session() returns null and the request is refused with 503 and
 * Retry-After, so that clients do not believe they are logged out. A request without credentials is
 * refused as usual. There is no manager: sessionManager() returns null.
 */
class BWA_REDIS_EXPORT BwaRedisSessionTokenFcgiSessionIdentifier
    : public BwaSessionTokenFcgiSessionIdentifier
{
public:
    /** @a sessions must outlive this. */
    BwaRedisSessionTokenFcgiSessionIdentifier(BwaRedisSessions* sessions, const QString& realm);
    ~BwaRedisSessionTokenFcgiSessionIdentifier() override;

    /** The session exists until control returns to the event loop. */
    BwaWebSession* session(BwaFcgiRequest* request) override;
    /** Refuses the request of the last session() call, so call it before the next one. */
    void sendUnauthorizedReply(BwaFcgiRequest* request) override;

private:
    BwaRedisSessions* m_sessions; // not owned
    bool m_isUnanswered = false;  // Redis did not answer the last look-up
};

#endif
