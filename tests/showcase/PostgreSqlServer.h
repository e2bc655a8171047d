// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef POSTGRESQLSERVER_H
#define POSTGRESQLSERVER_H

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

/**
 * A PostgreSQL server of its own in a temporary folder, that listens on a Unix socket there. It
 * runs as an ordinary user, as it must, and ends with this object, and with the test.
 */
class PostgreSqlServer
{
public:
    /** The one that all tests of a program share. */
    static PostgreSqlServer& shared();

    /** Makes its data, starts it and waits until it serves. */
    PostgreSqlServer();
    ~PostgreSqlServer();

    /** For Database. */
    QString address() const;
    QString folder() const { return m_folder.path(); }

    /** Starts it again after it has ended. */
    void start();
    /** Ends it as "pg_ctl restart" does: it closes all connections, and writes what it has. */
    void stop();
    /** Kills the server process; those of the connections end by themselves. */
    void kill();
    /** Sends a signal, such as SIGSTOP, to the process that accepts connections. */
    void signal(int number) const;

private:
    void run(const QString& program, const QStringList& arguments);
    bool becomesReady();

    QTemporaryDir m_folder;
    QProcess m_process;
};

#endif
