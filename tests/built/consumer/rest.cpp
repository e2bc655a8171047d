// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Says the same as the consumer, through a route. Written as applications are, with casts from
// character literals.

#include <iostream>

#include <bwebapi/bwebapi.h>
#include <bwebapi/rest.h>
#include <bwebapi/testing/BwaTestRequest.h>

int main()
{
    BwaRestService api;
    api.get("/{name}", [](const BwaRestCall& call) -> BwaRestReply {
        return QVariantMap{
            {"said", call.text("name") + ' ' + BWebApiLibInformation::libraryVersion()}};
    });

    const BwaTestReply reply = BwaTestRequest("GET", "/Brindo%20Web%20API").sendTo(api);
    std::cout << BwaJson::parse(reply.body).toMap().value("said").toString() << std::endl;
    return reply.statusCode == 200 ? 0 : 1;
}
