// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "html/BwaHtmlAttribute.h"

#include "BwaStringStreaming.h"

#include <ostream>

BwaHtmlAttribute::BwaHtmlAttribute(const QString& name)
    : BwaHtmlAttribute(name, name)
{
}

BwaHtmlAttribute::BwaHtmlAttribute(const QString& name, const QString& value)
    : m_name(name)
    , m_value(value)
{
}

BwaHtmlAttribute::~BwaHtmlAttribute() = default;

void BwaHtmlAttribute::render(std::ostream& stream) const
{
    stream << m_name << "=\"" << m_value << '"';
}
