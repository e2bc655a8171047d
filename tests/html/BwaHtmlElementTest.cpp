// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaHtmlElement.h"

#include "html/BwaHtmlComment.h"
#include "html/BwaHtmlTextNode.h"
#include "html/TrackedNode.h"
#include "support/FailingStreams.h"
#include "support/QtPrinters.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Log = TrackedNode::Log;

const QString p = QStringLiteral("p");

BwaHtmlAttributeList idAttribute()
{
    return BwaHtmlAttributeList().set(QStringLiteral("id"), QStringLiteral("x"));
}

} // namespace

TEST(BwaHtmlElement, CannotBeCopied)
{
    EXPECT_FALSE(std::is_copy_constructible_v<BwaHtmlElement>);
    EXPECT_FALSE(std::is_copy_assignable_v<BwaHtmlElement>);
    EXPECT_FALSE(std::is_move_constructible_v<BwaHtmlElement>);
    EXPECT_FALSE(std::is_default_constructible_v<BwaHtmlElement>);
    EXPECT_TRUE((std::is_base_of_v<BwaAbstractHtmlNode, BwaHtmlElement>));
}

TEST(BwaHtmlElement, WhenMadeOfANameIsEmpty)
{
    const BwaHtmlElement element(QStringLiteral("br"));

    EXPECT_EQ(element.tagName(), QLatin1String("br"));
    EXPECT_TRUE(element.attributes().isEmpty());
    EXPECT_TRUE(element.children().isEmpty());
    EXPECT_EQ(rendered(element), "<br />");
}

TEST(BwaHtmlElement, WhenMadeOfAttributesHasNoChildren)
{
    const BwaHtmlElement element(p, idAttribute());

    EXPECT_EQ(element.tagName(), QLatin1String("p"));
    EXPECT_EQ(rendered(element.attributes()), "id=\"x\"");
    EXPECT_TRUE(element.children().isEmpty());
    EXPECT_EQ(rendered(element), "<p id=\"x\" />");
}

TEST(BwaHtmlElement, WhenMadeOfChildrenHoldsTheirClones)
{
    Log log;
    const BwaHtmlNodeList children(TrackedNode("a", &log));
    log.clear();

    const BwaHtmlElement element(p, children);

    EXPECT_THAT(log, ElementsAre("clone a'"));
    EXPECT_TRUE(element.attributes().isEmpty());
    EXPECT_EQ(rendered(element), "<p>a''</p>");
    EXPECT_EQ(rendered(children), "a'");
}

TEST(BwaHtmlElement, WhenMadeOfATextHoldsATextNode)
{
    const BwaHtmlElement element(p, QStringLiteral("Hello"));

    EXPECT_TRUE(element.attributes().isEmpty());
    ASSERT_EQ(element.children().nodes().size(), 1);
    const auto* text = dynamic_cast<BwaHtmlTextNode*>(element.children().nodes().first());
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->text(), QLatin1String("Hello"));
    EXPECT_EQ(rendered(element), "<p>Hello</p>");
}

TEST(BwaHtmlElement, WhenMadeOfAttributesAndChildrenHoldsBoth)
{
    Log log;
    const TrackedNode node("a", &log);

    const BwaHtmlElement element(p, idAttribute(), BwaHtmlNodeList(node));

    EXPECT_EQ(rendered(element), "<p id=\"x\">a''</p>");
}

TEST(BwaHtmlElement, WhenMadeOfAttributesAndATextHoldsBoth)
{
    const BwaHtmlElement element(p, idAttribute(), QStringLiteral("Hello"));

    EXPECT_EQ(element.children().nodes().size(), 1);
    EXPECT_EQ(rendered(element), "<p id=\"x\">Hello</p>");
}

TEST(BwaHtmlElement, WhenMadeOfOneAttributeOrOneNodeTakesThemAsLists)
{
    const BwaHtmlAttribute checked(QStringLiteral("checked"));
    const BwaHtmlComment comment(QStringLiteral("c"));

    EXPECT_EQ(rendered(BwaHtmlElement(p, checked)), "<p checked=\"checked\" />");
    EXPECT_EQ(rendered(BwaHtmlElement(p, comment)), "<p><!-- c --></p>");
    EXPECT_EQ(rendered(BwaHtmlElement(p, checked, comment)),
              "<p checked=\"checked\"><!-- c --></p>");
}

TEST(BwaHtmlElement, GivenEmptyListsIsWrittenSelfClosing)
{
    const BwaHtmlElement element(p, BwaHtmlAttributeList(), BwaHtmlNodeList());

    EXPECT_EQ(rendered(element), "<p />");
}

TEST(BwaHtmlElement, GivenEmptyOrNullTextIsWrittenAsAPair)
{
    EXPECT_EQ(rendered(BwaHtmlElement(p, QString())), "<p></p>");
    EXPECT_EQ(rendered(BwaHtmlElement(p, QString(QLatin1String("")))), "<p></p>");
    EXPECT_EQ(rendered(BwaHtmlElement(p, idAttribute(), QString())), "<p id=\"x\"></p>");
}

TEST(BwaHtmlElement, GivenNoChildrenIsWrittenSelfClosingWhateverItsName)
{
    EXPECT_EQ(rendered(BwaHtmlElement(QStringLiteral("script"))), "<script />");
    EXPECT_EQ(rendered(BwaHtmlElement(QStringLiteral("Title"))), "<Title />");
    EXPECT_EQ(rendered(BwaHtmlElement(QString())), "< />");
}

TEST(BwaHtmlElement, HoldsItsAttributesByValue)
{
    BwaHtmlAttributeList attributes;
    const BwaHtmlElement element(p, attributes);

    attributes.set(QStringLiteral("late"));

    EXPECT_EQ(rendered(element), "<p />");
}

TEST(BwaHtmlElement, WhenAttributesAreSetAppendsAndNeverReplaces)
{
    BwaHtmlElement element(p, idAttribute());

    element.setAttribute(QStringLiteral("id"), QStringLiteral("y"))
        .setAttribute(QStringLiteral("hidden"))
        .setAttribute(QStringLiteral("id"), QString());

    EXPECT_EQ(rendered(element), "<p id=\"x\" id=\"y\" hidden=\"hidden\" id=\"\" />");
}

TEST(BwaHtmlElement, ReturnsItselfForChaining)
{
    Log log;
    BwaHtmlElement element(p);

    EXPECT_EQ(&element.setAttribute(QStringLiteral("a")), &element);
    EXPECT_EQ(&element.setAttribute(QStringLiteral("b"), QStringLiteral("1")), &element);
    EXPECT_EQ(&element.append(BwaHtmlTextNode(QStringLiteral("c"))), &element);
    EXPECT_EQ(&element.append(new TrackedNode("d", &log)), &element);
    EXPECT_EQ(&element.append(QStringLiteral("e")), &element);
    EXPECT_EQ(rendered(element), "<p a=\"a\" b=\"1\">cde</p>");
}

TEST(BwaHtmlElement, WhenANodeIsAppendedByReferenceHoldsItsClone)
{
    Log log;
    const TrackedNode node("a", &log);
    BwaHtmlElement element(p);

    element.append(node);

    EXPECT_THAT(log, ElementsAre("clone a"));
    EXPECT_EQ(rendered(element), "<p>a'</p>");
}

TEST(BwaHtmlElement, WhenANodeIsAppendedByPointerHoldsTheNodeItself)
{
    Log log;
    auto* node = new TrackedNode("a", &log);
    BwaHtmlElement element(p);

    element.append(node);

    EXPECT_THAT(log, IsEmpty());
    EXPECT_EQ(element.children().nodes(), QList<BwaAbstractHtmlNode*>() << node);
    EXPECT_EQ(rendered(element), "<p>a</p>");
}

TEST(BwaHtmlElement, WhenATextIsAppendedHoldsATextNode)
{
    BwaHtmlElement element(p);

    element.append(QStringLiteral("a<b")).append(QString());

    ASSERT_EQ(element.children().nodes().size(), 2);
    EXPECT_NE(dynamic_cast<BwaHtmlTextNode*>(element.children().nodes().first()), nullptr);
    EXPECT_EQ(rendered(element), "<p>a<b</p>");
}

TEST(BwaHtmlElement, WhenOnlyANullTextIsAppendedIsWrittenAsAPair)
{
    BwaHtmlElement element(p);

    element.append(QString());

    EXPECT_EQ(rendered(element), "<p></p>");
}

TEST(BwaHtmlElement, WhenAFilledElementIsAppendedByReferenceItComesOutEmpty)
{
    const BwaHtmlElement inner(QStringLiteral("b"), idAttribute(), QStringLiteral("bold"));
    BwaHtmlElement outer(p);

    outer.append(inner);

    EXPECT_EQ(rendered(outer), "<p><b /></p>");
    EXPECT_EQ(rendered(inner), "<b id=\"x\">bold</b>");
}

TEST(BwaHtmlElement, WhenAFilledElementIsAppendedByPointerItComesOutInFull)
{
    BwaHtmlElement outer(p);

    outer.append(new BwaHtmlElement(QStringLiteral("b"), idAttribute(), QStringLiteral("bold")));

    EXPECT_EQ(rendered(outer), "<p><b id=\"x\">bold</b></p>");
}

TEST(BwaHtmlElement, WhenMadeOfAListWithAFilledElementEmptiesIt)
{
    BwaHtmlNodeList children;
    children.append(new BwaHtmlElement(QStringLiteral("b"), QStringLiteral("bold")));

    const BwaHtmlElement element(p, children);

    EXPECT_EQ(rendered(element), "<p><b /></p>");
}

TEST(BwaHtmlElement, WhenClonedKeepsTheNameOnly)
{
    BwaHtmlElement element(QStringLiteral("Div"), idAttribute(), QStringLiteral("text"));
    element.setAttribute(QStringLiteral("hidden"));
    const BwaAbstractHtmlNode& node = element;

    const std::unique_ptr<BwaAbstractHtmlNode> clone(node.clone());

    const auto* clonedElement = dynamic_cast<BwaHtmlElement*>(clone.get());
    ASSERT_NE(clonedElement, nullptr);
    EXPECT_NE(clonedElement, &element);
    EXPECT_EQ(clonedElement->tagName(), QLatin1String("Div"));
    EXPECT_TRUE(clonedElement->attributes().isEmpty());
    EXPECT_TRUE(clonedElement->children().isEmpty());
    EXPECT_EQ(rendered(*clone), "<Div />");
}

TEST(BwaHtmlElement, WhenClonedNeverClonesItsChildren)
{
    Log log;
    BwaHtmlElement element(p);
    element.append(new TrackedNode("a", &log));

    const std::unique_ptr<BwaAbstractHtmlNode> clone(element.clone());

    EXPECT_THAT(log, IsEmpty());
}

TEST(BwaHtmlElement, WhenDestroyedDeletesTheWholeTree)
{
    Log log;
    auto root = std::make_unique<BwaHtmlElement>(QStringLiteral("html"));
    auto* body = new BwaHtmlElement(QStringLiteral("body"));
    root->append(new TrackedNode("head", &log)).append(body).append(new TrackedNode("end", &log));
    body->append(new TrackedNode("a", &log)).append(new TrackedNode("b", &log));

    root.reset();

    EXPECT_THAT(log, ElementsAre("delete head", "delete a", "delete b", "delete end"));
}

TEST(BwaHtmlElement, WritesAWholeTreeWithNothingBetweenAndNeverFlushes)
{
    BwaHtmlElement root(QStringLiteral("html"));
    auto* body = new BwaHtmlElement(QStringLiteral("body"), idAttribute());
    body->append(new BwaHtmlElement(QStringLiteral("h1"), QStringLiteral("A & B")))
        .append(QStringLiteral("text"))
        .append(BwaHtmlElement(QStringLiteral("br")))
        .append(BwaHtmlComment(QStringLiteral("end")));
    root.append(new BwaHtmlElement(QStringLiteral("head"))).append(body);

    EXPECT_EQ(renderedWithFlushes(root),
              "<html><head /><body id=\"x\"><h1>A & B</h1>text<br /><!-- end --></body></html>");
}

TEST(BwaHtmlElement, GivenNulInTheNameCutsTheNameInBothTags)
{
    const BwaHtmlElement element(QString::fromLatin1("p\0q", 3), idAttribute(),
                                 QString::fromLatin1("t\0u", 3));

    EXPECT_EQ(rendered(element), "<p id=\"x\">t</p>");
}

TEST(BwaHtmlElement, WritesLatin1)
{
    const BwaHtmlElement element(QStringLiteral("\u00e9"), QStringLiteral("\u00ff\u20ac"));

    EXPECT_EQ(rendered(element), "<\xe9>\xff?</\xe9>");
}

TEST(BwaHtmlElement, WhenRenderedTwiceWritesTheSameBytesTwice)
{
    const BwaHtmlElement element(p, idAttribute(), QStringLiteral("a"));

    const std::string first = rendered(element);
    const std::string second = rendered(element);

    EXPECT_EQ(first, "<p id=\"x\">a</p>");
    EXPECT_EQ(second, first);
}

TEST(BwaHtmlElement, GivenStreamThatBreaksLeavesItBad)
{
    BreakingBuffer buffer(3);
    std::ostream stream(&buffer);

    stream << BwaHtmlElement(p, QStringLiteral("Hello"));

    EXPECT_TRUE(stream.bad());
    EXPECT_EQ(buffer.text, "<p>");
}
