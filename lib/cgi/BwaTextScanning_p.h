// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWATEXTSCANNING_P_H
#define BWATEXTSCANNING_P_H

#include <QString>

// What the text parsers have in common. Pieces of length 0 are empty, never null.

/** The characters of @a text from @a begin up to @a end. */
inline QString textBetween(const QString& text, int begin, int end)
{
    return begin < end ? text.mid(begin, end - begin) : QString::fromLatin1("");
}

/** The position of the first of @a characters at or after @a from; the text's size without one. */
inline int indexOfAny(const QString& text, const char* characters, int from)
{
    const QLatin1String wanted(characters);
    int position = from;
    while (position < text.size() && !wanted.contains(text.at(position))) {
        ++position;
    }
    return position;
}

#endif
