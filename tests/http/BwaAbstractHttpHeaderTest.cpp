// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaAbstractHttpHeader.h"

#include "BwaStringStreaming.h"
#include "support/FailingStreams.h"
#include "support/QtPrinters.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <gtest/gtest.h>

#include <ostream>
#include <random>
#include <string>
#include <type_traits>

namespace {

/** A header block of nothing but cookies. */
class CookiesOnly : public BwaAbstractHttpHeader
{
public:
    void render(std::ostream& stream) const override { renderCookies(stream); }
};

CookiesOnly twoCookies()
{
    CookiesOnly header;
    header.cookies.append(BwaHttpCookie(QStringLiteral("z"), QStringLiteral("1")));
    header.cookies.append(BwaHttpCookie(QStringLiteral("a"), QStringLiteral("2")));
    return header;
}

QString quotedByReplacing(QString text)
{
    text.replace(QLatin1String("\\"), QLatin1String("\\\\"));
    text.replace(QLatin1String("\""), QLatin1String("\\\""));
    return QLatin1Char('"') + text + QLatin1Char('"');
}

} // namespace

TEST(BwaAbstractHttpHeader, CanOnlyBeDerivedFrom)
{
    EXPECT_TRUE(std::is_abstract_v<BwaAbstractHttpHeader>);
    EXPECT_TRUE((std::is_base_of_v<BwaAbstractCgiStreamableElement, BwaAbstractHttpHeader>));
}

TEST(BwaAbstractHttpHeader, WhenConstructedHasNoCookies)
{
    const CookiesOnly header;

    EXPECT_TRUE(header.cookies.isEmpty());
}

TEST(RenderCookies, GivenNoCookiesWritesNothing)
{
    EXPECT_EQ(renderedWithFlushes(CookiesOnly()), "");
}

TEST(RenderCookies, GivenTwoCookiesWritesALineEachInListOrder)
{
    EXPECT_EQ(rendered(twoCookies()), "Set-Cookie:z=1\nSet-Cookie:a=2\n");
}

TEST(RenderCookies, FlushesAfterEachLineAndNowhereElse)
{
    EXPECT_EQ(renderedWithFlushes(twoCookies()), "Set-Cookie:z=1\n|Set-Cookie:a=2\n|");
}

TEST(RenderCookies, GivenSameCookieTwiceWritesItTwice)
{
    CookiesOnly header;
    const BwaHttpCookie cookie(QStringLiteral("a"), QStringLiteral("1"));
    header.cookies << cookie << cookie;

    EXPECT_EQ(rendered(header), "Set-Cookie:a=1\nSet-Cookie:a=1\n");
}

TEST(RenderCookies, WhenRenderedTwiceWritesTheSameBytesTwice)
{
    const CookiesOnly header = twoCookies();

    const std::string first = rendered(header);
    const std::string second = rendered(header);

    EXPECT_EQ(first, "Set-Cookie:z=1\nSet-Cookie:a=2\n");
    EXPECT_EQ(second, first);
    EXPECT_EQ(header.cookies.size(), 2);
}

TEST(RenderCookies, GivenFailedStreamLeavesItFailedAndWritesNothing)
{
    std::ostringstream stream = failedStream();

    stream << twoCookies();

    EXPECT_EQ(stream.rdstate() & std::ios_base::failbit, std::ios_base::failbit);
    EXPECT_EQ(stream.str(), "");
}

TEST(QuotedString, GivenRandomTextsEscapesBackslashesFirstAndQuotesSecond)
{
    const unsigned int seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const QString alphabet = QString::fromLatin1("\\\\\\\"\"ab \n\r\t\0", 12) + QChar(0x20ac);
    std::uniform_int_distribution<int> anyCharacter(0, alphabet.size() - 1);
    for (int round = 0; round < 5000; ++round) {
        QString text;
        for (int left = std::uniform_int_distribution<int>(0, 11)(random); left > 0; --left) {
            text.append(alphabet.at(anyCharacter(random)));
        }

        ASSERT_EQ(BwaAbstractHttpHeader::quotedString(text), quotedByReplacing(text));
    }
}

namespace {

struct QuotingCase {
    const char* name;
    QString text;
    QString expected;
};

void PrintTo(const QuotingCase& testCase, std::ostream* stream)
{
    *stream << testCase.name;
}

class QuoteText : public testing::TestWithParam<QuotingCase>
{
};

} // namespace

TEST_P(QuoteText, GivesExactlyThisText)
{
    EXPECT_EQ(BwaAbstractHttpHeader::quotedString(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, QuoteText,
    testing::Values(
        QuotingCase{"Plain", QStringLiteral("api"), QStringLiteral("\"api\"")},
        QuotingCase{"Empty", QLatin1String(""), QStringLiteral("\"\"")},
        QuotingCase{"Null", QString(), QStringLiteral("\"\"")},
        QuotingCase{"QuoteInTheMiddle", QStringLiteral("a\"b"), QStringLiteral("\"a\\\"b\"")},
        QuotingCase{"Backslash", QStringLiteral("a\\b"), QStringLiteral("\"a\\\\b\"")},
        QuotingCase{"BackslashThenQuote", QStringLiteral("\\\""), QStringLiteral("\"\\\\\\\"\"")},
        QuotingCase{"QuoteThenBackslash", QStringLiteral("\"\\"), QStringLiteral("\"\\\"\\\\\"")},
        QuotingCase{"AlreadyQuoted", QStringLiteral("\"a\""), QStringLiteral("\"\\\"a\\\"\"")},
        QuotingCase{"ControlCharactersAndLineFeeds", QStringLiteral("a\n\r\t\x01\x7f"),
                    QStringLiteral("\"a\n\r\t\x01\x7f\"")},
        QuotingCase{"BeyondLatin1", QStringLiteral("\u00e9\u20ac\U0001f600"),
                    QStringLiteral("\"\u00e9\u20ac\U0001f600\"")},
        QuotingCase{"Nul", QString::fromLatin1("a\0\"", 3), QString::fromLatin1("\"a\0\\\"\"", 6)},
        QuotingCase{"SingleQuotesAndPercents", QStringLiteral("'%1'"), QStringLiteral("\"'%1'\"")}),
    [](const auto& info) { return std::string(info.param.name); });
