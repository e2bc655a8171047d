// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaHtmlAttribute.h"

#include "support/QtPrinters.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

TEST(BwaHtmlAttribute, WhenMadeOfANameHasTheNameAsItsValue)
{
    const BwaHtmlAttribute attribute(QStringLiteral("checked"));

    EXPECT_EQ(attribute.name(), QLatin1String("checked"));
    EXPECT_EQ(attribute.value(), QLatin1String("checked"));
}

TEST(BwaHtmlAttribute, WhenMadeOfNameAndValueKeepsBoth)
{
    const BwaHtmlAttribute attribute(QStringLiteral("class"), QStringLiteral("a"));

    EXPECT_EQ(attribute.name(), QLatin1String("class"));
    EXPECT_EQ(attribute.value(), QLatin1String("a"));
}

TEST(BwaHtmlAttribute, WhenCopiedRendersAsTheOriginal)
{
    const BwaHtmlAttribute original(QStringLiteral("class"), QStringLiteral("a"));

    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const BwaHtmlAttribute copy(original);

    EXPECT_EQ(rendered(copy), "class=\"a\"");
    EXPECT_EQ(rendered(original), "class=\"a\"");
}

TEST(BwaHtmlAttribute, CannotBeMadeOfNothing)
{
    EXPECT_FALSE(std::is_default_constructible_v<BwaHtmlAttribute>);
    EXPECT_TRUE((std::is_base_of_v<BwaAbstractCgiStreamableElement, BwaHtmlAttribute>));
}

TEST(BwaHtmlAttribute, WhenRenderedTwiceWritesTheSameBytesTwice)
{
    const BwaHtmlAttribute attribute(QStringLiteral("a"), QStringLiteral("b"));
    std::ostringstream stream;

    stream << attribute << attribute;

    EXPECT_EQ(stream.str(), "a=\"b\"a=\"b\"");
}

namespace {

struct AttributeCase {
    const char* name;
    BwaHtmlAttribute attribute;
    std::string expected;
};

void PrintTo(const AttributeCase& testCase, std::ostream* stream)
{
    *stream << testCase.name;
}

class RenderAttribute : public testing::TestWithParam<AttributeCase>
{
};

BwaHtmlAttribute attributeOf(const QString& name, const QString& value)
{
    return BwaHtmlAttribute(name, value);
}

} // namespace

TEST_P(RenderAttribute, WritesExactlyTheseBytesAndNeverFlushes)
{
    EXPECT_EQ(renderedWithFlushes(GetParam().attribute), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RenderAttribute,
    testing::Values(
        AttributeCase{"NameOnly", BwaHtmlAttribute(QStringLiteral("checked")),
                      "checked=\"checked\""},
        AttributeCase{"NameAndValue", attributeOf(QStringLiteral("class"), QStringLiteral("a b")),
                      "class=\"a b\""},
        AttributeCase{"EmptyValue", attributeOf(QStringLiteral("alt"), QLatin1String("")),
                      "alt=\"\""},
        AttributeCase{"NullValue", attributeOf(QStringLiteral("alt"), QString()), "alt=\"\""},
        AttributeCase{"NullName", BwaHtmlAttribute(QString()), "=\"\""},
        AttributeCase{"QuoteInTheValueIsNotEscaped",
                      attributeOf(QStringLiteral("a"), QStringLiteral("x\"y")), "a=\"x\"y\""},
        AttributeCase{"MarkupIsNotEscaped",
                      attributeOf(QStringLiteral("<&>"), QStringLiteral("<&>'\\\n")),
                      "<&>=\"<&>'\\\n\""},
        AttributeCase{"NameInTheCaseGiven",
                      attributeOf(QStringLiteral("onClick"), QStringLiteral("F()")),
                      "onClick=\"F()\""},
        AttributeCase{"Latin1",
                      attributeOf(QStringLiteral("\u00e9"), QStringLiteral("\u00ff\u20ac")),
                      "\xe9=\"\xff?\""},
        AttributeCase{"NulCutsEachTextAlone",
                      attributeOf(QString::fromLatin1("a\0b", 3), QString::fromLatin1("c\0d", 3)),
                      "a=\"c\""}),
    [](const auto& info) { return std::string(info.param.name); });
