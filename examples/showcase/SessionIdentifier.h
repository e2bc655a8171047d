// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef SESSIONIDENTIFIER_H
#define SESSIONIDENTIFIER_H

#include "sessions/BwaAbstractFcgiSessionIdentifier.h"
#include "sessions/BwaCookiesFcgiSessionIdentifier.h"
#include "sessions/BwaSessionTokenFcgiSessionIdentifier.h"

/**
 * Identifies clients by their authorization header if they send one, as programs do, and by their
 * cookies otherwise, as browsers do. The first are refused with 401, the others with 403.
 */
class SessionIdentifier : public BwaAbstractFcgiSessionIdentifier
{
public:
    /** @a manager must outlive this. */
    explicit SessionIdentifier(const BwaWebSessionManager* manager);

    BwaWebSession* session(BwaFcgiRequest* request) override;
    void sendUnauthorizedReply(BwaFcgiRequest* request) override;

    static bool isByHeader(BwaFcgiRequest* request);
    static QString sessionCookieName();
    static QString tokenCookieName();

private:
    BwaAbstractFcgiSessionIdentifier& identifierFor(BwaFcgiRequest* request);

    BwaSessionTokenFcgiSessionIdentifier m_byHeader;
    BwaCookiesFcgiSessionIdentifier m_byCookies;
};

#endif
