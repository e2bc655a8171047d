// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttp201StatusJsonHeader.h"

BwaHttp201StatusJsonHeader::BwaHttp201StatusJsonHeader(const QString& charset,
                                                       const QString& location)
    : BwaHttp201StatusHeader(withCharset("application/json", charset), location)
{
}

BwaHttp201StatusJsonHeader::~BwaHttp201StatusJsonHeader() = default;
