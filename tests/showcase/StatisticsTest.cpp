// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Statistics.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::Pair;

namespace {

constexpr qint64 start = 1000; // seconds

// The seconds that saw replies: how long ago, and how many succeeded, were refused and failed.
std::string minuteOf(Statistics& statistics, qint64 now)
{
    const QVector<Statistics::Second> seconds = statistics.lastMinute(now);
    std::string text;
    for (int i = 0; i < seconds.size(); ++i) {
        const Statistics::Second& second = seconds.at(i);
        if (second.succeeded + second.refused + second.failed > 0) {
            text += std::to_string(seconds.size() - 1 - i) + ":" +
                std::to_string(second.succeeded) + "," + std::to_string(second.refused) + "," +
                std::to_string(second.failed) + " ";
        }
    }
    return text;
}

} // namespace

TEST(Statistics, GivenNoRepliesHasSixtyEmptySeconds)
{
    Statistics statistics;

    EXPECT_EQ(statistics.lastMinute(start).size(), 60);
    EXPECT_EQ(minuteOf(statistics, start), "");
    EXPECT_TRUE(statistics.statuses().isEmpty());
}

TEST(Statistics, CountsEachStatus)
{
    Statistics statistics;

    for (const int status : {200, 404, 200, 500}) {
        statistics.count(start, status);
    }

    const std::map<int, int> statuses = statistics.statuses().toStdMap();
    EXPECT_THAT(statuses, ElementsAre(Pair(200, 2), Pair(404, 1), Pair(500, 1)));
}

TEST(Statistics, DividesASecondIntoSucceededRefusedAndFailed)
{
    Statistics statistics;

    for (const int status : {200, 204, 399, 400, 499, 500}) {
        statistics.count(start, status);
    }

    EXPECT_EQ(minuteOf(statistics, start), "0:3,2,1 ");
}

TEST(Statistics, WhenTimePassesSecondsMoveToThePast)
{
    Statistics statistics;

    statistics.count(start, 200);
    statistics.count(start + 2, 404);

    EXPECT_EQ(minuteOf(statistics, start + 2), "2:1,0,0 0:0,1,0 ");
    EXPECT_EQ(minuteOf(statistics, start + 59), "59:1,0,0 57:0,1,0 ");
}

TEST(Statistics, WhenAMinuteHasPassedForgetsTheSecondAndKeepsTheStatus)
{
    Statistics statistics;

    statistics.count(start, 200);

    EXPECT_EQ(minuteOf(statistics, start + 60), "");
    EXPECT_THAT(statistics.statuses().toStdMap(), ElementsAre(Pair(200, 1)));
}

TEST(Statistics, GivenALongPauseForgetsTheWholeMinute)
{
    Statistics statistics;
    for (int second = 0; second < 60; ++second) {
        statistics.count(start + second, 200);
    }

    statistics.count(start + 1000000, 500);

    EXPECT_EQ(minuteOf(statistics, start + 1000000), "0:0,0,1 ");
}
