// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef SESSIONIDENTIFIER_H
#define SESSIONIDENTIFIER_H

#include "http/BwaHttpCookie.h"
#include "sessions/BwaAbstractFcgiSessionIdentifier.h"
#include "sessions/BwaCookiesFcgiSessionIdentifier.h"
#include "sessions/BwaSessionTokenFcgiSessionIdentifier.h"

#include <QList>

/**
 * Identifies clients by their authorization header if they send one, as programs do, and by their
 * cookies otherwise, as browsers do. The first are refused with 401, the others with 403.
 *
 * No script can read the cookies, and no page of another site makes a browser send them. With HTTPS
 * their names begin with "__Host-": such cookies are sent with HTTPS only, and browsers take them
 * from this host alone, so no neighbour can put others in their place.
 */
class SessionIdentifier : public BwaAbstractFcgiSessionIdentifier
{
public:
    /** @a manager must outlive this. */
    explicit SessionIdentifier(const BwaWebSessionManager* manager);

    BwaWebSession* session(BwaFcgiRequest* request) override;
    void sendUnauthorizedReply(BwaFcgiRequest* request) override;

    static bool isByHeader(BwaFcgiRequest* request);
    /** The cookies of @a session, for the reply to @a request. */
    static QList<BwaHttpCookie> cookies(BwaFcgiRequest* request, const BwaWebSession& session);

private:
    BwaAbstractFcgiSessionIdentifier& identifierFor(BwaFcgiRequest* request);

    BwaSessionTokenFcgiSessionIdentifier m_byHeader;
    BwaCookiesFcgiSessionIdentifier m_byCookies;
    BwaCookiesFcgiSessionIdentifier m_byCookiesOfHttps;
};

#endif
