// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef DATABASECONNECTION_H
#define DATABASECONNECTION_H

#include <QList>
#include <QVariant>

/** A connection to one kind of database; Database has the rules for statements and values. */
class DatabaseConnection
{
    Q_DISABLE_COPY(DatabaseConnection)

public:
    DatabaseConnection() = default;
    virtual ~DatabaseConnection() = default;

    virtual QList<QVariantList> run(const char* sql, const QVariantList& values) = 0;
    /** The SQL type of a primary key that the database counts up. */
    virtual const char* idType() const = 0;
    /** Waits until no other connection has a lock of that name. */
    virtual void lock(const QString& name) = 0;
    /** Ends the lock of that name; throws nothing. */
    virtual void unlock(const QString& name) = 0;
};

#endif
