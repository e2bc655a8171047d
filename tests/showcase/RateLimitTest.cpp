// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "RateLimit.h"

#include <gmock/gmock.h>

namespace {

const QString user = QStringLiteral("demo");
const QString other = QStringLiteral("guest");
constexpr qint64 start = 6000; // seconds; a minute begins

} // namespace

TEST(RateLimit, WhenAllHaveBeenCountedIsReached)
{
    RateLimit limit(2);

    limit.count(user, start);
    EXPECT_FALSE(limit.isReached(user, start));
    limit.count(user, start + 1);

    EXPECT_TRUE(limit.isReached(user, start + 59));
}

TEST(RateLimit, WhenTheMinuteIsOverBeginsAnew)
{
    RateLimit limit(1);

    limit.count(user, start);

    EXPECT_FALSE(limit.isReached(user, start + 60));
}

TEST(RateLimit, WhenAnEventIsTakenBackHasRoomForAnother)
{
    RateLimit limit(1);

    limit.count(user, start);
    limit.takeBack(user, start);

    EXPECT_FALSE(limit.isReached(user, start));
}

TEST(RateLimit, GivenAnEventOfTheMinuteBeforeTakesNothingBack)
{
    RateLimit limit(1);
    limit.count(user, start);

    limit.takeBack(user, start + 60);
    limit.count(user, start + 60);

    EXPECT_TRUE(limit.isReached(user, start + 60));
}

// Two keys share a counter once in 4096 times: of ten keys one that does not is found.
TEST(RateLimit, CountsOtherKeysApart)
{
    RateLimit limit(1);

    limit.count(user, start);

    int reached = 0;
    for (int i = 0; i < 10; ++i) {
        reached += limit.isReached(other + QString::number(i), start) ? 1 : 0;
    }
    EXPECT_LT(reached, 10);
}

TEST(RateLimit, GivenManyKeysLocksAnotherOutByChanceOnly)
{
    RateLimit limit(20);
    for (int i = 0; i < 1000; ++i) {
        limit.count(QStringLiteral("user %1").arg(i), start);
    }

    EXPECT_FALSE(limit.isReached(user, start));
}
