// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpCookie.h"

#include "http/NumberFormats.h"
#include "support/FailingStreams.h"
#include "support/QtPrinters.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

BwaHttpCookie fullCookie()
{
    return BwaHttpCookie(QStringLiteral("id"), QStringLiteral("7"), 3600,
                         QStringLiteral("example.org"), QStringLiteral("/api"), true, true);
}

BwaHttpCookie expiredCookie(unsigned int maxAge = 0, const QString& domain = QString(),
                            const QString& path = QString())
{
    BwaHttpCookie cookie(QStringLiteral("id"), QStringLiteral("7"), maxAge, domain, path, false,
                         false);
    cookie.expired = true;
    return cookie;
}

} // namespace

TEST(BwaHttpCookie, WhenDefaultConstructedHasNullTextsAndNothingElse)
{
    const BwaHttpCookie cookie;

    EXPECT_TRUE(cookie.name.isNull());
    EXPECT_TRUE(cookie.value.isNull());
    EXPECT_EQ(cookie.maxAge, 0U);
    EXPECT_TRUE(cookie.domain.isNull());
    EXPECT_TRUE(cookie.path.isNull());
    EXPECT_FALSE(cookie.secure);
    EXPECT_FALSE(cookie.httpOnly);
    EXPECT_FALSE(cookie.expired);
}

TEST(BwaHttpCookie, WhenMadeOfNameAndValueHasNothingElse)
{
    const BwaHttpCookie cookie(QStringLiteral("id"), QStringLiteral("7"));

    EXPECT_EQ(cookie.name, QLatin1String("id"));
    EXPECT_EQ(cookie.value, QLatin1String("7"));
    EXPECT_EQ(cookie.maxAge, 0U);
    EXPECT_TRUE(cookie.domain.isNull());
    EXPECT_TRUE(cookie.path.isNull());
    EXPECT_FALSE(cookie.secure);
    EXPECT_FALSE(cookie.httpOnly);
    EXPECT_FALSE(cookie.expired);
}

TEST(BwaHttpCookie, WhenMadeOfEverythingKeepsEverythingAndIsNotExpired)
{
    const BwaHttpCookie cookie = fullCookie();

    EXPECT_EQ(cookie.name, QLatin1String("id"));
    EXPECT_EQ(cookie.value, QLatin1String("7"));
    EXPECT_EQ(cookie.maxAge, 3600U);
    EXPECT_EQ(cookie.domain, QLatin1String("example.org"));
    EXPECT_EQ(cookie.path, QLatin1String("/api"));
    EXPECT_TRUE(cookie.secure);
    EXPECT_TRUE(cookie.httpOnly);
    EXPECT_FALSE(cookie.expired);
}

TEST(BwaHttpCookie, TellsSecureFromHttpOnly)
{
    const BwaHttpCookie cookie(QStringLiteral("id"), QStringLiteral("7"), 0, QString(), QString(),
                               true, false);

    EXPECT_TRUE(cookie.secure);
    EXPECT_FALSE(cookie.httpOnly);
}

TEST(BwaHttpCookie, WhenCopiedCopiesEverythingIncludingExpired)
{
    BwaHttpCookie original = fullCookie();
    original.expired = true;

    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const BwaHttpCookie copy(original);

    EXPECT_EQ(copy.name, QLatin1String("id"));
    EXPECT_EQ(copy.value, QLatin1String("7"));
    EXPECT_EQ(copy.maxAge, 3600U);
    EXPECT_EQ(copy.domain, QLatin1String("example.org"));
    EXPECT_EQ(copy.path, QLatin1String("/api"));
    EXPECT_TRUE(copy.secure);
    EXPECT_TRUE(copy.httpOnly);
    EXPECT_TRUE(copy.expired);
}

TEST(BwaHttpCookie, WhenCopiedKeepsNullAndEmptyApart)
{
    const BwaHttpCookie original(QString(), QLatin1String(""), 0, QLatin1String(""), QString(),
                                 false, false);

    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const BwaHttpCookie copy(original);

    EXPECT_TRUE(copy.name.isNull());
    EXPECT_FALSE(copy.value.isNull());
    EXPECT_FALSE(copy.domain.isNull());
    EXPECT_TRUE(copy.path.isNull());
}

TEST(BwaHttpCookie, WhenAssignedCopiesEverything)
{
    BwaHttpCookie original = fullCookie();
    original.expired = true;
    BwaHttpCookie copy;

    copy = original;

    EXPECT_EQ(rendered(copy), rendered(original));
    EXPECT_EQ(copy.maxAge, 3600U);
}

TEST(BwaHttpCookie, WhenFieldsAreAssignedRendersTheNewOnes)
{
    BwaHttpCookie cookie;
    cookie.name = QStringLiteral("n");
    cookie.value = QStringLiteral("v");
    cookie.maxAge = 5;
    cookie.domain = QStringLiteral("d");
    cookie.path = QStringLiteral("p");
    cookie.secure = true;
    cookie.httpOnly = true;

    EXPECT_EQ(rendered(cookie), "Set-Cookie:n=v; Max-Age=5; Domain=d; Path=p; Secure; HttpOnly");
}

TEST(BwaHttpCookie, IsAStreamableElement)
{
    EXPECT_TRUE((std::is_base_of_v<BwaAbstractCgiStreamableElement, BwaHttpCookie>));
}

TEST(BwaHttpCookie, WhenRenderedTwiceWritesTheSameBytesTwice)
{
    const BwaHttpCookie cookie = fullCookie();

    const std::string first = rendered(cookie);
    const std::string second = rendered(cookie);

    EXPECT_EQ(first,
              "Set-Cookie:id=7; Max-Age=3600; Domain=example.org; Path=/api; Secure; HttpOnly");
    EXPECT_EQ(second, first);
}

TEST(BwaHttpCookie, NeverFlushesByItself)
{
    BwaHttpCookie cookie = fullCookie();
    cookie.expired = true;

    EXPECT_EQ(renderedWithFlushes(cookie),
              "Set-Cookie:id=7; Expires=Fri, 01-Jan-1971 01:00:00 GMT;; Domain=example.org"
              "; Path=/api; Secure; HttpOnly");
}

TEST(BwaHttpCookie, GivenFailedStreamLeavesItFailedAndWritesNothing)
{
    std::ostringstream stream = failedStream();

    stream << fullCookie();

    EXPECT_EQ(stream.rdstate(), std::ios_base::failbit);
    EXPECT_EQ(stream.str(), "");
}

TEST(BwaHttpCookie, GivenStreamThatBreaksLeavesItBad)
{
    BreakingBuffer buffer(13);
    std::ostream stream(&buffer);

    stream << fullCookie();

    EXPECT_TRUE(stream.bad());
    EXPECT_EQ(buffer.text, "Set-Cookie:id");
}

TEST(BwaHttpCookie, GivenStreamInHexadecimalModeWritesMaxAgeInDecimal)
{
    const BwaHttpCookie cookie(QStringLiteral("a"), QStringLiteral("1"), 3600, QString(), QString(),
                               false, false);

    EXPECT_EQ(renderedInHexadecimalMode(cookie), "Set-Cookie:a=1; Max-Age=3600");
}

TEST(BwaHttpCookie, GivenLocaleThatGroupsDigitsWritesMaxAgeWithoutSeparators)
{
    const BwaHttpCookie cookie(QStringLiteral("a"), QStringLiteral("1"), 3600, QString(), QString(),
                               false, false);

    EXPECT_EQ(renderedWithGroupingLocale(cookie), "Set-Cookie:a=1; Max-Age=3600");
}

namespace {

struct CookieCase {
    const char* name;
    BwaHttpCookie cookie;
    std::string expected;
};

void PrintTo(const CookieCase& testCase, std::ostream* stream)
{
    *stream << testCase.name;
}

class RenderCookie : public testing::TestWithParam<CookieCase>
{
};

BwaHttpCookie cookieOf(const QString& name, const QString& value)
{
    return BwaHttpCookie(name, value);
}

BwaHttpCookie cookieWith(unsigned int maxAge, const QString& domain = QString(),
                         const QString& path = QString(), bool secure = false,
                         bool httpOnly = false)
{
    return BwaHttpCookie(QStringLiteral("id"), QStringLiteral("7"), maxAge, domain, path, secure,
                         httpOnly);
}

const QString emptyText = QLatin1String("");

} // namespace

TEST_P(RenderCookie, WritesExactlyTheseBytes)
{
    EXPECT_EQ(rendered(GetParam().cookie), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, RenderCookie,
    testing::Values(
        CookieCase{"Default", BwaHttpCookie(), "Set-Cookie:="},
        CookieCase{"NameAndValue", cookieOf(QStringLiteral("id"), QStringLiteral("7")),
                   "Set-Cookie:id=7"},
        CookieCase{"EmptyNameAndValue", cookieOf(emptyText, emptyText), "Set-Cookie:="},
        CookieCase{"ValueIsNotQuoted",
                   cookieOf(QStringLiteral("id"), QStringLiteral("a; b=\"c d\"\\")),
                   "Set-Cookie:id=a; b=\"c d\"\\"},
        CookieCase{"NameIsNotChecked", cookieOf(QStringLiteral("a=b;"), QStringLiteral("=")),
                   "Set-Cookie:a=b;=="},
        CookieCase{"LineEndsPassThrough",
                   cookieOf(QStringLiteral("a"), QStringLiteral("1\r\nX: 2")),
                   "Set-Cookie:a=1\r\nX: 2"},
        CookieCase{"Latin1", cookieOf(QStringLiteral("n\u00e9"), QStringLiteral("\u00ff\u0080")),
                   "Set-Cookie:n\xe9=\xff\x80"},
        CookieCase{"BeyondLatin1",
                   cookieOf(QStringLiteral("\u20ac"), QStringLiteral("a\u0142b\U0001f600")),
                   "Set-Cookie:?=a?b??"},
        CookieCase{"NulInNameCutsTheNameOnly",
                   cookieOf(QString::fromLatin1("a\0b", 3), QString::fromLatin1("1")),
                   "Set-Cookie:a=1"},
        CookieCase{"NulInValueCutsTheValueOnly",
                   BwaHttpCookie(QStringLiteral("a"), QString::fromLatin1("1\0002", 3), 9,
                                 QString::fromLatin1("d\0e", 3), QString::fromLatin1("\0p", 2),
                                 true, false),
                   "Set-Cookie:a=1; Max-Age=9; Domain=d; Path=; Secure"}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Attributes, RenderCookie,
    testing::Values(
        CookieCase{"MaxAgeZeroIsNotWritten", cookieWith(0), "Set-Cookie:id=7"},
        CookieCase{"MaxAgeOne", cookieWith(1), "Set-Cookie:id=7; Max-Age=1"},
        CookieCase{"MaxAgeAboveSigned", cookieWith(2147483648U),
                   "Set-Cookie:id=7; Max-Age=2147483648"},
        CookieCase{"MaxAgeLargest", cookieWith(4294967295U), "Set-Cookie:id=7; Max-Age=4294967295"},
        CookieCase{"Domain", cookieWith(0, QStringLiteral("example.org")),
                   "Set-Cookie:id=7; Domain=example.org"},
        CookieCase{"EmptyDomain", cookieWith(0, emptyText), "Set-Cookie:id=7; Domain="},
        CookieCase{"Path", cookieWith(0, QString(), QStringLiteral("/a;b")),
                   "Set-Cookie:id=7; Path=/a;b"},
        CookieCase{"EmptyPath", cookieWith(0, QString(), emptyText), "Set-Cookie:id=7; Path="},
        CookieCase{"EmptyDomainAndPath", cookieWith(0, emptyText, emptyText),
                   "Set-Cookie:id=7; Domain=; Path="},
        CookieCase{"Secure", cookieWith(0, QString(), QString(), true), "Set-Cookie:id=7; Secure"},
        CookieCase{"HttpOnly", cookieWith(0, QString(), QString(), false, true),
                   "Set-Cookie:id=7; HttpOnly"},
        CookieCase{"Everything", fullCookie(),
                   "Set-Cookie:id=7; Max-Age=3600; Domain=example.org; Path=/api; Secure"
                   "; HttpOnly"}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Expired, RenderCookie,
    testing::Values(
        CookieCase{"Alone", expiredCookie(),
                   "Set-Cookie:id=7; Expires=Fri, 01-Jan-1971 01:00:00 GMT;"},
        CookieCase{"WritesNoMaxAge", expiredCookie(3600),
                   "Set-Cookie:id=7; Expires=Fri, 01-Jan-1971 01:00:00 GMT;"},
        CookieCase{"KeepsTheDoubledSemicolonBeforeThePath",
                   expiredCookie(0, QString(), QStringLiteral("/")),
                   "Set-Cookie:id=7; Expires=Fri, 01-Jan-1971 01:00:00 GMT;; Path=/"},
        CookieCase{"KeepsTheDoubledSemicolonBeforeTheDomain",
                   expiredCookie(1, QStringLiteral("d"), emptyText),
                   "Set-Cookie:id=7; Expires=Fri, 01-Jan-1971 01:00:00 GMT;; Domain=d; Path="}),
    [](const auto& info) { return std::string(info.param.name); });
