// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiEnvironment.h"

#include "support/LiteralServerProtocol.h"
#include "support/MemoryCgiInput.h"
#include "support/QtPrinters.h"
#include "support/RandomSource.h"
#include "support/ShownText.h"
#include "support/Skips.h"

#include <QStringList>

#include <gmock/gmock.h>

#include <ostream>
#include <string>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using TextField = QString (BwaCgiEnvironment::*)() const;

struct TextVariable {
    const char* variable;
    TextField field;
};

struct NumberCase {
    const char* name;
    const char* text;
    unsigned int number;
};

struct ProtocolCase {
    const char* name;
    const char* text;
    const char* protocol;
    unsigned int majorVersion;
    unsigned int minorVersion;
};

struct CookiesCase {
    const char* name;
    const char* header;
    const char* cookies; // each in brackets, name and value separated by "|"
};

template <typename Case>
std::string nameOf(const testing::TestParamInfo<Case>& info)
{
    return info.param.name;
}

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

std::string shownProtocol(const BwaCgiEnvironment::ServerProtocol& protocol)
{
    return shownName(protocol.protocol) + " " + std::to_string(protocol.majorVersion) + "." +
        std::to_string(protocol.minorVersion);
}

std::string shownCookies(const QList<BwaHttpCookie>& cookies)
{
    std::string result;
    for (const BwaHttpCookie& cookie : cookies) {
        result += "[" + shownName(cookie.name) + "|" + shownName(cookie.value) + "]";
    }
    return result;
}

// The cookies as plainly as the rules read.
QList<BwaHttpCookie> literalCookies(const QString& header)
{
    QList<BwaHttpCookie> cookies;
    const QStringList elements = header.split(text("; "));
    for (const QString& element : elements) {
        const int equals = element.indexOf(QLatin1Char('='));
        const BwaHttpCookie cookie(equals < 0 ? QString() : element.left(equals),
                                   equals < 0 ? element : element.mid(equals + 1));
        if (!cookie.name.isEmpty() || !cookie.value.isEmpty()) {
            cookies.append(cookie);
        }
    }
    return cookies;
}

} // namespace

TEST(BwaCgiEnvironment, ReadsEachVariableOnceInOrder)
{
    MemoryCgiInput input;

    const BwaCgiEnvironment environment(&input);

    EXPECT_THAT(input.variablesRead,
                ElementsAre(text("SERVER_SOFTWARE"), text("SERVER_NAME"), text("GATEWAY_INTERFACE"),
                            text("SERVER_PROTOCOL"), text("SERVER_PORT"), text("REQUEST_METHOD"),
                            text("PATH_INFO"), text("PATH_TRANSLATED"), text("SCRIPT_NAME"),
                            text("QUERY_STRING"), text("REMOTE_HOST"), text("REMOTE_ADDR"),
                            text("AUTH_TYPE"), text("REMOTE_USER"), text("REMOTE_IDENT"),
                            text("CONTENT_TYPE"), text("CONTENT_LENGTH"), text("HTTP_ACCEPT"),
                            text("HTTP_ACCEPT_LANGUAGE"), text("HTTP_USER_AGENT"),
                            text("HTTP_AUTHORIZATION"), text("HTTP_COOKIE"), text("HTTPS")));
}

TEST(BwaCgiEnvironment, ReadsNothingOfTheBody)
{
    MemoryCgiInput input("text/plain", "body");

    const BwaCgiEnvironment environment(&input);

    EXPECT_THAT(input.readSizes, IsEmpty());
}

TEST(BwaCgiEnvironment, KeepsItsInput)
{
    MemoryCgiInput input;

    EXPECT_EQ(BwaCgiEnvironment(&input).input(), &input);
}

TEST(BwaCgiEnvironment, GivenNoVariablesHasZeroNumbersAndNoCookies)
{
    MemoryCgiInput input;

    const BwaCgiEnvironment environment(&input);

    EXPECT_EQ(environment.serverPort(), 0);
    EXPECT_EQ(environment.contentLength(), 0U);
    EXPECT_FALSE(environment.https());
    EXPECT_THAT(environment.cookies(), IsEmpty());
}

TEST(BwaCgiEnvironment, KeepsItsValuesWhenTheInputChanges)
{
    MemoryCgiInput input;
    input.set("PATH_INFO", "/a");
    const BwaCgiEnvironment environment(&input);

    input.set("PATH_INFO", "/b");

    EXPECT_EQ(environment.pathInfo(), text("/a"));
}

TEST(BwaCgiEnvironment, ParsesTheCookieHeader)
{
    MemoryCgiInput input;
    input.set("HTTP_COOKIE", "a=1; b=2; c");

    EXPECT_EQ(shownCookies(BwaCgiEnvironment(&input).cookies()), "[a|1][b|2][|c]");
}

// --- variables that are kept as they come

class BwaCgiEnvironmentText : public testing::TestWithParam<TextVariable>
{
};

TEST_P(BwaCgiEnvironmentText, IsKeptAsItComes)
{
    const QString value = QStringLiteral(u" A%20b; \u00e9\u20ac=\"x\" ");
    MemoryCgiInput input;
    input.variables.insert(text(GetParam().variable), value);

    EXPECT_EQ((BwaCgiEnvironment(&input).*GetParam().field)(), value);
}

TEST_P(BwaCgiEnvironmentText, GivenOtherVariablesOnlyIsEmpty)
{
    MemoryCgiInput others;
    const BwaCgiEnvironment unset(&others);
    const QList<QString> names = others.variablesRead;
    for (const QString& name : names) {
        others.variables.insert(name, text("other"));
    }
    others.variables.remove(text(GetParam().variable));

    EXPECT_EQ((BwaCgiEnvironment(&others).*GetParam().field)(), text(""));
}

INSTANTIATE_TEST_SUITE_P(
    Variables, BwaCgiEnvironmentText,
    testing::Values(TextVariable{"SERVER_SOFTWARE", &BwaCgiEnvironment::serverSoftware},
                    TextVariable{"SERVER_NAME", &BwaCgiEnvironment::serverName},
                    TextVariable{"GATEWAY_INTERFACE", &BwaCgiEnvironment::gatewayInterface},
                    TextVariable{"SERVER_PROTOCOL", &BwaCgiEnvironment::serverProtocol},
                    TextVariable{"REQUEST_METHOD", &BwaCgiEnvironment::requestMethod},
                    TextVariable{"PATH_INFO", &BwaCgiEnvironment::pathInfo},
                    TextVariable{"PATH_TRANSLATED", &BwaCgiEnvironment::pathTranslated},
                    TextVariable{"SCRIPT_NAME", &BwaCgiEnvironment::scriptName},
                    TextVariable{"QUERY_STRING", &BwaCgiEnvironment::queryString},
                    TextVariable{"REMOTE_HOST", &BwaCgiEnvironment::remoteHost},
                    TextVariable{"REMOTE_ADDR", &BwaCgiEnvironment::remoteAddr},
                    TextVariable{"AUTH_TYPE", &BwaCgiEnvironment::authType},
                    TextVariable{"REMOTE_USER", &BwaCgiEnvironment::remoteUser},
                    TextVariable{"REMOTE_IDENT", &BwaCgiEnvironment::remoteIdent},
                    TextVariable{"CONTENT_TYPE", &BwaCgiEnvironment::contentType},
                    TextVariable{"HTTP_ACCEPT", &BwaCgiEnvironment::httpAccept},
                    TextVariable{"HTTP_ACCEPT_LANGUAGE", &BwaCgiEnvironment::httpAcceptLanguage},
                    TextVariable{"HTTP_USER_AGENT", &BwaCgiEnvironment::httpUserAgent},
                    TextVariable{"HTTP_AUTHORIZATION", &BwaCgiEnvironment::httpAuthorization},
                    TextVariable{"HTTP_COOKIE", &BwaCgiEnvironment::httpCookie}),
    [](const auto& info) { return std::string(info.param.variable); });

// --- numbers

class BwaCgiEnvironmentServerPort : public testing::TestWithParam<NumberCase>
{
};

TEST_P(BwaCgiEnvironmentServerPort, IsTheNumberOrZero)
{
    MemoryCgiInput input;
    input.set("SERVER_PORT", GetParam().text);

    EXPECT_EQ(BwaCgiEnvironment(&input).serverPort(), GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BwaCgiEnvironmentServerPort,
    testing::Values(NumberCase{"Usual", "8080", 8080}, NumberCase{"Zero", "0", 0},
                    NumberCase{"Largest", "65535", 65535}, NumberCase{"TooLarge", "65536", 0},
                    NumberCase{"FarTooLarge", "4294967376", 0}, NumberCase{"Empty", "", 0},
                    NumberCase{"Blank", " ", 0}, NumberCase{"Negative", "-80", 0},
                    NumberCase{"NegativeZero", "-0", 0}, NumberCase{"Plus", "+80", 0},
                    NumberCase{"BlankAndPlus", " +80", 0}, NumberCase{"Letters", "80a", 0},
                    NumberCase{"LettersInFront", "a80", 0}, NumberCase{"Hexadecimal", "0x50", 0},
                    NumberCase{"LeadingZeros", "00080", 80}, NumberCase{"LeadingBlank", " 80", 80},
                    NumberCase{"TrailingBlank", "80 ", 80},
                    NumberCase{"TrailingLine", "80\r\n", 80}, NumberCase{"BlankInside", "8 0", 0},
                    NumberCase{"Fraction", "80.0", 0}, NumberCase{"Exponent", "8e1", 0},
                    NumberCase{"Group", "8,080", 0}),
    nameOf<NumberCase>);

class BwaCgiEnvironmentContentLength : public testing::TestWithParam<NumberCase>
{
};

TEST_P(BwaCgiEnvironmentContentLength, IsTheNumberOrZero)
{
    MemoryCgiInput input;
    input.set("CONTENT_LENGTH", GetParam().text);

    EXPECT_EQ(BwaCgiEnvironment(&input).contentLength(), GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BwaCgiEnvironmentContentLength,
    testing::Values(NumberCase{"Usual", "12", 12}, NumberCase{"Zero", "0", 0},
                    NumberCase{"AboveSixteenBits", "65536", 65536},
                    NumberCase{"SignBit", "2147483648", 2147483648U},
                    NumberCase{"Largest", "4294967295", 4294967295U},
                    NumberCase{"TooLarge", "4294967296", 0},
                    NumberCase{"FarTooLarge", "99999999999999999999999999", 0},
                    NumberCase{"Empty", "", 0}, NumberCase{"Blank", " ", 0},
                    NumberCase{"Negative", "-5", 0}, NumberCase{"Plus", "+5", 0},
                    NumberCase{"BlankAndPlus", " +5", 0}, NumberCase{"SignAlone", "+", 0},
                    NumberCase{"Letters", "12abc", 0}, NumberCase{"Hexadecimal", "0x1F", 0},
                    NumberCase{"LeadingZeros", "0012", 12}, NumberCase{"LeadingBlank", " 5", 5},
                    NumberCase{"TrailingBlank", "5 ", 5}, NumberCase{"BlankInside", "1 2", 0},
                    NumberCase{"TwoLengths", "5, 5", 0}, NumberCase{"Fraction", "5.0", 0}),
    nameOf<NumberCase>);

TEST(BwaCgiEnvironmentContentLengthText, GivenDigitsOfOtherScriptsIsZero)
{
    MemoryCgiInput input;
    input.variables.insert(text("CONTENT_LENGTH"), QStringLiteral(u"\u0665"));

    EXPECT_EQ(BwaCgiEnvironment(&input).contentLength(), 0U);
}

TEST(BwaCgiEnvironmentContentLengthText, GivenRandomTextAgreesWithTheUnsignedConversion)
{
    if (withQt6()) {
        GTEST_SKIP()
            << "Qt 6 converts other texts to numbers than Qt 5, whose rules the library keeps";
    }
    RandomSource random;
    const QString alphabet = QStringLiteral(u"000123456789 \t\u00a0\u2003+-x.\u0665") + QChar(0);
    for (int round = RandomSource::rounds(5000); round > 0; --round) {
        const QString number = random.text(QStringLiteral("0123456789"), 12);
        const QString value = random.text(alphabet, 3) + number + random.text(alphabet, 3);
        MemoryCgiInput input;
        input.variables.insert(text("CONTENT_LENGTH"), value);
        input.variables.insert(text("SERVER_PORT"), value);

        const BwaCgiEnvironment environment(&input);

        const bool isSigned = value.contains(QLatin1Char('+')) || value.contains(QLatin1Char('-'));
        ASSERT_EQ(environment.contentLength(), isSigned ? 0 : value.toUInt()) << shown(value);
        ASSERT_EQ(environment.serverPort(), isSigned ? 0 : value.toUShort()) << shown(value);
    }
}

// --- HTTPS

class BwaCgiEnvironmentHttps : public testing::TestWithParam<NumberCase>
{
};

TEST_P(BwaCgiEnvironmentHttps, IsTrueForOnOnly)
{
    MemoryCgiInput input;
    input.set("HTTPS", GetParam().text);

    EXPECT_EQ(BwaCgiEnvironment(&input).https(), GetParam().number == 1);
}

INSTANTIATE_TEST_SUITE_P(Cases, BwaCgiEnvironmentHttps,
                         testing::Values(NumberCase{"On", "on", 1}, NumberCase{"Capital", "On", 0},
                                         NumberCase{"Capitals", "ON", 0}, NumberCase{"One", "1", 0},
                                         NumberCase{"Off", "off", 0}, NumberCase{"Empty", "", 0},
                                         NumberCase{"LeadingBlank", " on", 0},
                                         NumberCase{"TrailingBlank", "on ", 0},
                                         NumberCase{"True", "true", 0}),
                         nameOf<NumberCase>);

// --- parseServerProtocol

class ParseServerProtocol : public testing::TestWithParam<ProtocolCase>
{
};

TEST_P(ParseServerProtocol, SplitsNameAndVersion)
{
    const auto protocol = BwaCgiEnvironment::parseServerProtocol(text(GetParam().text));

    EXPECT_EQ(protocol.protocol, text(GetParam().protocol));
    EXPECT_EQ(protocol.majorVersion, GetParam().majorVersion);
    EXPECT_EQ(protocol.minorVersion, GetParam().minorVersion);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ParseServerProtocol,
    testing::Values(ProtocolCase{"Http11", "HTTP/1.1", "HTTP", 1, 1},
                    ProtocolCase{"Http10", "HTTP/1.0", "HTTP", 1, 0},
                    ProtocolCase{"Empty", "", "", 0, 0},
                    ProtocolCase{"MajorOnly", "HTTP/2", "HTTP", 0, 0},
                    ProtocolCase{"NoSlash", "HTTP", "HTTP", 0, 0},
                    ProtocolCase{"NothingAfterTheSlash", "HTTP/", "HTTP", 0, 0},
                    ProtocolCase{"TrailingBlank", "HTTP/1.1 ", "HTTP", 0, 0},
                    ProtocolCase{"TrailingLineFeed", "HTTP/1.1\n", "HTTP", 0, 0},
                    ProtocolCase{"LeadingBlank", "HTTP/ 1.1", "HTTP", 0, 0},
                    ProtocolCase{"BlanksInTheName", " HTTP /1.1", " HTTP ", 1, 1},
                    ProtocolCase{"TwoDots", "HTTP/1.1.1", "HTTP", 0, 0},
                    ProtocolCase{"NoMinor", "HTTP/1.", "HTTP", 0, 0},
                    ProtocolCase{"NoMajor", "HTTP/.1", "HTTP", 0, 0},
                    ProtocolCase{"DotOnly", "HTTP/.", "HTTP", 0, 0},
                    ProtocolCase{"SecondSlash", "HTTP/1.1/x", "HTTP", 0, 0},
                    ProtocolCase{"SlashFirst", "/1.1", "", 1, 1},
                    ProtocolCase{"SlashOnly", "/", "", 0, 0},
                    ProtocolCase{"Signed", "HTTP/+1.1", "HTTP", 0, 0},
                    ProtocolCase{"Letters", "HTTP/1.x", "HTTP", 0, 0},
                    ProtocolCase{"LeadingZeros", "HTTP/01.001", "HTTP", 1, 1},
                    ProtocolCase{"SeveralDigits", "INCLUDED/12.345", "INCLUDED", 12, 345},
                    ProtocolCase{"Largest", "HTTP/4294967295.0", "HTTP", 4294967295U, 0},
                    ProtocolCase{"MajorTooLarge", "HTTP/4294967296.1", "HTTP", 0, 1},
                    ProtocolCase{"LowerCase", "http/1.1", "http", 1, 1}),
    nameOf<ProtocolCase>);

TEST(ParseServerProtocolText, GivenRandomTextAgreesWithTheRegularExpression)
{
    RandomSource random;
    const QString alphabet = QStringLiteral(u"HT//01123.. +\n\u0665\u00b2") + QChar(0);
    for (int round = RandomSource::rounds(20000); round > 0; --round) {
        const QString input = random.text(alphabet, 12);

        const auto protocol = BwaCgiEnvironment::parseServerProtocol(input);

        ASSERT_EQ(shownProtocol(protocol), shownProtocol(literalServerProtocol(input)))
            << shown(input);
    }
}

TEST(ParseServerProtocolText, GivenAMillionDigitsStillConverts)
{
    const QString zeros(1024 * 1024, QLatin1Char('0'));

    const auto protocol =
        BwaCgiEnvironment::parseServerProtocol(text("HTTP/") + zeros + text("1.") + zeros);

    EXPECT_EQ(shownProtocol(protocol), "HTTP 1.0");
}

// --- parseCookies and parseCookie

class ParseCookies : public testing::TestWithParam<CookiesCase>
{
};

TEST_P(ParseCookies, SplitsTheHeader)
{
    EXPECT_EQ(shownCookies(BwaCgiEnvironment::parseCookies(text(GetParam().header))),
              GetParam().cookies);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ParseCookies,
    testing::Values(
        CookiesCase{"Three", "a=1; b=2; c", "[a|1][b|2][|c]"}, CookiesCase{"None", "", ""},
        CookiesCase{"EmptyElement", "a=1; ; b=2", "[a|1][b|2]"},
        CookiesCase{"BareSemicolonDoesNotSplit", "a=1;b=2", "[a|1;b=2]"},
        CookiesCase{"CommaDoesNotSplit", "a=1, b=2", "[a|1, b=2]"},
        CookiesCase{"SemicolonAndTabDoNotSplit", "a=1;\tb=2", "[a|1;\\u0009b=2]"},
        CookiesCase{"MoreEqualsSigns", "a=x=y", "[a|x=y]"}, CookiesCase{"EqualsSignOnly", "=", ""},
        CookiesCase{"EqualsSignsOnly", "==", "[|=]"}, CookiesCase{"NoName", "=v", "[|v]"},
        CookiesCase{"NoValue", "a=", "[a|]"}, CookiesCase{"RepeatedName", "a=1; a=2", "[a|1][a|2]"},
        CookiesCase{"BlanksStay", " a = 1 ;  b=2", "[ a | 1 ][ b|2]"},
        CookiesCase{"NothingIsDecoded", "a%20=%41+b", "[a%20|%41+b]"},
        CookiesCase{"QuotesStay", "a=\"1; b\"", "[a|\"1][|b\"]"},
        CookiesCase{"TrailingSeparator", "a=1; ", "[a|1]"},
        CookiesCase{"TrailingSemicolon", "a=1;", "[a|1;]"},
        CookiesCase{"LeadingSeparator", "; a=1", "[a|1]"},
        CookiesCase{"SeparatorsOnly", "; ; ; ", ""},
        CookiesCase{"SeparatorsWithTheHighestBitSet", "\xbb\xa0\xbd=\xbd\xbb\xa0",
                    "[\\u00BB\\u00A0\\u00BD|\\u00BD\\u00BB\\u00A0]"},
        CookiesCase{"DoubleSemicolon", "a=1;; b=2", "[a|1;][b|2]"}),
    nameOf<CookiesCase>);

TEST(ParseCookiesText, GivenRandomTextAgreesWithTheLiteralRules)
{
    RandomSource random;
    const QString alphabet = QStringLiteral(u"ab==;;;   ,\t\"\u00a0\u00e9") + QChar(0);
    for (int round = RandomSource::rounds(20000); round > 0; --round) {
        const QString header = random.text(alphabet, 16);

        const QList<BwaHttpCookie> cookies = BwaCgiEnvironment::parseCookies(header);

        ASSERT_EQ(shownCookies(cookies), shownCookies(literalCookies(header))) << shown(header);
    }
}

TEST(ParseCookiesText, GivenManyCookiesKeepsThemInOrder)
{
    const QString header = text("a=1; b=2; ").repeated(100000);

    const QList<BwaHttpCookie> cookies = BwaCgiEnvironment::parseCookies(header);

    ASSERT_EQ(cookies.size(), 200000);
    EXPECT_EQ(shownCookies(cookies.mid(199998)), "[a|1][b|2]");
}

TEST(ParseCookie, GivenNoEqualsSignHasAnEmptyNameThatIsNotNull)
{
    const BwaHttpCookie cookie = BwaCgiEnvironment::parseCookie(text("c"));

    EXPECT_TRUE(cookie.name.isEmpty());
    EXPECT_FALSE(cookie.name.isNull());
    EXPECT_EQ(cookie.value, text("c"));
}

TEST(ParseCookie, DoesNotSplitAtSeparators)
{
    const BwaHttpCookie cookie = BwaCgiEnvironment::parseCookie(text("a=1; b=2"));

    EXPECT_EQ(cookie.name, text("a"));
    EXPECT_EQ(cookie.value, text("1; b=2"));
}

TEST(ParseCookie, LeavesTheOtherFieldsAtTheirDefaults)
{
    const BwaHttpCookie cookie = BwaCgiEnvironment::parseCookie(text("a=1"));

    EXPECT_EQ(cookie.maxAge, 0U);
    EXPECT_TRUE(cookie.domain.isNull());
    EXPECT_TRUE(cookie.path.isNull());
    EXPECT_FALSE(cookie.secure);
    EXPECT_FALSE(cookie.httpOnly);
    EXPECT_FALSE(cookie.expired);
}

// --- parseContentType

struct ContentTypeCase {
    const char* name;
    const char* header;
    const char* contentType; // media type, then the sorted parameters in braces
};

class ParseContentType : public testing::TestWithParam<ContentTypeCase>
{
};

TEST_P(ParseContentType, TakesTheFirstElement)
{
    EXPECT_EQ(shownElement(BwaCgiEnvironment::parseContentType(text(GetParam().header))),
              GetParam().contentType);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ParseContentType,
    testing::Values(ContentTypeCase{"Empty", "", "{}"},
                    ContentTypeCase{"MediaType", "text/html", "text/html{}"},
                    ContentTypeCase{"Parameter", "application/json; charset=utf-8",
                                    "application/json{charset=utf-8}"},
                    ContentTypeCase{"CaseStays", "Text/HTML; Charset=UTF-8",
                                    "Text/HTML{Charset=UTF-8}"},
                    ContentTypeCase{"BlanksAreTrimmed", " text/html ;\tcharset = utf-8 ",
                                    "text/html{charset=utf-8}"},
                    ContentTypeCase{"SecondElementIsDropped", "text/html; q=1, text/plain; q=2",
                                    "text/html{q=1}"},
                    ContentTypeCase{"EmptyFirstElement", ", text/plain", "{}"}),
    nameOf<ContentTypeCase>);
