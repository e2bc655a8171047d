// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The patterns make a tree with a level for each segment of a path:
//
//     /devices/{id:int}/log        root - "devices" - {int} - "log"
//     /devices/new                                  \ "new"
//
// A node has children for any number of literals and for at most one parameter. The search tries
// the literal first, then the parameter; when neither leads to a route, it goes back. As each node
// is on one level only, it is visited at most once for a path: whatever the path, the search takes
// no more steps than there are nodes.

#include "rest/BwaRestRouter_p.h"

#include <stdexcept>
#include <string>
#include <utility>

struct BwaRestRouter::Node {
    QString text;                                       // the literal; empty for a parameter
    QHash<QStringView, std::shared_ptr<Node>> literals; // by their texts
    std::unique_ptr<Node> parameter;                    // null: none
    BwaRestKind parameterKind = BwaRestKind::Text;      // of parameter
    std::string parameterRoute;                         // the route that added the parameter
    Resource resource;
};

struct BwaRestRouter::Search {
    const Resource* below(const Node& node, BwaSize begin) const;
    const Resource* belowLiteral(const Node& node, BwaSize begin, BwaSize end) const;
    const Resource* belowParameter(const Node& node, BwaSize begin, BwaSize end) const;

    const QString& path;
    Spans& spans;
};

namespace {

std::string shown(const BwaRestRoute& route)
{
    return '"' + (route.method() + ' ' + route.pattern()).toStdString() + '"';
}

std::vector<BwaRestSegment> parametersOf(const std::vector<BwaRestSegment>& segments)
{
    std::vector<BwaRestSegment> parameters;
    for (const BwaRestSegment& segment : segments) {
        if (segment.kind != BwaRestKind::Literal) {
            parameters.push_back(segment);
        }
    }
    return parameters;
}

} // namespace

const BwaRestRouter::Entry* BwaRestRouter::Resource::entry(const QByteArray& method) const
{
    for (const Entry& entry : entries) {
        if (entry.route->method() == method ||
            (method == "HEAD" && entry.route->method() == "GET")) {
            return &entry;
        }
    }
    return nullptr;
}

QByteArray BwaRestRouter::Resource::allow() const
{
    QByteArray methods;
    for (const Entry& entry : entries) {
        methods += entry.route->method() + (entry.route->method() == "GET" ? ", HEAD, " : ", ");
    }
    return methods + "OPTIONS";
}

BwaRestRouter::BwaRestRouter()
    : m_root(new Node)
{
}

BwaRestRouter::~BwaRestRouter() = default;

BwaRestRoute& BwaRestRouter::add(std::unique_ptr<BwaRestRoute> route)
{
    const std::vector<BwaRestSegment> segments = BwaRestPattern::segmentsOf(route->pattern());
    Node* node = m_root.get();
    for (const BwaRestSegment& segment : segments) {
        node = childFor(node, segment, *route);
    }
    if (const Entry* const other = node->resource.entry(route->method())) {
        throw std::logic_error("The routes " + shown(*other->route) + " and " + shown(*route) +
                               " match the same paths");
    }
    BwaRestRoute& added = *route;
    node->resource.entries.push_back({std::move(route), parametersOf(segments)});
    m_routes.push_back(&added);
    return added;
}

BwaRestRouter::Node* BwaRestRouter::childFor(Node* node, const BwaRestSegment& segment,
                                             const BwaRestRoute& route)
{
    if (segment.kind == BwaRestKind::Literal) {
        std::shared_ptr<Node> child = node->literals.value(segment.text);
        if (!child) {
            child = std::make_shared<Node>();
            child->text = segment.text;
            node->literals.insert(child->text, child);
        }
        return child.get();
    }
    if (!node->parameter) {
        node->parameter = std::make_unique<Node>();
        node->parameterKind = segment.kind;
        node->parameterRoute = shown(route);
    }
    if (node->parameterKind != segment.kind) {
        throw std::logic_error("The routes " + node->parameterRoute + " and " + shown(route) +
                               " have different kinds of parameters at one place");
    }
    return node->parameter.get();
}

const BwaRestRouter::Resource* BwaRestRouter::find(const QString& path, Spans* spans) const
{
    return path.startsWith(QLatin1Char('/')) ? Search{path, *spans}.below(*m_root, 1) : nullptr;
}

// Searches below @a node. The next segment of the path begins at @a begin; there is none when
// @a begin is after the end of the path.
const BwaRestRouter::Resource* BwaRestRouter::Search::below(const Node& node, BwaSize begin) const
{
    if (begin > path.size()) {
        return node.resource.entries.empty() ? nullptr : &node.resource;
    }
    const BwaSize slash = path.indexOf(QLatin1Char('/'), begin);
    const BwaSize end = slash < 0 ? path.size() : slash;
    if (const Resource* const found = belowLiteral(node, begin, end)) {
        return found;
    }
    const bool takesRest = node.parameterKind == BwaRestKind::Rest;
    return node.parameter ? belowParameter(node, begin, takesRest ? path.size() : end) : nullptr;
}

const BwaRestRouter::Resource* BwaRestRouter::Search::belowLiteral(const Node& node, BwaSize begin,
                                                                   BwaSize end) const
{
    const auto child = node.literals.constFind({path.constData() + begin, end - begin});
    return child == node.literals.constEnd() ? nullptr : below(**child, end + 1);
}

const BwaRestRouter::Resource*
BwaRestRouter::Search::belowParameter(const Node& node, BwaSize begin, BwaSize end) const
{
    const QStringView text(path.constData() + begin, end - begin);
    if (!BwaRestPattern::fits(node.parameterKind, text)) {
        return nullptr;
    }
    spans.append({begin, end - begin});
    const Resource* const found = below(*node.parameter, end + 1);
    if (!found) {
        spans.removeLast();
    }
    return found;
}
