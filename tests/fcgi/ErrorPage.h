// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef ERRORPAGE_H
#define ERRORPAGE_H

#include <QByteArray>

/** The whole reply of a status such as "404 Not Found". */
inline QByteArray errorPage(const QByteArray& status)
{
    const QByteArray title = status.left(3) + " -" + status.mid(3);
    return "Status: " + status +
        "\n"
        "\n"
        "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01//EN\" "
        "\"http://www.w3.org/TR/html4/strict.dtd\">\n"
        "<html>\n"
        "<head>\n"
        "<title>" +
        title +
        "</title>\n"
        "</head>\n"
        "<body>\n"
        "<h1>" +
        title +
        "</h1>\n"
        "</body>\n"
        "</html>";
}

#endif
