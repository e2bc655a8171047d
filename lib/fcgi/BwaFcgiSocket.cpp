// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BwaGlobal.h"
#include "fcgi/BwaFcgiSocket_p.h"

#include <QList>

#include <fcgiapp.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace BwaFcgiSocket {

namespace {

const int longestAddress = 1023; // bytes; libfcgi ends the process when an address is longer

// Whether a socket can be bound to @a address. It is closed again at once; nobody can connect to
// it, because it does not listen.
bool canBind(int family, const sockaddr* address, socklen_t size)
{
    const int descriptor = ::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        return false;
    }
    const int on = 1;
    const bool isBound = ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0 &&
        ::bind(descriptor, address, size) == 0;
    const int error = errno;
    ::close(descriptor);
    errno = error;
    return isBound;
}

bool resolveHost(const QByteArray& host, in_addr* address)
{
    if (host.isEmpty() || host == "*") {
        address->s_addr = INADDR_ANY;
        return true;
    }
    address->s_addr = ::inet_addr(host.constData());
    if (address->s_addr != INADDR_NONE) {
        return true;
    }
    const hostent* const entry = ::gethostbyname(host.constData());
    if (!entry || entry->h_addrtype != AF_INET || !entry->h_addr_list[0] || entry->h_addr_list[1]) {
        errno = EADDRNOTAVAIL;
        return false;
    }
    std::memcpy(address, entry->h_addr_list[0], sizeof *address);
    return true;
}

bool canBindPort(const QByteArray& host, int port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(port)); // cut to 16 bits, as libfcgi does
    return resolveHost(host, &address.sin_addr) &&
        canBind(AF_INET, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

bool canBindPath(const QByteArray& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (static_cast<std::size_t>(path.size()) > sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return false;
    }
    std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    ::unlink(path.constData()); // as libfcgi is about to do itself
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path)) +
        static_cast<socklen_t>(path.size());
    return canBind(AF_UNIX, reinterpret_cast<const sockaddr*>(&address), size);
}

bool canOpen(const QByteArray& address)
{
    if (address.size() > longestAddress) {
        errno = ENAMETOOLONG;
        return false;
    }
    const BwaSize colon = address.indexOf(':');
    const int port =
        colon < 0 ? 0 : std::atoi(address.constData() + colon + 1); // NOLINT(cert-err34-c)
    const bool isPort = static_cast<short>(port) != 0;              // decided as libfcgi does
    return isPort ? canBindPort(address.left(colon), port) : canBindPath(address);
}

bool mayConnect(const sockaddr_in& peer, const QByteArray& webServers)
{
    const QList<QByteArray> addresses = webServers.split(',');
    return std::any_of(addresses.begin(), addresses.end(), [&](const QByteArray& address) {
        return ::inet_addr(address.constData()) == peer.sin_addr.s_addr;
    });
}

} // namespace

int open(const QByteArray& address, int backlog, QString* reason)
{
    // The address ends at a NUL for libfcgi, so it does here.
    const QByteArray text(address.constData());
    if (text.isEmpty()) {
        qDebug("Listening on an empty address, where no web server can find the socket");
    }
    errno = 0;
    const int descriptor = canOpen(text) ? FCGX_OpenSocket(text.constData(), backlog) : -1;
    if (descriptor < 0) {
        *reason = QString::fromLatin1("cannot listen on \"%1\": %2")
                      .arg(QString::fromLatin1(text), QString::fromLocal8Bit(std::strerror(errno)));
        return -1;
    }
    ::fcntl(descriptor, F_SETFD, FD_CLOEXEC); // child programs must not inherit it
    return descriptor;
}

bool isListening(int descriptor)
{
    int listening = 0;
    socklen_t size = sizeof listening;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_ACCEPTCONN, &listening, &size) == 0 &&
        listening != 0;
}

int accept(int listening, const QByteArray& webServers)
{
    sockaddr_storage peer = {};
    socklen_t size = sizeof peer;
    const int connection = ::accept4(listening, reinterpret_cast<sockaddr*>(&peer), &size,
                                     SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (connection < 0) {
        return -errno;
    }
    if (peer.ss_family != AF_INET) {
        return connection;
    }
    if (!webServers.isEmpty() &&
        !mayConnect(reinterpret_cast<const sockaddr_in&>(peer), webServers)) {
        ::close(connection);
        return -ECONNABORTED;
    }
    const int on = 1; // or the end of a reply waits until its beginning is acknowledged
    ::setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return connection;
}

} // namespace BwaFcgiSocket
