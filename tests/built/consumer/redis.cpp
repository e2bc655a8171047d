// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Says the same as the consumer, when a Redis that is not there does not answer.

#include <iostream>

#include <bwebapi/bwebapi.h>
#include <bwebapi/redis.h>

int main()
{
    BwaRedisSettings settings;
    settings.addresses = QStringList{QStringLiteral("/nowhere/redis.sock")};
    BwaRedisSessions sessions(settings);
    BwaRedisSessionTokenFcgiSessionIdentifier identifier(&sessions, QStringLiteral("notes"));

    const bool isCreated = sessions.create(QStringLiteral("ann")) != nullptr;
    std::cout << BWebApiLibInformation::libraryName() << ' '
              << BWebApiLibInformation::libraryVersion() << std::endl;
    return !isCreated && !sessions.hasAnswered() && identifier.sessionManager() == nullptr ? 0 : 1;
}
