// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Login.h"

#include "ShowcaseFixture.h"

#include <gmock/gmock.h>

namespace {

class LoginTest : public ShowcaseFixture
{
protected:
    // One wrong password for each of 60 accounts, from these addresses in turn.
    void guessSixtyTimes(const QList<QByteArray>& addresses)
    {
        for (int i = 0; i < 60; ++i) {
            const QByteArray user = "user " + QByteArray::number(i);
            addAccount(user); // whose hash is cheap
            EXPECT_EQ(statusOf(loginOf(user, "coffee", addresses.at(i % addresses.size()))), 403);
        }
    }

    // To a login of demo while so many others have begun and are not answered.
    BwaTestReply replyAmong(int others)
    {
        if (others == 0) {
            return send(loginOf("demo", "tea"));
        }
        BwaTestReply reply;
        const QByteArray user = "nobody " + QByteArray::number(others);
        BwaTestRequest login = loginOf(user, "tea");
        login.setTimeout(60000); // a hash takes its time
        login.sendTo([&](BwaFcgiRequest* request) {
            showcase->service().processRequest(request);
            reply = replyAmong(others - 1);
        });
        return reply;
    }
};

} // namespace

TEST_F(LoginTest, GivenTheRightPasswordBeginsASession)
{
    authorization = logIn();

    EXPECT_EQ(send("GET", "/session").body, R"({"user":"demo"})");
}

TEST_F(LoginTest, GivenAWrongPasswordOrUserIsRefused)
{
    EXPECT_EQ(send(loginOf("demo", "coffee")).body,
              R"({"detail":"User or password is wrong","status":403,"title":"Forbidden"})");
    EXPECT_EQ(statusOf(loginOf("nobody", "tea")), 403);
}

TEST_F(LoginTest, GivenALongNameOrPasswordIsRefused)
{
    EXPECT_EQ(statusOf(loginOf(QByteArray(101, 'a'), "tea")), 422);
    EXPECT_EQ(statusOf(loginOf("demo", QByteArray(101, 'a'))), 422);
}

TEST_F(LoginTest, GivenTooManyWrongPasswordsRefusesTheAccountAndNoOther)
{
    for (int i = 0; i < 20; ++i) {
        const QByteArray address = "192.0.2." + QByteArray::number(i);
        EXPECT_EQ(statusOf(loginOf("demo", "coffee", address)), 403);
    }

    const BwaTestReply refusal = send(loginOf("demo", "tea", "192.0.2.100"));
    EXPECT_EQ(refusal.statusCode, 429);
    EXPECT_EQ(refusal.header("Retry-After"), "60");
    EXPECT_EQ(statusOf(loginOf("guest", "tea", "192.0.2.100")), 200);
}

TEST_F(LoginTest, GivenTooManyWrongPasswordsRefusesTheAddressAndNoOther)
{
    guessSixtyTimes({"192.0.2.1"});

    EXPECT_EQ(statusOf(loginOf("demo", "tea")), 429);
    EXPECT_EQ(statusOf(loginOf("demo", "tea", "192.0.2.100")), 200);
}

TEST_F(LoginTest, GivenAddressesOfOneIpv6NetworkCountsThemTogether)
{
    guessSixtyTimes({"2001:db8::1", "2001:db8::2:0:0:3"});

    EXPECT_EQ(statusOf(loginOf("demo", "tea", "2001:db8::4")), 429);
    EXPECT_EQ(statusOf(loginOf("demo", "tea", "2001:db8:0:1::4")), 200);
}

TEST_F(LoginTest, GivenTheRightPasswordNothingIsCounted)
{
    for (int i = 0; i < 61; ++i) {
        EXPECT_EQ(statusOf(loginOf("demo", "tea")), 200);
    }
}

TEST_F(LoginTest, GivenASessionOfTheSameClientEndsIt)
{
    authorization = logIn();
    BwaTestRequest request = loginOf("demo", "tea");
    request.setHeader("Authorization", authorization);

    EXPECT_EQ(statusOf(request), 200);

    EXPECT_EQ(statusOf("GET", "/session"), 401);
}

TEST_F(LoginTest, GivenAPageOfAnotherSiteIsRefused)
{
    BwaTestRequest request = loginOf("demo", "tea");
    request.setHeader("Host", "example.org");
    request.setHeader("Origin", "https://evil.example");

    EXPECT_EQ(statusOf(request), 403);
}

// One is checked and sixteen wait; the others are there in case some have been checked already.
TEST_F(LoginTest, WhenTooManyWaitIsRefused)
{
    const BwaTestReply refusal = replyAmong(30);

    EXPECT_EQ(refusal.statusCode, 503);
    EXPECT_FALSE(refusal.header("Retry-After").isEmpty());
}

TEST_F(LoginTest, WhenItsLongestAgeIsReachedTheSessionEndsWhateverItsToken)
{
    settings.sessions.longestAge = 0;
    start();
    authorization = logIn();

    const BwaTestReply refusal = send("PUT", "/session");

    EXPECT_EQ(refusal.statusCode, 401);
    EXPECT_EQ(refusal.header("WWW-Authenticate"), "SESSION-TOKEN realm=\"showcase\"");
    EXPECT_EQ(refusal.body,
              R"({"detail":"The session is too old","status":401,"title":"Unauthorized"})");
    EXPECT_EQ(send("GET", "/session").body, R"({"status":401,"title":"Unauthorized"})");
}

TEST_F(LoginTest, GivenNoOtherWordSetsCookiesForHttpsOnly)
{
    const QList<QByteArray> cookies = send(loginOf("demo", "tea")).headerValues("Set-Cookie");

    EXPECT_THAT(cookies, testing::Each(testing::Truly([](const QByteArray& cookie) {
                    return cookie.contains("; Secure") && cookie.contains("; HttpOnly");
                })));
    EXPECT_EQ(cookies.size(), 2);
}

TEST_F(LoginTest, WhenHttpIsAllowedSetsCookiesForItToo)
{
    settings.sessions.allowsHttp = true;
    start();

    EXPECT_FALSE(send(loginOf("demo", "tea")).header("Set-Cookie").contains("Secure"));
}
