// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Accounts.h"

#include "Database.h"

#include <stdexcept>

#include <sodium.h>

namespace {

QByteArray passwordHash(const QByteArray& password)
{
    char hash[crypto_pwhash_STRBYTES];
    if (crypto_pwhash_str(hash, password.constData(), static_cast<unsigned>(password.size()),
                          crypto_pwhash_OPSLIMIT_INTERACTIVE,
                          crypto_pwhash_MEMLIMIT_INTERACTIVE) != 0) {
        throw std::runtime_error("not enough memory to hash a password");
    }
    return hash;
}

} // namespace

Accounts::Accounts(Database& database)
    : m_database(database)
{
    if (sodium_init() < 0) {
        throw std::runtime_error("libsodium cannot be used on this machine");
    }
    QByteArray random(32, '\0');
    randombytes_buf(random.data(), static_cast<size_t>(random.size()));
    m_unusedHash = passwordHash(random);

    const Database::Lock lock(m_database, QStringLiteral("tables"));
    m_database.run(
        "CREATE TABLE IF NOT EXISTS accounts (\"user\" TEXT PRIMARY KEY, hash TEXT NOT NULL)");
}

void Accounts::add(const QString& user, const QString& password)
{
    if (isKnown(user)) {
        return; // without the time that a hash takes
    }
    // Another process that starts at the same time may have been faster.
    m_database.run("INSERT INTO accounts VALUES ($1, $2) ON CONFLICT DO NOTHING",
                   {user, QString::fromLatin1(passwordHash(password.toUtf8()))});
}

QByteArray Accounts::hashOf(const QString& user) const
{
    const QList<QVariantList> rows =
        m_database.run("SELECT hash FROM accounts WHERE \"user\" = $1", {user});
    return rows.isEmpty() ? m_unusedHash : rows.first().first().toString().toLatin1();
}

bool Accounts::isKnown(const QString& user) const
{
    return hashOf(user) != m_unusedHash;
}
