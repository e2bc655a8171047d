// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaHtmlComment.h"

#include "BwaStringStreaming.h"

#include <ostream>

BwaHtmlComment::BwaHtmlComment(const QString& text)
    : m_text(text)
{
}

BwaHtmlComment::~BwaHtmlComment() = default;

void BwaHtmlComment::render(std::ostream& stream) const
{
    stream << "<!-- " << m_text << " -->";
}

BwaAbstractHtmlNode* BwaHtmlComment::clone() const
{
    return new BwaHtmlComment(m_text);
}
