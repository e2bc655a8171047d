// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWASESSIONCREDENTIALS_P_H
#define BWASESSIONCREDENTIALS_P_H

class BwaWebSession;
class BwaWebSessionManager;
class QString;

/**
 * The session with the id @a sessionId if @a token is its current token, else null. Both are texts
 * of UUIDs; a text that is none authenticates nothing. Comparing the tokens takes the same time
 * wherever they differ.
 */
BwaWebSession* sessionOf(const BwaWebSessionManager* manager, const QString& sessionId,
                         const QString& token);

#endif
