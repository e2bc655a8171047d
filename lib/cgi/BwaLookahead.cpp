// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaLookahead_p.h"

#include <cstring>

BwaLookahead::BwaLookahead(const QByteArray& bytes)
    : m_bytes(bytes)
    , m_consumed(0)
    , m_removed(0)
{
}

const char* BwaLookahead::from(qint64 position) const
{
    return m_bytes.constData() + (position - m_removed);
}

bool BwaLookahead::has(const char* text, qint64 position) const
{
    const std::size_t size = std::strlen(text);
    return static_cast<std::size_t>(end() - position) >= size &&
        std::memcmp(from(position), text, size) == 0;
}

qint64 BwaLookahead::indexOf(const QByteArray& text, qint64 earliest) const
{
    const char* const searched = from(earliest);
    const void* const match = ::memmem(searched, static_cast<std::size_t>(end() - earliest),
                                       text.constData(), static_cast<std::size_t>(text.size()));
    return match ? earliest + (static_cast<const char*>(match) - searched) : -1;
}

void BwaLookahead::append(const QByteArray& bytes)
{
    if (m_consumed > m_bytes.size() / 2) {
        m_bytes.remove(0, m_consumed);
        m_removed += m_consumed;
        m_consumed = 0;
    }
    m_bytes.append(bytes);
}

void BwaLookahead::consumeUpTo(qint64 position)
{
    m_consumed = static_cast<BwaSize>(position - m_removed);
}
