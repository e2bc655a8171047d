// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpAttachedFileHeader.h"

#include "http/InheritsVirtually.h"
#include "support/QtPrinters.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <gtest/gtest.h>

#include <string>

namespace {

BwaHttpAttachedFileHeader report()
{
    return BwaHttpAttachedFileHeader(QStringLiteral("text/csv"), QStringLiteral("report 1.csv"));
}

} // namespace

TEST(BwaHttpAttachedFileHeader, WhenConstructedKeepsTypeAndName)
{
    const BwaHttpAttachedFileHeader header = report();

    EXPECT_EQ(header.contentType(), QLatin1String("text/csv"));
    EXPECT_EQ(header.fileName(), QLatin1String("report 1.csv"));
    EXPECT_TRUE(header.cookies.isEmpty());
}

TEST(BwaHttpAttachedFileHeader, DerivesFromTheContentHeaderInTheOrdinaryWay)
{
    EXPECT_TRUE((std::is_base_of_v<BwaHttpContentHeader, BwaHttpAttachedFileHeader>));
    EXPECT_FALSE((InheritsVirtually<BwaHttpAttachedFileHeader, BwaHttpContentHeader>::value));
}

TEST(BwaHttpAttachedFileHeader, WritesCookiesAfterTheNameAndFlushesAfterEachLine)
{
    BwaHttpAttachedFileHeader header = report();
    header.cookies.append(BwaHttpCookie(QStringLiteral("b"), QStringLiteral("1")));
    header.cookies.append(BwaHttpCookie(QStringLiteral("a"), QStringLiteral("2")));

    EXPECT_EQ(renderedWithFlushes(header),
              "Content-Type: text/csv\n|"
              "Content-Disposition: attachment; filename=\"report 1.csv\"\n|"
              "Set-Cookie:b=1\n|Set-Cookie:a=2\n|\n|");
}

TEST(BwaHttpAttachedFileHeader, WhenRenderedTwiceWritesTheSameBytesTwice)
{
    const BwaHttpAttachedFileHeader header = report();

    const std::string first = rendered(header);
    const std::string second = rendered(header);

    EXPECT_EQ(first,
              "Content-Type: text/csv\n"
              "Content-Disposition: attachment; filename=\"report 1.csv\"\n\n");
    EXPECT_EQ(second, first);
}

TEST(BwaHttpAttachedFileHeader, GivenNulInTheTypeCutsThatLineOnly)
{
    const BwaHttpAttachedFileHeader header(QString::fromLatin1("a/b\0c", 5), QStringLiteral("f"));

    EXPECT_EQ(rendered(header),
              "Content-Type: a/b\nContent-Disposition: attachment; filename=\"f\"\n\n");
}

namespace {

struct FileNameCase {
    const char* name;
    QString fileName;
    std::string expected;
};

void PrintTo(const FileNameCase& testCase, std::ostream* stream)
{
    *stream << testCase.name;
}

class RenderFileName : public testing::TestWithParam<FileNameCase>
{
};

} // namespace

TEST_P(RenderFileName, WritesExactlyTheseBytes)
{
    const BwaHttpAttachedFileHeader header(QStringLiteral("a/b"), GetParam().fileName);

    EXPECT_EQ(rendered(header),
              "Content-Type: a/b\nContent-Disposition: attachment; filename=" +
                  GetParam().expected + "\n\n");
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RenderFileName,
    testing::Values(
        FileNameCase{"Plain", QStringLiteral("a.txt"), "\"a.txt\""},
        FileNameCase{"Null", QString(), "\"\""}, FileNameCase{"Empty", QLatin1String(""), "\"\""},
        FileNameCase{"QuoteIsEscaped", QStringLiteral("a\"b"), "\"a\\\"b\""},
        FileNameCase{"BackslashIsEscaped", QStringLiteral("a\\b"), "\"a\\\\b\""},
        FileNameCase{"BackslashThenQuote", QStringLiteral("\\\""), "\"\\\\\\\"\""},
        FileNameCase{"PathsAndLineEndsPassThrough", QStringLiteral("../a\r\nb;"), "\"../a\r\nb;\""},
        FileNameCase{"Latin1", QStringLiteral("\u00e9.txt"), "\"\xe9.txt\""},
        FileNameCase{"BeyondLatin1IsNotEncoded", QStringLiteral("\u20ac\U0001f600.txt"),
                     "\"???.txt\""},
        FileNameCase{"NulCutsTheClosingQuoteAsWell", QString::fromLatin1("a\0b", 3), "\"a"}),
    [](const auto& info) { return std::string(info.param.name); });
