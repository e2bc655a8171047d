// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef ERRORPAGE_H
#define ERRORPAGE_H

#include <QByteArray>

/** The whole reply that refuses a request with a status such as 404 and "Not Found". */
inline QByteArray errorPage(int statusCode, const QByteArray& reasonPhrase)
{
    const QByteArray code = QByteArray::number(statusCode);
    const QByteArray title = code + " - " + reasonPhrase;
    return "Status: " + code + ' ' + reasonPhrase +
        "\n"
        "\n"
        "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01//EN\""
        " \"http://www.w3.org/TR/html4/strict.dtd\">\n"
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
