// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "support/FcgiClient.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds patience(10);
constexpr int largestContent = 65528; // bytes; a multiple of eight below 64 KiB

constexpr int beginRequest = 1;
constexpr int endRequest = 3;
constexpr int params = 4;
constexpr int standardInput = 5;
constexpr int standardOutput = 6;
constexpr int standardError = 7;

int millisecondsUntil(Clock::time_point deadline)
{
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return std::max(0, static_cast<int>(left.count()));
}

// Whether @a descriptor is ready for @a events, or has failed, before @a deadline.
bool waitFor(int descriptor, short events, Clock::time_point deadline)
{
    pollfd entry = {descriptor, events, 0};
    int result = -1;
    do {
        result = poll(&entry, 1, millisecondsUntil(deadline));
    } while (result < 0 && errno == EINTR);
    return result == 1;
}

bool nobodyListensYet(int error)
{
    return error == ENOENT || error == ECONNREFUSED;
}

int connectedTo(const sockaddr* address, socklen_t size)
{
    const auto deadline = Clock::now() + patience;
    for (;;) {
        const int descriptor = socket(address->sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (connect(descriptor, address, size) == 0) {
            return descriptor;
        }
        const int error = errno;
        close(descriptor);
        if (!nobodyListensYet(error) || Clock::now() > deadline) {
            ADD_FAILURE() << "cannot connect: " << std::strerror(error);
            return -1;
        }
        poll(nullptr, 0, 1); // until the next look, 1 ms
    }
}

int connectedToUnixSocket(const QByteArray& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= static_cast<int>(sizeof(address.sun_path))) {
        ADD_FAILURE() << "the path is too long for a socket: " << path.constData();
        return -1;
    }
    std::memcpy(address.sun_path, path.constData(), static_cast<size_t>(path.size()));
    return connectedTo(reinterpret_cast<const sockaddr*>(&address), sizeof(address));
}

int connectedToLoopback(quint16 port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return connectedTo(reinterpret_cast<const sockaddr*>(&address), sizeof(address));
}

// Lengths up to 127 take one byte, others four with the highest bit set.
QByteArray encodedLength(int length)
{
    QByteArray bytes;
    if (length > 127) {
        bytes.append(static_cast<char>((length >> 24) | 0x80));
        bytes.append(static_cast<char>(length >> 16));
        bytes.append(static_cast<char>(length >> 8));
    }
    bytes.append(static_cast<char>(length));
    return bytes;
}

// The records of one whole stream; an empty record ends it.
QByteArray streamRecords(int type, const QByteArray& content)
{
    QByteArray bytes;
    for (int position = 0; position < content.size(); position += largestContent) {
        bytes += FcgiClient::record(type, content.mid(position, largestContent));
    }
    return bytes + FcgiClient::record(type, QByteArray());
}

int twoBytes(const QByteArray& bytes, int position)
{
    return (static_cast<quint8>(bytes.at(position)) << 8) |
        static_cast<quint8>(bytes.at(position + 1));
}

void addRecord(FcgiReply* reply, int type, const QByteArray& content)
{
    if (type == standardOutput) {
        reply->out += content;
        if (!content.isEmpty()) {
            reply->outRecords.append(content);
        }
    } else if (type == standardError) {
        reply->err += content;
    } else if (type == endRequest) {
        reply->ended = true;
        reply->protocolStatus = content.size() > 4 ? static_cast<quint8>(content.at(4)) : -1;
    } else {
        ADD_FAILURE() << "unexpected record of type " << type;
    }
}

} // namespace

FcgiClient::FcgiClient(const QByteArray& path)
    : m_descriptor(connectedToUnixSocket(path))
{
}

FcgiClient::FcgiClient(int descriptor)
    : m_descriptor(descriptor)
{
}

FcgiClient::~FcgiClient()
{
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
}

std::unique_ptr<FcgiClient> FcgiClient::onPort(quint16 port)
{
    return std::make_unique<FcgiClient>(connectedToLoopback(port));
}

void FcgiClient::sendRequest(const FcgiParameters& parameters, const QByteArray& body)
{
    send(requestBytes(parameters, body));
}

void FcgiClient::send(const QByteArray& bytes)
{
    const auto deadline = Clock::now() + patience;
    for (int position = 0; position < bytes.size();) {
        if (!waitFor(m_descriptor, POLLOUT, deadline)) {
            ADD_FAILURE() << "sending stopped after " << position << " bytes";
            return;
        }
        const ssize_t sent =
            ::send(m_descriptor, bytes.constData() + position,
                   static_cast<size_t>(bytes.size() - position), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent < 0 && errno != EAGAIN && errno != EINTR) {
            ADD_FAILURE() << "cannot send: " << std::strerror(errno);
            return;
        }
        position += static_cast<int>(std::max<ssize_t>(sent, 0));
    }
}

void FcgiClient::shutDownSending()
{
    shutdown(m_descriptor, SHUT_WR);
}

void FcgiClient::abort()
{
    const linger atOnce = {1, 0};
    setsockopt(m_descriptor, SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce));
    close(m_descriptor);
    m_descriptor = -1;
}

FcgiReply FcgiClient::readReply()
{
    FcgiReply reply;
    while (!reply.ended) {
        const QByteArray header = readBytes(8);
        if (header.size() < 8) {
            return reply;
        }
        const QByteArray content = readBytes(twoBytes(header, 4));
        readBytes(static_cast<quint8>(header.at(6))); // padding
        addRecord(&reply, header.at(1), content);
    }
    return reply;
}

bool FcgiClient::isClosedByPeer()
{
    return readBytes(1).isEmpty() && !m_timedOut;
}

QByteArray FcgiClient::readBytes(int count)
{
    const auto deadline = Clock::now() + patience;
    QByteArray bytes;
    while (bytes.size() < count) {
        if (!waitFor(m_descriptor, POLLIN, deadline)) {
            m_timedOut = true;
            ADD_FAILURE() << "no more bytes came after " << bytes.size() << " of " << count;
            return bytes;
        }
        QByteArray piece(count - bytes.size(), '\0');
        const ssize_t received =
            recv(m_descriptor, piece.data(), static_cast<size_t>(piece.size()), 0);
        if (received < 0 && errno == EINTR) {
            continue;
        }
        if (received <= 0) {
            return bytes; // the end of the connection, however it came
        }
        bytes += piece.left(static_cast<int>(received));
    }
    return bytes;
}

QByteArray FcgiClient::requestBytes(const FcgiParameters& parameters, const QByteArray& body,
                                    bool keepConnection)
{
    const char begin[] = {0, 1, static_cast<char>(keepConnection ? 1 : 0), 0, 0, 0,
                          0, 0}; // role 1: RESPONDER
    QByteArray pairs;
    for (const auto& parameter : parameters) {
        pairs += encodedLength(parameter.first.size()) + encodedLength(parameter.second.size()) +
            parameter.first + parameter.second;
    }

    return record(beginRequest, QByteArray(begin, sizeof(begin))) + streamRecords(params, pairs) +
        streamRecords(standardInput, body);
}

QByteArray FcgiClient::record(int type, const QByteArray& content)
{
    const int padding = (8 - content.size() % 8) % 8;
    QByteArray bytes;
    bytes.append('\1'); // protocol version
    bytes.append(static_cast<char>(type));
    bytes.append('\0').append('\1'); // request id 1
    bytes.append(static_cast<char>(content.size() >> 8)).append(static_cast<char>(content.size()));
    bytes.append(static_cast<char>(padding)).append('\0');
    return bytes + content + QByteArray(padding, '\0');
}
