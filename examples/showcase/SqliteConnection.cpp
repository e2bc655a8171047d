// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "SqliteConnection.h"

#include <cerrno>
#include <cstring>
#include <memory>
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

int bindValue(sqlite3_stmt* statement, int number, const QVariant& value)
{
    if (value.userType() == QMetaType::QString) {
        const QByteArray utf8 = value.toString().toUtf8();
        return sqlite3_bind_text(statement, number, utf8.constData(), static_cast<int>(utf8.size()),
                                 SQLITE_TRANSIENT);
    }
    return sqlite3_bind_int64(statement, number, value.toLongLong());
}

QVariant valueOf(sqlite3_stmt* statement, int column)
{
    if (sqlite3_column_type(statement, column) == SQLITE_INTEGER) {
        return qint64{sqlite3_column_int64(statement, column)};
    }
    const auto* utf8 = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    return QString::fromUtf8(utf8, sqlite3_column_bytes(statement, column));
}

QVariantList rowOf(sqlite3_stmt* statement)
{
    QVariantList row;
    for (int column = 0; column < sqlite3_column_count(statement); ++column) {
        row.append(valueOf(statement, column));
    }
    return row;
}

} // namespace

SqliteConnection::SqliteConnection(const QByteArray& path)
    : m_connection(nullptr)
{
    makePrivate(path);
    if (sqlite3_open(path.constData(), &m_connection) != SQLITE_OK) {
        const std::string reason = sqlite3_errmsg(m_connection);
        sqlite3_close(m_connection);
        throw std::runtime_error("cannot open the database: " + reason);
    }
    sqlite3_busy_timeout(m_connection, 1000 /* ms */);
}

SqliteConnection::~SqliteConnection()
{
    sqlite3_close(m_connection);
}

QList<QVariantList> SqliteConnection::run(const char* sql, const QVariantList& values)
{
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v2(m_connection, sql, -1, &prepared, nullptr) != SQLITE_OK) {
        fail();
    }
    const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(prepared,
                                                                               &sqlite3_finalize);
    int boundValues = 0;
    for (const QVariant& value : values) {
        if (bindValue(prepared, ++boundValues, value) != SQLITE_OK) {
            fail();
        }
    }
    QList<QVariantList> rows;
    int result = sqlite3_step(prepared);
    for (; result == SQLITE_ROW; result = sqlite3_step(prepared)) {
        rows.append(rowOf(prepared));
    }
    if (result != SQLITE_DONE) {
        fail();
    }
    return rows;
}

void SqliteConnection::fail() const
{
    throw std::runtime_error(std::string("database: ") + sqlite3_errmsg(m_connection));
}
