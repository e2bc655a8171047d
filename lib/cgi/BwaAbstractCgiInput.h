// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAABSTRACTCGIINPUT_H
#define BWAABSTRACTCGIINPUT_H

#include "BwaGlobal.h"

class QByteArray;
class QString;

/** Where the CGI variables and the body of one request come from. */
class BWA_EXPORT BwaAbstractCgiInput
{
public:
    BwaAbstractCgiInput();
    virtual ~BwaAbstractCgiInput();

    /**
     * The next bytes of the body, @a size of them at most. Blocks until they have come or the body
     * has ended: a shorter result means the end. Nothing may be allocated for bytes that have only
     * been announced. Never asked for more than CONTENT_LENGTH bytes in all.
     */
    virtual QByteArray read(unsigned int size) = 0;
    /** The value of the variable @a name, an empty text when it is not set. */
    virtual QString getenv(const QString& name) = 0;
};

#endif
