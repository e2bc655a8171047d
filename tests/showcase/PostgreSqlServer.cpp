// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "PostgreSqlServer.h"

#include <QDeadlineTimer>
#include <QDir>

#include <gtest/gtest.h>

#include <csignal>

#include <pwd.h>
#include <unistd.h>

namespace {

// Debian has the programs of each version in a folder that is not in PATH.
QString programPath(const QString& name)
{
    const QDir versions(QStringLiteral("/usr/lib/postgresql"));
    const QStringList names = versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return versions.filePath(names.value(names.size() - 1) + QStringLiteral("/bin/") + name);
}

// PostgreSQL refuses to be run by root.
QStringList asOrdinaryUser()
{
    QStringList words{QStringLiteral("--pdeathsig"), QStringLiteral("QUIT")};
    if (geteuid() == 0) {
        words += {QStringLiteral("--reuid"), QStringLiteral("nobody"), QStringLiteral("--regid"),
                  QStringLiteral("nogroup"), QStringLiteral("--clear-groups")};
    }
    return words;
}

} // namespace

PostgreSqlServer& PostgreSqlServer::shared()
{
    static PostgreSqlServer server;
    return server;
}

PostgreSqlServer::PostgreSqlServer()
{
    if (geteuid() == 0) {
        const passwd* const user = getpwnam("nobody");
        EXPECT_EQ(chown(m_folder.path().toUtf8().constData(), user->pw_uid, user->pw_gid), 0);
    }
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    run(QStringLiteral("initdb"),
        {QStringLiteral("--no-locale"), QStringLiteral("--encoding=UTF8"),
         QStringLiteral("--auth=trust"), QStringLiteral("--username=notes"),
         QStringLiteral("--no-sync"),
         QStringLiteral("--pgdata=") + folder() + QStringLiteral("/data")});
    EXPECT_TRUE(m_process.waitForFinished(60000));
    EXPECT_EQ(m_process.exitCode(), 0) << m_process.readAll().constData();
    start();
}

PostgreSqlServer::~PostgreSqlServer()
{
    if (m_process.state() != QProcess::NotRunning) {
        signal(SIGQUIT);
        m_process.waitForFinished();
    }
}

QString PostgreSqlServer::address() const
{
    return QStringLiteral("postgresql:host=%1 user=notes dbname=postgres").arg(folder());
}

// After kill() the server refuses to start until the processes of the connections have ended.
void PostgreSqlServer::start()
{
    const QDeadlineTimer deadline(60000);
    do {
        run(QStringLiteral("postgres"),
            {QStringLiteral("-D"), folder() + QStringLiteral("/data"), QStringLiteral("-k"),
             folder(), QStringLiteral("-c"), QStringLiteral("listen_addresses="),
             QStringLiteral("-c"), QStringLiteral("fsync=off")});
    } while (!becomesReady() && !deadline.hasExpired());
    ASSERT_EQ(m_process.state(), QProcess::Running);
}

void PostgreSqlServer::stop()
{
    signal(SIGINT);
    ASSERT_TRUE(m_process.waitForFinished());
}

void PostgreSqlServer::kill()
{
    m_process.kill();
    ASSERT_TRUE(m_process.waitForFinished());
}

void PostgreSqlServer::signal(int number) const
{
    ASSERT_EQ(::kill(static_cast<pid_t>(m_process.processId()), number), 0);
}

void PostgreSqlServer::run(const QString& program, const QStringList& arguments)
{
    m_process.start(QStringLiteral("setpriv"),
                    asOrdinaryUser() + QStringList{programPath(program)} + arguments);
}

bool PostgreSqlServer::becomesReady()
{
    QByteArray output;
    while (!output.contains("ready to accept connections")) {
        if (!m_process.waitForReadyRead(60000)) {
            return false;
        }
        output += m_process.readAll();
    }
    return true;
}
