// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARECENTTEXTS_P_H
#define BWARECENTTEXTS_P_H

#include "BwaQtVersion_p.h"

#include <QString>

#include <array>

/**
 * Keeps short texts that come again and again, such as names, so that they share one string
 * instead of being made each time. There is a fixed number of places; a new text in a place
 * replaces the one before. Not for secrets: comparing takes longer the more of them is the same.
 */
class BwaRecentTexts
{
public:
    /** @a text, whose place follows from its size, its first and its last byte. */
    QString textOf(BwaLatin1 text)
    {
        if (text.size() == 0 || text.size() > longestKept) {
            return text;
        }
        const unsigned int first = static_cast<unsigned char>(*text.begin());
        const unsigned int last = static_cast<unsigned char>(*(text.end() - 1));
        const unsigned int place = static_cast<unsigned int>(text.size()) + 2 * first + 12 * last;
        QString& kept = m_kept[place % m_kept.size()];
        if (kept != text) {
            kept = text;
        }
        return kept;
    }

private:
    static const int longestKept = 32; // characters

    std::array<QString, 64> m_kept;
};

#endif
