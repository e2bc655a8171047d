// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAABSTRACTHTTPHEADER_H
#define BWAABSTRACTHTTPHEADER_H

#include "http/BwaHttpCookie.h"

#include <QList>

/**
 * A complete header block: its own lines, the cookies, and the empty line before the body.
 *
 * Lines end in a single line feed and a flush. Texts are written unchanged: the caller must make
 * sure that a text from outside has no CR or LF.
 */
class BWA_EXPORT BwaAbstractHttpHeader : public BwaAbstractCgiStreamableElement
{
public:
    ~BwaAbstractHttpHeader() override;

    void render(std::ostream& stream) const override = 0;

    /** @a text as a quoted-string (RFC 9110, section 5.6.4): backslashes and quotes escaped. */
    static QString quotedString(const QString& text);

    QList<BwaHttpCookie> cookies; /**< Written in this order; empty at first. */

protected:
    /** Writes one line, with its line end, for each cookie. */
    void renderCookies(std::ostream& stream) const;
};

#endif
