// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTTPJSONHEADER_H
#define BWAHTTPJSONHEADER_H

#include "http/BwaHttpContentHeader.h"

/** The header block of a body of the type application/json. */
class BWA_EXPORT BwaHttpJsonHeader : public BwaHttpContentHeader
{
public:
    /** A null @a charset writes no charset, an empty one writes an empty one. */
    explicit BwaHttpJsonHeader(const QString& charset = QString());
    ~BwaHttpJsonHeader() override;
};

#endif
