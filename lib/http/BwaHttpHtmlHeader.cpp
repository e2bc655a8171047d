// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpHtmlHeader.h"

BwaHttpHtmlHeader::BwaHttpHtmlHeader(const QString& charset)
    : BwaHttpContentHeader(withCharset("text/html", charset))
{
}

BwaHttpHtmlHeader::~BwaHttpHtmlHeader() = default;
