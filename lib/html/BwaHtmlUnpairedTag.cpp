// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaHtmlUnpairedTag.h"

#include "BwaStringStreaming.h"

#include <ostream>

BwaHtmlUnpairedTag::BwaHtmlUnpairedTag(const QString& tagName)
    : BwaAbstractHtmlTag(tagName)
{
}

BwaHtmlUnpairedTag::BwaHtmlUnpairedTag(const QString& tagName,
                                       const BwaHtmlAttributeList& attributes)
    : BwaAbstractHtmlTag(tagName)
    , m_attributes(attributes)
{
}

BwaHtmlUnpairedTag::~BwaHtmlUnpairedTag() = default;

void BwaHtmlUnpairedTag::render(std::ostream& stream) const
{
    stream << '<' << tagName();
    if (!m_attributes.isEmpty()) {
        stream << ' ' << m_attributes;
    }
    stream << " />";
}
