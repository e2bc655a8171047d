// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "redis/BwaRedisClient_p.h"

#include <QtDebug>

#include <utility>

namespace {

bool isError(const BwaRedisReply& reply)
{
    return reply->type == REDIS_REPLY_ERROR;
}

QByteArray textOf(const redisReply& reply)
{
    return QByteArray(reply.str, static_cast<int>(reply.len));
}

// Whether the primary answers, but refuses changes for now.
bool isRefusal(const BwaRedisReply& reply)
{
    const QByteArray code = textOf(*reply).split(' ').first();
    return code == "OOM" || code == "MISCONF" || code == "NOREPLICAS";
}

// The time that is left, divided by the number of attempts that are left.
QDeadlineTimer shareOf(const QDeadlineTimer& deadline, int attempts)
{
    return QDeadlineTimer(qMax<qint64>(1, deadline.remainingTime() / attempts), Qt::PreciseTimer);
}

} // namespace

struct BwaRedisClient::Call {
    const BwaRedisScript& script;
    const QList<QByteArray>& keys;
    const QList<QByteArray>& arguments;
    bool isChange;

    BwaRedisCommand command(const QByteArray& name, const QByteArray& scriptOrHash) const
    {
        return BwaRedisCommand{name, scriptOrHash, QByteArray::number(keys.size())} + keys +
            arguments;
    }
};

BwaRedisClient::BwaRedisClient(const BwaRedisSettings& settings)
    : m_settings(settings)
    , m_tls(settings)
{
}

BwaRedisClient::~BwaRedisClient() = default;

BwaRedisReply BwaRedisClient::read(const BwaRedisScript& script, const QList<QByteArray>& keys,
                                   const QList<QByteArray>& arguments)
{
    return run({script, keys, arguments, false},
               QDeadlineTimer(m_settings.timeout, Qt::PreciseTimer));
}

BwaRedisReply BwaRedisClient::change(const BwaRedisScript& script, const QList<QByteArray>& keys,
                                     const QList<QByteArray>& arguments)
{
    const int wait = m_settings.replicas > 0 ? m_settings.replicaTimeout : 0;
    return run({script, keys, arguments, true},
               QDeadlineTimer(m_settings.timeout + wait, Qt::PreciseTimer));
}

// Tries a second time if there is time left, because the server may have been restarted or have
// become a replica.
BwaRedisReply BwaRedisClient::run(const Call& call, const QDeadlineTimer& deadline)
{
    m_hasAnswered = false;
    if (!m_pause.hasExpired()) {
        return nullptr;
    }
    for (int attempts = 0; attempts < 2 && !deadline.hasExpired(); ++attempts) {
        if (!m_connection && !findPrimary(deadline)) {
            break;
        }
        BwaRedisReply reply = attempt(call, deadline);
        if (m_connection) {
            tellReachable(true);
            m_hasAnswered = reply != nullptr;
            return reply;
        }
    }
    m_pause.setRemainingTime(m_settings.pause);
    tellReachable(false, m_failure);
    return nullptr;
}

// Runs the call once; drops the connection when it fails.
BwaRedisReply BwaRedisClient::attempt(const Call& call, const QDeadlineTimer& deadline)
{
    BwaRedisReplies replies = ask(call, deadline);
    if (replies.empty()) {
        lose(m_connection->failure());
        return nullptr;
    }
    if (isError(replies.front()) && !(call.isChange && isRefusal(replies.front()))) {
        lose(QString::fromUtf8(textOf(*replies.front())));
        return nullptr;
    }
    return call.isChange ? accepted(std::move(replies)) : std::move(replies.front());
}

// The reply to the script and, if replicas must confirm changes, to WAIT; empty when the connection
// is lost.
BwaRedisReplies BwaRedisClient::ask(const Call& call, const QDeadlineTimer& deadline)
{
    const auto both = [this, &call, &deadline](const BwaRedisCommand& run) {
        QList<BwaRedisCommand> commands = {run};
        if (call.isChange && m_settings.replicas > 0) {
            commands.append({"WAIT", QByteArray::number(m_settings.replicas),
                             QByteArray::number(qMax(1, m_settings.replicaTimeout))});
        }
        return m_connection->exchange(commands, deadline);
    };
    BwaRedisReplies replies = both(call.command("EVALSHA", call.script.hash));
    if (!replies.empty() && isError(replies.front()) &&
        textOf(*replies.front()).startsWith("NOSCRIPT")) {
        return both(call.command("EVAL", call.script.text));
    }
    return replies;
}

// The reply to a change; null when Redis refuses it or too few replicas have confirmed it.
BwaRedisReply BwaRedisClient::accepted(BwaRedisReplies replies)
{
    BwaRedisReply reply = std::move(replies.front());
    if (isError(reply)) {
        tellChangeable(false, QString::fromUtf8(textOf(*reply)));
        return nullptr;
    }
    if (m_settings.replicas > 0 && replies.back()->integer < m_settings.replicas) {
        tellChangeable(false,
                       QString::fromLatin1("%1 of %2 replicas have confirmed a change in time")
                           .arg(replies.back()->integer)
                           .arg(m_settings.replicas));
        return m_settings.missingReplica == BwaRedisSettings::AcceptChange ? std::move(reply)
                                                                           : nullptr;
    }
    tellChangeable(true);
    return reply;
}

// Each address gets an equal part of the time that is left, so that a server that does not answer
// leaves time for the others.
bool BwaRedisClient::findPrimary(const QDeadlineTimer& deadline)
{
    m_failure = QString::fromLatin1("no address is set");
    int left = m_settings.sentinels.size() + m_settings.addresses.size();
    for (const QString& sentinel : std::as_const(m_settings.sentinels)) {
        const QDeadlineTimer share = shareOf(deadline, left--);
        const QString address = primaryBySentinel(sentinel, share);
        if (!address.isEmpty() && connectToPrimary(address, share)) {
            return true;
        }
    }
    for (const QString& address : std::as_const(m_settings.addresses)) {
        if (connectToPrimary(address, shareOf(deadline, left--))) {
            return true;
        }
    }
    return false;
}

// The address of the primary; empty when the Sentinel does not know it or does not answer.
QString BwaRedisClient::primaryBySentinel(const QString& sentinel, const QDeadlineTimer& deadline)
{
    BwaRedisConnection connection(sentinel, &m_tls, deadline);
    QList<BwaRedisCommand> commands;
    if (!m_settings.sentinelPassword.isEmpty()) {
        commands.append({"AUTH", m_settings.sentinelPassword.toUtf8()});
    }
    commands.append({"SENTINEL", "GET-MASTER-ADDR-BY-NAME", m_settings.masterName.toUtf8()});
    const BwaRedisReplies replies = connection.exchange(commands, deadline);
    if (replies.empty()) {
        m_failure = connection.failure();
        return QString();
    }
    const BwaRedisReply& reply = replies.back();
    if (reply->type != REDIS_REPLY_ARRAY || reply->elements != 2) {
        m_failure = sentinel + QLatin1String(": ") +
            (isError(reply) ? QString::fromUtf8(textOf(*reply))
                            : QString::fromLatin1("knows no such master"));
        return QString();
    }
    const QByteArray host = textOf(*reply->element[0]);
    const QByteArray port = textOf(*reply->element[1]);
    return QString::fromLatin1(host.contains(':') ? '[' + host + "]:" + port : host + ':' + port);
}

// Sends PING as well as ROLE, because only PING is refused while a server loads its data.
bool BwaRedisClient::connectToPrimary(const QString& address, const QDeadlineTimer& deadline)
{
    auto connection = std::make_unique<BwaRedisConnection>(address, &m_tls, deadline);
    QList<BwaRedisCommand> commands;
    if (!m_settings.password.isEmpty()) {
        commands.append(
            m_settings.user.isEmpty()
                ? BwaRedisCommand{"AUTH", m_settings.password.toUtf8()}
                : BwaRedisCommand{"AUTH", m_settings.user.toUtf8(), m_settings.password.toUtf8()});
    }
    commands += QList<BwaRedisCommand>{
        {"SELECT", QByteArray::number(m_settings.database)}, {"PING"}, {"ROLE"}};
    const BwaRedisReplies replies = connection->exchange(commands, deadline);
    if (replies.empty()) {
        m_failure = connection->failure();
        return false;
    }
    for (const BwaRedisReply& reply : replies) {
        if (isError(reply)) {
            m_failure = address + QLatin1String(": ") + QString::fromUtf8(textOf(*reply));
            return false;
        }
    }
    const BwaRedisReply& role = replies.back();
    if (role->elements == 0 || textOf(*role->element[0]) != "master") {
        m_failure = address + QLatin1String(": is no primary");
        return false;
    }
    m_connection = std::move(connection);
    return true;
}

void BwaRedisClient::lose(const QString& reason)
{
    m_failure = reason;
    m_connection.reset();
}

void BwaRedisClient::tellReachable(bool isReachable, const QString& reason)
{
    if (m_isReachable != isReachable) {
        m_isReachable = isReachable;
        qWarning("%s",
                 qPrintable(isReachable ? QString::fromLatin1("Redis answers again")
                                        : QLatin1String("Redis does not answer: ") + reason));
    }
}

void BwaRedisClient::tellChangeable(bool isChangeable, const QString& reason)
{
    if (m_isChangeable != isChangeable) {
        m_isChangeable = isChangeable;
        qWarning("%s",
                 qPrintable(isChangeable
                                ? QString::fromLatin1("Redis confirms changes again")
                                : QLatin1String("Redis does not confirm changes: ") + reason));
    }
}
