// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpStatusHeader.h"

#include "http/BwaHttp204StatusHeader.h"
#include "http/InheritsVirtually.h"
#include "http/NumberFormats.h"
#include "support/FailingStreams.h"
#include "support/QtPrinters.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <gtest/gtest.h>

#include <string>

namespace {

BwaHttpStatusHeader notFound()
{
    return BwaHttpStatusHeader(404, QStringLiteral("Not Found"));
}

template <typename Header>
Header withCookies(Header header)
{
    header.cookies.append(BwaHttpCookie(QStringLiteral("b"), QStringLiteral("1")));
    header.cookies.append(BwaHttpCookie(QStringLiteral("a"), QStringLiteral("2")));
    return header;
}

} // namespace

TEST(BwaHttpStatusHeader, WhenConstructedKeepsTheStatusAndHasNoCookies)
{
    const BwaHttpStatusHeader header = notFound();

    EXPECT_EQ(header.statusCode(), 404);
    EXPECT_EQ(header.reasonPhrase(), QLatin1String("Not Found"));
    EXPECT_TRUE(header.cookies.isEmpty());
}

TEST(BwaHttpStatusHeader, SharesTheHeaderBaseWithOtherBases)
{
    EXPECT_TRUE((InheritsVirtually<BwaHttpStatusHeader, BwaAbstractHttpHeader>::value));
}

TEST(BwaHttpStatusHeader, WritesTheStatusLineAndAnEmptyLine)
{
    EXPECT_EQ(rendered(notFound()), "Status: 404 Not Found\n\n");
}

TEST(BwaHttpStatusHeader, WhenCookiesAreSetWritesThemBeforeTheEmptyLine)
{
    EXPECT_EQ(rendered(withCookies(notFound())),
              "Status: 404 Not Found\nSet-Cookie:b=1\nSet-Cookie:a=2\n\n");
}

TEST(BwaHttpStatusHeader, FlushesAfterEachLineAndNowhereElse)
{
    EXPECT_EQ(renderedWithFlushes(withCookies(notFound())),
              "Status: 404 Not Found\n|Set-Cookie:b=1\n|Set-Cookie:a=2\n|\n|");
}

TEST(BwaHttpStatusHeader, WhenRenderedTwiceWritesTheSameBytesTwice)
{
    const BwaHttpStatusHeader header = withCookies(notFound());

    const std::string first = rendered(header);
    const std::string second = rendered(header);

    EXPECT_EQ(first, "Status: 404 Not Found\nSet-Cookie:b=1\nSet-Cookie:a=2\n\n");
    EXPECT_EQ(second, first);
}

TEST(BwaHttpStatusHeader, LetsDerivedBlocksWriteTheStatusLineAlone)
{
    class StatusLineOnly : public BwaHttpStatusHeader
    {
    public:
        using BwaHttpStatusHeader::BwaHttpStatusHeader;
        void render(std::ostream& stream) const override { renderStatus(stream); }
    };
    const StatusLineOnly header = withCookies(StatusLineOnly(503, QStringLiteral("Busy")));

    EXPECT_EQ(renderedWithFlushes(header), "Status: 503 Busy\n|");
}

TEST(BwaHttpStatusHeader, GivenStreamInHexadecimalModeWritesTheStatusInDecimal)
{
    EXPECT_EQ(renderedInHexadecimalMode(notFound()), "Status: 404 Not Found\n\n");
}

TEST(BwaHttpStatusHeader, GivenLocaleThatGroupsDigitsWritesTheStatusWithoutSeparators)
{
    const BwaHttpStatusHeader header(65535, QStringLiteral("Odd"));

    EXPECT_EQ(renderedWithGroupingLocale(header), "Status: 65535 Odd\n\n");
}

TEST(BwaHttpStatusHeader, GivenFailedStreamLeavesItFailedAndWritesNothing)
{
    std::ostringstream stream = failedStream();

    stream << notFound();

    EXPECT_TRUE(stream.fail());
    EXPECT_EQ(stream.str(), "");
}

TEST(BwaHttp204StatusHeader, HasTheFixedStatus)
{
    const BwaHttp204StatusHeader header;

    EXPECT_EQ(header.statusCode(), 204);
    EXPECT_EQ(header.reasonPhrase(), QLatin1String("No Content"));
    EXPECT_TRUE(header.cookies.isEmpty());
}

TEST(BwaHttp204StatusHeader, DerivesFromTheStatusHeaderInTheOrdinaryWay)
{
    EXPECT_TRUE((std::is_base_of_v<BwaHttpStatusHeader, BwaHttp204StatusHeader>));
    EXPECT_FALSE((InheritsVirtually<BwaHttp204StatusHeader, BwaHttpStatusHeader>::value));
}

TEST(BwaHttp204StatusHeader, WritesItsStatusCookiesAndAnEmptyLine)
{
    EXPECT_EQ(renderedWithFlushes(withCookies(BwaHttp204StatusHeader())),
              "Status: 204 No Content\n|Set-Cookie:b=1\n|Set-Cookie:a=2\n|\n|");
}

TEST(BwaHttp204StatusHeader, GivenNoCookiesWritesTwoLines)
{
    EXPECT_EQ(rendered(BwaHttp204StatusHeader()), "Status: 204 No Content\n\n");
}

namespace {

struct StatusCase {
    const char* name;
    unsigned short statusCode;
    QString reasonPhrase;
    std::string expected;
};

void PrintTo(const StatusCase& testCase, std::ostream* stream)
{
    *stream << testCase.name;
}

class RenderStatus : public testing::TestWithParam<StatusCase>
{
};

} // namespace

TEST_P(RenderStatus, WritesExactlyTheseBytes)
{
    const BwaHttpStatusHeader header(GetParam().statusCode, GetParam().reasonPhrase);

    EXPECT_EQ(rendered(header), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RenderStatus,
    testing::Values(
        StatusCase{"Zero", 0, QStringLiteral("x"), "Status: 0 x\n\n"},
        StatusCase{"Largest", 65535, QStringLiteral("x"), "Status: 65535 x\n\n"},
        StatusCase{"PhraseIsNotLookedUp", 404, QStringLiteral("All Right"),
                   "Status: 404 All Right\n\n"},
        StatusCase{"NullPhrase", 200, QString(), "Status: 200 \n\n"},
        StatusCase{"EmptyPhrase", 200, QLatin1String(""), "Status: 200 \n\n"},
        StatusCase{"NothingIsEscaped", 200, QStringLiteral(" <a>\"\\\n"),
                   "Status: 200  <a>\"\\\n\n\n"},
        StatusCase{"Latin1", 200, QStringLiteral("\u00e9\u20ac"), "Status: 200 \xe9?\n\n"},
        StatusCase{"NulCutsThePhrase", 200, QString::fromLatin1("O\0K", 3), "Status: 200 O\n\n"}),
    [](const auto& info) { return std::string(info.param.name); });
