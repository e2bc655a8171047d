// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTMLNODELIST_H
#define BWAHTMLNODELIST_H

#include "html/BwaAbstractHtmlNode.h"

#include <QList>

/**
 * Nodes side by side. The list owns its nodes and deletes them from the front.
 *
 * A node belongs to one list at most, which nothing checks. Copying clones each node, and the
 * clone of an element is empty: see BwaHtmlElement::clone().
 */
class BWA_EXPORT BwaHtmlNodeList : public BwaAbstractCgiStreamableElement
{
public:
    /** A list without nodes. */
    BwaHtmlNodeList();
    /** Holds a clone of @a node. Not explicit: one node may stand where a list is asked for. */
    BwaHtmlNodeList(const BwaAbstractHtmlNode& node);
    /** Holds clones of the nodes of @a other. */
    BwaHtmlNodeList(const BwaHtmlNodeList& other);
    ~BwaHtmlNodeList() override;

    BwaHtmlNodeList& operator=(const BwaHtmlNodeList&) = delete;

    /** Writes the nodes with nothing between them. */
    void render(std::ostream& stream) const override;

    /** Appends a clone of @a node, which stays the caller's. */
    BwaHtmlNodeList& append(const BwaAbstractHtmlNode& node);
    /** Appends @a node itself and takes it over; it must be on the heap and not null. */
    BwaHtmlNodeList& append(BwaAbstractHtmlNode* node);

    /** The nodes in their order; they stay owned by the list. */
    QList<BwaAbstractHtmlNode*> nodes() const { return m_nodes; }
    /** There are no nodes. */
    bool isEmpty() const { return m_nodes.isEmpty(); }

private:
    QList<BwaAbstractHtmlNode*> m_nodes; // owned
};

#endif
