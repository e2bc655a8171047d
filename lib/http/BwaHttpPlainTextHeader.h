// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAHTTPPLAINTEXTHEADER_H
#define BWAHTTPPLAINTEXTHEADER_H

#include "http/BwaHttpContentHeader.h"

/** The header block of a body of the type text/plain. */
class BWA_EXPORT BwaHttpPlainTextHeader : public BwaHttpContentHeader
{
public:
    /** A null @a charset writes no charset, an empty one writes an empty one. */
    explicit BwaHttpPlainTextHeader(const QString& charset = QString());
    ~BwaHttpPlainTextHeader() override;
};

#endif
