// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWASESSIONAUTHENTICATION_P_H
#define BWASESSIONAUTHENTICATION_P_H

class BwaWebSession;
class BwaWebSessionManager;
class QString;

/** What the session identifiers have in common. */
namespace BwaSessionAuthentication {

/**
 * The session with the id @a sessionId if @a token is its current token, else null. Both are texts
 * that QUuid reads as UUIDs, which may lack braces and go on with other text; with any other text
 * the result is null. The comparison of the tokens takes the same time wherever they differ, so
 * that a client cannot guess a token piece by piece.
 */
BwaWebSession* authenticatedSession(const BwaWebSessionManager* manager, const QString& sessionId,
                                    const QString& token);

} // namespace BwaSessionAuthentication

#endif
