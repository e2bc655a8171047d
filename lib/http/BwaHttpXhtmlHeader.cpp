// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpXhtmlHeader.h"

BwaHttpXhtmlHeader::BwaHttpXhtmlHeader(const QString& charset)
    : BwaHttpContentHeader(withCharset("application/xhtml+xml", charset))
{
}

BwaHttpXhtmlHeader::~BwaHttpXhtmlHeader() = default;
