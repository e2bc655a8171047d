// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaHtmlOpeningPairedTag.h"

#include "BwaStringStreaming.h"

#include <ostream>

BwaHtmlOpeningPairedTag::BwaHtmlOpeningPairedTag(const QString& tagName)
    : BwaAbstractHtmlTag(tagName)
{
}

BwaHtmlOpeningPairedTag::BwaHtmlOpeningPairedTag(const QString& tagName,
                                                 const BwaHtmlAttributeList& attributes)
    : BwaAbstractHtmlTag(tagName)
    , m_attributes(attributes)
{
}

BwaHtmlOpeningPairedTag::~BwaHtmlOpeningPairedTag() = default;

void BwaHtmlOpeningPairedTag::render(std::ostream& stream) const
{
    stream << '<' << tagName();
    if (!m_attributes.isEmpty()) {
        stream << ' ' << m_attributes;
    }
    stream << '>';
}
