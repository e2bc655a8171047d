// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpStatusContentHeader.h"

#include <ostream>

BwaHttpStatusContentHeader::BwaHttpStatusContentHeader(unsigned short statusCode,
                                                       const QString& reasonPhrase,
                                                       const QString& contentType)
    : BwaHttpStatusHeader(statusCode, reasonPhrase)
    , BwaHttpContentHeader(contentType)
{
}

void BwaHttpStatusContentHeader::render(std::ostream& stream) const
{
    renderStatus(stream);
    renderContentType(stream);
    renderCookies(stream);
    stream << std::endl;
}

BwaHttpStatusContentHeader::~BwaHttpStatusContentHeader() = default;
