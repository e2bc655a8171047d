// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttpJsonHeader.h"

BwaHttpJsonHeader::BwaHttpJsonHeader(const QString& charset)
    : BwaHttpContentHeader(withCharset("application/json", charset))
{
}

BwaHttpJsonHeader::~BwaHttpJsonHeader() = default;
