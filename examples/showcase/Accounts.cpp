// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Accounts.h"

#include "Database.h"

#include <stdexcept>

#include <sodium.h>

namespace {

QString passwordHash(const QByteArray& password)
{
    char hash[crypto_pwhash_STRBYTES];
    if (crypto_pwhash_str(hash, password.constData(), static_cast<unsigned>(password.size()),
                          crypto_pwhash_OPSLIMIT_INTERACTIVE,
                          crypto_pwhash_MEMLIMIT_INTERACTIVE) != 0) {
        throw std::runtime_error("not enough memory to hash a password");
    }
    return QString::fromLatin1(hash);
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

    m_database.execute(
        "CREATE TABLE IF NOT EXISTS accounts (user TEXT PRIMARY KEY, hash TEXT NOT NULL)");
    // Known to everybody who has read this line: for the demonstration only.
    add(QStringLiteral("demo"), QStringLiteral("tea and biscuits"));
    add(QStringLiteral("guest"), QStringLiteral("coffee and cake"));
}

void Accounts::add(const QString& user, const QString& password)
{
    if (!hashOf(user).isNull()) {
        return;
    }
    // Another process that starts at the same time may have been faster.
    Database::Statement(m_database, "INSERT OR IGNORE INTO accounts VALUES (?, ?)")
        .bind(user)
        .bind(passwordHash(password.toUtf8()))
        .next();
}

QString Accounts::hashOf(const QString& user) const
{
    Database::Statement account(m_database, "SELECT hash FROM accounts WHERE user = ?");
    return account.bind(user).next() ? account.text(0) : QString();
}

bool Accounts::isPasswordRight(const QString& user, const QString& password) const
{
    const QString knownHash = hashOf(user);
    const QByteArray hash = (knownHash.isNull() ? m_unusedHash : knownHash).toLatin1();
    const QByteArray text = password.toUtf8();
    const bool isRight = crypto_pwhash_str_verify(hash.constData(), text.constData(),
                                                  static_cast<unsigned>(text.size())) == 0;
    return isRight && !knownHash.isNull();
}
