// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BWebApiLibInformation.h"

#include "library/DateToldLater.h"
#include "support/QtPrinters.h"

#include <QLocale>

#include <gtest/gtest.h>

#include <future>
#include <string>
#include <vector>

TEST(BWebApiLibInformation, HasAFixedName)
{
    EXPECT_EQ(BWebApiLibInformation::libraryName(), QLatin1String("Brindo Web API"));
}

TEST(BWebApiLibInformation, HasAFixedVersion)
{
    EXPECT_EQ(BWebApiLibInformation::libraryVersion(), QLatin1String("1.0.1"));
}

TEST(BWebApiLibInformation, WasBuiltInThePast)
{
    const QDateTime dateTime = BWebApiLibInformation::libraryDateTime();

    EXPECT_TRUE(dateTime.isValid());
    // A reproducible build's clock stands in UTC, which may be up to a day ahead of ours.
    EXPECT_LE(dateTime, QDateTime::currentDateTime().addDays(1));
    EXPECT_GT(dateTime.date().year(), 1969);
}

TEST(BWebApiLibInformation, TellsTheSameDateEachTime)
{
    EXPECT_EQ(BWebApiLibInformation::libraryDateTime(), BWebApiLibInformation::libraryDateTime());
}

TEST(BWebApiLibInformation, ReturnsACopyOfItsDate)
{
    QDateTime dateTime = BWebApiLibInformation::libraryDateTime();

    dateTime = dateTime.addYears(1);

    EXPECT_EQ(BWebApiLibInformation::libraryDateTime().addYears(1), dateTime);
}

// The same source, compiled again under other names with the clock stopped: see CMakeLists.txt.
#define BWA_BUILT_AT(Name)                                                                         \
    class BWA_EXPORT Name                                                                          \
    {                                                                                              \
    public:                                                                                        \
        static QString libraryName();                                                              \
        static QString libraryVersion();                                                           \
        static QDateTime libraryDateTime();                                                        \
    };

BWA_BUILT_AT(BuiltInJanuary)
BWA_BUILT_AT(BuiltInFebruary)
BWA_BUILT_AT(BuiltInMarch)
BWA_BUILT_AT(BuiltInApril)
BWA_BUILT_AT(BuiltInMay)
BWA_BUILT_AT(BuiltInJune)
BWA_BUILT_AT(BuiltInJuly)
BWA_BUILT_AT(BuiltInAugust)
BWA_BUILT_AT(BuiltInSeptember)
BWA_BUILT_AT(BuiltInOctober)
BWA_BUILT_AT(BuiltInNovember)
BWA_BUILT_AT(BuiltInDecember)
BWA_BUILT_AT(BuiltOnAnUnknownDay)
BWA_BUILT_AT(BuiltOnAnImpossibleDay)
BWA_BUILT_AT(BuiltUnderAGermanSystem)
BWA_BUILT_AT(BuiltForThreads)
BWA_BUILT_AT(BuiltOnADayToldLater)

namespace {

struct BuildCase {
    const char* name;
    QDateTime (*libraryDateTime)();
    const char* expected;
};

void PrintTo(const BuildCase& testCase, std::ostream* stream)
{
    *stream << testCase.name;
}

class LibraryDateTime : public testing::TestWithParam<BuildCase>
{
};

QString isoText(const QDateTime& dateTime)
{
    return dateTime.toString(Qt::ISODate);
}

/** Makes German the locale of everything that names none, as on a German system. */
class GermanSystem
{
public:
    GermanSystem() { QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany)); }
    ~GermanSystem() { QLocale::setDefault(m_before); }
    GermanSystem(const GermanSystem&) = delete;
    GermanSystem& operator=(const GermanSystem&) = delete;

private:
    QLocale m_before;
};

} // namespace

TEST_P(LibraryDateTime, IsTheCompilersDateAndTime)
{
    const QDateTime dateTime = GetParam().libraryDateTime();

    EXPECT_EQ(isoText(dateTime), QLatin1String(GetParam().expected));
    EXPECT_EQ(dateTime.timeSpec(), Qt::LocalTime);
}

INSTANTIATE_TEST_SUITE_P(
    Days, LibraryDateTime,
    testing::Values(
        BuildCase{"PaddedFirst", &BuiltInJanuary::libraryDateTime, "2026-01-01T09:08:07"},
        BuildCase{"LeapDay", &BuiltInFebruary::libraryDateTime, "2028-02-29T12:00:00"},
        BuildCase{"PaddedThird", &BuiltInMarch::libraryDateTime, "2026-03-03T10:20:30"},
        BuildCase{"LastOfApril", &BuiltInApril::libraryDateTime, "2026-04-30T23:59:59"},
        BuildCase{"PaddedFifth", &BuiltInMay::libraryDateTime, "2026-05-05T05:05:05"},
        BuildCase{"TenthOfJune", &BuiltInJune::libraryDateTime, "2026-06-10T13:14:15"},
        BuildCase{"PaddedSeventh", &BuiltInJuly::libraryDateTime, "2026-07-07T17:00:59"},
        BuildCase{"EleventhOfAugust", &BuiltInAugust::libraryDateTime, "2026-08-11T11:11:11"},
        BuildCase{"PaddedNinth", &BuiltInSeptember::libraryDateTime, "2026-09-09T19:59:00"},
        BuildCase{"LastOfOctober", &BuiltInOctober::libraryDateTime, "1999-10-31T20:00:01"},
        BuildCase{"PaddedSecond", &BuiltInNovember::libraryDateTime, "2026-11-02T03:01:04"},
        BuildCase{"LastOfDecember", &BuiltInDecember::libraryDateTime, "2026-12-31T23:01:04"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(CompilationDateTime, GivenAnUnknownDateStaysNullAtEachCall)
{
    EXPECT_TRUE(BuiltOnAnUnknownDay::libraryDateTime().isNull());
    EXPECT_TRUE(BuiltOnAnUnknownDay::libraryDateTime().isNull());
}

TEST(CompilationDateTime, WhenTheDateCouldNotBeReadReadsItAgainAtTheNextCall)
{
    isDateTold = false;
    EXPECT_TRUE(BuiltOnADayToldLater::libraryDateTime().isNull());

    isDateTold = true;
    EXPECT_EQ(isoText(BuiltOnADayToldLater::libraryDateTime()),
              QLatin1String("2026-05-17T08:00:00"));
}

TEST(CompilationDateTime, GivenAnImpossibleDateIsNotValid)
{
    EXPECT_FALSE(BuiltOnAnImpossibleDay::libraryDateTime().isValid());
}

TEST(CompilationDateTime, WhenTheSystemIsNotEnglishStillReadsEnglishMonths)
{
    const GermanSystem system;

    EXPECT_EQ(isoText(BuiltUnderAGermanSystem::libraryDateTime()),
              QLatin1String("2026-12-05T08:00:00"));
}

TEST(CompilationDateTime, WhenFirstCalledBySeveralThreadsTellsAllTheSame)
{
    std::vector<std::future<QDateTime>> dateTimes(8);
    for (auto& dateTime : dateTimes) {
        dateTime = std::async(std::launch::async, &BuiltForThreads::libraryDateTime);
    }

    for (auto& dateTime : dateTimes) {
        EXPECT_EQ(isoText(dateTime.get()), QLatin1String("2026-05-17T08:00:00"));
    }
}
