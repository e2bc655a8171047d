// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGISOCKET_P_H
#define BWAFCGISOCKET_P_H

class QByteArray;

// Sockets that libfcgi listens on. Its own function ends the process when it cannot bind, so
// everything that can go wrong is tried first.

/** Opens @a address as FCGX_OpenSocket() does: "host:port", ":port" or a path. -1 on failure. */
int openFcgiSocket(const QByteArray& address, int backlog);

/** Tells whether @a descriptor is open and a listening socket. */
bool isListeningSocket(int descriptor);

#endif
