// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BwaStringStreaming.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpPlainTextHeader.h"
#include "redis/BwaRedisCookiesFcgiSessionIdentifier.h"
#include "redis/BwaRedisSessionTokenFcgiSessionIdentifier.h"
#include "redis/RedisTest.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "support/ErrorPage.h"
#include "support/QtPrinters.h"
#include "testing/BwaTestRequest.h"

namespace {

class WhoAmI : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        if (const BwaWebSession* const session = authenticateRequest(request)) {
            request->out() << BwaHttpPlainTextHeader() << session->username();
        }
        delete request;
    }

    void processPutMethod(BwaFcgiRequest* request) override
    {
        if (const BwaWebSession* const session = authenticateRequest(request, true)) {
            request->out() << BwaHttpPlainTextHeader() << session->username();
        }
        delete request;
    }
};

// The two ways to present a session.
class BwaRedisIdentifiersTest : public RedisTest
{
protected:
    BwaTestReply byCookies(const Credentials& credentials, const char* method = "GET")
    {
        BwaTestRequest request(method);
        request.setHeader("Cookie",
                          "sid=" + credentials.id.toByteArray() +
                              "; tok=" + credentials.token.toByteArray());
        return request.sendTo(cookiesProcessor);
    }

    BwaTestReply byHeader(const Credentials& credentials, const char* method = "GET")
    {
        BwaTestRequest request(method);
        request.setHeader("Authorization",
                          "SESSION-TOKEN " + credentials.id.toByteArray() + ':' +
                              credentials.token.toByteArray());
        return request.sendTo(headerProcessor);
    }

    RedisServer server;
    BwaRedisSettings settings = settingsFor(server);
    BwaRedisSessions sessions{settings};
    BwaRedisCookiesFcgiSessionIdentifier cookies{&sessions, QStringLiteral("sid"),
                                                 QStringLiteral("tok")};
    BwaRedisSessionTokenFcgiSessionIdentifier header{&sessions, QStringLiteral("notes")};
    WhoAmI cookiesProcessor{&cookies};
    WhoAmI headerProcessor{&header};
    Credentials ours{sessions.create(ann)};
};

const char unavailable[] = "Status: 503 Service Unavailable\nRetry-After: 1\n"
                           "Content-Type: text/plain\n\n"
                           "The sessions cannot be reached. Try again soon.\n";

} // namespace

TEST_F(BwaRedisIdentifiersTest, GivenASessionKnowsTheUser)
{
    EXPECT_EQ(byCookies(ours).body, "ann");
    EXPECT_EQ(byHeader(ours).body, "ann");
}

TEST_F(BwaRedisIdentifiersTest, GivenNoSessionRefusesAsWithoutRedis)
{
    const Credentials nobody;

    EXPECT_EQ(byCookies(nobody).raw, errorPage(403, "Forbidden"));
    EXPECT_EQ(byHeader(nobody).statusCode, 401);
    EXPECT_EQ(byHeader(nobody).header("WWW-Authenticate"), "SESSION-TOKEN, realm=\"notes\"");
}

TEST_F(BwaRedisIdentifiersTest, WhenTheSessionHasEndedRefuses)
{
    sessions.removeSession(ours.id);

    EXPECT_EQ(byCookies(ours).statusCode, 403);
    EXPECT_EQ(byHeader(ours).statusCode, 401);
}

TEST_F(BwaRedisIdentifiersTest, WhenTheTokenHasExpiredOnlyWhoAcceptsThatGetsTheSession)
{
    settings.tokenLifetime = 1;
    settings.removalDelay = 600000;
    BwaRedisSessions brief(settings);
    ours = Credentials(brief.create(ann));
    ASSERT_TRUE(becomesTrue([&] { return find(sessions, ours)->isTokenExpired(); }));

    EXPECT_EQ(byCookies(ours).statusCode, 403);
    EXPECT_EQ(byHeader(ours).statusCode, 401);
    EXPECT_EQ(byCookies(ours, "PUT").body, "ann");
    EXPECT_EQ(byHeader(ours, "PUT").body, "ann");
}

TEST_F(BwaRedisIdentifiersTest, WhenRedisIsAwaySaysSo)
{
    const MessageRecorder silence;
    server.kill();

    EXPECT_EQ(byCookies(ours).raw, unavailable);
    EXPECT_EQ(byHeader(ours).raw, unavailable);
}

TEST_F(BwaRedisIdentifiersTest, WhenRedisIsAwayWhoPresentsNothingIsRefused)
{
    server.kill();

    EXPECT_EQ(byCookies(Credentials()).statusCode, 403);
    EXPECT_EQ(byHeader(Credentials()).statusCode, 401);
}

TEST_F(BwaRedisIdentifiersTest, WhenRedisComesBackRefusesWhatItDoesNotKnow)
{
    const MessageRecorder silence;
    server.kill();
    EXPECT_EQ(byHeader(ours).statusCode, 503);

    server.restart(); // without data

    EXPECT_TRUE(becomesTrue([&] { return byHeader(ours).statusCode == 401; }));
    EXPECT_EQ(byCookies(ours).statusCode, 403);
}

TEST_F(BwaRedisIdentifiersTest, GivenALongerPauseTellsClientsToWaitAsLong)
{
    settings.addresses = QStringList{QStringLiteral("/nowhere")};
    settings.pause = 2500;
    const MessageRecorder silence;
    BwaRedisSessions away(settings);
    BwaRedisSessionTokenFcgiSessionIdentifier identifier(&away, QStringLiteral("notes"));
    WhoAmI processor(&identifier);
    BwaTestRequest request("GET");
    request.setHeader("Authorization",
                      "SESSION-TOKEN " + ours.id.toByteArray() + ':' + ours.token.toByteArray());

    EXPECT_EQ(request.sendTo(processor).header("Retry-After"), "3");
}
