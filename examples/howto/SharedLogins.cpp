// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "redis/BwaRedisRestStore.h"
#include "redis/RedisServer.h"
#include "rest/BwaRestProblem.h"
#include "rest/BwaRestService.h"
#include "rest/BwaRestSessions.h"
#include "testing/BwaTestRequest.h"

#include <QCoreApplication>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace {

BwaRedisSettings patientSettings(const QString& redis)
{
    BwaRedisSettings settings;
    settings.addresses = QStringList{redis};
    settings.timeout = 10000; // a machine that runs tests may be slower than one that serves
    return settings;
}

// What each process of the application has.
class Notes
{
public:
    explicit Notes(const BwaRedisSettings& settings)
        : m_shared(settings)
    {
        service.post("/login", [this](const BwaRestCall& call) {
            const QString user = call.json().toMap().value(QStringLiteral("user")).toString();
            return m_sessions.login(user,
                                    {QStringLiteral("admin")}); // the password is checked first
        });
        service.post("/logout",
                     [this](const BwaRestCall& call) { return m_sessions.logout(call); });
        service.get("/version", [](const BwaRestCall&) { return QVariantMap(); });
        BwaRestGroup& users = service.group("/users").needs(m_sessions, QStringLiteral("admin"));
        //! [remove]
        users.remove("/{name}/sessions", [this](const BwaRestCall& call) {
            if (!m_shared.removeSessions(call.text("name"))) {
                throw BwaRestProblem(BwaRestProblem(503).header("Retry-After", "1"));
            }
            return BwaRestReply::empty();
        });
        //! [remove]
    }

private:
    //! [sessions]
    BwaRedisSessions m_shared; // must outlive the sessions
    BwaRestSessions m_sessions{QStringLiteral("notes"),
                               std::make_unique<BwaRedisRestStore>(&m_shared)};
    //! [sessions]

public:
    BwaRestService service;
};

class HowToShareLogins : public testing::Test
{
protected:
    BwaTestReply login(Notes& notes, const QByteArray& user)
    {
        BwaTestRequest request("POST", "/login");
        request.setBody("application/json", R"({"user":")" + user + R"("})");
        return request.sendTo(notes.service);
    }

    BwaTestReply send(Notes& notes, const QByteArray& method, const QByteArray& path)
    {
        BwaTestRequest request(method, path);
        request.setHeader("Authorization", authorization);
        return request.sendTo(notes.service);
    }

    // The value of an Authorization header.
    QByteArray grantedBy(const BwaTestReply& reply)
    {
        const QVariantMap json = QJsonDocument::fromJson(reply.body).toVariant().toMap();
        return "SESSION-TOKEN " + json.value(QStringLiteral("session")).toByteArray() + ':' +
            json.value(QStringLiteral("token")).toByteArray();
    }

    int argc = 1;
    char name[5] = "test";
    char* argv[2] = {name, nullptr};
    QCoreApplication application = {argc, argv};
    RedisServer redis;
    Notes here{patientSettings(redis.path())};
    Notes there{patientSettings(redis.path())};
    QByteArray authorization = grantedBy(login(here, "ann"));
};

} // namespace

TEST_F(HowToShareLogins, GivenALoginHereLetsTheUserInThere)
{
    EXPECT_EQ(send(there, "DELETE", "/users/bob/sessions").statusCode, 204);
}

TEST_F(HowToShareLogins, WhenLoggedOutThereRefusesHere)
{
    EXPECT_EQ(send(there, "POST", "/logout").statusCode, 204);

    EXPECT_EQ(send(here, "DELETE", "/users/bob/sessions").statusCode, 401);
}

TEST_F(HowToShareLogins, WhenTheSessionsOfAUserAreRemovedThereRefusesHere)
{
    send(there, "DELETE", "/users/ann/sessions");

    EXPECT_EQ(send(here, "DELETE", "/users/bob/sessions").statusCode, 401);
}

TEST_F(HowToShareLogins, WhenRedisIsAwayAsksClientsToComeAgain)
{
    redis.kill();

    EXPECT_EQ(send(here, "DELETE", "/users/bob/sessions").header("Retry-After"), "1");
    EXPECT_EQ(login(here, "ann").statusCode, 503);
    EXPECT_EQ(send(here, "POST", "/logout").statusCode, 503);
    EXPECT_EQ(send(here, "GET", "/version").statusCode, 200);
}
