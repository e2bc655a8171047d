// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "TasksApi.h"

#include "testing/BwaTestRequest.h"

#include <gtest/gtest.h>

#include <bwebapi/bwebapi.h>

//! [fixture]
class TasksApiTest : public testing::Test
{
protected:
    // What a client sends as its Authorization after a login.
    QByteArray logIn()
    {
        BwaTestRequest request("POST", "/session");
        request.setBody("application/json", R"({"user": "ann", "password": "tea and biscuits"})");
        const QVariantMap reply = BwaJson::parse(request.sendTo(api.service()).body).toMap();
        return "SESSION-TOKEN " + reply["session"].toByteArray() + ':' +
            reply["token"].toByteArray();
    }

    BwaTestReply add(const QByteArray& json)
    {
        BwaTestRequest request("POST", "/tasks");
        request.setHeader("Authorization", logIn());
        request.setBody("application/json", json);
        return request.sendTo(api.service());
    }

    int argumentCount = 0;
    QCoreApplication application{argumentCount, nullptr}; // for the timers of the sessions
    TasksApi api;
};
//! [fixture]

//! [tests]
TEST_F(TasksApiTest, GivenNoSessionAsksForOne)
{
    const BwaTestReply reply = BwaTestRequest("GET", "/tasks").sendTo(api.service());

    EXPECT_EQ(reply.statusCode, 401);
    EXPECT_EQ(reply.header("WWW-Authenticate"), "SESSION-TOKEN realm=\"tasks\"");
}

TEST_F(TasksApiTest, GivenATitleAddsATask)
{
    const BwaTestReply reply = add(R"({"title": "Buy tea"})");

    EXPECT_EQ(reply.statusCode, 201);
    EXPECT_EQ(reply.header("Location"), "/tasks/1");
    EXPECT_EQ(reply.body, R"({"done":false,"id":1,"title":"Buy tea"})");
}
//! [tests]

TEST_F(TasksApiTest, GivenNoTitleSaysSo)
{
    const BwaTestReply reply = add("{}");

    EXPECT_EQ(reply.statusCode, 422);
    EXPECT_TRUE(reply.body.contains(R"({"detail":"is missing","pointer":"#/title"})"));
}

TEST_F(TasksApiTest, GivenAWrongPasswordRefusesIt)
{
    BwaTestRequest request("POST", "/session");
    request.setBody("application/json", R"({"user": "ann", "password": "coffee"})");

    EXPECT_EQ(request.sendTo(api.service()).statusCode, 403);
}
