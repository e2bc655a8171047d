// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpPlainTextHeader.h"

BwaHttpPlainTextHeader::BwaHttpPlainTextHeader(const QString& charset)
    : BwaHttpContentHeader(withCharset("text/plain", charset))
{
}

BwaHttpPlainTextHeader::~BwaHttpPlainTextHeader() = default;
