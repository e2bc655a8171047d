// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpXmlHeader.h"

BwaHttpXmlHeader::BwaHttpXmlHeader(const QString& charset)
    : BwaHttpContentHeader(withCharset("application/xml", charset))
{
}

BwaHttpXmlHeader::~BwaHttpXmlHeader() = default;
