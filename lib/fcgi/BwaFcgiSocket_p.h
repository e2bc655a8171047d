// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGISOCKET_P_H
#define BWAFCGISOCKET_P_H

#include <QByteArray>
#include <QString>

/**
 * Opens and accepts sockets. libfcgi's function to open one ends the process when it cannot bind,
 * so everything that may fail in it is tried before.
 */
namespace BwaFcgiSocket {

/**
 * Opens @a address as FCGX_OpenSocket() does: "host:port", ":port" or a path.
 *
 * @return -1 on failure; then @a reason says why
 */
int open(const QByteArray& address, int backlog, QString* reason);

/** Whether @a descriptor is open and a listening socket. */
bool isListening(int descriptor);

/**
 * Accepts a connection from @a listening and makes it non-blocking.
 *
 * @param webServers the only IPv4 addresses that may connect, separated by commas without blanks;
 *        everybody may when it is empty. As with FCGI_WEB_SERVER_ADDRS of libfcgi, connections that
 *        are not IPv4 are not checked: neither those of Unix sockets nor those of IPv6 ones.
 * @return the descriptor; on failure the error number as a negative one: -EAGAIN when no connection
 *         waits, and -ECONNABORTED for an address that is not allowed to connect
 */
int accept(int listening, const QByteArray& webServers);

} // namespace BwaFcgiSocket

#endif
