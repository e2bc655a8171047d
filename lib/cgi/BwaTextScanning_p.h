// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWATEXTSCANNING_P_H
#define BWATEXTSCANNING_P_H

#include "BwaGlobal.h"

#include <QString>

#include <algorithm>

/** Functions that several parsers of texts use. */
namespace BwaTextScanning {

/** The characters of @a text from @a begin up to @a end; empty, never null, when there are none. */
inline QString textBetween(const QString& text, BwaSize begin, BwaSize end)
{
    return begin < end ? QString(text.constData() + begin, end - begin) : QString::fromLatin1("");
}

/** The position of the first of the characters between @a begin and @a end, or @a end. */
template <char... Characters>
BwaSize indexOfAny(const QString& text, BwaSize begin, BwaSize end)
{
    const auto isWanted = [](QChar character) {
        // NOLINTNEXTLINE(google-readability-casting): clang-tidy takes the pack for a cast
        return ((character == QLatin1Char(Characters)) || ...);
    };
    const QChar* const characters = text.constData();
    const QChar* const match = std::find_if(characters + begin, characters + end, isWanted);
    return static_cast<BwaSize>(match - characters);
}

} // namespace BwaTextScanning

#endif
