// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef ACCOUNTS_H
#define ACCOUNTS_H

#include <QString>

class Database;

/** The users and their password hashes (Argon2id, made by libsodium). */
class Accounts
{
    Q_DISABLE_COPY(Accounts)

public:
    /** @a database must outlive this. */
    explicit Accounts(Database& database);

    /** Adds an account, unless the user has one. */
    void add(const QString& user, const QString& password);
    /**
     * What a password of @a user is checked against. For an unknown user it is the hash of a
     * password that nobody knows, so that the check takes as long as for a wrong password.
     */
    QByteArray hashOf(const QString& user) const;

private:
    bool isKnown(const QString& user) const;

    Database& m_database;
    QByteArray m_unusedHash; // of a password that nobody knows
};

#endif
