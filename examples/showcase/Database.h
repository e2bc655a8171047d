// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef DATABASE_H
#define DATABASE_H

#include <QList>
#include <QString>
#include <QVariant>

#include <memory>

class DatabaseConnection;

/**
 * A connection to a SQLite file or to PostgreSQL, for SQL that both understand. Every failure is a
 * std::runtime_error, which is answered with 500; while PostgreSQL cannot be reached it is a
 * BwaRestProblem with 503. A lost connection comes back by itself.
 */
class Database
{
    Q_DISABLE_COPY(Database)

public:
    class Lock;

    /**
     * @a address: the path of a file, which is created if need be, or "postgresql:" and what libpq
     * takes: "postgresql://app@10.0.0.2/notes", "postgresql:host=/run/postgresql dbname=notes". A
     * character, of Latin-1, for each byte.
     */
    explicit Database(const QString& address);
    ~Database();

    /**
     * Runs one statement to its end and returns its rows. The @a values, each a QString or a
     * qint64, stand for $1, $2 and so on, which must first appear in this order; values are never
     * written into the text. What comes back converts to QString and qint64.
     */
    QList<QVariantList> run(const char* sql, const QVariantList& values = QVariantList());
    /** The SQL type of a primary key that the database counts up, and never gives twice. */
    const char* idType() const;

private:
    std::unique_ptr<DatabaseConnection> m_connection;
};

/**
 * While it lives, other processes wait with locks of the same name. Needed where a statement that
 * changes something depends on what others write: PostgreSQL runs such statements at once, SQLite
 * does not.
 */
class Database::Lock
{
    Q_DISABLE_COPY(Lock)

public:
    /** @a database must outlive this. */
    Lock(Database& database, const QString& name);
    ~Lock();

private:
    DatabaseConnection& m_connection;
    QString m_name;
};

#endif
