// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef RENDERED_H
#define RENDERED_H

#include <sstream>
#include <string>

/** The bytes that @a element writes when it is streamed. */
template <typename Element>
std::string rendered(const Element& element)
{
    std::ostringstream stream;
    stream << element;
    return stream.str();
}

#endif
