// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BROKENBUFFER_H
#define BROKENBUFFER_H

#include <exception>
#include <ostream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

/**
 * What a reply stream writes to, in memory, that can throw once: at the flush of a line.
 *
 * It must outlive the stream's last use.
 */
class BrokenBuffer : public std::streambuf
{
public:
    /** Makes @a stream write to memory from now on. */
    explicit BrokenBuffer(std::ostream& stream)
        : BrokenBuffer(stream, 0, std::string())
    {
    }

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
    std::vector<std::string> flushed; // what was written between two flushes

protected:
    int_type overflow(int_type character) override
    {
        written += traits_type::to_char_type(character);
        m_unflushed += traits_type::to_char_type(character);
        return character;
    }

    int sync() override
    {
        flushed.push_back(std::exchange(m_unflushed, std::string()));
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
    std::string m_unflushed;
    bool m_repairs = false;
};

#endif
