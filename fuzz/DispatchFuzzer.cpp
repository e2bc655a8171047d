// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// A tree of services, in the bytes up to the first line feed, and a path info: the request reaches
// the service that a literal model names, and is deleted.

#include "Choices.h"
#include "Fuzzing.h"
#include "support/QtPrinters.h"
#include "support/RoutingModel.h"
#include "support/ServiceTree.h"

#include <gtest/gtest.h>

#include <set>

namespace {

const int deepestLevel = 4;
const int mostChildren = 6;

// A name from a table or, for the first choice, of two bytes of the input.
QByteArray nextName(Choices& choices)
{
    static const QList<QByteArray> names = {"",      "a", "b",  "ab", "a/b",
                                            "a/b/a", "/", "a/", "A",  "\xe9"};
    const int choice = choices.below(names.size() + 1);
    if (choice > 0) {
        return names.at(choice - 1);
    }
    const char characters[] = {static_cast<char>(1 + choices.below(255)),
                               static_cast<char>(1 + choices.below(255))};
    return QByteArray(characters, sizeof characters);
}

// In the order of the names, as the model walks them.
std::vector<TreeNode> nextChildren(Choices& choices, int level)
{
    std::set<QByteArray> names;
    for (int left = choices.below(mostChildren); left > 0; --left) {
        names.insert(nextName(choices));
    }
    std::vector<TreeNode> children;
    for (const QByteArray& name : names) {
        const bool isDispatcher = level < deepestLevel && choices.below(3) > 0;
        children.push_back(
            {isDispatcher ? TreeNode::Dispatcher : TreeNode::Service, name,
             isDispatcher ? nextChildren(choices, level + 1) : std::vector<TreeNode>()});
    }
    return children;
}

} // namespace

void fuzz(const QByteArray& input)
{
    Choices choices(input);
    Choices treeChoices(choices.line());
    const QByteArray path = choices.rest().constData(); // a variable ends at a NUL
    const std::vector<TreeNode> children = nextChildren(treeChoices, 0);
    LabelledDispatcher root("root");
    addChildren(&root, "root", children);

    EXPECT_EQ(libraryRoute(root, path), modelRoute(children, "root", "", path));
}
