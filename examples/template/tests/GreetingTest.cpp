// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Api.h"
#include "testing/BwaTestRequest.h"

#include <gtest/gtest.h>

namespace {

BwaTestReply posted(const QByteArray& body)
{
    Api api;
    BwaTestRequest request("POST", "/greeting");
    request.setBody("application/json", body);
    return request.sendTo(api);
}

} // namespace

TEST(Greeting, GivenANameInTheQueryGreetsByIt)
{
    Api api;

    const BwaTestReply reply = BwaTestRequest("GET", "/greeting?name=Andr%C3%A9").sendTo(api);

    EXPECT_EQ(reply.statusCode, 200);
    EXPECT_EQ(reply.header("Content-Type"), "application/json");
    EXPECT_EQ(reply.body, "{\"greeting\":\"Hello, Andr\xc3\xa9\"}\n");
    EXPECT_EQ(reply.errorText, "");
}

TEST(Greeting, GivenNoNameInTheQueryIsABadRequest)
{
    Api api;

    EXPECT_EQ(BwaTestRequest("GET", "/greeting").sendTo(api).statusCode, 400);
}

TEST(Greeting, GivenANameAsJsonGreetsByIt)
{
    EXPECT_EQ(posted(R"({"name": "Ada"})").body, "{\"greeting\":\"Hello, Ada\"}\n");
}

TEST(Greeting, GivenAnythingElseAsJsonIsABadRequest)
{
    EXPECT_EQ(posted(R"({"name": 1})").statusCode, 400);
    EXPECT_EQ(posted(R"({"name": "Ada")").statusCode, 400);
    EXPECT_EQ(posted(R"(["name", "Ada"])").statusCode, 400);
    EXPECT_EQ(posted("null").statusCode, 400);
    EXPECT_EQ(posted("").statusCode, 400);
}

TEST(Greeting, GivenAFormRefusesItsMediaType)
{
    Api api;
    BwaTestRequest request("POST", "/greeting");
    request.setForm({{"name", "Ada"}});

    EXPECT_EQ(request.sendTo(api).statusCode, 415);
}

TEST(Api, GivenAnUnknownPathHasNothing)
{
    Api api;

    EXPECT_EQ(BwaTestRequest("GET", "/other").sendTo(api).statusCode, 404);
}
