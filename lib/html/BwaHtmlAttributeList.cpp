// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaHtmlAttributeList.h"

#include <ostream>

BwaHtmlAttributeList::BwaHtmlAttributeList() = default;

BwaHtmlAttributeList::BwaHtmlAttributeList(const BwaHtmlAttribute& attribute)
{
    m_attributes.append(attribute);
}

BwaHtmlAttributeList::~BwaHtmlAttributeList() = default;

void BwaHtmlAttributeList::render(std::ostream& stream) const
{
    for (int i = 0; i < m_attributes.size(); ++i) {
        if (i > 0) {
            stream << ' ';
        }
        stream << m_attributes.at(i);
    }
}

BwaHtmlAttributeList& BwaHtmlAttributeList::set(const QString& name)
{
    m_attributes.append(BwaHtmlAttribute(name));
    return *this;
}

BwaHtmlAttributeList& BwaHtmlAttributeList::set(const QString& name, const QString& value)
{
    m_attributes.append(BwaHtmlAttribute(name, value));
    return *this;
}
