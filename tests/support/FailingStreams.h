// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef FAILINGSTREAMS_H
#define FAILINGSTREAMS_H

#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>

/** Takes a number of bytes and then refuses every other, as a connection that broke. */
class BreakingBuffer : public std::streambuf
{
public:
    explicit BreakingBuffer(std::string::size_type capacity)
        : m_capacity(capacity)
    {
    }

    std::string text;

protected:
    int_type overflow(int_type character) override
    {
        if (text.size() == m_capacity) {
            return traits_type::eof();
        }
        text += traits_type::to_char_type(character);
        return character;
    }

private:
    std::string::size_type m_capacity;
};

/** A stream that has failed before anything is written to it. */
inline std::ostringstream failedStream()
{
    std::ostringstream stream;
    stream.setstate(std::ios_base::failbit);
    return stream;
}

#endif
