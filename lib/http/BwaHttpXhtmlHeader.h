// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTTPXHTMLHEADER_H
#define BWAHTTPXHTMLHEADER_H

#include "http/BwaHttpContentHeader.h"

/** The header block of a body of the type application/xhtml+xml. */
class BWA_EXPORT BwaHttpXhtmlHeader : public BwaHttpContentHeader
{
public:
    /** A null @a charset writes no charset, an empty one writes an empty one. */
    explicit BwaHttpXhtmlHeader(const QString& charset = QString());
    ~BwaHttpXhtmlHeader() override;
};

#endif
