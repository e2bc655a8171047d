// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttp201StatusXmlHeader.h"

BwaHttp201StatusXmlHeader::BwaHttp201StatusXmlHeader(const QString& charset,
                                                     const QString& location)
    : BwaHttp201StatusHeader(withCharset("application/xml", charset), location)
{
}

BwaHttp201StatusXmlHeader::~BwaHttp201StatusXmlHeader() = default;
