// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef TWOSESSIONS_H
#define TWOSESSIONS_H

#include "sessions/BwaWebSession.h"
#include "sessions/BwaWebSessionManager.h"
#include "support/MessageRecorder.h"

#include <QByteArray>
#include <QUuid>

/** The ids and tokens of TwoSessions, as clients send them. */
namespace credentials {

const QByteArray id = "{11111111-1111-4111-8111-111111111111}";
const QByteArray token = "{abcdef01-2345-4678-9abc-def012345678}";
const QByteArray otherId = "{22222222-2222-4222-8222-222222222222}";
const QByteArray otherToken = "{bbbbbbbb-bbbb-4bbb-8bbb-bbbbbbbbbbbb}";
const QByteArray tokenlessId = "{33333333-3333-4333-8333-333333333333}";
const QByteArray unknownId = "{44444444-4444-4444-8444-444444444444}";
const QByteArray null = "{00000000-0000-0000-0000-000000000000}";

} // namespace credentials

/**
 * A manager with two good sessions, and two that nobody may use: one whose token is null and one
 * whose id is null.
 */
struct TwoSessions {
    TwoSessions()
    {
        const MessageRecorder silence; // of the warnings of non-expiring sessions
        session = create(credentials::id, credentials::token);
        otherSession = create(credentials::otherId, credentials::otherToken);
        create(credentials::tokenlessId, credentials::null);
        create(credentials::null, credentials::token);
    }

    BwaWebSessionManager manager;
    BwaWebSession* session;      // owned by the manager
    BwaWebSession* otherSession; // owned by the manager

private:
    BwaWebSession* create(const QByteArray& id, const QByteArray& token)
    {
        return manager.createSession(QStringLiteral("ann"), QUuid(QString::fromLatin1(id)),
                                     QUuid(QString::fromLatin1(token)));
    }
};

#endif
