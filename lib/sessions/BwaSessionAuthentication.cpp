// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "sessions/BwaSessionAuthentication_p.h"
#include "sessions/BwaWebSession.h"
#include "sessions/BwaWebSessionManager.h"

#include <QString>
#include <QUuid>

namespace {

// Looks at all bytes, even when the first ones differ.
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

BwaWebSession* BwaSessionAuthentication::authenticatedSession(const BwaWebSessionManager* manager,
                                                              const QString& sessionId,
                                                              const QString& token)
{
    const QUuid id(sessionId);
    const QUuid presentedToken(token);
    if (id.isNull() || presentedToken.isNull()) {
        return nullptr;
    }
    BwaWebSession* const session = manager->findSession(id);
    return session && areEqual(session->token(), presentedToken) ? session : nullptr;
}
