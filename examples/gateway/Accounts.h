// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef ACCOUNTS_H
#define ACCOUNTS_H

#include <QHash>

#include <bwebapi/rest.h>

/** Who may log in, and the sessions of those who have. */
class Accounts
{
public:
    /**
     * Reads @a file, which has a line for each user: the name, the hash of the password, and the
     * roles, with a blank between two. @throws std::runtime_error when it cannot
     */
    explicit Accounts(const QString& file);

    /** A salted hash of @a password for such a file; takes its time, and 19 MiB, on purpose. */
    static QByteArray hash(const QByteArray& password);

    /**
     * Adds the login, which gives browsers cookies and programs a token, its renewal and its end.
     */
    void addTo(BwaRestGroup& group);
    /** For the groups that need a login. */
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
