// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWALOOKAHEAD_P_H
#define BWALOOKAHEAD_P_H

#include "BwaGlobal.h"

#include <QByteArray>

/**
 * The bytes of a long text that have been read and are not consumed yet. Every position counts from
 * the start of the text, so it stays the same while bytes are appended and consumed.
 *
 * Consuming moves no bytes: consumed ones are removed by the next append() that finds more than
 * half of all bytes consumed.
 */
class BwaLookahead
{
public:
    /** A text that starts with @a bytes. */
    explicit BwaLookahead(const QByteArray& bytes);

    /** The position of the first byte that is not consumed. */
    qint64 begin() const { return m_removed + m_consumed; }
    /** The position after the last byte that has been read. */
    qint64 end() const { return m_removed + m_bytes.size(); }
    /** The number of bytes that have been read and are not consumed. */
    BwaSize size() const { return m_bytes.size() - m_consumed; }
    /** The byte at @a position and those after it, up to end(); valid until the next append(). */
    const char* from(qint64 position) const;

    /** Whether @a text is at @a position, which is not before begin(). */
    bool has(const char* text, qint64 position) const;
    /** The first position of @a text that is not before @a earliest, or -1. Takes linear time. */
    qint64 indexOf(const QByteArray& text, qint64 earliest) const;

    void append(const QByteArray& bytes);
    /** Consumes the bytes before @a position, which is from begin() to end(). */
    void consumeUpTo(qint64 position);

private:
    QByteArray m_bytes; // consumed ones in front
    BwaSize m_consumed; // how many of m_bytes are consumed
    qint64 m_removed;   // how many bytes have left the front of m_bytes
};

#endif
