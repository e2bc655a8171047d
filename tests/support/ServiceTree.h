// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef SERVICETREE_H
#define SERVICETREE_H

#include "support/LabelledServices.h"

#include <QByteArray>
#include <QString>

#include <vector>

/** A child of a dispatcher, as a test writes it down. Names are Latin-1. */
struct TreeNode {
    enum Kind { Service, Dispatcher };

    Kind kind;
    QByteArray name;
    std::vector<TreeNode> children;
};

inline TreeNode service(const char* name)
{
    return {TreeNode::Service, name, {}};
}

inline TreeNode dispatcher(const char* name, const std::vector<TreeNode>& children = {})
{
    return {TreeNode::Dispatcher, name, children};
}

/** The label of the child @a name: ">orders>open". */
inline QByteArray childLabel(const QByteArray& parentLabel, const QByteArray& name)
{
    return parentLabel + '>' + name;
}

/** Adds @a children to @a parent; each answers with its own label. */
inline void addChildren(BwaDispatcherFcgiService* parent, const QByteArray& parentLabel,
                        const std::vector<TreeNode>& children)
{
    for (const TreeNode& child : children) {
        const QByteArray label = childLabel(parentLabel, child.name);
        BwaAbstractFcgiService* added = nullptr;
        if (child.kind == TreeNode::Dispatcher) {
            auto* childDispatcher = new LabelledDispatcher(label);
            addChildren(childDispatcher, label, child.children);
            added = childDispatcher;
        } else {
            added = new LabelledService(label);
        }
        parent->addService(QString::fromLatin1(child.name), added);
    }
}

#endif
