// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpContentHeader.h"

#include "BwaStringStreaming.h"

#include <ostream>

BwaHttpContentHeader::BwaHttpContentHeader(const QString& contentType)
    : m_contentType(contentType)
{
}

void BwaHttpContentHeader::render(std::ostream& stream) const
{
    renderContentType(stream);
    renderCookies(stream);
    stream << std::endl;
}

BwaHttpContentHeader::~BwaHttpContentHeader() = default;

void BwaHttpContentHeader::renderContentType(std::ostream& stream) const
{
    stream << "Content-Type: " << m_contentType << std::endl;
}

QString BwaHttpContentHeader::withCharset(const char* mediaType, const QString& charset)
{
    QString contentType = QString::fromLatin1(mediaType);
    if (!charset.isNull()) {
        contentType += QLatin1String("; charset=") + charset;
    }
    return contentType;
}
