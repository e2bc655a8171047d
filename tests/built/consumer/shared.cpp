// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Says the same as the consumer, when the store of its sessions does not answer.

#include <iostream>

#include <bwebapi/bwebapi.h>
#include <bwebapi/redis.h>
#include <bwebapi/rest.h>

int main()
{
    BwaRedisSettings settings;
    settings.addresses = QStringList{"/nowhere/redis.sock"};
    BwaRedisSessions shared(settings);
    BwaRestSessions sessions("notes", std::make_unique<BwaRedisRestStore>(&shared));
    try {
        sessions.login("ann", {});
    } catch (const BwaRestProblem& problem) {
        std::cout << BWebApiLibInformation::libraryName() << ' '
                  << BWebApiLibInformation::libraryVersion() << std::endl;
        return problem.status() == 503 ? 0 : 1;
    }
    return 1;
}
