// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef ROUTINGMODEL_H
#define ROUTINGMODEL_H

#include "support/ErrorPage.h"
#include "support/ServiceReplies.h"
#include "support/ServiceTree.h"

#include <QByteArray>

#include <vector>

// The routing rule as it reads, without regard to speed. The library must agree.

/** The child of exactly the name, or the first dispatcher whose name is a prefix; null if none is.
 */
inline const TreeNode* modelChild(const std::vector<TreeNode>& children, const QByteArray& rest)
{
    for (const TreeNode& child : children) {
        if (child.name == rest) {
            return &child;
        }
    }
    for (const TreeNode& child : children) {
        if (child.kind == TreeNode::Dispatcher && rest.startsWith(child.name + '/')) {
            return &child;
        }
    }
    return nullptr;
}

/** The label of the service that answers, or "not found by" and the path of the last dispatcher. */
inline QByteArray modelRoute(const std::vector<TreeNode>& children, const QByteArray& label,
                             const QByteArray& path, const QByteArray& pathInfo)
{
    if (pathInfo == path || pathInfo == path + '/') {
        return label;
    }
    const TreeNode* child = pathInfo.startsWith(path + '/')
        ? modelChild(children, pathInfo.mid(path.size() + 1))
        : nullptr;
    if (!child) {
        return "not found by " + path;
    }
    const QByteArray answer = childLabel(label, child->name);
    return child->kind == TreeNode::Service
        ? answer
        : modelRoute(child->children, answer, path + '/' + child->name, pathInfo);
}

/** What modelRoute() tells, as the library has it. */
inline QByteArray libraryRoute(BwaAbstractFcgiService& root, const QByteArray& pathInfo)
{
    const BwaTestReply reply = replyOf(root, requestTo(pathInfo));
    if (reply.raw != errorPage(404, "Not Found")) {
        return reply.raw;
    }
    // Error in dispatcher service "<path>" for script ...
    const int start = reply.errorText.indexOf('"') + 1;
    return "not found by " +
        reply.errorText.mid(start, reply.errorText.indexOf('"', start) - start);
}

#endif
