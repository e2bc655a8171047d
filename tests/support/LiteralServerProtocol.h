// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef LITERALSERVERPROTOCOL_H
#define LITERALSERVERPROTOCOL_H

#include "cgi/BwaCgiEnvironment.h"

#include <QRegExp>
#include <QString>

/** The protocol parsed by a regular expression; the library's own scanner must agree. */
inline BwaCgiEnvironment::ServerProtocol literalServerProtocol(const QString& text)
{
    const int slash = text.indexOf(QLatin1Char('/'));
    QRegExp version(QStringLiteral("(\\d+)\\.(\\d+)"));
    BwaCgiEnvironment::ServerProtocol result = {slash < 0 ? text : text.left(slash), 0, 0};
    if (slash >= 0 && version.exactMatch(text.mid(slash + 1))) {
        result.majorVersion = version.cap(1).toUInt();
        result.minorVersion = version.cap(2).toUInt();
    }
    return result;
}

#endif
