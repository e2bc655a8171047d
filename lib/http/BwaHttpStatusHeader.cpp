// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpStatusHeader.h"

#include "BwaStringStreaming.h"

#include <ostream>

BwaHttpStatusHeader::BwaHttpStatusHeader(unsigned short statusCode, const QString& reasonPhrase)
    : m_statusCode(statusCode)
    , m_reasonPhrase(reasonPhrase)
{
}

void BwaHttpStatusHeader::render(std::ostream& stream) const
{
    renderStatus(stream);
    renderCookies(stream);
    stream << std::endl;
}

BwaHttpStatusHeader::~BwaHttpStatusHeader() = default;

void BwaHttpStatusHeader::renderStatus(std::ostream& stream) const
{
    stream << "Status: " << QString::number(m_statusCode) << ' ' << m_reasonPhrase << std::endl;
}
