// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTMLNODELIST_H
#define BWAHTMLNODELIST_H

#include "html/BwaAbstractHtmlNode.h"

#include <QList>

/**
 * Nodes that follow one another. The list owns its nodes and deletes them from the first to the
 * last.
 *
 * A node belongs to one list at most, which nothing checks. Copying clones each node, and the
 * clone of an element is empty: see BwaHtmlElement::clone().
 */
class BWA_EXPORT BwaHtmlNodeList : public BwaAbstractCgiStreamableElement
{
public:
    /** A list without nodes. */
    BwaHtmlNodeList();
    /** A list of a clone of @a node. Not explicit, so that a node can be passed as a list. */
    BwaHtmlNodeList(const BwaAbstractHtmlNode& node);
    /** A list of clones of the nodes of @a other. */
    BwaHtmlNodeList(const BwaHtmlNodeList& other);
    ~BwaHtmlNodeList() override;

    BwaHtmlNodeList& operator=(const BwaHtmlNodeList&) = delete;

    /** Writes the nodes with nothing between them. */
    void render(std::ostream& stream) const override;

    /** Appends a clone of @a node, which the caller keeps. */
    BwaHtmlNodeList& append(const BwaAbstractHtmlNode& node);
    /** Appends @a node itself and takes it over; it must be on the heap and not null. */
    BwaHtmlNodeList& append(BwaAbstractHtmlNode* node);

    /** The nodes in their order; they stay owned by the list. */
    QList<BwaAbstractHtmlNode*> nodes() const { return m_nodes; }
    /** Whether there are no nodes. */
    bool isEmpty() const { return m_nodes.isEmpty(); }

private:
    QList<BwaAbstractHtmlNode*> m_nodes; // owned
};

#endif
