// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "redis/BwaRedisConnection_p.h"

#include <QFile>

#include <cerrno>
#include <cstring>

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

QByteArray formatted(const BwaRedisCommand& command)
{
    std::vector<const char*> arguments;
    std::vector<size_t> sizes;
    for (const QByteArray& argument : command) {
        arguments.push_back(argument.constData());
        sizes.push_back(static_cast<size_t>(argument.size()));
    }
    char* text = nullptr;
    const auto size = redisFormatCommandArgv(&text, command.size(), arguments.data(), sizes.data());
    if (size < 0) {
        throw std::bad_alloc();
    }
    QByteArray bytes(text, static_cast<int>(size));
    redisFreeCommand(text);
    return bytes;
}

// The host, without brackets, of "host:port".
QByteArray hostOf(const QString& address)
{
    const QByteArray host = address.left(address.lastIndexOf(QLatin1Char(':'))).toUtf8();
    return host.startsWith('[') && host.endsWith(']') ? host.mid(1, host.size() - 2) : host;
}

} // namespace

BwaRedisConnection::BwaRedisConnection(const QString& address, BwaRedisTlsContext* tls,
                                       const QDeadlineTimer& deadline)
    : m_address(address)
    , m_reader(redisReaderCreate())
{
    const bool isPath = address.startsWith(QLatin1Char('/'));
    const bool isConnected =
        isPath ? connectToPath(QFile::encodeName(address), deadline) : connectToPort(deadline);
    if (isConnected && tls->isEncrypted()) {
        m_tls = tls->begin(isPath ? QByteArray() : hostOf(address), &m_output);
        if (!m_tls) {
            fail(tls->failure());
        }
    }
}

BwaRedisConnection::~BwaRedisConnection()
{
    if (m_socket >= 0) {
        close(m_socket);
    }
}

bool BwaRedisConnection::connectToPath(const QByteArray& path, const QDeadlineTimer& deadline)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (static_cast<size_t>(path.size()) >= sizeof(address.sun_path)) {
        return failWithErrno(ENAMETOOLONG);
    }
    std::memcpy(address.sun_path, path.constData(), static_cast<size_t>(path.size()));
    m_socket = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    return connectTo(&address, sizeof(address), deadline);
}

bool BwaRedisConnection::connectToPort(const QDeadlineTimer& deadline)
{
    addrinfo hints = {};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const QByteArray port = m_address.section(QLatin1Char(':'), -1).toUtf8();
    if (getaddrinfo(hostOf(m_address).constData(), port.constData(), &hints, &found) != 0) {
        return fail(QString::fromLatin1("is neither a path nor an IP address with a port"));
    }
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, &freeaddrinfo);
    m_socket = socket(found->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
    return connectTo(found->ai_addr, found->ai_addrlen, deadline);
}

bool BwaRedisConnection::connectTo(const void* address, size_t size, const QDeadlineTimer& deadline)
{
    const auto* const generic = static_cast<const sockaddr*>(address);
    if (m_socket >= 0 && connect(m_socket, generic, static_cast<socklen_t>(size)) == 0) {
        return true;
    }
    if (m_socket < 0 || errno != EINPROGRESS) {
        return failWithErrno(errno);
    }
    if (!waitFor(POLLOUT, deadline)) {
        return false;
    }
    int error = 0;
    socklen_t errorSize = sizeof(error);
    getsockopt(m_socket, SOL_SOCKET, SO_ERROR, &error, &errorSize);
    return error == 0 || failWithErrno(error);
}

bool BwaRedisConnection::waitFor(short events, const QDeadlineTimer& deadline)
{
    pollfd descriptor = {m_socket, events, 0};
    int ready = 0;
    do {
        ready = poll(&descriptor, 1, static_cast<int>(deadline.remainingTime()));
    } while (ready < 0 && errno == EINTR);
    if (ready < 0) {
        return failWithErrno(errno);
    }
    return ready > 0 || fail(QString::fromLatin1("no answer in time"));
}

bool BwaRedisConnection::fail(const QString& failure)
{
    m_failure = failure;
    return false;
}

bool BwaRedisConnection::failWithErrno(int error)
{
    return fail(QString::fromLocal8Bit(std::strerror(error)));
}

BwaRedisReplies BwaRedisConnection::exchange(const QList<BwaRedisCommand>& commands,
                                             const QDeadlineTimer& deadline)
{
    BwaRedisReplies replies;
    if (!m_failure.isNull()) {
        return replies;
    }
    QByteArray bytes;
    for (const BwaRedisCommand& command : commands) {
        bytes += formatted(command);
    }
    send(bytes);
    while (replies.size() < static_cast<size_t>(commands.size())) {
        if (!transfer(deadline) || !takeReplies(&replies)) {
            return BwaRedisReplies();
        }
    }
    return replies;
}

void BwaRedisConnection::send(const QByteArray& bytes)
{
    if (m_tls) {
        m_tls->send(bytes, &m_output);
    } else {
        m_output += bytes;
    }
}

// Writes as much of the output as the socket takes, and reads what has arrived.
bool BwaRedisConnection::transfer(const QDeadlineTimer& deadline)
{
    if (!writeSome()) {
        return false;
    }
    const int events = m_output.isEmpty() ? POLLIN : POLLIN | POLLOUT;
    return waitFor(static_cast<short>(events), deadline) && readSome();
}

bool BwaRedisConnection::writeSome()
{
    if (m_output.isEmpty()) {
        return true;
    }
    const ssize_t count =
        ::send(m_socket, m_output.constData(), static_cast<size_t>(m_output.size()), MSG_NOSIGNAL);
    if (count < 0) {
        return errno == EAGAIN || errno == EINTR || failWithErrno(errno);
    }
    m_output.remove(0, static_cast<int>(count));
    return true;
}

bool BwaRedisConnection::readSome()
{
    char bytes[16384];
    const ssize_t count = recv(m_socket, bytes, sizeof(bytes), 0);
    if (count < 0) {
        return errno == EAGAIN || errno == EINTR || failWithErrno(errno);
    }
    if (count == 0) {
        return fail(QString::fromLatin1("the connection was closed"));
    }
    if (!m_tls) {
        redisReaderFeed(m_reader.get(), bytes, static_cast<size_t>(count));
        return true;
    }
    QByteArray plain;
    if (!m_tls->receive(QByteArray(bytes, static_cast<int>(count)), &plain, &m_output)) {
        return fail(m_tls->failure());
    }
    redisReaderFeed(m_reader.get(), plain.constData(), static_cast<size_t>(plain.size()));
    return true;
}

bool BwaRedisConnection::takeReplies(BwaRedisReplies* replies)
{
    for (;;) {
        void* reply = nullptr;
        if (redisReaderGetReply(m_reader.get(), &reply) != REDIS_OK) {
            return fail(QString::fromLatin1("what answers is no Redis"));
        }
        if (!reply) {
            return true;
        }
        replies->emplace_back(static_cast<redisReply*>(reply));
    }
}
