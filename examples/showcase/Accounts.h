// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef ACCOUNTS_H
#define ACCOUNTS_H

#include <QString>

class Database;

/** The users and their password hashes (Argon2id, made and checked by libsodium). */
class Accounts
{
    Q_DISABLE_COPY(Accounts)

public:
    /** Adds the demonstration users to a new database. @a database must outlive this. */
    explicit Accounts(Database& database);

    /** Takes as long for an unknown user as for a wrong password. */
    bool isPasswordRight(const QString& user, const QString& password) const;

private:
    void add(const QString& user, const QString& password);
    /** Null for an unknown user. */
    QString hashOf(const QString& user) const;

    Database& m_database;
    QString m_unusedHash; // of no password; checked in place of an unknown user's
};

#endif
