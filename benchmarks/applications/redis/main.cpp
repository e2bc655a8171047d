// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The request that needs a session, answered from sessions in Redis. The program fills Redis with
// sessions first, and prints the header that proves one of them.

#include "applications/bwebapi/ProfileProcessor.h"
#include "fcgi/BwaFcgiListener.h"
#include "redis/BwaRedisSession.h"
#include "redis/BwaRedisSessionTokenFcgiSessionIdentifier.h"
#include "redis/BwaRedisSessions.h"
#include "services/BwaDispatcherFcgiService.h"
#include "services/BwaStandardFcgiService.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

BwaRedisSettings settingsFor(const char* redis, const char* count)
{
    BwaRedisSettings settings;
    settings.addresses = QStringList{QString::fromLatin1(redis)};
    settings.keyPrefix = QString::fromLatin1(count) + QLatin1Char(':');
    settings.tokenLifetime = 3600000;
    settings.timeout = 10000;
    return settings;
}

bool fill(BwaRedisSessions* sessions, int count)
{
    for (int user = 1; user < count; ++user) {
        if (!sessions->create(QString::number(user))) {
            return false;
        }
    }
    const BwaRedisSession* const session = sessions->create(QStringLiteral("ada"));
    if (session) {
        std::printf("Authorization: SESSION-TOKEN %s:%s\n",
                    session->sessionId().toByteArray().constData(),
                    session->token().toByteArray().constData());
        std::fflush(stdout);
    }
    return session != nullptr;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 4) {
        qCritical("usage: %s SOCKET REDIS SESSIONS", argv[0]);
        return 2;
    }
    BwaRedisSessions sessions(settingsFor(argv[2], argv[3]));
    if (!fill(&sessions, QByteArray(argv[3]).toInt())) {
        return 1;
    }
    BwaRedisSessionTokenFcgiSessionIdentifier identifier(&sessions, QStringLiteral("benchmark"));
    BwaDispatcherFcgiService root;
    root.addDispatcherService(QStringLiteral("v1"))
        ->addDispatcherService(QStringLiteral("users"))
        ->addService(QStringLiteral("profile"),
                     new BwaStandardFcgiService(new ProfileProcessor(&identifier)));

    BwaFcgiListener listener({{QStringLiteral("/api"), &root}});
    QObject::connect(&listener, &BwaFcgiListener::listeningError,
                     [] { QCoreApplication::exit(1); });
    listener.setBacklog(4096);
    listener.listen(QString::fromLatin1(argv[1]));
    return application.exec();
}
