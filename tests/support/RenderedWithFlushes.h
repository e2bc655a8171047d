// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef RENDEREDWITHFLUSHES_H
#define RENDEREDWITHFLUSHES_H

#include <ostream>
#include <streambuf>
#include <string>

/** Keeps what is written to it, with a "|" wherever the stream was flushed. */
class FlushMarkingBuffer : public std::streambuf
{
public:
    std::string text;

protected:
    int_type overflow(int_type character) override
    {
        if (character != traits_type::eof()) {
            text += traits_type::to_char_type(character);
        }
        return traits_type::not_eof(character);
    }

    int sync() override
    {
        text += '|';
        return 0;
    }
};

/** The bytes that @a element writes, with a "|" wherever it flushes the stream. */
template <typename Element>
std::string renderedWithFlushes(const Element& element)
{
    FlushMarkingBuffer buffer;
    std::ostream stream(&buffer);
    stream << element;
    return buffer.text;
}

#endif
