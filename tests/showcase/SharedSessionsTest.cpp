// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Sessions.h"
#include "ShowcaseFixture.h"
#include "redis/RedisServer.h"

namespace {

// Two processes would have the same database and the same Redis, as these two have.
class SharedSessionsTest : public ShowcaseFixture
{
protected:
    SharedSessionsTest()
    {
        settings.sessions.redisAddresses = QStringList{redis.path()};
        settings.sessions.redisTimeout = 10000; // a busy machine may be slower than one that serves
        start();
        other.emplace(settings);
    }

    int statusThere(const QByteArray& method)
    {
        BwaTestRequest request(method, "/session");
        request.setHeader("Authorization", authorization);
        return request.sendTo(other->service()).statusCode;
    }

    RedisServer redis;
    std::optional<Showcase> other;
};

} // namespace

TEST_F(SharedSessionsTest, GivenALoginHereLetsTheUserInThere)
{
    authorization = logIn();

    EXPECT_EQ(statusThere("GET"), 200);
}

TEST_F(SharedSessionsTest, WhenLoggedOutThereRefusesHere)
{
    authorization = logIn();

    EXPECT_EQ(statusThere("DELETE"), 204);

    EXPECT_EQ(statusOf("GET", "/session"), 401);
}

TEST_F(SharedSessionsTest, WhenRedisIsAwayAsksClientsToComeAgain)
{
    authorization = logIn();
    redis.kill();

    EXPECT_EQ(send("GET", "/notes").header("Retry-After"), "1");
    EXPECT_EQ(statusOf(loginOf("demo", "tea")), 503);
    EXPECT_EQ(statusOf("GET", "/echo"), 200);
}

TEST_F(SharedSessionsTest, GivenMoreReplicasThanThereAreRefusesLogins)
{
    settings.sessions.redisReplicas = 1;
    start();

    EXPECT_EQ(statusOf(loginOf("demo", "tea")), 503);
}
