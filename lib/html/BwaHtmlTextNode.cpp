// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaHtmlTextNode.h"

#include "BwaStringStreaming.h"

#include <ostream>

BwaHtmlTextNode::BwaHtmlTextNode(const QString& text)
    : m_text(text)
{
}

BwaHtmlTextNode::~BwaHtmlTextNode() = default;

void BwaHtmlTextNode::render(std::ostream& stream) const
{
    stream << m_text;
}

BwaAbstractHtmlNode* BwaHtmlTextNode::clone() const
{
    return new BwaHtmlTextNode(m_text);
}
