// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTROUTER_P_H
#define BWARESTROUTER_P_H

#include "rest/BwaRestPattern_p.h"
#include "rest/BwaRestRoute.h"

#include <QHash>
#include <QString>
#include <QVarLengthArray>

#include <memory>
#include <vector>

/** Finds the route of a path and a method. */
class BwaRestRouter
{
    Q_DISABLE_COPY(BwaRestRouter)

public:
    /** Where in a path the text of a parameter is. */
    struct Span {
        BwaSize begin;
        BwaSize size;
    };
    /** The spans of all parameters, in their order in the pattern. */
    using Spans = QVarLengthArray<Span, 8>;

    /** A route, and the parameters of its pattern in their order. */
    struct Entry {
        std::unique_ptr<BwaRestRoute> route;
        std::vector<BwaRestSegment> parameters;
    };

    /** The routes of a path. */
    struct Resource {
        /** The entry for @a method; for HEAD that of GET; null when there is none. */
        const Entry* entry(const QByteArray& method) const;
        /** The value of an Allow header. */
        QByteArray allow() const;

        std::vector<Entry> entries; // at least one
    };

    BwaRestRouter();
    ~BwaRestRouter();

    /**
     * Adds a route, which it owns from then on.
     * @throws std::logic_error when the pattern is invalid or conflicts with that of another route
     */
    BwaRestRoute& add(std::unique_ptr<BwaRestRoute> route);
    /**
     * The resource whose pattern matches @a path, and in @a spans its parameters; null, without
     * spans, when there is none.
     */
    const Resource* find(const QString& path, Spans* spans) const;
    /** All routes in the order in which they were added; owned by this. */
    const std::vector<const BwaRestRoute*>& routes() const { return m_routes; }

private:
    struct Node;
    struct Search;

    Node* childFor(Node* node, const BwaRestSegment& segment, const BwaRestRoute& route);

    std::unique_ptr<Node> m_root;
    std::vector<const BwaRestRoute*> m_routes; // owned by their resources
};

#endif
