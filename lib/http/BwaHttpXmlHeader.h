// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTTPXMLHEADER_H
#define BWAHTTPXMLHEADER_H

#include "http/BwaHttpContentHeader.h"

/** The header block of a body of the type application/xml. */
class BWA_EXPORT BwaHttpXmlHeader : public BwaHttpContentHeader
{
public:
    /** A null @a charset writes no charset, an empty one writes an empty one. */
    explicit BwaHttpXmlHeader(const QString& charset = QString());
    ~BwaHttpXmlHeader() override;
};

#endif
