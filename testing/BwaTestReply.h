// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWATESTREPLY_H
#define BWATESTREPLY_H

#include <QByteArray>
#include <QList>
#include <QPair>

/** The reply to a BwaTestRequest. */
struct BwaTestReply {
    BwaTestReply() = default;
    /** Reads @a rawReply, a header block and a body, as a web server does. */
    BwaTestReply(const QByteArray& rawReply, const QByteArray& errors);

    /**
     * The value of the first header @a name, in whatever case; null when there is none, empty when
     * nothing follows its colon.
     */
    QByteArray header(const QByteArray& name) const;
    /** The values of all headers @a name in their order, such as those of several Set-Cookie. */
    QList<QByteArray> headerValues(const QByteArray& name) const;

    /**
     * The code of the Status header, or of a status line such as "HTTP/1.1 200 OK". When the reply
     * has neither, 302 if it has a Location header, else 200. 0 when it does not begin with a
     * header block that a web server would accept; headers and body are then empty.
     */
    int statusCode = 0;
    /** The text after the status code; empty when there was none. */
    QByteArray reasonPhrase;
    /** Name and value, without blanks around them, of each header but Status, in their order. */
    QList<QPair<QByteArray, QByteArray>> headers;
    /** What follows the empty line after the headers. */
    QByteArray body;
    /** What was written on err(); a web server would have logged it. */
    QByteArray errorText;
    /** What was written on out(), byte for byte. */
    QByteArray raw;
};

#endif
