// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef SESSIONPROCESSOR_H
#define SESSIONPROCESSOR_H

#include "RateLimit.h"
#include "services/BwaStandardFcgiRequestProcessor.h"

#include <QElapsedTimer>

class Accounts;
class BwaWebSession;
class BwaWebSessionManager;
class PasswordChecker;
class SessionIdentifier;

struct SessionLifetimes {
    int token;      // ms until a token expires
    int removal;    // ms from then until its session is removed
    int longestAge; // ms from the login to the session's end, however often the token is renewed
};

/**
 * The client's session: POST {"user", "password", "cookies": false} logs in, GET tells who is
 * logged in, PUT renews the token, DELETE logs out. Session and token come and go in the
 * "authorization" field of the reply, or in two cookies for those who ask for them.
 *
 * A browser sends cookies with requests that other sites make it send. These sites can neither
 * send JSON bodies nor PUT or DELETE without asking first, and nothing here permits them to.
 *
 * A login is answered later, when a thread of its own has checked the password. Whoever guesses
 * passwords, of one account or from one address, is refused with 429 until the minute is over, and
 * everybody with 503 while too many logins wait.
 */
class SessionProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    /** Nothing is owned; everything must outlive this. */
    SessionProcessor(SessionIdentifier* identifier, BwaWebSessionManager* sessions,
                     const Accounts* accounts, PasswordChecker* passwords,
                     const SessionLifetimes& lifetimes);

protected:
    void processGetMethod(BwaFcgiRequest* request) override;
    void processPostMethod(BwaFcgiRequest* request) override;
    void processPutMethod(BwaFcgiRequest* request) override;
    void processDeleteMethod(BwaFcgiRequest* request) override;

private:
    struct Login;

    static bool readLogin(BwaFcgiRequest* request, Login& login);
    bool mayTry(BwaFcgiRequest* request, const Login& login);
    void checkLater(BwaFcgiRequest* request, const Login& login);
    void answer(BwaFcgiRequest* request, const Login& login, bool isPasswordRight);
    void logIn(BwaFcgiRequest* request, const Login& login);
    void makeRoom(const QString& user);
    qint64 now() const { return m_clock.elapsed() / 1000; }

    BwaWebSessionManager* m_sessions;
    const Accounts* m_accounts;
    PasswordChecker* m_passwords;
    SessionLifetimes m_lifetimes;
    QElapsedTimer m_clock;
    RateLimit m_failuresOfUser; // logins that run count until they have succeeded
    RateLimit m_failuresOfAddress;
};

#endif
