// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAREDISSETTINGS_H
#define BWAREDISSETTINGS_H

#include <QString>
#include <QStringList>

/**
 * Where Redis is, how long it may take, and how long sessions last. All processes that share
 * sessions need the same settings, but for the addresses.
 *
 * An address is the path of a Unix socket, as "/run/redis/redis.sock", or an IP address with a
 * port, as "10.0.0.2:6379" or "[::1]:6379". Names of hosts are not looked up, because that could
 * take seconds, in which no request would be served.
 */
struct BwaRedisSettings {
    /** What to do with a change that fewer replicas have confirmed in time than wanted. */
    enum MissingReplica {
        RefuseChange, /**< The call fails, as if Redis were away. */
        AcceptChange  /**< The call succeeds. The change is lost if the primary dies too early. */
    };

    QStringList addresses; /**< The primary and its replicas, in any order. */
    QStringList sentinels; /**< Addresses of Sentinels, which are asked first; may be empty. */
    QString masterName;    /**< The name under which the Sentinels know the primary. */

    QString keyPrefix = QString::fromLatin1("bwebapi:"); /**< Begins each key. */
    int database = 0;                                    /**< The number of the database. */
    QString user;                                        /**< Empty: Redis's user "default". */
    QString password;                                    /**< Empty: Redis asks for none. */
    QString sentinelPassword;                            /**< Empty: the Sentinels ask for none. */

    bool isEncrypted = false; /**< Uses TLS, version 1.2 or newer, for all addresses. */
    QString authorityFile;    /**< PEM certificates to trust; empty: those of the system. */
    QString certificateName;  /**< In the server's certificate; empty: its IP address is. */
    QString certificateFile;  /**< The own certificate and its chain, PEM; may be empty. */
    QString keyFile;          /**< The key to it, PEM. */

    int timeout = 100; /**< Milliseconds for each call, with all attempts to connect. */
    int pause = 1000;  /**< Milliseconds for which calls fail at once after one has failed. */

    int replicas = 0;         /**< How many replicas must have confirmed a change. */
    int replicaTimeout = 100; /**< Milliseconds that they have, on top of the timeout. */
    MissingReplica missingReplica = RefuseChange; /**< If they have not. */

    int tokenLifetime = 900000; /**< Milliseconds until a token expires; at least 1. */
    int removalDelay = 0;       /**< Milliseconds from then on in which it can still be renewed. */
    int graceTime = 10000;      /**< Milliseconds in which a renewed token is still taken. */
};

#endif
