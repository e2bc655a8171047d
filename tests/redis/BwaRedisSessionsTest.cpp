// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "redis/BwaRedisSessions.h"

#include "redis/RedisTest.h"
#include "support/QtPrinters.h"

#include <QDate>
#include <QPointer>

#include <gmock/gmock.h>

#include <stdexcept>

namespace {

// One Redis, and two processes' worth of sessions.
class BwaRedisSessionsTest : public RedisTest
{
protected:
    BwaRedisSessionsTest() { renewStores(); }

    // Has the settings take effect.
    void renewStores()
    {
        here = std::make_unique<BwaRedisSessions>(settings);
        there = std::make_unique<BwaRedisSessions>(settings);
    }

    RedisServer server;
    BwaRedisSettings settings = settingsFor(server);
    std::unique_ptr<BwaRedisSessions> here;
    std::unique_ptr<BwaRedisSessions> there;
};

QByteArray allValues(const RedisServer& server)
{
    QByteArray values;
    for (const QByteArray& key : server.ask({"KEYS", "*"}).split(' ')) {
        const QByteArray type = server.ask({"TYPE", key});
        values += key + ' ' + server.ask({type == "hash" ? "HGETALL" : "GET", key}) + '\n';
    }
    return values;
}

} // namespace

TEST_F(BwaRedisSessionsTest, WhenCreatedEveryProcessFindsIt)
{
    const Credentials ours(here->create(ann, {QStringLiteral("admin")},
                                        {{QStringLiteral("theme"), QStringLiteral("dark")}}));

    const BwaRedisSession* const session = find(*there, ours);

    ASSERT_NE(session, nullptr);
    EXPECT_EQ(session->sessionId(), ours.id);
    EXPECT_EQ(session->token(), ours.token);
    EXPECT_EQ(session->username(), ann);
    EXPECT_FALSE(session->isTokenExpired());
    EXPECT_EQ(session->roles(), QStringList{QStringLiteral("admin")});
    EXPECT_EQ(session->data(), (QVariantMap{{QStringLiteral("theme"), QStringLiteral("dark")}}));
}

TEST_F(BwaRedisSessionsTest, WhenCreatedShowsWhatItWasGiven)
{
    const BwaRedisSession* const session =
        here->create(ann, {QStringLiteral("admin")}, {{QStringLiteral("a"), true}});

    EXPECT_EQ(session->username(), ann);
    EXPECT_FALSE(session->isTokenExpired());
    EXPECT_EQ(session->roles(), QStringList{QStringLiteral("admin")});
    EXPECT_EQ(session->data(), (QVariantMap{{QStringLiteral("a"), true}}));
    EXPECT_TRUE(here->hasAnswered());
}

TEST_F(BwaRedisSessionsTest, GivenNoRolesAndDataHasNone)
{
    const Credentials ours(here->create(QStringLiteral("\u00e4\u20ac b")));

    const BwaRedisSession* const session = find(*there, ours);

    EXPECT_EQ(session->username(), QStringLiteral("\u00e4\u20ac b"));
    EXPECT_TRUE(session->roles().isEmpty());
    EXPECT_TRUE(session->data().isEmpty());
}

TEST_F(BwaRedisSessionsTest, GivenDataThatIsNoJsonThrows)
{
    EXPECT_THROW(here->create(ann, {}, {{QStringLiteral("a"), QDate(2026, 1, 1)}}),
                 std::invalid_argument);
}

TEST_F(BwaRedisSessionsTest, GivenAnythingElseFindsNone)
{
    const Credentials ours(here->create(ann));
    const Credentials others(here->create(bob));

    EXPECT_EQ(there->find(ours.id, others.token), nullptr);
    EXPECT_EQ(there->find(others.id, ours.token), nullptr);
    EXPECT_EQ(there->find(QUuid::createUuid(), ours.token), nullptr);
    EXPECT_EQ(there->find(ours.id, QUuid()), nullptr);
    EXPECT_EQ(there->find(QUuid(), QUuid()), nullptr);
    EXPECT_TRUE(there->hasAnswered());
}

TEST_F(BwaRedisSessionsTest, WhenRenewedBothTokensCountForTheGraceTime)
{
    const Credentials old(here->create(ann, {QStringLiteral("admin")}));

    const BwaRedisSession* const renewed = there->renew(find(*there, old));

    ASSERT_NE(renewed, nullptr);
    EXPECT_EQ(renewed->sessionId(), old.id);
    EXPECT_NE(renewed->token(), old.token);
    EXPECT_EQ(renewed->token().version(), QUuid::Random);
    EXPECT_EQ(renewed->username(), ann);
    EXPECT_EQ(renewed->roles(), QStringList{QStringLiteral("admin")});
    EXPECT_NE(find(*here, old), nullptr);
    EXPECT_NE(find(*here, Credentials(renewed)), nullptr);
}

TEST_F(BwaRedisSessionsTest, WhenTheGraceTimeIsOverTheOldTokenDoesNotCount)
{
    settings.graceTime = 20;
    renewStores();
    const Credentials old(here->create(ann));
    const Credentials renewed(here->renew(find(*here, old)));

    EXPECT_TRUE(becomesTrue([&] { return !find(*there, old); }));

    EXPECT_TRUE(there->hasAnswered());
    EXPECT_NE(find(*there, renewed), nullptr);
}

TEST_F(BwaRedisSessionsTest, WhenTwoRenewAtOnceBothGetTheSameToken)
{
    const Credentials old(here->create(ann));
    const BwaRedisSession* const first = find(*here, old);
    const BwaRedisSession* const second = find(*there, old);

    const Credentials firstRenewed(here->renew(first));
    const Credentials secondRenewed(there->renew(second));

    EXPECT_EQ(firstRenewed.token, secondRenewed.token);
    EXPECT_NE(find(*here, firstRenewed), nullptr);
}

TEST_F(BwaRedisSessionsTest, WhenRenewedTwiceTheFirstTokenDoesNotCount)
{
    const Credentials first(here->create(ann));
    const Credentials second(here->renew(find(*here, first)));
    const Credentials third(here->renew(find(*here, second)));

    EXPECT_EQ(find(*there, first), nullptr);
    EXPECT_NE(find(*there, second), nullptr);
    EXPECT_NE(find(*there, third), nullptr);
}

TEST_F(BwaRedisSessionsTest, WhenTheSessionHasEndedIsNotRenewed)
{
    BwaRedisSession* const session = here->create(ann);
    there->removeSession(session->sessionId());

    EXPECT_EQ(here->renew(session), nullptr);

    EXPECT_TRUE(here->hasAnswered());
}

TEST_F(BwaRedisSessionsTest, WhenTheTokenExpiresTheSessionCanBeRenewed)
{
    settings.tokenLifetime = 1;
    settings.removalDelay = 600000;
    renewStores();
    const Credentials old(here->create(ann));
    ASSERT_TRUE(becomesTrue([&] { return find(*here, old)->isTokenExpired(); }));
    settings.tokenLifetime = 600000;
    renewStores();

    const Credentials renewed(there->renew(find(*there, old)));

    ASSERT_NE(find(*here, renewed), nullptr);
    EXPECT_FALSE(find(*here, renewed)->isTokenExpired());
}

TEST_F(BwaRedisSessionsTest, WhenTheRemovalDelayIsOverNothingIsLeftButTheWordForAll)
{
    settings.tokenLifetime = 10;
    settings.removalDelay = 10;
    renewStores();
    const Credentials ours(here->create(ann));

    EXPECT_TRUE(becomesTrue([&] { return !find(*there, ours); }));

    EXPECT_TRUE(there->hasAnswered());
    EXPECT_TRUE(becomesTrue([&] { return server.ask({"KEYS", "*"}) == "bwebapi:all"; }));
}

// A login with a short life must not end those of the same user with a longer one.
TEST_F(BwaRedisSessionsTest, WhenALaterSessionExpiresTheEarlierOnesLive)
{
    const Credentials longer(here->create(ann));
    settings.tokenLifetime = 10;
    BwaRedisSessions brief(settings);
    const Credentials shorter(brief.create(ann));

    EXPECT_TRUE(becomesTrue([&] { return !find(brief, shorter); }));

    EXPECT_NE(find(*there, longer), nullptr);
}

TEST_F(BwaRedisSessionsTest, WhenRenewedTheUserLivesAsLong)
{
    settings.tokenLifetime = 100000;
    renewStores();
    const Credentials old(here->create(ann));
    settings.tokenLifetime = 600000;
    renewStores();
    const Credentials renewed(here->renew(find(*here, old)));

    EXPECT_GT(server.ask({"PTTL", "bwebapi:user:ann"}).toLongLong(), 300000);
    EXPECT_NE(find(*there, renewed), nullptr);
}

TEST_F(BwaRedisSessionsTest, WhenOneIsRemovedTheOthersStay)
{
    const Credentials first(here->create(ann));
    const Credentials second(here->create(ann));

    EXPECT_TRUE(there->removeSession(first.id));

    EXPECT_EQ(find(*here, first), nullptr);
    EXPECT_NE(find(*here, second), nullptr);
}

TEST_F(BwaRedisSessionsTest, WhenAnUnknownOneIsRemovedNothingHappens)
{
    const Credentials ours(here->create(ann));

    EXPECT_TRUE(there->removeSession(QUuid::createUuid()));

    EXPECT_NE(find(*here, ours), nullptr);
}

TEST_F(BwaRedisSessionsTest, WhenThoseOfAUserAreRemovedOthersStay)
{
    const Credentials first(here->create(ann));
    const Credentials second(there->create(ann));
    const Credentials others(here->create(bob));

    EXPECT_TRUE(there->removeSessions(ann));

    EXPECT_EQ(find(*here, first), nullptr);
    EXPECT_EQ(find(*here, second), nullptr);
    EXPECT_NE(find(*here, others), nullptr);
    EXPECT_NE(find(*there, Credentials(here->create(ann))), nullptr);
}

TEST_F(BwaRedisSessionsTest, WhenAllAreRemovedNoneIsLeftButLaterOnes)
{
    const Credentials first(here->create(ann));
    const Credentials second(there->create(bob));

    EXPECT_TRUE(here->removeSessions());
    const Credentials later(here->create(ann));

    EXPECT_EQ(find(*there, first), nullptr);
    EXPECT_EQ(find(*there, second), nullptr);
    EXPECT_NE(find(*there, later), nullptr);
}

TEST_F(BwaRedisSessionsTest, GivenAnotherPrefixOrDatabaseFindsNone)
{
    const Credentials ours(here->create(ann));
    settings.keyPrefix = QStringLiteral("other:");
    BwaRedisSessions otherPrefix(settings);
    settings = settingsFor(server);
    settings.database = 3;
    BwaRedisSessions otherDatabase(settings);
    otherPrefix.removeSessions();
    otherDatabase.removeSessions();

    EXPECT_EQ(find(otherPrefix, ours), nullptr);
    EXPECT_EQ(find(otherDatabase, ours), nullptr);
    EXPECT_NE(find(*there, ours), nullptr);
    EXPECT_NE(find(otherDatabase, Credentials(otherDatabase.create(ann))), nullptr);
}

TEST_F(BwaRedisSessionsTest, WhenTheSessionIsToldToGoItEndsEverywhere)
{
    const Credentials ours(here->create(ann));

    find(*here, ours)->remove();

    EXPECT_EQ(find(*there, ours), nullptr);
    EXPECT_TRUE(there->hasAnswered());
}

TEST_F(BwaRedisSessionsTest, WhenControlReturnsToTheEventLoopSessionsAreDeleted)
{
    const Credentials ours(here->create(ann));
    const QPointer<BwaRedisSession> session = find(*here, ours);
    ASSERT_FALSE(session.isNull());

    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    EXPECT_TRUE(session.isNull());
    EXPECT_NE(find(*here, ours), nullptr); // only the object has gone
}

TEST_F(BwaRedisSessionsTest, WhenDestroyedTakesItsSessionsAlong)
{
    const QPointer<BwaRedisSession> session = here->create(ann);
    const Credentials ours(session);

    here.reset();

    EXPECT_TRUE(session.isNull());
    EXPECT_NE(find(*there, ours), nullptr);
}

TEST_F(BwaRedisSessionsTest, GivenAnyNumberOfTokensRedisHoldsNone)
{
    const Credentials first(here->create(ann));
    const Credentials second(here->renew(find(*here, first)));
    const Credentials third(here->renew(find(*here, second)));
    const QByteArray values = allValues(server);

    ASSERT_THAT(values.toStdString(), testing::HasSubstr("token"));
    for (const Credentials& credentials : {first, second, third}) {
        const QByteArray bytes = credentials.token.toRfc4122();
        EXPECT_FALSE(values.contains(bytes));
        EXPECT_FALSE(values.toLower().contains(bytes.toHex()));
        EXPECT_FALSE(values.contains(bytes.toBase64().left(20)));
        EXPECT_FALSE(values.contains(credentials.token.toString(QUuid::WithoutBraces).toLatin1()));
    }
}

TEST_F(BwaRedisSessionsTest, TakesLessThanOneKilobyte)
{
    const Credentials old(here->create(ann, {QStringLiteral("admin")}));
    const Credentials ours(here->renew(find(*here, old)));
    const QByteArray key = "bwebapi:session:" + ours.id.toRfc4122().toHex();

    EXPECT_LT(server.ask({"MEMORY", "USAGE", key}).toInt() +
                  server.ask({"MEMORY", "USAGE", "bwebapi:user:ann"}).toInt(),
              1000);
}

TEST_F(BwaRedisSessionsTest, WhenTheScriptsAreFlushedGoesOn)
{
    const Credentials ours(here->create(ann));
    server.ask({"SCRIPT", "FLUSH"});

    EXPECT_NE(find(*here, ours), nullptr);
    server.ask({"SCRIPT", "FLUSH"});
    EXPECT_NE(here->create(bob), nullptr);
}

TEST_F(BwaRedisSessionsTest, GivenAConnectionAsksRedisOnceForEachLookUp)
{
    const Credentials ours(here->create(ann));
    find(*here, ours); // has Redis know the script
    server.ask({"CONFIG", "RESETSTAT"});

    for (int count = 0; count < 10; ++count) {
        ASSERT_NE(find(*here, ours), nullptr);
    }

    const QByteArray statistics = server.ask({"INFO", "commandstats"});
    EXPECT_THAT(statistics.toStdString(), testing::HasSubstr("cmdstat_evalsha:calls=10,"));
    EXPECT_THAT(server.ask({"INFO", "stats"}).toStdString(),
                testing::HasSubstr("total_connections_received:2\r")); // those of ask()
}
