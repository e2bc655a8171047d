// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTTP204STATUSHEADER_H
#define BWAHTTP204STATUSHEADER_H

#include "http/BwaHttpStatusHeader.h"

/** The header block of a successful reply without a body: 204 No Content. */
class BWA_EXPORT BwaHttp204StatusHeader : public BwaHttpStatusHeader
{
public:
    BwaHttp204StatusHeader();
    ~BwaHttp204StatusHeader() override;
};

#endif
