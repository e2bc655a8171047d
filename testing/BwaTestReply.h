// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWATESTREPLY_H
#define BWATESTREPLY_H

#include <QByteArray>
#include <QList>
#include <QPair>

/** What came back for a BwaTestRequest. */
struct BwaTestReply {
    BwaTestReply() = default;
    /** Reads @a rawReply, a header block and a body, as a web server does. */
    BwaTestReply(const QByteArray& rawReply, const QByteArray& errors);

    /**
     * The value of the first header @a name, whose case does not matter; null when there is none,
     * empty when there is nothing behind its colon.
     */
    QByteArray header(const QByteArray& name) const;
    /** The values of all headers @a name in their order, such as those of several Set-Cookie. */
    QList<QByteArray> headerValues(const QByteArray& name) const;

    /**
     * What the Status header says, or a status line such as "HTTP/1.1 200 OK" in its place. Without
     * either 302 when there is a Location, otherwise 200. 0 when the reply does not begin with a
     * header block that a web server would take; headers and body are then empty.
     */
    int statusCode = 0;
    /** Behind the status code; empty when there was none. */
    QByteArray reasonPhrase;
    /** Name and value of each header in its order, but for Status. Blanks around are cut. */
    QList<QPair<QByteArray, QByteArray>> headers;
    /** What follows the empty line behind the headers. */
    QByteArray body;
    /** What was written on err(), which a web server would have logged. */
    QByteArray errorText;
    /** What was written on out(), byte for byte. */
    QByteArray raw;
};

#endif
