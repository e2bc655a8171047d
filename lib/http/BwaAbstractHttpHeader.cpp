// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaAbstractHttpHeader.h"

#include <ostream>

BwaAbstractHttpHeader::~BwaAbstractHttpHeader() = default;

QString BwaAbstractHttpHeader::quotedString(const QString& text)
{
    const QLatin1Char quote('"');
    const QLatin1Char backslash('\\');
    QString quoted;
    quoted.reserve(text.size() + 2);
    quoted.append(quote);
    for (const QChar character : text) {
        if (character == quote || character == backslash) {
            quoted.append(backslash);
        }
        quoted.append(character);
    }
    quoted.append(quote);
    return quoted;
}

void BwaAbstractHttpHeader::renderCookies(std::ostream& stream) const
{
    for (const BwaHttpCookie& cookie : cookies) {
        stream << cookie << std::endl;
    }
}
