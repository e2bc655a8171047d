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
     * The next @a size bytes of the body. Blocks until they have arrived; a shorter result means
     * that the body has ended. An implementation must not allocate memory for bytes that have not
     * arrived, since a client may announce more than it sends. It is never asked for more than
     * CONTENT_LENGTH bytes in all.
     */
    virtual QByteArray read(unsigned int size) = 0;
    /** The value of the variable @a name; an empty text when it is not set. */
    virtual QString getenv(const QString& name) = 0;
};

#endif
