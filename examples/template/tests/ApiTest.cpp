// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Api.h"

#include "testing/BwaTestRequest.h"

#include <gtest/gtest.h>

namespace {

BwaTestReply asked(const QByteArray& target)
{
    Api api;
    return BwaTestRequest("GET", target).sendTo(api);
}

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
    const BwaTestReply reply = asked("/greeting?name=Andr%C3%A9");

    EXPECT_EQ(reply.statusCode, 200);
    EXPECT_EQ(reply.header("Content-Type"), "application/json");
    EXPECT_EQ(reply.body, "{\"greeting\":\"Hello, Andr\xc3\xa9\"}");
    EXPECT_EQ(reply.errorText, "");
}

TEST(Greeting, GivenNoNameInTheQuerySaysSo)
{
    const BwaTestReply reply = asked("/greeting");

    EXPECT_EQ(reply.statusCode, 422);
    EXPECT_EQ(reply.header("Content-Type"), "application/problem+json");
    EXPECT_TRUE(reply.body.contains(R"({"detail":"is missing","pointer":"#/name"})"));
}

TEST(Greeting, GivenANameAsJsonGreetsByIt)
{
    EXPECT_EQ(posted(R"({"name": "Ada"})").body, R"({"greeting":"Hello, Ada"})");
}

TEST(Greeting, GivenAnythingElseAsJsonRefusesIt)
{
    EXPECT_EQ(posted(R"({"name": 1})").statusCode, 422);
    EXPECT_EQ(posted(R"({"name": ""})").statusCode, 422);
    EXPECT_EQ(posted(R"({"name": "Ada", "age": 36})").statusCode, 422);
    EXPECT_EQ(posted(R"(["name", "Ada"])").statusCode, 422);
    EXPECT_EQ(posted(R"({"name": "Ada")").statusCode, 400);
    EXPECT_EQ(posted("").statusCode, 400);
    EXPECT_EQ(posted('"' + QByteArray(64 * 1024, 'a') + '"').statusCode, 413);
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
    EXPECT_EQ(asked("/other").statusCode, 404);
}
