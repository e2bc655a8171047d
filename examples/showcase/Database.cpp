// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Database.h"

#include "PostgreSqlConnection.h"
#include "SqliteConnection.h"

namespace {

// libpq takes a URI whole, but keywords without the word before them.
std::unique_ptr<DatabaseConnection> connectTo(const QByteArray& address)
{
    const QByteArray scheme = "postgresql:";
    if (address.startsWith(scheme + "//")) {
        return connectToPostgreSql(address);
    }
    if (address.startsWith(scheme)) {
        return connectToPostgreSql(address.mid(scheme.size()));
    }
    return std::make_unique<SqliteConnection>(address);
}

} // namespace

Database::Database(const QString& address)
    : m_connection(connectTo(address.toLatin1()))
{
}

Database::~Database() = default;

QList<QVariantList> Database::run(const char* sql, const QVariantList& values)
{
    return m_connection->run(sql, values);
}

const char* Database::idType() const
{
    return m_connection->idType();
}

Database::Lock::Lock(Database& database, const QString& name)
    : m_connection(*database.m_connection)
    , m_name(name)
{
    m_connection.lock(m_name);
}

Database::Lock::~Lock()
{
    m_connection.unlock(m_name);
}
