// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGIBODY_P_H
#define BWAFCGIBODY_P_H

#include <cstddef>
#include <memory>

/**
 * The body of a request of which libfcgi has read no input: takes its STDIN records from the
 * connection right into the caller's buffer, where libfcgi would copy them from pieces of 8 KiB.
 *
 * A read that waits and ends within a record, as those of multipart bodies do, takes up to 32 KiB
 * more of it, and keeps that for the next reads.
 *
 * It can also be read without waiting. libfcgi cannot: of a record's header that has come in part,
 * it forgets that part.
 */
class BwaFcgiBody
{
public:
    /** Reads from @a connection, a socket that is not owned; waits @a timeout ms for each piece. */
    BwaFcgiBody(int connection, int requestId, int timeout);

    enum Wait { ForAll, ForNothing };
    /**
     * Reads up to @a size bytes and returns how many. There are fewer at the end of the body, after
     * a failure, when the web server sends nothing for too long, and, with ForNothing, when no more
     * have come.
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
