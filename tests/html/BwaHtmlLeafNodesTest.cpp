// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaHtmlComment.h"
#include "html/BwaHtmlTextNode.h"
#include "support/QtPrinters.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

TEST(BwaAbstractHtmlNode, CanOnlyBeDerivedFrom)
{
    EXPECT_TRUE(std::is_abstract_v<BwaAbstractHtmlNode>);
    EXPECT_TRUE((std::is_base_of_v<BwaAbstractCgiStreamableElement, BwaAbstractHtmlNode>));
}

namespace {

template <typename Node>
class LeafNode : public testing::Test
{
};

using LeafNodes = testing::Types<BwaHtmlTextNode, BwaHtmlComment>;
TYPED_TEST_SUITE(LeafNode, LeafNodes);

} // namespace

TYPED_TEST(LeafNode, KeepsItsText)
{
    EXPECT_EQ(TypeParam(QStringLiteral("<a> & \"b\"")).text(), QLatin1String("<a> & \"b\""));
}

TYPED_TEST(LeafNode, KeepsNullAndEmptyApart)
{
    EXPECT_TRUE(TypeParam(QString()).text().isNull());
    EXPECT_FALSE(TypeParam(QLatin1String("")).text().isNull());
}

TYPED_TEST(LeafNode, WhenClonedIsAnotherNodeOfItsClassWithItsText)
{
    const TypeParam node(QStringLiteral("text"));
    const BwaAbstractHtmlNode& abstractNode = node;

    const std::unique_ptr<BwaAbstractHtmlNode> clone(abstractNode.clone());

    const auto* leaf = dynamic_cast<const TypeParam*>(clone.get());
    ASSERT_NE(leaf, nullptr);
    EXPECT_NE(leaf, &node);
    EXPECT_EQ(leaf->text(), QLatin1String("text"));
    EXPECT_EQ(rendered(*clone), rendered(node));
}

TYPED_TEST(LeafNode, WhenClonedOutlivesTheOriginal)
{
    auto original = std::make_unique<TypeParam>(QStringLiteral("text"));
    const std::unique_ptr<BwaAbstractHtmlNode> clone(original->clone());
    const std::string before = rendered(*original);

    original.reset();

    EXPECT_EQ(rendered(*clone), before);
}

TYPED_TEST(LeafNode, WhenRenderedTwiceWritesTheSameBytesTwice)
{
    const TypeParam node(QStringLiteral("text"));

    const std::string first = rendered(node);
    const std::string second = rendered(node);

    EXPECT_NE(first.find("text"), std::string::npos);
    EXPECT_EQ(second, first);
}

namespace {

struct TextCase {
    const char* name;
    QString text;
    std::string expected;
};

void PrintTo(const TextCase& testCase, std::ostream* stream)
{
    *stream << testCase.name;
}

class RenderText : public testing::TestWithParam<TextCase>
{
};

} // namespace

TEST_P(RenderText, AsATextNodeWritesExactlyTheseBytes)
{
    EXPECT_EQ(renderedWithFlushes(BwaHtmlTextNode(GetParam().text)), GetParam().expected);
}

TEST_P(RenderText, AsACommentWritesExactlyTheseBytesBetweenItsDelimiters)
{
    EXPECT_EQ(renderedWithFlushes(BwaHtmlComment(GetParam().text)),
              "<!-- " + GetParam().expected + " -->");
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RenderText,
    testing::Values(TextCase{"Plain", QStringLiteral("Hello"), "Hello"},
                    TextCase{"Null", QString(), ""}, TextCase{"Empty", QLatin1String(""), ""},
                    TextCase{"MarkupIsNotEscaped", QStringLiteral("a<b & c>\"'d"), "a<b & c>\"'d"},
                    TextCase{"DoubleHyphensAreNotChecked", QStringLiteral("a--b-->c"), "a--b-->c"},
                    TextCase{"LineEndsPassThrough", QStringLiteral(" a\r\n\tb\n"), " a\r\n\tb\n"},
                    TextCase{"Latin1", QStringLiteral("\u00a0\u00ff\u0080"), "\xa0\xff\x80"},
                    TextCase{"BeyondLatin1", QStringLiteral("\u20ac1 \U0001f600"), "?1 ??"},
                    TextCase{"NulCutsTheText", QString::fromLatin1("a\0b", 3), "a"}),
    [](const auto& info) { return std::string(info.param.name); });
