// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestSessions.h"

#include "rest/BwaRestProblem.h"
#include "rest/BwaRestService.h"
#include "support/Application.h"
#include "testing/BwaTestRequest.h"

#include <QJsonDocument>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

/** What a client has kept of a login. */
struct Grant {
    QByteArray session;
    QByteArray token;
};

Grant grantOf(const BwaTestReply& reply)
{
    const QVariantMap json = QJsonDocument::fromJson(reply.body).toVariant().toMap();
    return {json.value(QStringLiteral("session")).toByteArray(),
            json.value(QStringLiteral("token")).toByteArray()};
}

/** A store without sessions that can be out of reach. */
struct FarStore : BwaRestSessionStore {
    explicit FarStore(const bool* isAway)
        : m_isAway(isAway)
    {
    }

    BwaRestGrant create(const BwaRestSession&) override { return none(); }
    BwaRestGrant find(const QUuid&, const QUuid&) override { return none(); }
    BwaRestGrant renew(const QUuid&, const QUuid&) override { return none(); }
    void remove(const QUuid&) override { none(); }
    int tokenLifetime() const override { return 1; }

private:
    BwaRestGrant none() const
    {
        if (*m_isAway) {
            throw BwaRestProblem(503);
        }
        return {};
    }

    const bool* m_isAway; // not owned
};

class BwaRestSessionsTest : public testing::Test
{
protected:
    BwaRestSessionsTest() { use(std::make_unique<BwaRestSessions>(QStringLiteral("a \"realm\""))); }

    void use(std::unique_ptr<BwaRestSessions> used)
    {
        sessions = std::move(used);
        api = std::make_unique<BwaRestService>();
        api->post("/login", [this](const BwaRestCall&) {
            return sessions->login(QStringLiteral("ann"), {QStringLiteral("reader")},
                                   {{QStringLiteral("theme"), QStringLiteral("dark")}});
        });
        api->post("/renew", [this](const BwaRestCall& call) { return sessions->renew(call); });
        api->post("/logout", [this](const BwaRestCall& call) { return sessions->logout(call); });
        api->get("/open", [](const BwaRestCall& call) {
            return BwaRestReply::empty(call.session() ? 500 : 204);
        });
        const auto show = [](const BwaRestCall& call) {
            const BwaRestSession& session = *call.session();
            return BwaRestReply::bytes((session.user + QLatin1Char(' ') +
                                        session.roles.join(QLatin1Char(',')) + QLatin1Char(' ') +
                                        session.data.value(QStringLiteral("theme")).toString())
                                           .toUtf8(),
                                       "text/plain");
        };
        BwaRestGroup& group = api->group("/mine").needs(*sessions);
        group.get("", show);
        group.put("", show);
        group.group("/read").needs(*sessions, QStringLiteral("reader")).get("", show);
        group.group("/admin").needs(*sessions, QStringLiteral("admin")).get("", show);
    }

    Grant login() { return grantOf(BwaTestRequest("POST", "/login").sendTo(*api)); }

    BwaTestReply send(const Grant& grant, const QByteArray& method, const QByteArray& path,
                      const QByteArray& origin = QByteArray())
    {
        BwaTestRequest request(method, path);
        request.setHeader("Authorization", "SESSION-TOKEN " + grant.session + ':' + grant.token);
        request.setHeader("Host", "example.org:8080");
        request.setHeader("Origin", origin);
        return request.sendTo(*api);
    }

    BwaTestReply sendCookies(const QByteArray& cookies)
    {
        BwaTestRequest request("GET", "/mine");
        request.setHeader("Cookie", cookies);
        return request.sendTo(*api);
    }

    Application application;
    std::unique_ptr<BwaRestSessions> sessions;
    std::unique_ptr<BwaRestService> api;
};

} // namespace

TEST_F(BwaRestSessionsTest, GivenALoginSetsCookiesAndTellsTheToken)
{
    const BwaTestReply reply = BwaTestRequest("POST", "/login").sendTo(*api);
    const Grant grant = grantOf(reply);

    EXPECT_EQ(reply.body,
              R"({"expiresIn":900,"roles":["reader"],"session":")" + grant.session +
                  R"(","token":")" + grant.token + R"(","user":"ann"})");
    EXPECT_EQ(reply.headerValues("Set-Cookie"),
              (QList<QByteArray>{
                  "SESSION-ID=" + grant.session + "; Path=/; Secure; HttpOnly; SameSite=Lax",
                  "SESSION-TOKEN=" + grant.token + "; Path=/; Secure; HttpOnly; SameSite=Lax"}));
    EXPECT_EQ(reply.header("Cache-Control"), "no-store");
}

TEST_F(BwaRestSessionsTest, WhenHttpIsAllowedCookiesAreNotSecure)
{
    sessions->allowHttp();

    EXPECT_THAT(BwaTestRequest("POST", "/login").sendTo(*api).header("Set-Cookie").toStdString(),
                testing::Not(HasSubstr("Secure")));
}

TEST_F(BwaRestSessionsTest, GivenHeaderOrCookiesFindsTheSession)
{
    const Grant grant = login();

    EXPECT_EQ(send(grant, "GET", "/mine").body, "ann reader dark");
    EXPECT_EQ(sendCookies("SESSION-ID=" + grant.session + "; SESSION-TOKEN=" + grant.token).body,
              "ann reader dark");
}

TEST_F(BwaRestSessionsTest, GivenAuthorizationForTheWebServerFindsTheSessionByCookies)
{
    const Grant grant = login();
    BwaTestRequest request("GET", "/mine");
    request.setHeader("Authorization", "Basic YTpi");
    request.setHeader("Cookie", "SESSION-ID=" + grant.session + "; SESSION-TOKEN=" + grant.token);

    EXPECT_EQ(request.sendTo(*api).statusCode, 200);
}

TEST_F(BwaRestSessionsTest, WhereNoneIsNeededTheCallHasNone)
{
    EXPECT_EQ(send(login(), "GET", "/open").statusCode, 204);
}

TEST_F(BwaRestSessionsTest, WithoutASessionIsA401WithAChallenge)
{
    const BwaTestReply reply = BwaTestRequest("GET", "/mine").sendTo(*api);

    EXPECT_EQ(reply.raw,
              "Status: 401 Unauthorized\n"
              "WWW-Authenticate: SESSION-TOKEN realm=\"a \\\"realm\\\"\"\n"
              "Content-Type: application/problem+json\n"
              "Content-Length: 37\n"
              "\n"
              R"({"status":401,"title":"Unauthorized"})");
}

TEST_F(BwaRestSessionsTest, GivenWhatProvesNothingIsA401)
{
    const Grant grant = login();
    const Grant other = login();

    EXPECT_EQ(send({grant.session, other.token}, "GET", "/mine").statusCode, 401);
    EXPECT_EQ(send({grant.session, ""}, "GET", "/mine").statusCode, 401);
    EXPECT_EQ(send({"", grant.token}, "GET", "/mine").statusCode, 401);
    EXPECT_EQ(send({"x", "\xff"}, "GET", "/mine").statusCode, 401);
    EXPECT_EQ(
        send({QByteArray(QUuid().toByteArray()), QUuid().toByteArray()}, "GET", "/mine").statusCode,
        401);
    EXPECT_EQ(sendCookies("SESSION-ID=" + grant.session).statusCode, 401);
    EXPECT_EQ(sendCookies("SESSION-TOKEN=" + grant.token).statusCode, 401);
    BwaTestRequest basic("GET", "/mine");
    basic.setHeader("Authorization", "Basic " + grant.session + ':' + grant.token);
    EXPECT_EQ(basic.sendTo(*api).statusCode, 401);
}

TEST_F(BwaRestSessionsTest, GivenRolesLetsThoseInThatHaveThem)
{
    const Grant grant = login();

    EXPECT_EQ(send(grant, "GET", "/mine/read").statusCode, 200);
    EXPECT_EQ(send(grant, "GET", "/mine/admin").body,
              R"({"detail":"This needs another role","status":403,"title":"Forbidden"})");
}

TEST_F(BwaRestSessionsTest, GivenAnUnknownPathOrMethodTellsBefore)
{
    EXPECT_EQ(BwaTestRequest("GET", "/mine/missing").sendTo(*api).statusCode, 404);
    EXPECT_EQ(BwaTestRequest("DELETE", "/mine").sendTo(*api).statusCode, 405);
}

TEST_F(BwaRestSessionsTest, GivenAPreflightLetsItPass)
{
    api->allowOrigins({QStringLiteral("https://other.org")}, true);
    BwaTestRequest request("OPTIONS", "/mine");
    request.setHeader("Origin", "https://other.org");
    request.setHeader("Access-Control-Request-Method", "PUT");

    const BwaTestReply reply = request.sendTo(*api);

    EXPECT_EQ(reply.statusCode, 204);
    EXPECT_EQ(reply.header("Access-Control-Allow-Origin"), "https://other.org");
}

TEST_F(BwaRestSessionsTest, GivenAWriteFromAnotherOriginIsA403)
{
    const Grant grant = login();

    EXPECT_EQ(send(grant, "PUT", "/mine").statusCode, 200);
    EXPECT_EQ(send(grant, "PUT", "/mine", "http://Example.org:8080").statusCode, 200);
    EXPECT_EQ(send(grant, "GET", "/mine", "https://other.org").statusCode, 200);
    for (const char* origin : {"https://other.org", "http://example.org", "null", "example.org",
                               "https://example.org:8080.other.org", "*"}) {
        EXPECT_EQ(send(grant, "PUT", "/mine", origin).statusCode, 403) << origin;
        EXPECT_EQ(send(grant, "POST", "/renew", origin).statusCode, 403) << origin;
        EXPECT_EQ(send(grant, "POST", "/logout", origin).statusCode, 403) << origin;
    }
    EXPECT_EQ(send(grant, "GET", "/mine").statusCode, 200);
}

TEST_F(BwaRestSessionsTest, GivenARenewalFromAnotherOriginTheTokenStays)
{
    const int graceTime = 0; // so that a replaced token is worth nothing
    use(std::make_unique<BwaRestSessions>(QStringLiteral("a"), 900000, graceTime));
    const Grant grant = login();

    EXPECT_EQ(send(grant, "POST", "/renew", "https://other.org").statusCode, 403);

    EXPECT_EQ(send(grant, "GET", "/mine").statusCode, 200);
}

TEST_F(BwaRestSessionsTest, GivenAStoreOutOfReachRefusesWhoPresentsASession)
{
    bool isAway = true;
    const Grant grant = login();
    use(std::make_unique<BwaRestSessions>(QStringLiteral("a"),
                                          std::make_unique<FarStore>(&isAway)));

    EXPECT_EQ(BwaTestRequest("POST", "/login").sendTo(*api).statusCode, 503);
    EXPECT_EQ(send(grant, "GET", "/mine").statusCode, 503);
    EXPECT_EQ(send(grant, "POST", "/renew").statusCode, 503);
    EXPECT_EQ(send(grant, "POST", "/logout").statusCode, 503);
    EXPECT_EQ(send({}, "GET", "/mine").statusCode, 401);
    EXPECT_EQ(send({}, "POST", "/renew").statusCode, 401);
    isAway = false;
    EXPECT_EQ(send(grant, "GET", "/mine").statusCode, 401);
    EXPECT_EQ(send(grant, "POST", "/renew").statusCode, 401);
    EXPECT_EQ(send(grant, "POST", "/logout").statusCode, 204);
}

TEST_F(BwaRestSessionsTest, GivenAStoreThereIsNoManager)
{
    const bool isAway = false;
    BwaRestSessions used(QStringLiteral("a"), std::make_unique<FarStore>(&isAway));

    EXPECT_THROW(used.manager(), std::logic_error);
}

TEST_F(BwaRestSessionsTest, GivenTwoKindsOfSessionsNeedsBoth)
{
    BwaRestSessions others(QStringLiteral("others"));
    BwaRestGroup& group = api->group("/both").needs(*sessions);
    group.group("/first").needs(others).get("", [](const BwaRestCall&) { return QVariantMap(); });

    EXPECT_EQ(send(login(), "GET", "/both/first").statusCode, 401);
}

TEST_F(BwaRestSessionsTest, GivenAnOriginThatIsNamedLetsItWrite)
{
    const Grant grant = login();
    api->allowOrigins({QStringLiteral("https://other.org")}, true);
    EXPECT_EQ(send(grant, "PUT", "/mine", "https://other.org").statusCode, 200);

    api->allowOrigins({QStringLiteral("*")});
    EXPECT_EQ(send(grant, "PUT", "/mine", "https://other.org").statusCode, 403);
}

TEST_F(BwaRestSessionsTest, WhenRenewedTakesBothTokens)
{
    const Grant first = login();

    const Grant second = grantOf(send(first, "POST", "/renew"));

    EXPECT_EQ(second.session, first.session);
    EXPECT_NE(second.token, first.token);
    EXPECT_EQ(send(first, "GET", "/mine").body, "ann reader dark");
    EXPECT_EQ(send(second, "GET", "/mine").body, "ann reader dark");
}

TEST_F(BwaRestSessionsTest, WhenRenewedWithTheTokenBeforeTellsTheCurrentOne)
{
    const Grant first = login();
    const Grant second = grantOf(send(first, "POST", "/renew"));

    EXPECT_EQ(grantOf(send(first, "POST", "/renew")).token, second.token);
}

TEST_F(BwaRestSessionsTest, WhenRenewedTwiceTheFirstTokenIsOver)
{
    const Grant first = login();
    send(grantOf(send(first, "POST", "/renew")), "POST", "/renew");

    EXPECT_EQ(send(first, "GET", "/mine").statusCode, 401);
}

TEST_F(BwaRestSessionsTest, WithoutAGraceTimeTheTokenBeforeIsOver)
{
    use(std::make_unique<BwaRestSessions>(QStringLiteral("a"), 900000, 0));
    const Grant first = login();
    send(first, "POST", "/renew");

    EXPECT_EQ(send(first, "GET", "/mine").statusCode, 401);
}

TEST_F(BwaRestSessionsTest, WhenTheTokenExpiresTheSessionEnds)
{
    use(std::make_unique<BwaRestSessions>(QStringLiteral("a"), 20));
    const Grant grant = login();
    EXPECT_EQ(sessions->manager().sessions(QStringLiteral("ann")).size(), 1);

    runEventLoopUntil(
        [this] { return sessions->manager().sessions(QStringLiteral("ann")).isEmpty(); });

    EXPECT_EQ(send(grant, "GET", "/mine").statusCode, 401);
    EXPECT_EQ(send(grant, "POST", "/renew").statusCode, 401);
}

TEST_F(BwaRestSessionsTest, WhenLoggedOutTheSessionEnds)
{
    const Grant grant = login();

    const BwaTestReply reply = send(grant, "POST", "/logout");

    EXPECT_EQ(reply.statusCode, 204);
    EXPECT_THAT(reply.headerValues("Set-Cookie").value(1).toStdString(),
                MatchesRegex("SESSION-TOKEN=; Max-Age=0; .*"));
    EXPECT_EQ(send(grant, "GET", "/mine").statusCode, 401);
    EXPECT_EQ(send(grant, "POST", "/logout").statusCode, 204);
}

TEST_F(BwaRestSessionsTest, WhenTheManagerRemovesItTheSessionEnds)
{
    const Grant grant = login();

    sessions->manager().removeSessions(QStringLiteral("ann"));

    EXPECT_EQ(send(grant, "GET", "/mine").statusCode, 401);
}

TEST_F(BwaRestSessionsTest, WhenAHandlerLogsOutItsSessionStaysForIt)
{
    api->group("/last").needs(*sessions).post("", [this](const BwaRestCall& call) {
        sessions->logout(call);
        return BwaRestReply::bytes(call.session()->user.toUtf8(), "text/plain");
    });

    EXPECT_EQ(send(login(), "POST", "/last").body, "ann");
}
