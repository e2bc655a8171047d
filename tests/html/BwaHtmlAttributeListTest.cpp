// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaHtmlAttributeList.h"

#include "support/QtPrinters.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

BwaHtmlAttributeList idAndClass()
{
    BwaHtmlAttributeList list;
    list.set(QStringLiteral("id"), QStringLiteral("x"));
    list.set(QStringLiteral("class"), QStringLiteral("a"));
    return list;
}

} // namespace

TEST(BwaHtmlAttributeList, WhenDefaultConstructedIsEmptyAndWritesNothing)
{
    const BwaHtmlAttributeList list;

    EXPECT_TRUE(list.isEmpty());
    EXPECT_TRUE(list.attributes().isEmpty());
    EXPECT_EQ(renderedWithFlushes(list), "");
}

TEST(BwaHtmlAttributeList, WhenMadeOfAnAttributeHoldsACopyOfIt)
{
    BwaHtmlAttribute attribute(QStringLiteral("class"), QStringLiteral("a"));
    const BwaHtmlAttributeList list(attribute);

    attribute = BwaHtmlAttribute(QStringLiteral("id"));

    EXPECT_FALSE(list.isEmpty());
    ASSERT_EQ(list.attributes().size(), 1);
    EXPECT_EQ(list.attributes().first().name(), QLatin1String("class"));
    EXPECT_EQ(list.attributes().first().value(), QLatin1String("a"));
    EXPECT_EQ(rendered(list), "class=\"a\"");
}

TEST(BwaHtmlAttributeList, LetsOneAttributeStandForAList)
{
    EXPECT_TRUE((std::is_convertible_v<BwaHtmlAttribute, BwaHtmlAttributeList>));
    EXPECT_TRUE((std::is_base_of_v<BwaAbstractCgiStreamableElement, BwaHtmlAttributeList>));
    EXPECT_FALSE((std::is_base_of_v<BwaHtmlAttribute, BwaHtmlAttributeList>));
}

TEST(BwaHtmlAttributeList, WhenCopiedIsIndependentOfTheOriginal)
{
    BwaHtmlAttributeList original = idAndClass();
    BwaHtmlAttributeList copy(original);

    original.set(QStringLiteral("o"));
    copy.set(QStringLiteral("c"));

    EXPECT_EQ(rendered(original), "id=\"x\" class=\"a\" o=\"o\"");
    EXPECT_EQ(rendered(copy), "id=\"x\" class=\"a\" c=\"c\"");
}

TEST(BwaHtmlAttributeList, WritesAttributesInOrderWithABlankBetweenNeighbours)
{
    BwaHtmlAttributeList list = idAndClass();

    list.set(QStringLiteral("checked"));

    EXPECT_EQ(renderedWithFlushes(list), "id=\"x\" class=\"a\" checked=\"checked\"");
}

TEST(BwaHtmlAttributeList, WhenANameIsSetTwiceKeepsBoth)
{
    BwaHtmlAttributeList list;

    list.set(QStringLiteral("class"), QStringLiteral("a"));
    list.set(QStringLiteral("class"), QStringLiteral("b"));

    EXPECT_EQ(list.attributes().size(), 2);
    EXPECT_EQ(rendered(list), "class=\"a\" class=\"b\"");
}

TEST(BwaHtmlAttributeList, WhenABooleanNameIsSetTwiceKeepsBoth)
{
    BwaHtmlAttributeList list;

    list.set(QStringLiteral("checked"));
    list.set(QStringLiteral("checked"));

    EXPECT_EQ(rendered(list), "checked=\"checked\" checked=\"checked\"");
}

TEST(BwaHtmlAttributeList, WhenSetReturnsItselfForChaining)
{
    BwaHtmlAttributeList list;

    EXPECT_EQ(&list.set(QStringLiteral("a")), &list);
    EXPECT_EQ(&list.set(QStringLiteral("b"), QStringLiteral("1")), &list);

    list.set(QStringLiteral("c")).set(QStringLiteral("d"), QStringLiteral("2"));
    EXPECT_EQ(rendered(list), "a=\"a\" b=\"1\" c=\"c\" d=\"2\"");
}

TEST(BwaHtmlAttributeList, GivenEmptyAndNullValuesKeepsTheQuotedForm)
{
    BwaHtmlAttributeList list;

    list.set(QStringLiteral("a"), QString())
        .set(QString())
        .set(QStringLiteral("b"), QLatin1String(""));

    EXPECT_EQ(rendered(list), "a=\"\" =\"\" b=\"\"");
}

TEST(BwaHtmlAttributeList, WhenAddedToAListMadeOfAnAttributeAppends)
{
    BwaHtmlAttributeList list(BwaHtmlAttribute(QStringLiteral("checked")));

    list.set(QStringLiteral("id"), QStringLiteral("x"));

    EXPECT_EQ(rendered(list), "checked=\"checked\" id=\"x\"");
}

TEST(BwaHtmlAttributeList, WhenRenderedTwiceWritesTheSameBytesTwice)
{
    const BwaHtmlAttributeList list = idAndClass();
    std::ostringstream stream;

    stream << list << list;

    EXPECT_EQ(stream.str(), "id=\"x\" class=\"a\"id=\"x\" class=\"a\"");
}
