// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpReplyHeader.h"

#include "BwaStringStreaming.h"

#include <ostream>

BwaHttpReplyHeader::BwaHttpReplyHeader(const QString& protocol, unsigned short statusCode,
                                       const QString& reasonPhrase)
    : m_protocol(protocol)
    , m_statusCode(statusCode)
    , m_reasonPhrase(reasonPhrase)
{
}

BwaHttpReplyHeader::~BwaHttpReplyHeader() = default;

void BwaHttpReplyHeader::render(std::ostream& stream) const
{
    stream << m_protocol << ' ' << QString::number(m_statusCode) << ' ' << m_reasonPhrase
           << std::endl;
    for (const QString& line : m_headerLines) {
        stream << line << std::endl;
    }
    renderCookies(stream);
    stream << std::endl;
}

void BwaHttpReplyHeader::addHeader(const QString& name, const QString& value)
{
    m_headerLines.append(name + QLatin1String(": ") + value);
}
