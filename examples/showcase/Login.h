// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef LOGIN_H
#define LOGIN_H

#include "RateLimit.h"

#include <QElapsedTimer>

#include <bwebapi/rest.h>

class Accounts;
class Sessions;

/** What a client sends to log in. */
struct Credentials {
    QString user;
    QString password;
};

/**
 * Logins by password, which is checked in a thread of the pool: that takes 0.1 to 0.3 s and 64 MiB,
 * so that whoever steals the hashes cannot try many passwords.
 *
 * Whoever guesses passwords, of one account or from one address, is refused with 429 until the
 * minute is over, and everybody with 503 while too many logins wait.
 */
class Login
{
    Q_DISABLE_COPY(Login)

public:
    /** Neither is owned; both must outlive this. */
    Login(const Accounts& accounts, Sessions& sessions);

    /** Adds the login at "/session". */
    void addTo(BwaRestGroup& api);

private:
    BwaRestReply logIn(const BwaRestCall& call, const Credentials& credentials);
    BwaRestReply check(const BwaRestCall& call, const Credentials& credentials,
                       const QString& network);
    void refuseGuesses(const QString& user, const QString& network);
    qint64 now() const { return m_clock.elapsed() / 1000; }

    const Accounts& m_accounts;
    Sessions& m_sessions;
    QElapsedTimer m_clock;
    RateLimit m_failuresOfUser; // logins that run count until they have succeeded
    RateLimit m_failuresOfAddress;
};

#endif
