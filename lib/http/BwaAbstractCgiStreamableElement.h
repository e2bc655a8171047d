// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAABSTRACTCGISTREAMABLEELEMENT_H
#define BWAABSTRACTCGISTREAMABLEELEMENT_H

#include "BwaGlobal.h"

#include <iosfwd>

/** Something that renders itself as bytes: a header block, a cookie, a piece of HTML. */
class BWA_EXPORT BwaAbstractCgiStreamableElement
{
public:
    virtual ~BwaAbstractCgiStreamableElement();

    /** Writes the element, the same bytes at each call. The caller checks @a stream for failure. */
    virtual void render(std::ostream& stream) const = 0;
};

/** Renders @a element; containers render their children through it. */
BWA_EXPORT std::ostream& operator<<(std::ostream& stream,
                                    const BwaAbstractCgiStreamableElement& element);

#endif
