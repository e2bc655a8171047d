// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"
#include "support/LiteralHeaderValue.h"
#include "support/QtPrinters.h"
#include "support/RandomSource.h"
#include "support/ShownText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct HeaderValueCase {
    const char* name;
    const char* text;
    const char* elements; // each main value with its parameters in braces, sorted by name
};

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

} // namespace

class ParseGenericHeader : public testing::TestWithParam<HeaderValueCase>
{
};

TEST_P(ParseGenericHeader, SplitsElementsAndParameters)
{
    EXPECT_EQ(shownElements(BwaCgiRequest::parseGenericHeader(text(GetParam().text))),
              GetParam().elements);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ParseGenericHeader,
    testing::Values(
        HeaderValueCase{"QuotedParameterAndSecondElement",
                        "text/html; charset=\"utf\\-8\" x; q=1, text/plain",
                        "text/html{charset=utf-8;q=1}text/plain{}"},
        HeaderValueCase{"RepeatedNameLastWins", "a; b; b=2", "a{b=2}"},
        HeaderValueCase{"RepeatedNameLastWinsWithoutValue", "a; b=2; b", "a{b=<null>}"},
        HeaderValueCase{"NoEqualsSignGivesNull", "a; b", "a{b=<null>}"},
        HeaderValueCase{"NothingAfterEqualsSignGivesEmpty", "a; b=", "a{b=}"},
        HeaderValueCase{"BlankAfterEqualsSignGivesEmpty", "a; b= ; c", "a{b=;c=<null>}"},
        HeaderValueCase{"EmptyQuotesGiveEmpty", "a; b=\"\"", "a{b=}"},
        HeaderValueCase{"OpeningQuoteAloneGivesEmpty", "a; b=\"", "a{b=}"},
        HeaderValueCase{"Empty", "", "{}"}, HeaderValueCase{"Blank", " \t", "{}"},
        HeaderValueCase{"MainValueIsTrimmed", " \ta b\r\n", "a b{}"},
        HeaderValueCase{"NoBreakSpaceIsTrimmed",
                        "\xa0"
                        "a\xa0; \xa0"
                        "b\xa0=\xa0"
                        "1\xa0",
                        "a{b=1}"},
        HeaderValueCase{"NameAndValueAreTrimmed", "a;\t b = 1 \t", "a{b=1}"},
        HeaderValueCase{"CaseStays", "A/B; Name=X", "A/B{Name=X}"},
        HeaderValueCase{"Comma", "a,b", "a{}b{}"}, HeaderValueCase{"CommaAtTheEnd", "a,", "a{}{}"},
        HeaderValueCase{"CommaOnly", ",", "{}{}"},
        HeaderValueCase{"SemicolonOnly", ";", "{=<null>}"},
        HeaderValueCase{"SemicolonAtTheEnd", "a;", "a{=<null>}"},
        HeaderValueCase{"TwoSemicolons", "a;;b=1", "a{=<null>;b=1}"},
        HeaderValueCase{"NoName", "a; =1", "a{=1}"},
        HeaderValueCase{"NoMainValue", "; b=1", "{b=1}"},
        HeaderValueCase{"EqualsSignInMainValue", "a=1; b=2", "a=1{b=2}"},
        HeaderValueCase{"EqualsSignInValue", "a; b=1=2", "a{b=1=2}"},
        HeaderValueCase{"ParameterEndsAtComma", "a; b, c; d=1", "a{b=<null>}c{d=1}"},
        HeaderValueCase{"ValueEndsAtComma", "a; b=1, c", "a{b=1}c{}"},
        HeaderValueCase{"SeparatorsInQuotes", "a; b=\"1;2,3=4\"; c=5", "a{b=1;2,3=4;c=5}"},
        HeaderValueCase{"BlanksInQuotesStay", "a; b=\" 1 \"", "a{b= 1 }"},
        HeaderValueCase{"EscapedQuote", "a; b=\"1\\\"2\"", "a{b=1\"2}"},
        HeaderValueCase{"EscapedBackslash", "a; b=\"1\\\\\"; c", "a{b=1\\;c=<null>}"},
        HeaderValueCase{"TextAfterClosingQuoteIsIgnored", "a; b=\"1\"=\"2\" 3, c", "a{b=1}c{}"},
        HeaderValueCase{"UnterminatedQuotesTakeTheRest", "a; b=\"1; c=2, d", "a{b=1; c=2, d}"},
        HeaderValueCase{"UnterminatedQuotesAfterEscape", "a; b=\"1\\,2", "a{b=1,2}"},
        HeaderValueCase{"BackslashAtTheEndGivesNul", "a; b=\"1\\", "a{b=1\\u0000}"},
        HeaderValueCase{"BackslashAloneInQuotesGivesNul", "a; b=\"\\", "a{b=\\u0000}"},
        HeaderValueCase{"EscapedBackslashAtTheEndGivesNoNul", "a; b=\"1\\\\", "a{b=1\\}"},
        HeaderValueCase{"BlankBeforeQuoteIsNoQuote", "a; b= \"1;2\"", "a{2\"=<null>;b=\"1}"},
        HeaderValueCase{"QuoteInsideValueIsText", "a; b=x\"1;c\"", "a{b=x\"1;c\"=<null>}"},
        HeaderValueCase{"QuotesInMainValueAreText", "\"a;b\"", "\"a{b\"=<null>}"},
        HeaderValueCase{"SeparatorsWithTheHighestBitSet",
                        "\xac\xbb\xbd; \xbd=\xa2\xbb; c=\"\xdc\xa2\"",
                        "\\u00AC\\u00BB\\u00BD{c=\\u00DC\\u00A2;\\u00BD=\\u00A2\\u00BB}"},
        HeaderValueCase{"BackslashOutsideQuotesIsText", "a\\; b=\\1", "a\\{b=\\1}"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ParseGenericHeaderText, GivenNulKeepsIt)
{
    const QString nul(1, QChar(0));

    EXPECT_EQ(shownElements(BwaCgiRequest::parseGenericHeader(text("a") + nul + text("; b=") + nul +
                                                              text("1; c=\"2") + nul + text("\""))),
              "a\\u0000{b=\\u00001;c=2\\u0000}");
}

TEST(ParseGenericHeaderText, GivenRandomTextAgreesWithTheLiteralRules)
{
    RandomSource random;
    const QString alphabet = QStringLiteral(u"abb;;;==,\"\"\"\\\\ \t\u00a0\u00e9\u20ac") + QChar(0);
    for (int round = RandomSource::rounds(20000); round > 0; --round) {
        const QString input = random.text(alphabet, 24);

        const auto elements = BwaCgiRequest::parseGenericHeader(input);

        ASSERT_EQ(shownElements(elements), shownElements(literalHeaderValue(input)))
            << shown(input);
    }
}

TEST(ParseGenericHeaderText, GivenManyElementsKeepsThemAll)
{
    const auto elements = BwaCgiRequest::parseGenericHeader(text("a;b=1,").repeated(200000));

    ASSERT_EQ(elements.size(), 200001);
    EXPECT_EQ(shownElements(elements.mid(199999)), "a{b=1}{}");
}

TEST(ParseGenericHeaderText, GivenManyParametersKeepsTheLast)
{
    const auto elements = BwaCgiRequest::parseGenericHeader(
        text("a") + text(";b=\"\\1\"").repeated(200000) + text("2;b=3"));

    EXPECT_EQ(shownElements(elements), "a{b=3}");
}

TEST(ParseGenericHeaderText, GivenManyEscapesKeepsEachCharacter)
{
    const auto elements = BwaCgiRequest::parseGenericHeader(
        text("a;b=\"") + text("\\\\").repeated(500000) + text("\""));

    ASSERT_EQ(elements.size(), 1);
    EXPECT_EQ(elements.first().second.value(text("b")), QString(500000, QLatin1Char('\\')));
}
