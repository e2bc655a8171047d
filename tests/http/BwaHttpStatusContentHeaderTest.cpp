// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpStatusContentHeader.h"

#include "http/InheritsVirtually.h"
#include "http/NumberFormats.h"
#include "support/QtPrinters.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <gtest/gtest.h>

#include <string>

namespace {

BwaHttpStatusContentHeader conflict()
{
    return BwaHttpStatusContentHeader(409, QStringLiteral("Conflict"), QStringLiteral("a/b"));
}

} // namespace

TEST(BwaHttpStatusContentHeader, WhenConstructedKeepsStatusAndType)
{
    const BwaHttpStatusContentHeader header = conflict();

    EXPECT_EQ(header.statusCode(), 409);
    EXPECT_EQ(header.reasonPhrase(), QLatin1String("Conflict"));
    EXPECT_EQ(header.contentType(), QLatin1String("a/b"));
    EXPECT_TRUE(header.cookies.isEmpty());
}

TEST(BwaHttpStatusContentHeader, DerivesFromItsBasesInTheOrdinaryWay)
{
    EXPECT_FALSE((InheritsVirtually<BwaHttpStatusContentHeader, BwaHttpStatusHeader>::value));
    EXPECT_FALSE((InheritsVirtually<BwaHttpStatusContentHeader, BwaHttpContentHeader>::value));
}

TEST(BwaHttpStatusContentHeader, HasTheStatusBaseFirst)
{
    const BwaHttpStatusContentHeader header = conflict();

    const void* status = static_cast<const BwaHttpStatusHeader*>(&header);
    const void* content = static_cast<const BwaHttpContentHeader*>(&header);

    EXPECT_EQ(status, &header);
    EXPECT_LT(status, content);
}

TEST(BwaHttpStatusContentHeader, HasOneHeaderBaseWhicheverBaseItIsReachedThrough)
{
    BwaHttpStatusContentHeader header = conflict();
    BwaHttpStatusHeader& status = header;
    BwaHttpContentHeader& content = header;

    EXPECT_EQ(static_cast<BwaAbstractHttpHeader*>(&status),
              static_cast<BwaAbstractHttpHeader*>(&content));
    EXPECT_EQ(&status.cookies, &content.cookies);
    EXPECT_EQ(&header.cookies, &content.cookies);
}

TEST(BwaHttpStatusContentHeader, WritesStatusThenTypeAndAnEmptyLine)
{
    EXPECT_EQ(rendered(conflict()), "Status: 409 Conflict\nContent-Type: a/b\n\n");
}

TEST(BwaHttpStatusContentHeader, WhenCookiesComeThroughEitherBaseWritesEachOnceAfterTheType)
{
    BwaHttpStatusContentHeader header = conflict();
    BwaHttpStatusHeader& status = header;
    BwaHttpContentHeader& content = header;

    content.cookies.append(BwaHttpCookie(QStringLiteral("b"), QStringLiteral("1")));
    status.cookies.append(BwaHttpCookie(QStringLiteral("a"), QStringLiteral("2")));

    EXPECT_EQ(rendered(header),
              "Status: 409 Conflict\nContent-Type: a/b\nSet-Cookie:b=1\nSet-Cookie:a=2\n\n");
}

TEST(BwaHttpStatusContentHeader, RendersTheSameThroughEachOfItsBases)
{
    BwaHttpStatusContentHeader header = conflict();
    header.cookies.append(BwaHttpCookie(QStringLiteral("b"), QStringLiteral("1")));
    const std::string expected = "Status: 409 Conflict\nContent-Type: a/b\nSet-Cookie:b=1\n\n";

    EXPECT_EQ(rendered(static_cast<const BwaHttpStatusHeader&>(header)), expected);
    EXPECT_EQ(rendered(static_cast<const BwaHttpContentHeader&>(header)), expected);
    EXPECT_EQ(rendered(static_cast<const BwaAbstractHttpHeader&>(header)), expected);
    EXPECT_EQ(rendered(static_cast<const BwaAbstractCgiStreamableElement&>(header)), expected);
}

TEST(BwaHttpStatusContentHeader, FlushesAfterEachLineAndNowhereElse)
{
    BwaHttpStatusContentHeader header = conflict();
    header.cookies.append(BwaHttpCookie(QStringLiteral("b"), QStringLiteral("1")));

    EXPECT_EQ(renderedWithFlushes(header),
              "Status: 409 Conflict\n|Content-Type: a/b\n|Set-Cookie:b=1\n|\n|");
}

TEST(BwaHttpStatusContentHeader, WhenRenderedTwiceWritesTheSameBytesTwice)
{
    const BwaHttpStatusContentHeader header = conflict();

    const std::string first = rendered(header);
    const std::string second = rendered(header);

    EXPECT_EQ(first, "Status: 409 Conflict\nContent-Type: a/b\n\n");
    EXPECT_EQ(second, first);
}

TEST(BwaHttpStatusContentHeader, GivenOddTextsWritesThemAsTheyStand)
{
    const BwaHttpStatusContentHeader header(65535, QString(), QString::fromLatin1("%1\0x", 4));

    EXPECT_EQ(rendered(header), "Status: 65535 \nContent-Type: %1\n\n");
}

TEST(BwaHttpStatusContentHeader, GivenStreamInHexadecimalModeWritesTheStatusInDecimal)
{
    EXPECT_EQ(renderedInHexadecimalMode(conflict()), "Status: 409 Conflict\nContent-Type: a/b\n\n");
}
