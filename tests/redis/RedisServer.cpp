// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "redis/RedisServer.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include <hiredis/hiredis.h>

namespace {

QByteArray textOf(const redisReply& reply)
{
    if (reply.type == REDIS_REPLY_INTEGER) {
        return QByteArray::number(reply.integer);
    }
    if (reply.type != REDIS_REPLY_ARRAY) {
        return QByteArray(reply.str, static_cast<int>(reply.len));
    }
    QList<QByteArray> elements;
    for (size_t index = 0; index < reply.elements; ++index) {
        elements.append(textOf(*reply.element[index]));
    }
    return elements.join(' ');
}

} // namespace

RedisServer::RedisServer(const QStringList& options)
{
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    restart(options);
    waitForLine("eady to accept connections");
}

RedisServer::~RedisServer()
{
    kill();
}

void RedisServer::restart(const QStringList& options)
{
    QStringList arguments = {QStringLiteral("--pdeathsig"),
                             QStringLiteral("KILL"),
                             QStringLiteral("redis-server"),
                             QStringLiteral("--unixsocket"),
                             path(),
                             QStringLiteral("--dir"),
                             m_folder.path(),
                             QStringLiteral("--save"),
                             QString()};
    if (!options.contains(QStringLiteral("--port"))) {
        arguments += {QStringLiteral("--port"), QStringLiteral("0")};
    }
    m_output.clear();
    m_process.start(QStringLiteral("setpriv"), arguments + options);
    waitForLine("Server initialized");
}

void RedisServer::kill()
{
    m_process.kill();
    m_process.waitForFinished();
}

void RedisServer::signal(int number) const
{
    ASSERT_EQ(::kill(static_cast<pid_t>(m_process.processId()), number), 0);
}

QByteArray RedisServer::ask(const QList<QByteArray>& command) const
{
    const std::unique_ptr<redisContext, decltype(&redisFree)> connection(
        redisConnectUnix(path().toUtf8().constData()), &redisFree);
    std::vector<const char*> arguments;
    std::vector<size_t> sizes;
    for (const QByteArray& argument : command) {
        arguments.push_back(argument.constData());
        sizes.push_back(static_cast<size_t>(argument.size()));
    }
    auto* const reply = static_cast<redisReply*>(redisCommandArgv(
        connection.get(), static_cast<int>(arguments.size()), arguments.data(), sizes.data()));
    if (!reply) {
        return QByteArray("no reply: ").append(connection->errstr);
    }
    const QByteArray text = textOf(*reply);
    freeReplyObject(reply);
    return text;
}

bool RedisServer::waitForReply(const QList<QByteArray>& command, const QByteArray& text) const
{
    return becomesTrue([&] { return ask(command).contains(text); });
}

void RedisServer::waitForLine(const QByteArray& text)
{
    const QDeadlineTimer deadline(60000);
    while (!m_output.contains(text)) {
        if (!m_process.waitForReadyRead(static_cast<int>(deadline.remainingTime()))) {
            FAIL() << "redis-server said: " << m_output.constData();
        }
        m_output += m_process.readAll();
    }
}
