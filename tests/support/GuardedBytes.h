// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef GUARDEDBYTES_H
#define GUARDEDBYTES_H

#include <QByteArray>

#include <cstddef>
#include <cstring>

#include <sys/mman.h>
#include <unistd.h>

/** Up to a page of bytes at the end of readable memory: reading one more ends the process. */
class GuardedBytes
{
public:
    explicit GuardedBytes(const QByteArray& bytes)
        : m_page(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)))
        , m_memory(static_cast<char*>(::mmap(nullptr, 2 * m_page, PROT_READ | PROT_WRITE,
                                             MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
        , m_size(bytes.size())
    {
        std::memcpy(begin(), bytes.constData(), static_cast<std::size_t>(m_size));
        ::mprotect(m_memory + m_page, m_page, PROT_NONE);
    }

    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;
    ~GuardedBytes() { ::munmap(m_memory, 2 * m_page); }

    /** The bytes, not copied: no NUL follows them, as it does in Qt's own arrays. */
    QByteArray bytes() const { return QByteArray::fromRawData(begin(), static_cast<int>(m_size)); }

private:
    char* begin() const { return m_memory + m_page - m_size; }

    std::size_t m_page;
    char* m_memory; // owned
    std::ptrdiff_t m_size;
};

#endif
