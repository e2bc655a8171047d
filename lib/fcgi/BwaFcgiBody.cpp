// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Each call of recvmsg() reads up to three things: the content that the caller wants; more content
// of the record, which is read ahead; and, if no other content of the record is left, its tail,
// which is the padding and the header of the next record.

#include "fcgi/BwaFcgiBody_p.h"
#include "fcgi/BwaFcgiRecords_p.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include <poll.h>
#include <sys/socket.h>

namespace {

const std::size_t mostAhead = 32768; // bytes; nginx sends records of that size

} // namespace

BwaFcgiBody::BwaFcgiBody(int connection, int requestId, int timeout)
    : m_connection(connection)
    , m_requestId(requestId)
    , m_timeout(timeout)
{
}

std::size_t BwaFcgiBody::read(char* buffer, std::size_t size, Wait wait)
{
    std::size_t taken = takeAhead(buffer, size);
    bool goesOn = true;
    while (goesOn && taken < size && m_state == Open) {
        goesOn = receive(buffer + taken, size - taken, wait, &taken);
    }
    return taken;
}

std::size_t BwaFcgiBody::takeAhead(char* buffer, std::size_t size)
{
    const std::size_t taken = std::min(size, m_aheadEnd - m_aheadBegin);
    std::copy_n(m_ahead.get() + m_aheadBegin, taken, buffer);
    m_aheadBegin += taken;
    return taken;
}

// Receives once, and adds the number of content bytes in @a buffer to @a taken. Returns false when
// nothing has arrived and when the body has failed.
bool BwaFcgiBody::receive(char* buffer, std::size_t size, Wait wait, std::size_t* taken)
{
    char tail[256 + sizeof m_header];
    const std::size_t content = std::min(size, m_contentLeft);
    std::size_t ahead = wait == ForAll ? std::min(m_contentLeft - content, mostAhead) : 0;
    if (ahead > 0 && !m_ahead) {
        // An exception would lose the bytes that this read has taken before.
        m_ahead.reset(new (std::nothrow) char[mostAhead]);
        ahead = m_ahead ? ahead : 0;
    }
    const std::size_t header = m_isLastRecord ? 0 : sizeof m_header - m_headerSize;
    const std::size_t behind = content + ahead == m_contentLeft ? m_skipLeft + header : 0;
    iovec parts[] = {
        {buffer, content}, {m_ahead.get(), ahead}, {tail, std::min(behind, sizeof tail)}};
    msghdr message = {};
    message.msg_iov = parts;
    message.msg_iovlen = 3;
    const ssize_t result = ::recvmsg(m_connection, &message, MSG_DONTWAIT);
    if (result < 0 && (errno == EAGAIN || errno == EINTR)) {
        return wait == ForAll && waitForInput();
    }
    if (result <= 0) {
        m_state = Failed;
        return false;
    }
    const auto come = static_cast<std::size_t>(result);
    const std::size_t contentCome = std::min(come, content);
    const std::size_t aheadCome = std::min(come - contentCome, ahead);
    m_contentLeft -= contentCome + aheadCome;
    m_aheadBegin = 0;
    m_aheadEnd = aheadCome;
    *taken += contentCome;
    takeTail(tail, come - contentCome - aheadCome);
    return true;
}

// Marks the body as failed after the timeout, so that the next read does not wait again.
bool BwaFcgiBody::waitForInput()
{
    pollfd input = {m_connection, POLLIN, 0};
    const int result = ::poll(&input, 1, m_timeout > 0 ? m_timeout : -1);
    if (result == 0) {
        m_state = Failed;
    }
    return result > 0 || (result < 0 && errno == EINTR);
}

void BwaFcgiBody::takeTail(const char* bytes, std::size_t size)
{
    const std::size_t skipped = std::min(size, m_skipLeft);
    const std::size_t header = size - skipped;
    m_skipLeft -= skipped;
    std::memcpy(m_header + m_headerSize, bytes + skipped, header);
    m_headerSize += header;
    if (m_headerSize == sizeof m_header) {
        takeHeader();
    }
    if (m_isLastRecord && m_skipLeft == 0 && m_state == Open) {
        m_state = Ended;
    }
}

void BwaFcgiBody::takeHeader()
{
    const BwaFcgiRecords::Record record(m_header);
    m_headerSize = 0;
    const bool isValid = record.version == 1;
    if (isValid && record.requestId != m_requestId) {
        m_skipLeft = record.contentSize + record.paddingSize;
    } else if (isValid && record.type == BwaFcgiRecords::Stdin) {
        m_contentLeft = record.contentSize;
        m_skipLeft = record.paddingSize;
        m_isLastRecord = record.contentSize == 0;
    } else {
        m_state = Failed; // an ABORT_REQUEST, or a record that is not allowed here
    }
}
