// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BROKENBUFFER_H
#define BROKENBUFFER_H

#include <exception>
#include <ostream>
#include <streambuf>
#include <string>
#include <utility>

/**
 * What a reply stream writes to, in memory, that throws once: at the flush of a line.
 *
 * It must outlive the stream's last use.
 */
class BrokenBuffer : public std::streambuf
{
public:
    /** Makes @a stream, which writes to memory from now on, throw @a what at the end of @a line. */
    BrokenBuffer(std::ostream& stream, int line, std::string what)
        : m_stream(stream)
        , m_linesLeft(line)
        , m_what(std::move(what))
    {
        stream.rdbuf(this);
        stream.exceptions(std::ios::badbit);
    }

    /** When the exception's text is read, the stream is good again. */
    void repairWhenReported() { m_repairs = true; }

    std::string written;

protected:
    int_type overflow(int_type character) override
    {
        written += traits_type::to_char_type(character);
        return character;
    }

    int sync() override
    {
        if (--m_linesLeft == 0) {
            throw Broken(*this);
        }
        return 0;
    }

private:
    class Broken : public std::exception
    {
    public:
        explicit Broken(BrokenBuffer& buffer)
            : m_buffer(buffer)
        {
        }

        const char* what() const noexcept override
        {
            if (m_buffer.m_repairs) {
                m_buffer.m_stream.clear();
            }
            return m_buffer.m_what.c_str();
        }

    private:
        BrokenBuffer& m_buffer;
    };

    std::ostream& m_stream;
    int m_linesLeft;
    std::string m_what;
    bool m_repairs = false;
};

#endif
