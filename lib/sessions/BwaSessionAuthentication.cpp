// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "sessions/BwaSessionAuthentication_p.h"
#include "sessions/BwaSessionCredentials.h"
#include "sessions/BwaWebSession.h"
#include "sessions/BwaWebSessionManager.h"

#include <QUuid>

namespace {

// Compares all bytes, even when the first ones differ, so that the time tells nothing.
bool areEqual(const QUuid& first, const QUuid& second)
{
    static_assert(sizeof(QUuid) == 16, "a UUID is its 16 bytes and nothing else");
    const auto* const firstBytes = reinterpret_cast<const unsigned char*>(&first);
    const auto* const secondBytes = reinterpret_cast<const unsigned char*>(&second);
    unsigned int difference = 0;
    for (std::size_t i = 0; i < sizeof(QUuid); ++i) {
        difference |= static_cast<unsigned int>(firstBytes[i] ^ secondBytes[i]);
    }
    return difference == 0;
}

} // namespace

BwaWebSession*
BwaSessionAuthentication::authenticatedSession(const BwaWebSessionManager* manager,
                                               const BwaSessionCredentials& credentials)
{
    if (credentials.sessionId.isNull() || credentials.token.isNull()) {
        return nullptr;
    }
    BwaWebSession* const session = manager->findSession(credentials.sessionId);
    return session && areEqual(session->token(), credentials.token) ? session : nullptr;
}
