// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "redis/BwaRedisSessionTokenFcgiSessionIdentifier.h"

#include "redis/BwaRedisSession.h"
#include "redis/BwaRedisSessions.h"

BwaRedisSessionTokenFcgiSessionIdentifier::BwaRedisSessionTokenFcgiSessionIdentifier(
    BwaRedisSessions* sessions, const QString& realm)
    : BwaSessionTokenFcgiSessionIdentifier(nullptr, realm)
    , m_sessions(sessions)
{
}

BwaRedisSessionTokenFcgiSessionIdentifier::~BwaRedisSessionTokenFcgiSessionIdentifier() = default;

BwaWebSession* BwaRedisSessionTokenFcgiSessionIdentifier::session(BwaFcgiRequest* request)
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

void BwaRedisSessionTokenFcgiSessionIdentifier::sendUnauthorizedReply(BwaFcgiRequest* request)
{
    if (m_isUnanswered) {
        m_sessions->sendUnavailable(request);
    } else {
        BwaSessionTokenFcgiSessionIdentifier::sendUnauthorizedReply(request);
    }
}
