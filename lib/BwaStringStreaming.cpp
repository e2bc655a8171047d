// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BwaStringStreaming.h"

#include <QString>

#include <algorithm>
#include <ostream>

namespace {

const int shortText = 255; // characters that are converted without an allocation

char latin1(QChar character)
{
    return character.unicode() > 0xFF ? '?' : static_cast<char>(character.unicode());
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const QString& text)
{
    if (text.size() > shortText) {
        return stream << text.toLatin1().constData();
    }
    char bytes[shortText + 1];
    *std::transform(text.begin(), text.end(), bytes, latin1) = '\0';
    return stream << bytes;
}
