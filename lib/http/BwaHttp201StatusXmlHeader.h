// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTTP201STATUSXMLHEADER_H
#define BWAHTTP201STATUSXMLHEADER_H

#include "http/BwaHttp201StatusHeader.h"

/**
 * The header block of a 201 reply with a body of the type application/xml.
 *
 * Its location line has two colons, which clients do not understand: see BwaHttp201StatusHeader.
 */
class BWA_EXPORT BwaHttp201StatusXmlHeader : public BwaHttp201StatusHeader
{
public:
    /** A null text leaves charset or location out; an empty one gives an empty value. */
    explicit BwaHttp201StatusXmlHeader(const QString& charset = QString(),
                                       const QString& location = QString());
    ~BwaHttp201StatusXmlHeader() override;
};

#endif
