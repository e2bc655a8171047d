// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGIREPLYBUFFER_P_H
#define BWAFCGIREPLYBUFFER_P_H

#include "BwaGlobal.h"

#include <fcgio.h>

#include <cstddef>

class BwaFcgiExchange;

/**
 * The stream buffer that a reply is written to. It counts bytes, reads the status, and holds back
 * flushes that are of no use to the web server.
 *
 * A web server can use nothing of a header block before its empty line. So three kinds of flushes
 * wait for the next flush, a full buffer or the end of the reply: those within a header block, the
 * one that comes with its last line end, and those of a page that is written in one go.
 */
class BwaFcgiReplyBuffer : public fcgi_streambuf
{
    Q_DISABLE_COPY(BwaFcgiReplyBuffer)

public:
    /** Holds back all flushes as long as it exists. */
    class FlushHolder
    {
        Q_DISABLE_COPY(FlushHolder)

    public:
        explicit FlushHolder(BwaFcgiReplyBuffer* buffer)
            : m_buffer(buffer)
        {
            m_buffer->m_isHolding = true;
        }
        ~FlushHolder() { m_buffer->m_isHolding = false; }

    private:
        BwaFcgiReplyBuffer* m_buffer;
    };

    /** Writes to @a stream, which belongs to @a exchange. Neither is owned. */
    BwaFcgiReplyBuffer(FCGX_Stream* stream, BwaFcgiExchange* exchange);
    ~BwaFcgiReplyBuffer() override;

    /** Sends all that has been written, also the beginning of a header block. */
    void sendAll();
    /** The bytes that have been written: header block and body. */
    qint64 size() const { return m_size; }
    /** The status code of the header block; without one, 302 for a Location line, else 200. */
    int status() const { return m_status; }

protected:
    int overflow(int character) override;
    int sync() override;
    std::streamsize xsputn(const char* text, std::streamsize size) override;

private:
    enum class Progress { InHeader, AtEndOfHeader, InBody };

    void count(std::streamsize size);
    void follow(const char* text, std::streamsize size);
    void endLine();

    FCGX_Stream* m_stream;       // not owned
    BwaFcgiExchange* m_exchange; // not owned
    qint64 m_size = 0;
    int m_status = 200;
    Progress m_progress = Progress::InHeader;
    bool m_isHolding = false;
    std::size_t m_lineSize = 0; // of the header line that is being written, without its line end
    char m_line[16] = {};       // how that line begins; the last byte is always 0
};

#endif
