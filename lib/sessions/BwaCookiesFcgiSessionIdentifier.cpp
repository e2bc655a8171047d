// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "sessions/BwaCookiesFcgiSessionIdentifier.h"

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "sessions/BwaSessionAuthentication_p.h"

BwaCookiesFcgiSessionIdentifier::BwaCookiesFcgiSessionIdentifier(
    const BwaWebSessionManager* manager, const QString& sessionIdCookieName,
    const QString& tokenCookieName)
    : m_sessionManager(manager)
    , m_sessionIdCookieName(sessionIdCookieName)
    , m_tokenCookieName(tokenCookieName)
{
}

BwaCookiesFcgiSessionIdentifier::~BwaCookiesFcgiSessionIdentifier() = default;

BwaWebSession* BwaCookiesFcgiSessionIdentifier::session(BwaFcgiRequest* request)
{
    return BwaSessionAuthentication::authenticatedSession(m_sessionManager, credentials(request));
}

BwaSessionCredentials BwaCookiesFcgiSessionIdentifier::credentials(BwaFcgiRequest* request) const
{
    const QList<BwaHttpCookie> cookies = request->cgiRequest()->environment().cookies();
    const BwaHttpCookie* sessionId = nullptr;
    const BwaHttpCookie* token = nullptr;
    for (const BwaHttpCookie& cookie : cookies) {
        if (cookie.name == m_sessionIdCookieName) {
            sessionId = &cookie;
        } else if (cookie.name == m_tokenCookieName) {
            token = &cookie;
        }
        if (sessionId && token) {
            return {QUuid(sessionId->value), QUuid(token->value)};
        }
    }
    return {};
}
