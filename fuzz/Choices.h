// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef CHOICES_H
#define CHOICES_H

#include <QByteArray>

/** The choices of one run, taken byte by byte from the front of an input; zeros at its end. */
class Choices
{
public:
    explicit Choices(const QByteArray& input)
        : m_input(input)
    {
    }

    /** A number from 0 to @a limit - 1; @a limit is 256 at most. */
    int below(int limit) { return (isAtEnd() ? 0 : quint8(m_input.at(m_position++))) % limit; }
    /** The bytes up to the next line feed, which is skipped. */
    QByteArray line()
    {
        const int end = m_input.indexOf('\n', m_position);
        const QByteArray bytes = m_input.mid(m_position, end < 0 ? -1 : end - m_position);
        m_position = end < 0 ? m_input.size() : end + 1;
        return bytes;
    }
    /** Everything that is left. */
    QByteArray rest()
    {
        const QByteArray bytes = m_input.mid(m_position);
        m_position = m_input.size();
        return bytes;
    }
    bool isAtEnd() const { return m_position >= m_input.size(); }

private:
    QByteArray m_input;
    int m_position = 0;
};

#endif
