// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpReplyHeader.h"

#include "http/InheritsVirtually.h"
#include "http/NumberFormats.h"
#include "support/FailingStreams.h"
#include "support/QtPrinters.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <gtest/gtest.h>

#include <string>

namespace {

BwaHttpReplyHeader okHeader()
{
    return BwaHttpReplyHeader(QStringLiteral("HTTP/1.1"), 200, QStringLiteral("OK"));
}

BwaHttpReplyHeader fileHeader()
{
    BwaHttpReplyHeader header = okHeader();
    header.cookies.append(BwaHttpCookie(QStringLiteral("a"), QStringLiteral("1")));
    header.addHeader(QStringLiteral("X-Sendfile"), QStringLiteral("/srv/a b"));
    header.cookies.append(BwaHttpCookie(QStringLiteral("b"), QStringLiteral("2")));
    header.addHeader(QStringLiteral("Age"), QStringLiteral("0"));
    return header;
}

} // namespace

TEST(BwaHttpReplyHeader, WhenConstructedKeepsTheStatusAndHasNoLinesOrCookies)
{
    const BwaHttpReplyHeader header(QStringLiteral("HTTP/1.0"), 206, QStringLiteral("Partial"));

    EXPECT_EQ(header.protocol(), QLatin1String("HTTP/1.0"));
    EXPECT_EQ(header.statusCode(), 206);
    EXPECT_EQ(header.reasonPhrase(), QLatin1String("Partial"));
    EXPECT_TRUE(header.headerLines().isEmpty());
    EXPECT_TRUE(header.cookies.isEmpty());
}

TEST(BwaHttpReplyHeader, WhenHeadersAreAddedKeepsThemAsCompleteLinesInOrder)
{
    BwaHttpReplyHeader header = okHeader();

    header.addHeader(QStringLiteral("Z"), QStringLiteral("1"));
    header.addHeader(QStringLiteral("A"), QStringLiteral("2"));
    header.addHeader(QStringLiteral("Z"), QStringLiteral("1"));

    EXPECT_EQ(header.headerLines(),
              QStringList() << QStringLiteral("Z: 1") << QStringLiteral("A: 2")
                            << QStringLiteral("Z: 1"));
}

TEST(BwaHttpReplyHeader, DerivesFromTheHeaderBaseWithoutSharingIt)
{
    EXPECT_TRUE((std::is_base_of_v<BwaAbstractHttpHeader, BwaHttpReplyHeader>));
    EXPECT_FALSE((InheritsVirtually<BwaHttpReplyHeader, BwaAbstractHttpHeader>::value));
}

TEST(BwaHttpReplyHeader, GivenNothingElseWritesItsStatusLineAndAnEmptyLine)
{
    EXPECT_EQ(rendered(okHeader()), "HTTP/1.1 200 OK\n\n");
}

TEST(BwaHttpReplyHeader, WritesHeaderLinesInOrderOfAdditionBeforeTheCookies)
{
    EXPECT_EQ(rendered(fileHeader()),
              "HTTP/1.1 200 OK\nX-Sendfile: /srv/a b\nAge: 0\nSet-Cookie:a=1\nSet-Cookie:b=2\n\n");
}

TEST(BwaHttpReplyHeader, GivenSameHeaderTwiceWritesBoth)
{
    BwaHttpReplyHeader header = okHeader();

    header.addHeader(QStringLiteral("Vary"), QStringLiteral("a"));
    header.addHeader(QStringLiteral("Vary"), QStringLiteral("a"));

    EXPECT_EQ(rendered(header), "HTTP/1.1 200 OK\nVary: a\nVary: a\n\n");
}

TEST(BwaHttpReplyHeader, GivenEmptyAndNullTextsKeepsTheSeparators)
{
    BwaHttpReplyHeader header(QString(), 0, QString());
    header.addHeader(QString(), QString());
    header.addHeader(QLatin1String(""), QLatin1String(""));

    EXPECT_EQ(rendered(header), " 0 \n: \n: \n\n");
}

TEST(BwaHttpReplyHeader, ChecksAndEscapesNothing)
{
    BwaHttpReplyHeader header(QStringLiteral("no protocol"), 65535, QStringLiteral("a\nb"));
    header.addHeader(QStringLiteral("a:b c"), QStringLiteral("\"\\\r\n x"));

    EXPECT_EQ(rendered(header), "no protocol 65535 a\nb\na:b c: \"\\\r\n x\n\n");
}

TEST(BwaHttpReplyHeader, WritesLatin1)
{
    BwaHttpReplyHeader header(QStringLiteral("H\u00e9"), 200, QStringLiteral("\u20ac"));
    header.addHeader(QStringLiteral("\u00ff"), QStringLiteral("\u0142"));

    EXPECT_EQ(rendered(header), "H\xe9 200 ?\n\xff: ?\n\n");
}

TEST(BwaHttpReplyHeader, GivenNulInATextCutsThatTextOnly)
{
    BwaHttpReplyHeader header(QString::fromLatin1("P\0x", 3), 200, QString::fromLatin1("O\0K", 3));
    header.addHeader(QString::fromLatin1("N\0x", 3), QStringLiteral("the rest of the line"));
    header.addHeader(QStringLiteral("M"), QString::fromLatin1("v\0w", 3));

    EXPECT_EQ(rendered(header), "P 200 O\nN\nM: v\n\n");
}

TEST(BwaHttpReplyHeader, FlushesAfterEachLineAndNowhereElse)
{
    EXPECT_EQ(renderedWithFlushes(fileHeader()),
              "HTTP/1.1 200 OK\n|X-Sendfile: /srv/a b\n|Age: 0\n|Set-Cookie:a=1\n|Set-Cookie:b=2\n"
              "|\n|");
}

TEST(BwaHttpReplyHeader, WhenRenderedTwiceWritesTheSameBytesTwice)
{
    const BwaHttpReplyHeader header = fileHeader();

    const std::string first = rendered(header);
    const std::string second = rendered(header);

    EXPECT_EQ(first,
              "HTTP/1.1 200 OK\nX-Sendfile: /srv/a b\nAge: 0\nSet-Cookie:a=1\nSet-Cookie:b=2\n\n");
    EXPECT_EQ(second, first);
}

TEST(BwaHttpReplyHeader, GivenStreamInHexadecimalModeWritesTheStatusInDecimal)
{
    EXPECT_EQ(renderedInHexadecimalMode(okHeader()), "HTTP/1.1 200 OK\n\n");
}

TEST(BwaHttpReplyHeader, GivenLocaleThatGroupsDigitsWritesTheStatusWithoutSeparators)
{
    const BwaHttpReplyHeader header(QStringLiteral("HTTP/1.1"), 65535, QStringLiteral("OK"));

    EXPECT_EQ(renderedWithGroupingLocale(header), "HTTP/1.1 65535 OK\n\n");
}

TEST(BwaHttpReplyHeader, GivenStreamThatBreaksLeavesItBad)
{
    BreakingBuffer buffer(8);
    std::ostream stream(&buffer);

    stream << fileHeader();

    EXPECT_TRUE(stream.bad());
    EXPECT_EQ(buffer.text, "HTTP/1.1");
}
