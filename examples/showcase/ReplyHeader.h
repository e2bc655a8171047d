// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef REPLYHEADER_H
#define REPLYHEADER_H

#include "http/BwaHttpStatusContentHeader.h"

/**
 * The header block of this program's replies. It tells browsers to keep no copy, to guess no type,
 * to load nothing but what comes from this server, to run no script within a page, and to show it
 * in no frame of another page.
 */
class ReplyHeader : public BwaHttpStatusContentHeader
{
public:
    enum class Copies { Forbidden, CheckedBeforeUse };

    /** 200 with a body of @a contentType. */
    explicit ReplyHeader(const QString& contentType, Copies copies = Copies::Forbidden);
    /** 201 with a JSON body that shows what is now at @a location. */
    static ReplyHeader created(const QString& location);

    void render(std::ostream& stream) const override;

private:
    ReplyHeader(unsigned short statusCode, const QString& reasonPhrase, const QString& contentType,
                const QString& location, Copies copies);

    QString m_location; // null writes none
    Copies m_copies;
};

#endif
