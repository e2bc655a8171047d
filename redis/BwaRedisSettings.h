// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAREDISSETTINGS_H
#define BWAREDISSETTINGS_H

#include <QString>
#include <QStringList>

/**
 * Where Redis is, how long it may take to answer, and how long sessions last. All processes that
 * share sessions need the same settings, except for the addresses.
 *
 * An address is the path of a Unix socket, as "/run/redis/redis.sock", or an IP address with a
 * port, as "10.0.0.2:6379" or "[::1]:6379". Host names are not allowed: looking one up could take
 * seconds, in which no request would be served.
 */
struct BwaRedisSettings {
    /** What to do when fewer replicas than wanted have confirmed a change in time. */
    enum MissingReplica {
        RefuseChange, /**< The call fails, as if Redis did not answer. */
        AcceptChange  /**< The call succeeds. The change is lost if the primary dies too early. */
    };

    QStringList addresses; /**< The primary and its replicas, in any order. */
    QStringList sentinels; /**< Addresses of Sentinels, which are asked first; may be empty. */
    QString masterName;    /**< The name under which the Sentinels know the primary. */

    QString keyPrefix = QString::fromLatin1("bwebapi:"); /**< The beginning of each key. */
    int database = 0;                                    /**< The number of the database. */
    QString user;                                        /**< Empty: Redis's user "default". */
    QString password;                                    /**< Empty: Redis asks for none. */
    QString sentinelPassword;                            /**< Empty: the Sentinels ask for none. */

    bool isEncrypted = false; /**< Uses TLS, version 1.2 or newer, for all addresses. */
    QString authorityFile;    /**< PEM certificates to trust; empty: those of the system. */
    QString certificateName;  /**< The name in the server's certificate; empty: its IP address. */
    QString certificateFile;  /**< This client's certificate and its chain, PEM; may be empty. */
    QString keyFile;          /**< The private key of certificateFile, PEM. */

    int timeout = 100; /**< Milliseconds for each call, attempts to connect included. */
    int pause = 1000;  /**< Milliseconds for which calls fail at once after one has failed. */

    int replicas = 0;         /**< How many replicas must have confirmed a change. */
    int replicaTimeout = 100; /**< Milliseconds for that, in addition to the timeout. */
    MissingReplica missingReplica = RefuseChange; /**< When they have not confirmed it. */

    int tokenLifetime = 900000; /**< Milliseconds until a token expires; at least 1. */
    int removalDelay = 0;       /**< Milliseconds after that in which it can be renewed. */
    int graceTime = 10000;      /**< Milliseconds for which a token stays valid after a renewal. */
};

#endif
