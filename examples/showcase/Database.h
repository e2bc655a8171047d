// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef DATABASE_H
#define DATABASE_H

#include <QString>

struct sqlite3;
struct sqlite3_stmt;

/**
 * A SQLite database file, opened or created; only the user of the program may read it, whatever the
 * umask says. Every failure is a std::runtime_error, which the
 * request processors answer with 500.
 */
class Database
{
    Q_DISABLE_COPY(Database)

public:
    class Statement;

    /** @a path: a character, of Latin-1, for each byte. */
    explicit Database(const QString& path);
    ~Database();

    /** Runs statements that take no values and give no rows. */
    void execute(const char* sql);
    qint64 lastInsertedId() const;
    /** How many rows the last statement changed. */
    int changedRows() const;

private:
    [[noreturn]] void fail() const;

    sqlite3* m_connection; // owned
};

/** One prepared statement; values are always bound, never written into the text. */
class Database::Statement
{
    Q_DISABLE_COPY(Statement)

public:
    /** @a database must outlive this. */
    Statement(Database& database, const char* sql);
    ~Statement();

    /** Binds the next value. */
    Statement& bind(const QString& text);
    Statement& bind(qint64 number);
    /** Goes to the next row; false when there is none. */
    bool next();

    /** Columns of the current row, from 0. */
    QString text(int column) const;
    qint64 number(int column) const;

private:
    const Database& m_database;
    sqlite3_stmt* m_statement; // owned
    int m_boundValues;
};

#endif
