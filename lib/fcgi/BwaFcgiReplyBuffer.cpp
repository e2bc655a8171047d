// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiExchange_p.h"
#include "fcgi/BwaFcgiReplyBuffer_p.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <strings.h>

namespace {

const qint64 mostUnwatched = 8000; // bytes before writing may wait; libfcgi sends every 8192

bool startsWith(const char* line, const char* prefix, std::size_t size)
{
    return ::strncasecmp(line, prefix, size) == 0;
}

} // namespace

BwaFcgiReplyBuffer::BwaFcgiReplyBuffer(FCGX_Stream* stream, BwaFcgiExchange* exchange)
    : fcgi_streambuf(stream)
    , m_stream(stream)
    , m_exchange(exchange)
{
}

BwaFcgiReplyBuffer::~BwaFcgiReplyBuffer() = default;

void BwaFcgiReplyBuffer::sendAll()
{
    if (m_size > 0) {
        FCGX_FFlush(m_stream);
    }
}

// Called for a single character. std::endl writes its line feed this way and then flushes, so the
// flush that follows the end of the header block is recognised here.
int BwaFcgiReplyBuffer::overflow(int character)
{
    if (character == traits_type::eof()) {
        return fcgi_streambuf::overflow(character);
    }
    const char text = traits_type::to_char_type(character);
    const Progress before = m_progress;
    count(1);
    follow(&text, 1);
    if (before == Progress::InHeader && m_progress == Progress::InBody) {
        m_progress = Progress::AtEndOfHeader;
    }
    return fcgi_streambuf::overflow(character);
}

int BwaFcgiReplyBuffer::sync()
{
    if (m_isHolding || m_progress == Progress::InHeader) {
        return 0;
    }
    if (m_progress == Progress::AtEndOfHeader) {
        m_progress = Progress::InBody;
        return 0;
    }
    return fcgi_streambuf::sync();
}

std::streamsize BwaFcgiReplyBuffer::xsputn(const char* text, std::streamsize size)
{
    count(size);
    follow(text, size);
    const std::streamsize most = std::numeric_limits<int>::max(); // libfcgi counts with int
    std::streamsize written = 0;
    std::streamsize last = 1;
    while (written < size && last > 0) {
        last = fcgi_streambuf::xsputn(text + written, std::min(size - written, most));
        written += std::max<std::streamsize>(last, 0);
    }
    return written;
}

// A small reply always fits into the connection's buffer. A larger one may have to wait until the
// web server has taken some of it.
void BwaFcgiReplyBuffer::count(std::streamsize size)
{
    m_size += size;
    if (m_size > mostUnwatched) {
        m_exchange->waitForPeer();
    }
}

// The body begins after the first empty line. Carriage returns are ignored, so a line that has
// nothing else is empty, too.
void BwaFcgiReplyBuffer::follow(const char* text, std::streamsize size)
{
    if (m_progress == Progress::AtEndOfHeader && size > 0) {
        m_progress = Progress::InBody;
    }
    for (const char* const end = text + size; m_progress == Progress::InHeader && text < end;
         ++text) {
        if (*text == '\n') {
            endLine();
        } else if (*text != '\r') {
            m_line[std::min(m_lineSize, sizeof m_line - 1)] = *text;
            ++m_lineSize;
        }
    }
}

void BwaFcgiReplyBuffer::endLine()
{
    if (m_lineSize == 0) {
        m_progress = Progress::InBody;
        return;
    }
    m_line[std::min(m_lineSize, sizeof m_line - 1)] = '\0';
    if (startsWith(m_line, "Status:", 7)) {
        m_status = std::atoi(m_line + 7); // NOLINT(cert-err34-c)
    } else if (startsWith(m_line, "HTTP/", 5)) {
        m_status = std::atoi(m_line + std::strcspn(m_line, " ")); // NOLINT(cert-err34-c)
    } else if (m_status == 200 && startsWith(m_line, "Location:", 9)) {
        m_status = 302;
    }
    m_lineSize = 0;
}
