// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttp201StatusHeader.h"
#include "http/BwaHttp201StatusJsonHeader.h"
#include "http/BwaHttp201StatusXmlHeader.h"
#include "http/InheritsVirtually.h"
#include "support/QtPrinters.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const QString type = QStringLiteral("a/b");
const QString location = QStringLiteral("/notes/7");

} // namespace

TEST(BwaHttp201StatusHeader, WhenConstructedHasTheFixedStatusAndKeepsTheRest)
{
    const BwaHttp201StatusHeader header(type, location);

    EXPECT_EQ(header.statusCode(), 201);
    EXPECT_EQ(header.reasonPhrase(), QLatin1String("Created"));
    EXPECT_EQ(header.contentType(), type);
    EXPECT_EQ(header.location(), location);
    EXPECT_TRUE(header.cookies.isEmpty());
}

TEST(BwaHttp201StatusHeader, DerivesInTheOrdinaryWay)
{
    EXPECT_TRUE((std::is_base_of_v<BwaHttpStatusContentHeader, BwaHttp201StatusHeader>));
    EXPECT_FALSE((InheritsVirtually<BwaHttp201StatusHeader, BwaHttpStatusContentHeader>::value));
}

TEST(BwaHttp201StatusHeader, KeepsTheDoubledColon)
{
    EXPECT_EQ(rendered(BwaHttp201StatusHeader(type, location)),
              "Status: 201 Created\nContent-Type: a/b\nLocation:: /notes/7\n\n");
}

TEST(BwaHttp201StatusHeader, GivenNoLocationWritesNoLocationLine)
{
    const BwaHttp201StatusHeader header(type);

    EXPECT_TRUE(header.location().isNull());
    EXPECT_EQ(rendered(header), "Status: 201 Created\nContent-Type: a/b\n\n");
}

TEST(BwaHttp201StatusHeader, GivenEmptyLocationWritesAnEmptyOne)
{
    const BwaHttp201StatusHeader header(type, QLatin1String(""));

    EXPECT_EQ(rendered(header), "Status: 201 Created\nContent-Type: a/b\nLocation:: \n\n");
}

TEST(BwaHttp201StatusHeader, WritesTheLocationAsItStands)
{
    const BwaHttp201StatusHeader header(type, QStringLiteral("/\u00e9 \u20ac\"<%20"));

    EXPECT_EQ(rendered(header),
              "Status: 201 Created\nContent-Type: a/b\nLocation:: /\xe9 ?\"<%20\n\n");
}

TEST(BwaHttp201StatusHeader, GivenNulInATextCutsThatTextOnly)
{
    const BwaHttp201StatusHeader header(QString::fromLatin1("a\0b", 3),
                                        QString::fromLatin1("/\0x", 3));

    EXPECT_EQ(rendered(header), "Status: 201 Created\nContent-Type: a\nLocation:: /\n\n");
}

TEST(BwaHttp201StatusHeader, WritesCookiesAfterTheLocationAndFlushesAfterEachLine)
{
    BwaHttp201StatusHeader header(type, location);
    static_cast<BwaHttpStatusHeader&>(header).cookies.append(
        BwaHttpCookie(QStringLiteral("b"), QStringLiteral("1")));
    static_cast<BwaHttpContentHeader&>(header).cookies.append(
        BwaHttpCookie(QStringLiteral("a"), QStringLiteral("2")));

    EXPECT_EQ(renderedWithFlushes(header),
              "Status: 201 Created\n|Content-Type: a/b\n|Location:: /notes/7\n|"
              "Set-Cookie:b=1\n|Set-Cookie:a=2\n|\n|");
}

TEST(BwaHttp201StatusHeader, WhenRenderedTwiceWritesTheSameBytesTwice)
{
    const BwaHttp201StatusHeader header(type, location);

    const std::string first = rendered(header);
    const std::string second = rendered(header);

    EXPECT_EQ(first, "Status: 201 Created\nContent-Type: a/b\nLocation:: /notes/7\n\n");
    EXPECT_EQ(second, first);
}

namespace {

std::string mediaTypeOf(const BwaHttp201StatusJsonHeader*)
{
    return "application/json";
}
std::string mediaTypeOf(const BwaHttp201StatusXmlHeader*)
{
    return "application/xml";
}

template <typename Header>
class Typed201StatusHeader : public testing::Test
{
protected:
    /** The beginning of the block, up to its content type. */
    static std::string start()
    {
        return "Status: 201 Created\nContent-Type: " +
            mediaTypeOf(static_cast<const Header*>(nullptr));
    }
};

using Typed201StatusHeaders = testing::Types<BwaHttp201StatusJsonHeader, BwaHttp201StatusXmlHeader>;
TYPED_TEST_SUITE(Typed201StatusHeader, Typed201StatusHeaders);

} // namespace

TYPED_TEST(Typed201StatusHeader, GivenNothingWritesTypeAloneAndNoLocation)
{
    const TypeParam header;

    EXPECT_EQ(header.statusCode(), 201);
    EXPECT_EQ(header.reasonPhrase(), QLatin1String("Created"));
    EXPECT_TRUE(header.location().isNull());
    EXPECT_EQ(rendered(header), this->start() + "\n\n");
}

TYPED_TEST(Typed201StatusHeader, TakesTheCharsetFirstAndTheLocationSecond)
{
    const TypeParam header(QStringLiteral("utf-8"), location);

    EXPECT_EQ(header.location(), location);
    EXPECT_EQ(rendered(header), this->start() + "; charset=utf-8\nLocation:: /notes/7\n\n");
}

TYPED_TEST(Typed201StatusHeader, GivenNullLocationWritesNoLocationLine)
{
    EXPECT_EQ(rendered(TypeParam(QStringLiteral("utf-8"), QString())),
              this->start() + "; charset=utf-8\n\n");
    EXPECT_EQ(rendered(TypeParam(QStringLiteral("utf-8"))), this->start() + "; charset=utf-8\n\n");
}

TYPED_TEST(Typed201StatusHeader, GivenNullCharsetStillWritesTheLocation)
{
    EXPECT_EQ(rendered(TypeParam(QString(), location)),
              this->start() + "\nLocation:: /notes/7\n\n");
}

TYPED_TEST(Typed201StatusHeader, GivenEmptyTextsWritesEmptyOnes)
{
    EXPECT_EQ(rendered(TypeParam(QLatin1String(""), QLatin1String(""))),
              this->start() + "; charset=\nLocation:: \n\n");
}

TYPED_TEST(Typed201StatusHeader, GivenMarkersInTheTextsKeepsThem)
{
    EXPECT_EQ(rendered(TypeParam(QStringLiteral("%1"), QStringLiteral("/%1"))),
              this->start() + "; charset=%1\nLocation:: /%1\n\n");
}

TYPED_TEST(Typed201StatusHeader, WritesCookiesLastAndFlushesAfterEachLine)
{
    TypeParam header(QString(), location);
    header.cookies.append(BwaHttpCookie(QStringLiteral("b"), QStringLiteral("1")));

    EXPECT_EQ(renderedWithFlushes(header).substr(this->start().size() + 1),
              "\n|Location:: /notes/7\n|Set-Cookie:b=1\n|\n|");
}

TYPED_TEST(Typed201StatusHeader, DerivesFromThe201HeaderInTheOrdinaryWay)
{
    EXPECT_TRUE((std::is_base_of_v<BwaHttp201StatusHeader, TypeParam>));
    EXPECT_FALSE((InheritsVirtually<TypeParam, BwaHttp201StatusHeader>::value));
}
