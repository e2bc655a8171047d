// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "redis/BwaRedisCookiesFcgiSessionIdentifier.h"

#include "redis/BwaRedisSession.h"
#include "redis/BwaRedisSessions.h"

BwaRedisCookiesFcgiSessionIdentifier::BwaRedisCookiesFcgiSessionIdentifier(
    BwaRedisSessions* sessions, const QString& sessionIdCookieName, const QString& tokenCookieName)
    : BwaCookiesFcgiSessionIdentifier(nullptr, sessionIdCookieName, tokenCookieName)
    , m_sessions(sessions)
{
}

BwaRedisCookiesFcgiSessionIdentifier::~BwaRedisCookiesFcgiSessionIdentifier() = default;

BwaWebSession* BwaRedisCookiesFcgiSessionIdentifier::session(BwaFcgiRequest* request)
{
    const BwaSessionCredentials presented = credentials(request);
    m_isUnanswered = false;
    if (presented.sessionId.isNull() || presented.token.isNull()) {
        return nullptr;
    }
    BwaRedisSession* const session = m_sessions->find(presented.sessionId, presented.token);
    m_isUnanswered = !m_sessions->hasAnswered();
    return session;
}

void BwaRedisCookiesFcgiSessionIdentifier::sendUnauthorizedReply(BwaFcgiRequest* request)
{
    if (m_isUnanswered) {
        m_sessions->sendUnavailable(request);
    } else {
        BwaCookiesFcgiSessionIdentifier::sendUnauthorizedReply(request);
    }
}
