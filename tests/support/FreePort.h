// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef FREEPORT_H
#define FREEPORT_H

#include <QtGlobal>

#include <random>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

/**
 * A TCP port of 127.0.0.1 that nobody listens on. It is below those that Linux gives to connections
 * (ip_local_port_range), since one of these could take it before the test does.
 */
inline quint16 freePort()
{
    std::random_device random;
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bool isFree = false;
    while (!isFree) {
        address.sin_port = htons(static_cast<quint16>(20000 + random() % 12000));
        const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
        isFree =
            bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
        close(descriptor);
    }
    return ntohs(address.sin_port);
}

#endif
