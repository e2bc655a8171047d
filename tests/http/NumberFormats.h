// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef NUMBERFORMATS_H
#define NUMBERFORMATS_H

#include <locale>
#include <sstream>
#include <string>

/** Writes one thousand as "1.000", as many countries do. */
class GroupingPunctuation : public std::numpunct<char>
{
protected:
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/** The bytes that @a element writes to a stream whose locale groups digits. */
template <typename Element>
std::string renderedWithGroupingLocale(const Element& element)
{
    std::ostringstream stream;
    stream.imbue(std::locale(std::locale::classic(), new GroupingPunctuation));
    stream << element;
    return stream.str();
}

/** The bytes that @a element writes to a stream that was left in hexadecimal mode. */
template <typename Element>
std::string renderedInHexadecimalMode(const Element& element)
{
    std::ostringstream stream;
    stream << std::hex << std::showbase;
    stream << element;
    return stream.str();
}

#endif
