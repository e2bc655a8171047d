// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "TasksApi.h"

#include "json/BwaJson.h"
#include "testing/BwaTestRequest.h"

#include <QCoreApplication>
#include <QVariant>

#include <gtest/gtest.h>

//! [fixture]
class TasksApiTest : public testing::Test
{
protected:
    // What a client sends as its Authorization after a login.
    QByteArray logIn()
    {
        BwaTestRequest request("POST", "/session");
        request.setBody("application/json", R"({"user": "ann", "password": "tea and biscuits"})");
        const QVariantMap reply = BwaJson::parse(request.sendTo(api.root()).body).toMap();
        return reply.value(QStringLiteral("authorization")).toString().toLatin1();
    }

    int argumentCount = 0;
    QCoreApplication application{argumentCount, nullptr}; // for the timers of the sessions
    TasksApi api;
};
//! [fixture]

//! [tests]
TEST_F(TasksApiTest, GivenNoSessionAsksForOne)
{
    const BwaTestReply reply = BwaTestRequest("GET", "/tasks").sendTo(api.root());

    EXPECT_EQ(reply.statusCode, 401);
    EXPECT_EQ(reply.header("WWW-Authenticate"), "SESSION-TOKEN, realm=\"tasks\"");
}

TEST_F(TasksApiTest, GivenATitleAddsATask)
{
    BwaTestRequest request("POST", "/tasks");
    request.setHeader("Authorization", logIn());
    request.setBody("application/json", R"({"title": "Buy tea"})");

    const BwaTestReply reply = request.sendTo(api.root());

    EXPECT_EQ(reply.statusCode, 201);
    EXPECT_EQ(reply.body, "{\"done\":false,\"id\":1,\"title\":\"Buy tea\"}\n");
}
//! [tests]

TEST_F(TasksApiTest, GivenNoTitleIsABadRequest)
{
    BwaTestRequest request("POST", "/tasks");
    request.setHeader("Authorization", logIn());
    request.setBody("application/json", "{}");

    EXPECT_EQ(request.sendTo(api.root()).statusCode, 400);
}
