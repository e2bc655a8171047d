// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "ReplyHeader.h"

#include "BwaStringStreaming.h"

#include <ostream>

ReplyHeader::ReplyHeader(const QString& contentType, Copies copies)
    : ReplyHeader(200, QStringLiteral("OK"), contentType, QString(), copies)
{
}

ReplyHeader::ReplyHeader(unsigned short statusCode, const QString& reasonPhrase,
                         const QString& contentType, const QString& location, Copies copies)
    : BwaHttpStatusContentHeader(statusCode, reasonPhrase, contentType)
    , m_location(location)
    , m_copies(copies)
{
}

ReplyHeader ReplyHeader::created(const QString& location)
{
    return ReplyHeader(201, QStringLiteral("Created"),
                       QStringLiteral("application/json; charset=utf-8"), location,
                       Copies::Forbidden);
}

void ReplyHeader::render(std::ostream& stream) const
{
    renderStatus(stream);
    renderContentType(stream);
    stream << "Cache-Control: " << (m_copies == Copies::Forbidden ? "no-store" : "no-cache") << '\n'
           << "Content-Security-Policy: default-src 'none'; connect-src 'self'; "
              "img-src 'self'; script-src 'self'; style-src 'self'; base-uri 'none'; "
              "form-action 'none'; frame-ancestors 'none'\n"
              "Referrer-Policy: no-referrer\n"
              "X-Content-Type-Options: nosniff\n";
    if (!m_location.isNull()) {
        stream << "Location: " << m_location << '\n';
    }
    renderCookies(stream);
    stream << std::endl;
}
