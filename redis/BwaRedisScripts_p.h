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
 * What is done with sessions. The first key is the hash of a session, the second the word for all
 * sessions.
 */
namespace BwaRedisScripts {

/**
 * Keys: also the word of the user. Arguments: new words for all and for the user, user, hash of the
 * token, lifetime, removal delay, roles, data. The words are used if there are none yet.
 */
extern const BwaRedisScript create;
/**
 * Argument: the key of users' words without the name. The reply is nil, or user, hash of the token,
 * hash of the one before (empty when its grace time is over), "1" if the token is valid, roles,
 * data.
 */
extern const BwaRedisScript find;
/**
 * Arguments: as for find; hashes of the presented and of the next token; the number between them;
 * lifetime, removal delay, grace time. The reply is nil, or the number that leads from the
 * presented token to the current one.
 */
extern const BwaRedisScript renew;
/** Deletes its only key. */
extern const BwaRedisScript remove;

} // namespace BwaRedisScripts

#endif
