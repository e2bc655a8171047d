// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Database.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// SQLite gives its journals the rights that the database has.
void makePrivate(const QByteArray& path)
{
    const int descriptor = open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    const bool isPrivate = descriptor >= 0 && fchmod(descriptor, 0600) == 0;
    const int error = errno;
    if (descriptor >= 0) {
        close(descriptor);
    }
    if (!isPrivate) {
        throw std::runtime_error(std::string("cannot open the database: ") + std::strerror(error));
    }
}

} // namespace

Database::Database(const QString& path)
    : m_connection(nullptr)
{
    makePrivate(path.toLatin1());
    if (sqlite3_open(path.toLatin1().constData(), &m_connection) != SQLITE_OK) {
        const std::string reason = sqlite3_errmsg(m_connection);
        sqlite3_close(m_connection);
        throw std::runtime_error("cannot open the database: " + reason);
    }
    sqlite3_busy_timeout(m_connection, 1000 /* ms */);
}

Database::~Database()
{
    sqlite3_close(m_connection);
}

void Database::execute(const char* sql)
{
    if (sqlite3_exec(m_connection, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail();
    }
}

qint64 Database::lastInsertedId() const
{
    return sqlite3_last_insert_rowid(m_connection);
}

int Database::changedRows() const
{
    return sqlite3_changes(m_connection);
}

void Database::fail() const
{
    throw std::runtime_error(std::string("database: ") + sqlite3_errmsg(m_connection));
}

Database::Statement::Statement(Database& database, const char* sql)
    : m_database(database)
    , m_statement(nullptr)
    , m_boundValues(0)
{
    if (sqlite3_prepare_v2(database.m_connection, sql, -1, &m_statement, nullptr) != SQLITE_OK) {
        database.fail();
    }
}

Database::Statement::~Statement()
{
    sqlite3_finalize(m_statement);
}

Database::Statement& Database::Statement::bind(const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    if (sqlite3_bind_text(m_statement, ++m_boundValues, utf8.constData(), utf8.size(),
                          SQLITE_TRANSIENT) != SQLITE_OK) {
        m_database.fail();
    }
    return *this;
}

Database::Statement& Database::Statement::bind(qint64 number)
{
    if (sqlite3_bind_int64(m_statement, ++m_boundValues, number) != SQLITE_OK) {
        m_database.fail();
    }
    return *this;
}

bool Database::Statement::next()
{
    const int result = sqlite3_step(m_statement);
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        m_database.fail();
    }
    return result == SQLITE_ROW;
}

QString Database::Statement::text(int column) const
{
    const auto* utf8 = reinterpret_cast<const char*>(sqlite3_column_text(m_statement, column));
    return QString::fromUtf8(utf8, sqlite3_column_bytes(m_statement, column));
}

qint64 Database::Statement::number(int column) const
{
    return sqlite3_column_int64(m_statement, column);
}
