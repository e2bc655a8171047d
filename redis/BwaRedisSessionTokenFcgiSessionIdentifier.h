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
 * When Redis does not answer, session() is null and the refusal is 503 with Retry-After instead, so
 * that clients do not take themselves for logged out. A request that presents nothing is refused as
 * ever. There is no manager: sessionManager() is null.
 */
class BWA_REDIS_EXPORT BwaRedisSessionTokenFcgiSessionIdentifier
    : public BwaSessionTokenFcgiSessionIdentifier
{
public:
    /** @a sessions must outlive this. */
    BwaRedisSessionTokenFcgiSessionIdentifier(BwaRedisSessions* sessions, const QString& realm);
    ~BwaRedisSessionTokenFcgiSessionIdentifier() override;

    /** The session lives until the control returns to the event loop. */
    BwaWebSession* session(BwaFcgiRequest* request) override;
    /** To be called, if at all, before the next session(). */
    void sendUnauthorizedReply(BwaFcgiRequest* request) override;

private:
    BwaRedisSessions* m_sessions; // not owned
    bool m_isUnanswered = false;  // the last look-up
};

#endif
