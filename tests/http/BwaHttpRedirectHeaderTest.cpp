// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpRedirectHeader.h"

#include "http/InheritsVirtually.h"
#include "support/FailingStreams.h"
#include "support/QtPrinters.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

const QString target = QStringLiteral("/login?a=b c");

BwaHttpRedirectHeader withCookies(BwaHttpRedirectHeader header)
{
    header.cookies.append(BwaHttpCookie(QStringLiteral("b"), QStringLiteral("1")));
    header.cookies.append(BwaHttpCookie(QStringLiteral("a"), QStringLiteral("2")));
    return header;
}

} // namespace

TEST(BwaHttpRedirectHeader, WhenMadeOfALocationHasNoStatus)
{
    const BwaHttpRedirectHeader header(target);

    EXPECT_EQ(header.location(), target);
    EXPECT_EQ(header.statusCode(), -1);
    EXPECT_TRUE(header.cookies.isEmpty());
}

TEST(BwaHttpRedirectHeader, WhenPermanentHasStatus301)
{
    const BwaHttpRedirectHeader header(target, true);

    EXPECT_EQ(header.location(), target);
    EXPECT_EQ(header.statusCode(), 301);
}

TEST(BwaHttpRedirectHeader, WhenNotPermanentHasStatus302)
{
    const BwaHttpRedirectHeader header(target, false);

    EXPECT_EQ(header.location(), target);
    EXPECT_EQ(header.statusCode(), 302);
}

TEST(BwaHttpRedirectHeader, KeepsItsStatusInSixteenSignedBits)
{
    EXPECT_TRUE((std::is_same_v<decltype(BwaHttpRedirectHeader(target).statusCode()), short>));
}

TEST(BwaHttpRedirectHeader, DerivesFromTheHeaderBaseWithoutSharingIt)
{
    EXPECT_TRUE((std::is_base_of_v<BwaAbstractHttpHeader, BwaHttpRedirectHeader>));
    EXPECT_FALSE((InheritsVirtually<BwaHttpRedirectHeader, BwaAbstractHttpHeader>::value));
}

TEST(BwaHttpRedirectHeader, WhenCookiesAreSetWritesThemBeforeTheEmptyLine)
{
    EXPECT_EQ(rendered(withCookies(BwaHttpRedirectHeader(target))),
              "Location: /login?a=b c\nSet-Cookie:b=1\nSet-Cookie:a=2\n\n");
}

TEST(BwaHttpRedirectHeader, FlushesAfterEachLineAndNowhereElse)
{
    EXPECT_EQ(renderedWithFlushes(withCookies(BwaHttpRedirectHeader(target, true))),
              "Status: 301 Moved Permanently\n|Location: /login?a=b c\n|Set-Cookie:b=1\n"
              "|Set-Cookie:a=2\n|\n|");
}

TEST(BwaHttpRedirectHeader, WhenRenderedTwiceWritesTheSameBytesTwice)
{
    const BwaHttpRedirectHeader header(target, false);

    const std::string first = rendered(header);
    const std::string second = rendered(header);

    EXPECT_EQ(first, "Status: 302 Found\nLocation: /login?a=b c\n\n");
    EXPECT_EQ(second, first);
}

TEST(BwaHttpRedirectHeader, GivenFailedStreamLeavesItFailedAndWritesNothing)
{
    std::ostringstream stream = failedStream();

    stream << BwaHttpRedirectHeader(target, true);

    EXPECT_TRUE(stream.fail());
    EXPECT_EQ(stream.str(), "");
}

namespace {

struct RedirectCase {
    const char* name;
    BwaHttpRedirectHeader header;
    std::string expected;
};

void PrintTo(const RedirectCase& testCase, std::ostream* stream)
{
    *stream << testCase.name;
}

class RenderRedirect : public testing::TestWithParam<RedirectCase>
{
};

} // namespace

TEST_P(RenderRedirect, WritesExactlyTheseBytes)
{
    EXPECT_EQ(rendered(GetParam().header), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RenderRedirect,
    testing::Values(
        RedirectCase{"WithoutStatus", BwaHttpRedirectHeader(target), "Location: /login?a=b c\n\n"},
        RedirectCase{"Permanent", BwaHttpRedirectHeader(target, true),
                     "Status: 301 Moved Permanently\nLocation: /login?a=b c\n\n"},
        RedirectCase{"NotPermanent", BwaHttpRedirectHeader(target, false),
                     "Status: 302 Found\nLocation: /login?a=b c\n\n"},
        RedirectCase{"NullLocation", BwaHttpRedirectHeader(QString()), "Location: \n\n"},
        RedirectCase{"EmptyLocation", BwaHttpRedirectHeader(QLatin1String(""), false),
                     "Status: 302 Found\nLocation: \n\n"},
        RedirectCase{"NothingIsEscaped",
                     BwaHttpRedirectHeader(QStringLiteral("x\"%20 <\u00e9>#?&\\")),
                     "Location: x\"%20 <\xe9>#?&\\\n\n"},
        RedirectCase{"BeyondLatin1", BwaHttpRedirectHeader(QStringLiteral("/\u20ac")),
                     "Location: /?\n\n"},
        RedirectCase{"NulCutsTheLocation",
                     BwaHttpRedirectHeader(QString::fromLatin1("/a\0b", 4), true),
                     "Status: 301 Moved Permanently\nLocation: /a\n\n"}),
    [](const auto& info) { return std::string(info.param.name); });
