// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "EchoProcessor.h"

#include "testing/BwaTestRequest.h"

#include <gmock/gmock.h>

TEST(EchoProcessor, ShowsNoCookieThatScriptsMustNotRead)
{
    EchoProcessor processor(nullptr);
    BwaTestRequest request("GET", "/echo?tea=green");
    request.setHeader("Cookie",
                      "showcase-session={1}; theme=dark; __Host-showcase-token={2}; PHPSESSID=3");

    const BwaTestReply reply = request.sendTo(processor);

    EXPECT_EQ(reply.body,
              R"({"cookies":[{"name":"theme","value":"dark"}],"query":{"tea":["green"]}})"
              "\n");
}
