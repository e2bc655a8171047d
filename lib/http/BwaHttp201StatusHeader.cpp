// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttp201StatusHeader.h"

#include "BwaStringStreaming.h"

#include <ostream>

BwaHttp201StatusHeader::BwaHttp201StatusHeader(const QString& contentType, const QString& location)
    : BwaHttpStatusContentHeader(201, QString::fromLatin1("Created"), contentType)
    , m_location(location)
{
}

void BwaHttp201StatusHeader::render(std::ostream& stream) const
{
    renderStatus(stream);
    renderContentType(stream);
    if (!m_location.isNull()) {
        // Settled: the doubled colon stays. Held by BwaHttp201StatusHeader.KeepsTheDoubledColon.
        stream << "Location:: " << m_location << std::endl;
    }
    renderCookies(stream);
    stream << std::endl;
}

BwaHttp201StatusHeader::~BwaHttp201StatusHeader() = default;
