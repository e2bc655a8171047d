// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARECENTTEXTS_P_H
#define BWARECENTTEXTS_P_H

#include <QString>

#include <array>

/**
 * Keeps short texts that come again and again, such as the names of members, so that they share one
 * string instead of being made each time. There is a fixed number of places; a text stays in its
 * place until another one replaces it. Not for secrets, therefore, and because comparing takes
 * longer the more of them is the same.
 */
class BwaRecentTexts
{
public:
    /** @a text, whose place follows from its size, its first and its last byte. */
    QString textOf(QLatin1String text)
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
