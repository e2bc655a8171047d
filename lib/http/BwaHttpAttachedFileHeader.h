// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTTPATTACHEDFILEHEADER_H
#define BWAHTTPATTACHEDFILEHEADER_H

#include "http/BwaHttpContentHeader.h"

/** The header block of a body that the client is to save as a file. */
class BWA_EXPORT BwaHttpAttachedFileHeader : public BwaHttpContentHeader
{
public:
    /** @a fileName is written as a quoted string, in Latin-1. */
    BwaHttpAttachedFileHeader(const QString& contentType, const QString& fileName);

    // Settled: the destructor comes second, here and in the virtual table.
    void render(std::ostream& stream) const override;
    ~BwaHttpAttachedFileHeader() override;

    /** The name offered to the client, without quotes. */
    QString fileName() const { return m_fileName; }

private:
    QString m_fileName;
};

#endif
