// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttp204StatusHeader.h"

BwaHttp204StatusHeader::BwaHttp204StatusHeader()
    : BwaHttpStatusHeader(204, QString::fromLatin1("No Content"))
{
}

BwaHttp204StatusHeader::~BwaHttp204StatusHeader() = default;
