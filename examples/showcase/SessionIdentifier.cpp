// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "SessionIdentifier.h"

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"

SessionIdentifier::SessionIdentifier(const BwaWebSessionManager* manager)
    : m_byHeader(manager, QStringLiteral("showcase"))
    , m_byCookies(manager, sessionCookieName(), tokenCookieName())
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

QString SessionIdentifier::sessionCookieName()
{
    return QStringLiteral("showcase-session");
}

QString SessionIdentifier::tokenCookieName()
{
    return QStringLiteral("showcase-token");
}

BwaAbstractFcgiSessionIdentifier& SessionIdentifier::identifierFor(BwaFcgiRequest* request)
{
    if (isByHeader(request)) {
        return m_byHeader;
    }
    return m_byCookies;
}
