// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWASTANDARDCGIINPUT_H
#define BWASTANDARDCGIINPUT_H

#include "cgi/BwaAbstractCgiInput.h"

/** The input of a plain CGI program: its environment and its standard input. */
class BWA_EXPORT BwaStandardCgiInput : public BwaAbstractCgiInput
{
public:
    BwaStandardCgiInput();
    ~BwaStandardCgiInput() override;

    /**
     * Returns at most 2^31 - 1025 bytes in one call. A descriptor that cannot be read counts as the
     * end of the body.
     */
    QByteArray read(unsigned int size) override;
    /** The environment variable as Latin-1 text; empty, not null, when it is not set. */
    QString getenv(const QString& name) override;
};

#endif
