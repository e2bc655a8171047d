// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef SQLITECONNECTION_H
#define SQLITECONNECTION_H

#include "DatabaseConnection.h"

struct sqlite3;

/**
 * A SQLite database file, opened or created; only the user of the program may read it, whatever the
 * umask says. A statement that changes something waits up to a second for those of other processes.
 */
class SqliteConnection : public DatabaseConnection
{
public:
    /** Throws a std::runtime_error when the file cannot be opened. */
    explicit SqliteConnection(const QByteArray& path);
    ~SqliteConnection() override;

    QList<QVariantList> run(const char* sql, const QVariantList& values) override;
    const char* idType() const override { return "INTEGER PRIMARY KEY AUTOINCREMENT"; }
    /** Does nothing: the statements that change something come one after another anyway. */
    void lock(const QString& /*name*/) override { }
    void unlock(const QString& /*name*/) override { }

private:
    [[noreturn]] void fail() const;

    sqlite3* m_connection; // owned
};

#endif
