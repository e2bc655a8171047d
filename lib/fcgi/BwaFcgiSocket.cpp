// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BwaGlobal.h"
#include "fcgi/BwaFcgiSocket_p.h"

#include <QByteArray>

#include <fcgiapp.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

const int longestAddress = 1023; // bytes; libfcgi ends the process beyond

// Binds once and lets go again. Nobody can connect meanwhile, as nothing listens.
bool canBind(int family, const sockaddr* address, socklen_t size)
{
    const int descriptor = ::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        return false;
    }
    const int on = 1;
    const bool isBound = ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0 &&
        ::bind(descriptor, address, size) == 0;
    ::close(descriptor);
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
        return false;
    }
    std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    ::unlink(path.constData()); // as libfcgi is about to do itself
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path)) +
        static_cast<socklen_t>(path.size());
    return canBind(AF_UNIX, reinterpret_cast<const sockaddr*>(&address), size);
}

} // namespace

int openFcgiSocket(const QByteArray& address, int backlog)
{
    // The address ends at a NUL for libfcgi, so it does here.
    const QByteArray text(address.constData());
    const BwaSize colon = text.indexOf(':');
    const int port =
        colon < 0 ? 0 : std::atoi(text.constData() + colon + 1); // NOLINT(cert-err34-c)
    const bool isPort = static_cast<short>(port) != 0;           // decided as libfcgi does
    const bool canOpen = text.size() <= longestAddress &&
        (isPort ? canBindPort(text.left(colon), port) : canBindPath(text));
    const int descriptor = canOpen ? FCGX_OpenSocket(text.constData(), backlog) : -1;
    ::fcntl(descriptor, F_SETFD, FD_CLOEXEC); // clients would wait for a program that is started
    return descriptor;
}

bool isListeningSocket(int descriptor)
{
    int listening = 0;
    socklen_t size = sizeof listening;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_ACCEPTCONN, &listening, &size) == 0 &&
        listening != 0;
}
