// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef SESSIONPROCESSOR_H
#define SESSIONPROCESSOR_H

#include "services/BwaStandardFcgiRequestProcessor.h"

class Accounts;
class BwaWebSession;
class BwaWebSessionManager;
class SessionIdentifier;

struct SessionLifetimes {
    int token;   // ms until a token expires
    int removal; // ms from then until its session is removed
};

/**
 * The client's session: POST {"user", "password", "cookies": false} logs in, GET tells who is
 * logged in, PUT renews the token, DELETE logs out. Session and token come and go in the
 * "authorization" field of the reply, or in two cookies for those who ask for them.
 *
 * A browser sends cookies with requests that other sites make it send. These sites can neither
 * send JSON bodies nor PUT or DELETE without asking first, and nothing here permits them to.
 */
class SessionProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    /** Nothing is owned; everything must outlive this. */
    SessionProcessor(SessionIdentifier* identifier, BwaWebSessionManager* sessions,
                     const Accounts* accounts, const SessionLifetimes& lifetimes);

protected:
    void processGetMethod(BwaFcgiRequest* request) override;
    void processPostMethod(BwaFcgiRequest* request) override;
    void processPutMethod(BwaFcgiRequest* request) override;
    void processDeleteMethod(BwaFcgiRequest* request) override;

private:
    void logIn(BwaFcgiRequest* request);

    BwaWebSessionManager* m_sessions;
    const Accounts* m_accounts;
    SessionLifetimes m_lifetimes;
};

#endif
