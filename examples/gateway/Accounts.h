// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef ACCOUNTS_H
#define ACCOUNTS_H

#include <QHash>

#include <bwebapi/rest.h>

/** The users who may log in, and their sessions. */
class Accounts
{
public:
    /**
     * Reads @a file, which has a line for each user: the name, the hash of the password, and the
     * roles, with a blank between two. @throws std::runtime_error when it cannot
     */
    explicit Accounts(const QString& file);

    /**
     * A salted hash of @a password for such a file. It is slow and takes 19 MiB of memory on
     * purpose, so that guessing passwords is expensive.
     */
    static QByteArray hash(const QByteArray& password);

    /**
     * Adds the routes to log in (cookies for browsers, a token for programs), to renew and to log
     * out.
     */
    void addTo(BwaRestGroup& group);
    /** The sessions, for groups that need a login. */
    BwaRestSessions& sessions() { return m_sessions; }

private:
    struct Account {
        QByteArray hash;
        QStringList roles;
    };

    BwaRestReply logIn(const BwaRestCall& call, const QString& user, const QString& password);

    QHash<QString, Account> m_accounts; // by user
    QByteArray m_unusedHash;            // of a password that nobody knows
    BwaRestSessions m_sessions{"gateway"};
};

#endif
