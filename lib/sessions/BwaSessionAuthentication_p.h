// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWASESSIONAUTHENTICATION_P_H
#define BWASESSIONAUTHENTICATION_P_H

class BwaWebSession;
class BwaWebSessionManager;
struct BwaSessionCredentials;

/** The look-up that all session identifiers use. */
namespace BwaSessionAuthentication {

/**
 * The session that has the presented id and whose current token is the presented one; null when
 * there is none, and when the id or the token is null. The comparison of the tokens takes the same
 * time wherever they differ, so that a client cannot guess a token piece by piece.
 */
BwaWebSession* authenticatedSession(const BwaWebSessionManager* manager,
                                    const BwaSessionCredentials& credentials);

} // namespace BwaSessionAuthentication

#endif
