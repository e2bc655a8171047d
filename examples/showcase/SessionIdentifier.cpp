// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "SessionIdentifier.h"

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "sessions/BwaWebSession.h"

namespace {

bool isHttps(BwaFcgiRequest* request)
{
    return request->cgiRequest()->environment().https();
}

QString cookieName(const char* name, bool https)
{
    return QLatin1String(https ? "__Host-showcase-" : "showcase-") + QLatin1String(name);
}

// SameSite has no field of its own; behind the path it stands where it belongs. "__Host-" asks for
// the path of the whole host.
BwaHttpCookie cookie(const char* name, const QUuid& value, bool https)
{
    const QString path = QLatin1String(https ? "/" : "/api") + QLatin1String("; SameSite=Strict");
    const bool httpOnly = true;
    return BwaHttpCookie(cookieName(name, https), value.toString(), 0, QString(), path, https,
                         httpOnly);
}

} // namespace

SessionIdentifier::SessionIdentifier(const BwaWebSessionManager* manager)
    : m_byHeader(manager, QStringLiteral("showcase"))
    , m_byCookies(manager, cookieName("session", false), cookieName("token", false))
    , m_byCookiesOfHttps(manager, cookieName("session", true), cookieName("token", true))
{
}

BwaWebSession* SessionIdentifier::session(BwaFcgiRequest* request)
{
    return identifierFor(request).session(request);
}

void SessionIdentifier::sendUnauthorizedReply(BwaFcgiRequest* request)
{
    identifierFor(request).sendUnauthorizedReply(request);
}

bool SessionIdentifier::isByHeader(BwaFcgiRequest* request)
{
    return !request->cgiRequest()->environment().httpAuthorization().isEmpty();
}

QList<BwaHttpCookie> SessionIdentifier::cookies(BwaFcgiRequest* request,
                                                const BwaWebSession& session)
{
    const bool https = isHttps(request);
    return {cookie("session", session.sessionId(), https), cookie("token", session.token(), https)};
}

BwaAbstractFcgiSessionIdentifier& SessionIdentifier::identifierFor(BwaFcgiRequest* request)
{
    if (isByHeader(request)) {
        return m_byHeader;
    }
    return isHttps(request) ? m_byCookiesOfHttps : m_byCookies;
}
