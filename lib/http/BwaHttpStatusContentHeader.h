// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTTPSTATUSCONTENTHEADER_H
#define BWAHTTPSTATUSCONTENTHEADER_H

#include "http/BwaHttpContentHeader.h"
#include "http/BwaHttpStatusHeader.h"

/** A header block with a status and the type of the body. */
class BWA_EXPORT BwaHttpStatusContentHeader
    : public BwaHttpStatusHeader
    , public BwaHttpContentHeader
{
public:
    /** @a contentType is the whole value, parameters included. */
    BwaHttpStatusContentHeader(unsigned short statusCode, const QString& reasonPhrase,
                               const QString& contentType);

    // Settled: the destructor comes second, here and in the virtual table.
    void render(std::ostream& stream) const override;
    ~BwaHttpStatusContentHeader() override;
};

#endif
