// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Random service trees and paths, routed by the library and by a literal model of the rule:
// itself, else the child of exactly that name, else the first dispatcher whose name is a prefix.

#include "support/QtPrinters.h"
#include "support/RoutingModel.h"
#include "support/ServiceTree.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <vector>

namespace {

using Random = std::mt19937;

const std::vector<QByteArray> names = {"a", "b", "ab", "a/b", "a/b/a", "", "/", "a/", "A", "\xe9"};
const std::vector<QByteArray> changing = {"a", "b", "ab", "a/b", "a/b/a", "/", "a/", "\xe9"};
const std::vector<QByteArray> pieces = {"/", "/", "/a", "/b", "/ab", "a", "/A", "/\xe9"};

// BWA_TEST_SEED repeats a failed run.
unsigned int seed()
{
    const QByteArray chosen = qgetenv("BWA_TEST_SEED");
    return chosen.isEmpty() ? std::random_device()() : chosen.toUInt();
}

const QByteArray& oneOf(const std::vector<QByteArray>& texts, Random& random)
{
    return texts[std::uniform_int_distribution<size_t>(0, texts.size() - 1)(random)];
}

int upTo(int largest, Random& random)
{
    return std::uniform_int_distribution<int>(0, largest)(random);
}

// Children in the order of their names, as the model walks them.
std::vector<TreeNode> randomChildren(int levels, Random& random)
{
    std::set<QByteArray> chosen;
    for (int count = upTo(5, random); count > 0; --count) {
        chosen.insert(oneOf(names, random));
    }

    std::vector<TreeNode> children;
    for (const QByteArray& name : chosen) {
        const bool isDispatcher = levels > 0 && upTo(2, random) > 0;
        children.push_back(
            {isDispatcher ? TreeNode::Dispatcher : TreeNode::Service, name,
             isDispatcher ? randomChildren(levels - 1, random) : std::vector<TreeNode>()});
    }
    return children;
}

QByteArray randomPath(Random& random)
{
    QByteArray path;
    for (int count = upTo(6, random); count > 0; --count) {
        path += oneOf(pieces, random);
    }
    return path;
}

// A dispatcher whose children come and go, next to the labels of those that it has.
class ChangingTree
{
public:
    // Adds or replaces, releases, or destroys the child of that name, if there is one.
    void change(const QByteArray& name, int action, const QByteArray& label)
    {
        if (action == 0) {
            m_children[name] = {label, new LabelledService(label)};
            root.addService(QString::fromLatin1(name), m_children[name].service);
        } else if (m_children.count(name) > 0) {
            BwaAbstractFcgiService* const child = m_children[name].service;
            m_children.erase(name);
            if (action == 1) {
                EXPECT_EQ(root.removeService(QString::fromLatin1(name)), child);
            }
            delete child;
        }
    }

    QByteArray modelRouteTo(const QByteArray& name) const
    {
        const auto child = m_children.find(name);
        return child == m_children.end() ? "not found by " : child->second.label;
    }

    LabelledDispatcher root{"root"};

private:
    struct Child {
        QByteArray label;
        BwaAbstractFcgiService* service; // owned by the dispatcher
    };

    std::map<QByteArray, Child> m_children;
};

} // namespace

TEST(Routing, EqualsTheModelForRandomTreesAndPaths)
{
    const unsigned int thisSeed = seed();
    SCOPED_TRACE("BWA_TEST_SEED=" + std::to_string(thisSeed));
    Random random(thisSeed);

    for (int tree = 0; tree < 100; ++tree) {
        const std::vector<TreeNode> children = randomChildren(3, random);
        LabelledDispatcher root("root");
        addChildren(&root, "root", children);
        for (int request = 0; request < 10; ++request) {
            const QByteArray path = randomPath(random);

            ASSERT_EQ(libraryRoute(root, path), modelRoute(children, "root", "", path))
                << "path info " << path.constData() << " in tree " << tree;
        }
    }
}

TEST(Routing, EqualsTheModelWhileChildrenComeAndGo)
{
    const unsigned int thisSeed = seed();
    SCOPED_TRACE("BWA_TEST_SEED=" + std::to_string(thisSeed));
    Random random(thisSeed);
    ChangingTree tree;

    for (int step = 0; step < 2000; ++step) {
        tree.change(oneOf(changing, random), upTo(2, random), QByteArray::number(step));
        const QByteArray asked = oneOf(changing, random);

        ASSERT_EQ(libraryRoute(tree.root, '/' + asked), tree.modelRouteTo(asked))
            << asked.constData() << " in step " << step;
    }
}
