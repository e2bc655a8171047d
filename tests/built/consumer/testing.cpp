// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Says the same as the consumer, through a request that is sent without a web server.

#include "BWebApiLibInformation.h"
#include "BwaStringStreaming.h"
#include "fcgi/BwaFcgiRequest.h"
#include "testing/BwaTestRequest.h"

#include <iostream>

int main()
{
    const BwaTestReply reply = BwaTestRequest("GET").sendTo([](BwaFcgiRequest* request) {
        request->out() << "Content-Type: text/plain\n\n"
                       << BWebApiLibInformation::libraryName() << ' '
                       << BWebApiLibInformation::libraryVersion();
        delete request;
    });
    std::cout << reply.body.constData() << std::endl;
    return reply.statusCode == 200 ? 0 : 1;
}
