// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaHtmlNodeList.h"

#include <memory>
#include <ostream>

BwaHtmlNodeList::BwaHtmlNodeList() = default;

BwaHtmlNodeList::BwaHtmlNodeList(const BwaAbstractHtmlNode& node)
{
    append(node);
}

BwaHtmlNodeList::BwaHtmlNodeList(const BwaHtmlNodeList& other)
    : BwaHtmlNodeList() // from here on the destructor runs when a clone fails
{
    for (const BwaAbstractHtmlNode* node : other.m_nodes) {
        append(*node);
    }
}

BwaHtmlNodeList::~BwaHtmlNodeList()
{
    while (!m_nodes.isEmpty()) {
        delete m_nodes.takeFirst();
    }
}

void BwaHtmlNodeList::render(std::ostream& stream) const
{
    for (const BwaAbstractHtmlNode* node : m_nodes) {
        stream << *node;
    }
}

BwaHtmlNodeList& BwaHtmlNodeList::append(const BwaAbstractHtmlNode& node)
{
    return append(node.clone());
}

BwaHtmlNodeList& BwaHtmlNodeList::append(BwaAbstractHtmlNode* node)
{
    std::unique_ptr<BwaAbstractHtmlNode> taken(node);
    m_nodes.append(node);
    static_cast<void>(taken.release()); // the list owns it now
    return *this;
}
