// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef REDISTEST_H
#define REDISTEST_H

#include "redis/BwaRedisSession.h"
#include "redis/BwaRedisSessions.h"
#include "redis/RedisServer.h"
#include "support/Application.h"
#include "support/MessageRecorder.h"

#include <gmock/gmock.h>

/** Settings for tests: a busy machine may be slow, and after a failure nothing pauses. */
inline BwaRedisSettings settingsFor(const QStringList& addresses)
{
    BwaRedisSettings settings;
    settings.addresses = addresses;
    settings.timeout = 20000;
    settings.replicaTimeout = 20000;
    settings.pause = 0;
    return settings;
}

inline BwaRedisSettings settingsFor(const RedisServer& server)
{
    return settingsFor(QStringList{server.path()});
}

/** What a client keeps of its session. */
struct Credentials {
    Credentials() = default;
    explicit Credentials(const BwaWebSession* session)
        : id(session ? session->sessionId() : QUuid())
        , token(session ? session->token() : QUuid())
    {
    }

    QUuid id;
    QUuid token;
};

inline BwaRedisSession* find(BwaRedisSessions& sessions, const Credentials& credentials)
{
    return sessions.find(credentials.id, credentials.token);
}

/** Matches a QString that begins with @a text. */
inline auto begins(const char* text)
{
    return testing::Property(&QString::toStdString, testing::StartsWith(text));
}

/** An application, for processes and for sessions that the event loop deletes. */
class RedisTest : public testing::Test
{
protected:
    static QStringList warnings(const MessageRecorder& recorder)
    {
        QStringList texts;
        for (const auto& message : recorder.messages()) {
            texts.append(message.second);
        }
        return texts;
    }

    const QString ann = QStringLiteral("ann");
    const QString bob = QStringLiteral("bob");

private:
    Application m_application;
};

#endif
