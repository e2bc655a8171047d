// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpHtmlHeader.h"
#include "http/BwaHttpJsonHeader.h"
#include "http/BwaHttpPlainTextHeader.h"
#include "http/BwaHttpXhtmlHeader.h"
#include "http/BwaHttpXmlHeader.h"
#include "http/InheritsVirtually.h"
#include "support/QtPrinters.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <gtest/gtest.h>

#include <string>

namespace {

QString mediaTypeOf(const BwaHttpHtmlHeader*)
{
    return QStringLiteral("text/html");
}
QString mediaTypeOf(const BwaHttpPlainTextHeader*)
{
    return QStringLiteral("text/plain");
}
QString mediaTypeOf(const BwaHttpXhtmlHeader*)
{
    return QStringLiteral("application/xhtml+xml");
}
QString mediaTypeOf(const BwaHttpJsonHeader*)
{
    return QStringLiteral("application/json");
}
QString mediaTypeOf(const BwaHttpXmlHeader*)
{
    return QStringLiteral("application/xml");
}

template <typename Header>
class MediaTypeHeader : public testing::Test
{
protected:
    /** The content type that a header of @a charset must have. */
    static QString typeWith(const char* suffix)
    {
        return mediaTypeOf(static_cast<const Header*>(nullptr)) + QString::fromLatin1(suffix);
    }
    static std::string block(const char* suffix)
    {
        return "Content-Type: " + typeWith(suffix).toStdString() + "\n\n";
    }
};

using MediaTypeHeaders = testing::Types<BwaHttpHtmlHeader, BwaHttpPlainTextHeader,
                                        BwaHttpXhtmlHeader, BwaHttpJsonHeader, BwaHttpXmlHeader>;
TYPED_TEST_SUITE(MediaTypeHeader, MediaTypeHeaders);

} // namespace

TYPED_TEST(MediaTypeHeader, GivenNoCharsetAnnouncesTheTypeAlone)
{
    const TypeParam header;

    EXPECT_EQ(header.contentType(), this->typeWith(""));
    EXPECT_EQ(rendered(header), this->block(""));
}

TYPED_TEST(MediaTypeHeader, GivenNullCharsetAnnouncesTheTypeAlone)
{
    const TypeParam header{QString()};

    EXPECT_EQ(header.contentType(), this->typeWith(""));
    EXPECT_EQ(rendered(header), this->block(""));
}

TYPED_TEST(MediaTypeHeader, GivenCharsetAnnouncesItAsPassedIn)
{
    const TypeParam header(QStringLiteral("UTF-8"));

    EXPECT_EQ(header.contentType(), this->typeWith("; charset=UTF-8"));
    EXPECT_EQ(rendered(header), this->block("; charset=UTF-8"));
}

TYPED_TEST(MediaTypeHeader, GivenEmptyCharsetAnnouncesAnEmptyOne)
{
    const TypeParam header{QString(QLatin1String(""))};

    EXPECT_EQ(header.contentType(), this->typeWith("; charset="));
    EXPECT_EQ(rendered(header), this->block("; charset="));
}

TYPED_TEST(MediaTypeHeader, GivenMarkersInTheCharsetKeepsThem)
{
    const TypeParam header(QStringLiteral("%1 %2\"\\"));

    EXPECT_EQ(rendered(header), this->block("; charset=%1 %2\"\\"));
}

TYPED_TEST(MediaTypeHeader, GivenNulInTheCharsetCutsTheLineThere)
{
    const TypeParam header(QString::fromLatin1("a\0b", 3));

    EXPECT_EQ(rendered(header), this->block("; charset=a"));
}

TYPED_TEST(MediaTypeHeader, WritesCookiesAfterTheTypeAndFlushesAfterEachLine)
{
    TypeParam header(QStringLiteral("utf-8"));
    header.cookies.append(BwaHttpCookie(QStringLiteral("b"), QStringLiteral("1")));
    header.cookies.append(BwaHttpCookie(QStringLiteral("a"), QStringLiteral("2")));

    EXPECT_EQ(renderedWithFlushes(header),
              "Content-Type: " + this->typeWith("; charset=utf-8").toStdString() +
                  "\n|Set-Cookie:b=1\n|Set-Cookie:a=2\n|\n|");
}

TYPED_TEST(MediaTypeHeader, DerivesFromTheContentHeaderInTheOrdinaryWay)
{
    EXPECT_TRUE((std::is_base_of_v<BwaHttpContentHeader, TypeParam>));
    EXPECT_FALSE((InheritsVirtually<TypeParam, BwaHttpContentHeader>::value));
}
