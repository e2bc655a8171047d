// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGIBODY_P_H
#define BWAFCGIBODY_P_H

#include <cstddef>
#include <memory>

/**
 * The body of a request of which libfcgi has read no input: reads its STDIN records from the
 * connection straight into the caller's buffer. libfcgi would read pieces of 8 KiB and copy them.
 *
 * A read that may wait and ends within a record, as those of multipart bodies do, reads up to 32
 * KiB more of the record and keeps them for the next reads.
 *
 * A body can also be read without waiting. libfcgi cannot do that: when only a part of a record's
 * header has arrived, it loses that part.
 */
class BwaFcgiBody
{
public:
    /** Reads from @a connection, a socket that is not owned; waits @a timeout ms for each piece. */
    BwaFcgiBody(int connection, int requestId, int timeout);

    enum Wait { ForAll, ForNothing };
    /**
     * Reads up to @a size bytes and returns how many. There are fewer at the end of the body, after
     * a failure, and when the web server sends nothing until the timeout. ForAll waits for all of
     * them; ForNothing never waits, and returns what has arrived.
     */
    std::size_t read(char* buffer, std::size_t size, Wait wait);

    /** Whether the record that ends the body has been read. */
    bool hasEnded() const { return m_state == Ended; }
    /** Whether nothing more will come: the body has ended or cannot be read. */
    bool isOver() const { return m_state != Open && m_aheadBegin == m_aheadEnd; }

private:
    enum State { Open, Ended, Failed };

    bool receive(char* buffer, std::size_t size, Wait wait, std::size_t* taken);
    std::size_t takeAhead(char* buffer, std::size_t size);
    bool waitForInput();
    void takeTail(const char* bytes, std::size_t size);
    void takeHeader();

    int m_connection; // not owned
    int m_requestId;
    int m_timeout; // ms; 0: none
    State m_state = Open;
    std::unique_ptr<char[]> m_ahead; // content that has been read before it was wanted
    std::size_t m_aheadBegin = 0;
    std::size_t m_aheadEnd = 0;
    std::size_t m_contentLeft = 0; // bytes of the current record's content
    std::size_t m_skipLeft = 0;    // bytes between that content and the next header
    std::size_t m_headerSize = 0;  // bytes of the next header that have come
    char m_header[8] = {};
    bool m_isLastRecord = false;
};

#endif
