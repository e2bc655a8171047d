// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "redis/BwaRedisRestStore.h"

#include "redis/RedisTest.h"
#include "rest/BwaRestService.h"
#include "rest/BwaRestSessions.h"
#include "support/QtPrinters.h"
#include "testing/BwaTestRequest.h"

#include <QJsonDocument>

#include <gmock/gmock.h>

#include <stdexcept>

using testing::HasSubstr;

namespace {

// What one of several processes has.
struct Process {
    explicit Process(const BwaRedisSettings& settings)
        : shared(settings)
    {
        api.post("/login", [this](const BwaRestCall&) {
            return sessions.login(QStringLiteral("ann"), {QStringLiteral("reader")},
                                  {{QStringLiteral("theme"), QStringLiteral("dark")}});
        });
        api.post("/renew", [this](const BwaRestCall& call) { return sessions.renew(call); });
        api.post("/logout", [this](const BwaRestCall& call) { return sessions.logout(call); });
        BwaRestGroup& group = api.group("/mine").needs(sessions);
        const auto show = [](const BwaRestCall& call) {
            const BwaRestSession& session = *call.session();
            return QVariantList{session.user, session.roles, session.data};
        };
        group.get("", show);
        group.put("", show);
        group.group("/read").needs(sessions, QStringLiteral("reader")).get("", show);
        group.group("/admin").needs(sessions, QStringLiteral("admin")).get("", show);
    }

    BwaRedisSessions shared;
    BwaRestSessions sessions{QStringLiteral("notes"), std::make_unique<BwaRedisRestStore>(&shared)};
    BwaRestService api;
};

class BwaRedisRestStoreTest : public RedisTest
{
protected:
    static QVariantMap jsonOf(const BwaTestReply& reply)
    {
        return QJsonDocument::fromJson(reply.body).toVariant().toMap();
    }

    static QByteArray authorizationOf(const BwaTestReply& reply)
    {
        return "SESSION-TOKEN " + jsonOf(reply).value(QStringLiteral("session")).toByteArray() +
            ':' + jsonOf(reply).value(QStringLiteral("token")).toByteArray();
    }

    static QByteArray login(Process& process)
    {
        return authorizationOf(BwaTestRequest("POST", "/login").sendTo(process.api));
    }

    static BwaTestReply send(Process& process, const QByteArray& authorization,
                             const QByteArray& method, const QByteArray& path,
                             const QByteArray& origin = QByteArray())
    {
        BwaTestRequest request(method, path);
        request.setHeader("Authorization", authorization);
        request.setHeader("Host", "example.org");
        request.setHeader("Origin", origin);
        return request.sendTo(process.api);
    }

    RedisServer server;
    BwaRedisSettings settings = settingsFor(server);
    Process here{settings};
    Process there{settings};
};

const char annsSession[] = R"(["ann",["reader"],{"theme":"dark"}])";

} // namespace

TEST_F(BwaRedisRestStoreTest, GivenALoginHereRolesAndDataAreKnownThere)
{
    const QByteArray ours = login(here);

    EXPECT_EQ(send(there, ours, "GET", "/mine").body, annsSession);
    EXPECT_EQ(send(there, ours, "GET", "/mine/read").body, annsSession);
    EXPECT_EQ(send(there, ours, "GET", "/mine/admin").statusCode, 403);
}

TEST_F(BwaRedisRestStoreTest, WhenLoggingInTellsTheLifetimeOfTheSettings)
{
    settings.tokenLifetime = 61000;
    Process process(settings);

    const BwaTestReply reply = BwaTestRequest("POST", "/login").sendTo(process.api);

    EXPECT_EQ(jsonOf(reply).value(QStringLiteral("expiresIn")), 61);
    EXPECT_EQ(jsonOf(reply).value(QStringLiteral("roles")), QVariantList{QStringLiteral("reader")});
}

TEST_F(BwaRedisRestStoreTest, GivenNoSessionOrAWrongTokenIsA401)
{
    const QByteArray ours = login(here);
    const QByteArray wrong = ours.left(ours.indexOf(':')) + ":11111111-1111-4111-8111-111111111111";

    for (const QByteArray& authorization : {QByteArray(), QByteArray("SESSION-TOKEN :"), wrong}) {
        EXPECT_EQ(send(there, authorization, "GET", "/mine").statusCode, 401);
        EXPECT_EQ(send(there, authorization, "POST", "/renew").statusCode, 401);
        EXPECT_EQ(send(there, authorization, "POST", "/logout").statusCode, 204);
    }
    EXPECT_EQ(send(here, ours, "GET", "/mine").statusCode, 200);
}

TEST_F(BwaRedisRestStoreTest, WhenRenewedThereTheNewTokenAndForAWhileTheOldOneAreTakenHere)
{
    const QByteArray old = login(here);

    const QByteArray renewed = authorizationOf(send(there, old, "POST", "/renew"));

    EXPECT_NE(renewed, old);
    EXPECT_EQ(send(here, renewed, "GET", "/mine").body, annsSession);
    EXPECT_EQ(send(here, old, "GET", "/mine").body, annsSession);
    EXPECT_EQ(authorizationOf(send(here, old, "POST", "/renew")), renewed);
}

TEST_F(BwaRedisRestStoreTest, GivenATokenThatHasExpiredIsA401ThoughItCouldBeRenewedElsewhere)
{
    settings.tokenLifetime = 1;
    settings.removalDelay = 600000;
    Process brief(settings);
    const QByteArray ours = login(brief);

    EXPECT_TRUE(becomesTrue([&] { return send(there, ours, "GET", "/mine").statusCode == 401; }));
    EXPECT_EQ(send(there, ours, "POST", "/renew").statusCode, 401);
}

TEST_F(BwaRedisRestStoreTest, WhenLoggedOutThereIsRefusedHere)
{
    const QByteArray ours = login(here);

    EXPECT_EQ(send(there, ours, "POST", "/logout").statusCode, 204);

    EXPECT_EQ(send(here, ours, "GET", "/mine").statusCode, 401);
}

TEST_F(BwaRedisRestStoreTest, GivenCookiesKnowsTheUser)
{
    const QVariantMap json = jsonOf(BwaTestRequest("POST", "/login").sendTo(here.api));
    BwaTestRequest request("GET", "/mine");
    request.setHeader("Cookie",
                      "SESSION-ID=" + json.value(QStringLiteral("session")).toByteArray() +
                          "; SESSION-TOKEN=" + json.value(QStringLiteral("token")).toByteArray());

    EXPECT_EQ(request.sendTo(there.api).body, annsSession);
}

TEST_F(BwaRedisRestStoreTest, GivenDataThatIsNoJsonTheLoginFails)
{
    here.api.post("/odd", [this](const BwaRestCall&) {
        return here.sessions.login(ann, {}, {{ann, QVariant::fromValue(QUuid::createUuid())}});
    });

    EXPECT_EQ(BwaTestRequest("POST", "/odd").sendTo(here.api).statusCode, 500);
}

TEST_F(BwaRedisRestStoreTest, WhenTheMemoryOfRedisIsFullRefusesWhatWouldTakeSome)
{
    const QByteArray ours = login(here);
    server.ask({"CONFIG", "SET", "maxmemory", "1"});

    EXPECT_EQ(send(here, ours, "GET", "/mine").statusCode, 200);
    EXPECT_EQ(send(here, ours, "POST", "/renew").statusCode, 503);
    EXPECT_EQ(BwaTestRequest("POST", "/login").sendTo(here.api).statusCode, 503);
    EXPECT_EQ(send(here, ours, "POST", "/logout").statusCode, 204);
}

TEST_F(BwaRedisRestStoreTest, WhenGroupsNeedTheSessionTwiceAsksRedisOnce)
{
    const QByteArray ours = login(here);
    send(here, ours, "GET", "/mine/read"); // has Redis know the script
    server.ask({"CONFIG", "RESETSTAT"});

    EXPECT_EQ(send(here, ours, "GET", "/mine/read").statusCode, 200);
    EXPECT_EQ(send(here, QByteArray(), "GET", "/mine/read").statusCode, 401);

    EXPECT_THAT(server.ask({"INFO", "commandstats"}).toStdString(),
                HasSubstr("cmdstat_evalsha:calls=1,"));
}

TEST_F(BwaRedisRestStoreTest, WhenRedisIsAwayIsA503ForWhoPresentsASession)
{
    const QByteArray ours = login(here);
    server.kill();

    const BwaTestReply reply = send(here, ours, "GET", "/mine");

    EXPECT_EQ(reply.statusCode, 503);
    EXPECT_EQ(reply.header("Retry-After"), "1");
    EXPECT_EQ(reply.header("Content-Type"), "application/problem+json");
    EXPECT_EQ(reply.body,
              R"({"detail":"The sessions cannot be reached","status":503,)"
              R"("title":"Service Unavailable"})");
    EXPECT_EQ(BwaTestRequest("POST", "/login").sendTo(here.api).statusCode, 503);
    EXPECT_EQ(send(here, ours, "POST", "/renew").statusCode, 503);
    EXPECT_EQ(send(here, ours, "POST", "/logout").statusCode, 503);
    EXPECT_EQ(send(here, QByteArray(), "GET", "/mine").statusCode, 401);
}

TEST_F(BwaRedisRestStoreTest, HasNoManager)
{
    EXPECT_THROW(here.sessions.manager(), std::logic_error);
}
