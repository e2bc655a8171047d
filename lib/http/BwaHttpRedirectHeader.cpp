// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpRedirectHeader.h"

#include "BwaStringStreaming.h"

#include <ostream>

BwaHttpRedirectHeader::BwaHttpRedirectHeader(const QString& location)
    : m_location(location)
    , m_statusCode(-1)
{
}

BwaHttpRedirectHeader::BwaHttpRedirectHeader(const QString& location, bool permanent)
    : m_location(location)
    , m_statusCode(permanent ? 301 : 302)
{
}

BwaHttpRedirectHeader::~BwaHttpRedirectHeader() = default;

void BwaHttpRedirectHeader::render(std::ostream& stream) const
{
    if (m_statusCode == 301) {
        stream << "Status: 301 Moved Permanently" << std::endl;
    } else if (m_statusCode == 302) {
        stream << "Status: 302 Found" << std::endl;
    }
    stream << "Location: " << m_location << std::endl;
    renderCookies(stream);
    stream << std::endl;
}
