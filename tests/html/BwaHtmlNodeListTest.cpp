// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaHtmlNodeList.h"

#include "html/BwaHtmlComment.h"
#include "html/BwaHtmlElement.h"
#include "html/BwaHtmlTextNode.h"
#include "html/TrackedNode.h"
#include "support/FailingStreams.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <stdexcept>
#include <type_traits>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Log = TrackedNode::Log;

/** Notes, while it is deleted, how many nodes its list still holds. */
class RemainderNode : public BwaAbstractHtmlNode
{
public:
    RemainderNode(const BwaHtmlNodeList* list, std::vector<int>* remainders)
        : m_list(list)
        , m_remainders(remainders)
    {
    }
    ~RemainderNode() override { m_remainders->push_back(m_list->nodes().size()); }
    RemainderNode(const RemainderNode&) = delete;
    RemainderNode& operator=(const RemainderNode&) = delete;

    void render(std::ostream& stream) const override { stream << '.'; }
    RemainderNode* clone() const override { return new RemainderNode(m_list, m_remainders); }

private:
    const BwaHtmlNodeList* m_list;  // not owned; owns this
    std::vector<int>* m_remainders; // not owned
};

/** Sets the stream's state and then writes a dot. */
class StateNode : public BwaAbstractHtmlNode
{
public:
    explicit StateNode(std::ios_base::iostate state)
        : m_state(state)
    {
    }

    void render(std::ostream& stream) const override
    {
        stream.clear(m_state);
        stream << '.';
    }
    StateNode* clone() const override { return new StateNode(m_state); }

private:
    std::ios_base::iostate m_state;
};

/** Cannot be cloned. */
class SingleNode : public BwaAbstractHtmlNode
{
public:
    void render(std::ostream& stream) const override { stream << '.'; }
    SingleNode* clone() const override { throw std::runtime_error("there is only one"); }
};

} // namespace

TEST(BwaHtmlNodeList, WhenDefaultConstructedIsEmptyAndWritesNothing)
{
    const BwaHtmlNodeList list;

    EXPECT_TRUE(list.isEmpty());
    EXPECT_TRUE(list.nodes().isEmpty());
    EXPECT_EQ(renderedWithFlushes(list), "");
}

TEST(BwaHtmlNodeList, IsNoNode)
{
    EXPECT_TRUE((std::is_base_of_v<BwaAbstractCgiStreamableElement, BwaHtmlNodeList>));
    EXPECT_FALSE((std::is_base_of_v<BwaAbstractHtmlNode, BwaHtmlNodeList>));
}

TEST(BwaHtmlNodeList, IsCopiedByConstructionOnly)
{
    EXPECT_TRUE(std::is_copy_constructible_v<BwaHtmlNodeList>);
    EXPECT_FALSE(std::is_copy_assignable_v<BwaHtmlNodeList>);
    EXPECT_FALSE(std::is_move_assignable_v<BwaHtmlNodeList>);
}

TEST(BwaHtmlNodeList, LetsOneNodeStandForAList)
{
    EXPECT_TRUE((std::is_convertible_v<const BwaHtmlTextNode&, BwaHtmlNodeList>));
}

TEST(BwaHtmlNodeList, WhenMadeOfANodeHoldsItsCloneAndLeavesTheNode)
{
    Log log;
    const TrackedNode node("a", &log);
    const BwaHtmlNodeList list(node);

    EXPECT_THAT(log, ElementsAre("clone a"));
    EXPECT_FALSE(list.isEmpty());
    ASSERT_EQ(list.nodes().size(), 1);
    EXPECT_NE(list.nodes().first(), &node);
    EXPECT_EQ(rendered(list), "a'");
}

TEST(BwaHtmlNodeList, WhenAppendedByReferenceHoldsACloneAndLeavesTheNode)
{
    Log log;
    const TrackedNode node("a", &log);
    {
        BwaHtmlNodeList list;
        list.append(node);

        EXPECT_EQ(rendered(list), "a'");
    }
    EXPECT_THAT(log, ElementsAre("clone a", "delete a'"));
}

TEST(BwaHtmlNodeList, WhenAppendedByPointerHoldsTheNodeItselfAndDeletesIt)
{
    Log log;
    {
        auto* node = new TrackedNode("a", &log);
        BwaHtmlNodeList list;
        list.append(node);

        ASSERT_EQ(list.nodes().size(), 1);
        EXPECT_EQ(list.nodes().first(), node);
        EXPECT_EQ(rendered(list), "a");
        EXPECT_THAT(log, IsEmpty());
    }
    EXPECT_THAT(log, ElementsAre("delete a"));
}

TEST(BwaHtmlNodeList, WhenAppendedReturnsItselfForChaining)
{
    Log log;
    const TrackedNode node("a", &log);
    BwaHtmlNodeList list;

    EXPECT_EQ(&list.append(node), &list);
    EXPECT_EQ(&list.append(new TrackedNode("b", &log)), &list);

    list.append(node).append(new TrackedNode("c", &log)).append(node);
    EXPECT_EQ(rendered(list), "a'ba'ca'");
}

TEST(BwaHtmlNodeList, WhenDestroyedDeletesItsNodesFromTheFront)
{
    Log log;
    auto list = std::make_unique<BwaHtmlNodeList>();
    list->append(new TrackedNode("a", &log))
        .append(new TrackedNode("b", &log))
        .append(new TrackedNode("c", &log));

    list.reset();

    EXPECT_THAT(log, ElementsAre("delete a", "delete b", "delete c"));
}

TEST(BwaHtmlNodeList, WhenDestroyedTakesEachNodeOutBeforeDeletingIt)
{
    std::vector<int> remainders;
    auto list = std::make_unique<BwaHtmlNodeList>();
    for (int i = 0; i < 3; ++i) {
        list->append(new RemainderNode(list.get(), &remainders));
    }

    list.reset();

    EXPECT_THAT(remainders, ElementsAre(2, 1, 0));
}

TEST(BwaHtmlNodeList, WhenCopiedClonesEachNodeInOrder)
{
    Log log;
    const auto original = std::make_unique<BwaHtmlNodeList>();
    original->append(new TrackedNode("a", &log)).append(new TrackedNode("b", &log));

    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const BwaHtmlNodeList copy(*original);

    EXPECT_THAT(log, ElementsAre("clone a", "clone b"));
    EXPECT_EQ(rendered(copy), "a'b'");
    EXPECT_EQ(rendered(*original), "ab");
}

TEST(BwaHtmlNodeList, WhenCopyingFailsDeletesTheClones)
{
    Log log;
    BwaHtmlNodeList original;
    original.append(new TrackedNode("a", &log)).append(new SingleNode);

    EXPECT_THROW(BwaHtmlNodeList{original}, std::runtime_error);

    EXPECT_THAT(log, ElementsAre("clone a", "delete a'"));
}

TEST(BwaHtmlNodeList, WhenCopiedOutlivesTheOriginal)
{
    Log log;
    auto original = std::make_unique<BwaHtmlNodeList>();
    original->append(new TrackedNode("a", &log));
    const BwaHtmlNodeList copy(*original);

    original.reset();

    EXPECT_THAT(log, ElementsAre("clone a", "delete a"));
    EXPECT_EQ(rendered(copy), "a'");
}

TEST(BwaHtmlNodeList, WhenCopiedKeepsTextsAndCommentsButEmptiesElements)
{
    BwaHtmlNodeList original;
    original.append(new BwaHtmlTextNode(QStringLiteral("text")))
        .append(new BwaHtmlElement(QStringLiteral("p"),
                                   BwaHtmlAttributeList().set(QStringLiteral("id")),
                                   QStringLiteral("gone")))
        .append(new BwaHtmlComment(QStringLiteral("note")));

    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const BwaHtmlNodeList copy(original);

    EXPECT_EQ(rendered(original), "text<p id=\"id\">gone</p><!-- note -->");
    EXPECT_EQ(rendered(copy), "text<p /><!-- note -->");
}

TEST(BwaHtmlNodeList, WhenAppendedItsOwnNodeByReferenceHoldsAClone)
{
    Log log;
    BwaHtmlNodeList list;
    list.append(new TrackedNode("a", &log));

    list.append(*list.nodes().first());

    EXPECT_EQ(rendered(list), "aa'");
}

TEST(BwaHtmlNodeList, WritesNothingBetweenNodesAndNeverFlushes)
{
    BwaHtmlNodeList list;
    list.append(BwaHtmlTextNode(QStringLiteral("a")))
        .append(BwaHtmlComment(QStringLiteral("b")))
        .append(BwaHtmlElement(QStringLiteral("br")))
        .append(BwaHtmlTextNode(QStringLiteral("c")));

    EXPECT_EQ(renderedWithFlushes(list), "a<!-- b --><br />c");
}

TEST(BwaHtmlNodeList, GivenNulInATextGoesOnWithTheNextNode)
{
    BwaHtmlNodeList list;
    list.append(BwaHtmlTextNode(QString::fromLatin1("a\0b", 3)))
        .append(BwaHtmlTextNode(QStringLiteral("c")));

    EXPECT_EQ(rendered(list), "ac");
}

TEST(BwaHtmlNodeList, WhenRenderedTwiceWritesTheSameBytesTwice)
{
    Log log;
    BwaHtmlNodeList list;
    list.append(new TrackedNode("a", &log)).append(new TrackedNode("b", &log));
    std::ostringstream stream;

    stream << list << list;

    EXPECT_EQ(stream.str(), "abab");
    EXPECT_THAT(log, IsEmpty());
}

TEST(BwaHtmlNodeList, WhenTheStreamFailsGoesOnRegardless)
{
    BwaHtmlNodeList list;
    list.append(StateNode(std::ios_base::goodbit))
        .append(StateNode(std::ios_base::failbit))
        .append(StateNode(std::ios_base::goodbit));

    EXPECT_EQ(rendered(list), "..");
}

TEST(BwaHtmlNodeList, GivenFailedStreamLeavesItFailedAndWritesNothing)
{
    std::ostringstream stream = failedStream();

    stream << BwaHtmlNodeList(BwaHtmlTextNode(QStringLiteral("a")));

    EXPECT_EQ(stream.rdstate(), std::ios_base::failbit);
    EXPECT_EQ(stream.str(), "");
}
