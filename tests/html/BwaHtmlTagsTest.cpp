// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaHtmlClosingPairedTag.h"
#include "html/BwaHtmlOpeningPairedTag.h"
#include "html/BwaHtmlUnpairedTag.h"
#include "support/QtPrinters.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

namespace {

BwaHtmlAttributeList twoAttributes()
{
    return BwaHtmlAttributeList()
        .set(QStringLiteral("id"), QStringLiteral("x"))
        .set(QStringLiteral("checked"));
}

using Tag = std::shared_ptr<BwaAbstractHtmlTag>;

template <typename Class, typename... Arguments>
Tag tag(const Arguments&... arguments)
{
    return std::make_shared<Class>(arguments...);
}

struct TagCase {
    const char* name;
    Tag tag;
    std::string expected;
};

void PrintTo(const TagCase& testCase, std::ostream* stream)
{
    *stream << testCase.name;
}

class RenderTag : public testing::TestWithParam<TagCase>
{
};

const QString nulInside = QString::fromLatin1("a\0b", 3);

} // namespace

TEST_P(RenderTag, WritesExactlyTheseBytesAndNeverFlushes)
{
    EXPECT_EQ(renderedWithFlushes(*GetParam().tag), GetParam().expected);
}

TEST_P(RenderTag, WhenRenderedTwiceWritesTheSameBytesTwice)
{
    std::ostringstream stream;

    stream << *GetParam().tag << *GetParam().tag;

    EXPECT_EQ(stream.str(), GetParam().expected + GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Opening, RenderTag,
    testing::Values(
        TagCase{"NoAttributes", tag<BwaHtmlOpeningPairedTag>(QStringLiteral("p")), "<p>"},
        TagCase{"EmptyList",
                tag<BwaHtmlOpeningPairedTag>(QStringLiteral("p"), BwaHtmlAttributeList()), "<p>"},
        TagCase{
            "OneAttribute",
            tag<BwaHtmlOpeningPairedTag>(
                QStringLiteral("p"), BwaHtmlAttributeList(BwaHtmlAttribute(QStringLiteral("a")))),
            "<p a=\"a\">"},
        TagCase{"TwoAttributes", tag<BwaHtmlOpeningPairedTag>(QStringLiteral("p"), twoAttributes()),
                "<p id=\"x\" checked=\"checked\">"},
        TagCase{"CaseIsKept", tag<BwaHtmlOpeningPairedTag>(QStringLiteral("BoDy")), "<BoDy>"},
        TagCase{"NothingIsEscaped", tag<BwaHtmlOpeningPairedTag>(QStringLiteral("a<b>&\" c")),
                "<a<b>&\" c>"},
        TagCase{"NullName", tag<BwaHtmlOpeningPairedTag>(QString()), "<>"},
        TagCase{"Latin1", tag<BwaHtmlOpeningPairedTag>(QStringLiteral("\u00e9\u20ac")), "<\xe9?>"},
        TagCase{"NulCutsTheNameOnly", tag<BwaHtmlOpeningPairedTag>(nulInside, twoAttributes()),
                "<a id=\"x\" checked=\"checked\">"}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Closing, RenderTag,
    testing::Values(
        TagCase{"Name", tag<BwaHtmlClosingPairedTag>(QStringLiteral("p")), "</p>"},
        TagCase{"CaseIsKept", tag<BwaHtmlClosingPairedTag>(QStringLiteral("BoDy")), "</BoDy>"},
        TagCase{"NothingIsEscaped", tag<BwaHtmlClosingPairedTag>(QStringLiteral("a<b>&")),
                "</a<b>&>"},
        TagCase{"NullName", tag<BwaHtmlClosingPairedTag>(QString()), "</>"},
        TagCase{"Latin1", tag<BwaHtmlClosingPairedTag>(QStringLiteral("\u00e9\u20ac")), "</\xe9?>"},
        TagCase{"NulCutsTheNameOnly", tag<BwaHtmlClosingPairedTag>(nulInside), "</a>"}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Unpaired, RenderTag,
    testing::Values(
        TagCase{"NoAttributes", tag<BwaHtmlUnpairedTag>(QStringLiteral("br")), "<br />"},
        TagCase{"EmptyList", tag<BwaHtmlUnpairedTag>(QStringLiteral("br"), BwaHtmlAttributeList()),
                "<br />"},
        TagCase{
            "OneAttribute",
            tag<BwaHtmlUnpairedTag>(QStringLiteral("hr"),
                                    BwaHtmlAttributeList(BwaHtmlAttribute(QStringLiteral("a")))),
            "<hr a=\"a\" />"},
        TagCase{"TwoAttributes", tag<BwaHtmlUnpairedTag>(QStringLiteral("input"), twoAttributes()),
                "<input id=\"x\" checked=\"checked\" />"},
        TagCase{"CaseIsKept", tag<BwaHtmlUnpairedTag>(QStringLiteral("BR")), "<BR />"},
        TagCase{"NothingIsEscaped", tag<BwaHtmlUnpairedTag>(QStringLiteral("a<b>&")), "<a<b>& />"},
        TagCase{"NullName", tag<BwaHtmlUnpairedTag>(QString()), "< />"},
        TagCase{"Latin1", tag<BwaHtmlUnpairedTag>(QStringLiteral("\u00e9\u20ac")), "<\xe9? />"},
        TagCase{"NulCutsTheNameOnly", tag<BwaHtmlUnpairedTag>(nulInside, twoAttributes()),
                "<a id=\"x\" checked=\"checked\" />"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(BwaAbstractHtmlTag, CanOnlyBeDerivedFrom)
{
    EXPECT_TRUE(std::is_abstract_v<BwaAbstractHtmlTag>);
    EXPECT_TRUE((std::is_base_of_v<BwaAbstractCgiStreamableElement, BwaAbstractHtmlTag>));
}

TEST(BwaAbstractHtmlTag, LetsDerivedTagsRenderTheNameTheirOwnWay)
{
    class ShoutingTag : public BwaAbstractHtmlTag
    {
    public:
        using BwaAbstractHtmlTag::BwaAbstractHtmlTag;
        void render(std::ostream& stream) const override
        {
            stream << tagName().toUpper().toLatin1().constData() << '!';
        }
    };
    const ShoutingTag original(QStringLiteral("p"));

    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const ShoutingTag copy(original);

    EXPECT_EQ(rendered(copy), "P!");
}

TEST(BwaHtmlOpeningPairedTag, KeepsNameAndAttributes)
{
    const BwaHtmlOpeningPairedTag tag(QStringLiteral("P"), twoAttributes());

    EXPECT_EQ(tag.tagName(), QLatin1String("P"));
    EXPECT_EQ(rendered(tag.attributes()), "id=\"x\" checked=\"checked\"");
}

TEST(BwaHtmlOpeningPairedTag, HoldsItsAttributesByValue)
{
    BwaHtmlAttributeList attributes;
    const BwaHtmlOpeningPairedTag tag(QStringLiteral("p"), attributes);

    attributes.set(QStringLiteral("late"));

    EXPECT_TRUE(tag.attributes().isEmpty());
    EXPECT_EQ(rendered(tag), "<p>");
}

TEST(BwaHtmlOpeningPairedTag, WhenCopiedRendersAsTheOriginal)
{
    const BwaHtmlOpeningPairedTag original(QStringLiteral("p"), twoAttributes());

    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const BwaHtmlOpeningPairedTag copy(original);

    EXPECT_EQ(rendered(copy), "<p id=\"x\" checked=\"checked\">");
}

TEST(BwaHtmlClosingPairedTag, WhenCopiedRendersAsTheOriginal)
{
    const BwaHtmlClosingPairedTag original(QStringLiteral("p"));

    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const BwaHtmlClosingPairedTag copy(original);

    EXPECT_EQ(copy.tagName(), QLatin1String("p"));
    EXPECT_EQ(rendered(copy), "</p>");
}

TEST(BwaHtmlUnpairedTag, KeepsNameAndAttributes)
{
    const BwaHtmlUnpairedTag tag(QStringLiteral("Hr"), twoAttributes());

    EXPECT_EQ(tag.tagName(), QLatin1String("Hr"));
    EXPECT_EQ(rendered(tag.attributes()), "id=\"x\" checked=\"checked\"");
}

TEST(BwaHtmlUnpairedTag, HoldsItsAttributesByValue)
{
    BwaHtmlAttributeList attributes;
    const BwaHtmlUnpairedTag tag(QStringLiteral("br"), attributes);

    attributes.set(QStringLiteral("late"));

    EXPECT_TRUE(tag.attributes().isEmpty());
    EXPECT_EQ(rendered(tag), "<br />");
}

TEST(BwaHtmlUnpairedTag, WhenCopiedRendersAsTheOriginal)
{
    const BwaHtmlUnpairedTag original(QStringLiteral("hr"), twoAttributes());

    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const BwaHtmlUnpairedTag copy(original);

    EXPECT_EQ(rendered(copy), "<hr id=\"x\" checked=\"checked\" />");
}
