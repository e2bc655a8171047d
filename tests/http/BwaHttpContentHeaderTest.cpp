// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpContentHeader.h"

#include "http/InheritsVirtually.h"
#include "support/FailingStreams.h"
#include "support/QtPrinters.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <gtest/gtest.h>

#include <string>

namespace {

template <typename Header>
Header withCookies(Header header)
{
    header.cookies.append(BwaHttpCookie(QStringLiteral("b"), QStringLiteral("1")));
    header.cookies.append(BwaHttpCookie(QStringLiteral("a"), QStringLiteral("2")));
    return header;
}

const QString csv = QStringLiteral("text/csv; header=present");

} // namespace

TEST(BwaHttpContentHeader, WhenConstructedKeepsTheTypeAndHasNoCookies)
{
    const BwaHttpContentHeader header(csv);

    EXPECT_EQ(header.contentType(), csv);
    EXPECT_TRUE(header.cookies.isEmpty());
}

TEST(BwaHttpContentHeader, SharesTheHeaderBaseWithOtherBases)
{
    EXPECT_TRUE((InheritsVirtually<BwaHttpContentHeader, BwaAbstractHttpHeader>::value));
}

TEST(BwaHttpContentHeader, WritesTheTypeAndAnEmptyLine)
{
    EXPECT_EQ(rendered(BwaHttpContentHeader(csv)), "Content-Type: text/csv; header=present\n\n");
}

TEST(BwaHttpContentHeader, WhenCookiesAreSetWritesThemBeforeTheEmptyLine)
{
    EXPECT_EQ(rendered(withCookies(BwaHttpContentHeader(csv))),
              "Content-Type: text/csv; header=present\nSet-Cookie:b=1\nSet-Cookie:a=2\n\n");
}

TEST(BwaHttpContentHeader, FlushesAfterEachLineAndNowhereElse)
{
    EXPECT_EQ(renderedWithFlushes(withCookies(BwaHttpContentHeader(csv))),
              "Content-Type: text/csv; header=present\n|Set-Cookie:b=1\n|Set-Cookie:a=2\n|\n|");
}

TEST(BwaHttpContentHeader, WhenRenderedTwiceWritesTheSameBytesTwice)
{
    const BwaHttpContentHeader header(csv);

    const std::string first = rendered(header);
    const std::string second = rendered(header);

    EXPECT_EQ(first, "Content-Type: text/csv; header=present\n\n");
    EXPECT_EQ(second, first);
}

TEST(BwaHttpContentHeader, LetsDerivedBlocksWriteTheTypeLineAlone)
{
    class TypeLineOnly : public BwaHttpContentHeader
    {
    public:
        using BwaHttpContentHeader::BwaHttpContentHeader;
        void render(std::ostream& stream) const override { renderContentType(stream); }
    };

    EXPECT_EQ(renderedWithFlushes(withCookies(TypeLineOnly(QStringLiteral("a/b")))),
              "Content-Type: a/b\n|");
}

TEST(BwaHttpContentHeader, GivenFailedStreamLeavesItFailedAndWritesNothing)
{
    std::ostringstream stream = failedStream();

    stream << BwaHttpContentHeader(csv);

    EXPECT_TRUE(stream.fail());
    EXPECT_EQ(stream.str(), "");
}

namespace {

struct ContentTypeCase {
    const char* name;
    QString contentType;
    std::string expected;
};

void PrintTo(const ContentTypeCase& testCase, std::ostream* stream)
{
    *stream << testCase.name;
}

class RenderContentType : public testing::TestWithParam<ContentTypeCase>
{
};

} // namespace

TEST_P(RenderContentType, WritesExactlyTheseBytes)
{
    EXPECT_EQ(rendered(BwaHttpContentHeader(GetParam().contentType)), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RenderContentType,
    testing::Values(
        ContentTypeCase{"Null", QString(), "Content-Type: \n\n"},
        ContentTypeCase{"Empty", QLatin1String(""), "Content-Type: \n\n"},
        ContentTypeCase{"MarkersAreText", QStringLiteral("a/b%1%2"), "Content-Type: a/b%1%2\n\n"},
        ContentTypeCase{"NothingIsEscaped", QStringLiteral("a\"b\\;\r\nX: y"),
                        "Content-Type: a\"b\\;\r\nX: y\n\n"},
        ContentTypeCase{"Latin1", QStringLiteral("\u00e9/\u20ac"), "Content-Type: \xe9/?\n\n"},
        ContentTypeCase{"NulCutsTheType", QString::fromLatin1("a/b\0c", 5),
                        "Content-Type: a/b\n\n"}),
    [](const auto& info) { return std::string(info.param.name); });
