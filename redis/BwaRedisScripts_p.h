// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAREDISSCRIPTS_P_H
#define BWAREDISSCRIPTS_P_H

#include <QByteArray>

/** A Lua script that Redis runs as one step. */
struct BwaRedisScript {
    explicit BwaRedisScript(const QByteArray& text);

    QByteArray text;
    QByteArray hash; /**< SHA-1 in hexadecimal digits, by which Redis knows the script. */
};

/**
 * The scripts for sessions. The first key is that of a session's hash, the second that of the
 * generation of all sessions; BwaRedisSessions.cpp explains generations.
 */
namespace BwaRedisScripts {

/**
 * Third key: the generation of the user. Arguments: a generation for all sessions and one for the
 * user, each used only if there is none yet; user, hash of the token, lifetime, removal delay,
 * roles, data.
 */
extern const BwaRedisScript create;
/**
 * Argument: the key of users' generations without the name. The reply is nil, or user, hash of the
 * token, hash of the previous token (empty when its grace time is over), "1" if the token is valid,
 * roles, data.
 */
extern const BwaRedisScript find;
/**
 * Arguments: that of find; hashes of the client's token and of the next token; the random number
 * from which the next token is computed; lifetime, removal delay, grace time. The reply is nil, or
 * the random number from which the current token is computed.
 */
extern const BwaRedisScript renew;
/** Deletes its only key. */
extern const BwaRedisScript remove;

} // namespace BwaRedisScripts

#endif
