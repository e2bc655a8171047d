// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpAttachedFileHeader.h"

#include "BwaStringStreaming.h"

#include <ostream>

BwaHttpAttachedFileHeader::BwaHttpAttachedFileHeader(const QString& contentType,
                                                     const QString& fileName)
    : BwaHttpContentHeader(contentType)
    , m_fileName(fileName)
{
}

void BwaHttpAttachedFileHeader::render(std::ostream& stream) const
{
    renderContentType(stream);
    stream << "Content-Disposition: attachment; filename=" << quotedString(m_fileName) << std::endl;
    renderCookies(stream);
    stream << std::endl;
}

BwaHttpAttachedFileHeader::~BwaHttpAttachedFileHeader() = default;
