// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTTPHTMLHEADER_H
#define BWAHTTPHTMLHEADER_H

#include "http/BwaHttpContentHeader.h"

/** The header block of a body of the type text/html. */
class BWA_EXPORT BwaHttpHtmlHeader : public BwaHttpContentHeader
{
public:
    /** A null @a charset writes no charset, an empty one writes an empty one. */
    explicit BwaHttpHtmlHeader(const QString& charset = QString());
    ~BwaHttpHtmlHeader() override;
};

#endif
