// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BwaGlobal.h"
#include "cgi/BwaReadInPieces_p.h"
#include "fcgi/BwaFcgiExchange_p.h"

#include <algorithm>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>

namespace {

const int mostUnread = 64 * 1024; // bytes of input, dropped so that a connection can be kept

void finishAndDelete(FCGX_Request* request)
{
    FCGX_Finish_r(request);
    delete request;
}

// Leaves the parameters to the accepting thread: it has allocated them, in some dozen pieces, and
// frees them fastest.
void deleteInTwoSteps(FCGX_Request* request, BwaFcgiConnections* connections)
{
    FCGX_Request parameters = {};
    std::swap(parameters.paramsPtr, request->paramsPtr);
    FCGX_Finish_r(request);
    *request = parameters;
    connections->deleteLater(request);
}

// Ends the reply. A write that failed may have stopped within a record. Then nothing more is sent,
// because the web server would take another record for the rest of that one.
void closeStreams(FCGX_Request* request)
{
    if (FCGX_GetError(request->out) != 0 || FCGX_GetError(request->err) != 0) {
        ::shutdown(request->ipcFd, SHUT_WR);
    }
    FCGX_FClose(request->err);
    FCGX_FClose(request->out); // sends END_REQUEST, too
}

timeval timeOf(int milliseconds)
{
    timeval time = {};
    time.tv_sec = milliseconds / 1000;
    time.tv_usec = suseconds_t{milliseconds % 1000} * 1000;
    return time;
}

} // namespace

BwaFcgiExchange::BwaFcgiExchange(FCGX_Request* request)
    : m_request(request)
{
}

void BwaFcgiExchange::join(const QSharedPointer<BwaFcgiConnections>& connections, bool inputIsWhole)
{
    m_connections = connections;
    m_isBlocking = false;
    if (!inputIsWhole) {
        m_body.emplace(m_request->ipcFd, m_request->requestId, connections->transferTimeout);
    }
}

int BwaFcgiExchange::read(char* buffer, int size)
{
    return readWith(BwaFcgiBody::ForAll, buffer, size);
}

int BwaFcgiExchange::readWith(BwaFcgiBody::Wait wait, char* buffer, int size)
{
    return m_body ? static_cast<int>(m_body->read(buffer, static_cast<std::size_t>(size), wait))
                  : FCGX_GetStr(buffer, size, m_request->in);
}

// Without m_body, libfcgi reads. On a listener's connection it has all of the input already; on
// another connection it waits for input.
QByteArray BwaFcgiExchange::readAvailable(unsigned int most)
{
    QByteArray bytes(static_cast<BwaSize>(std::min(most, BwaReadInPieces::mostBytes)),
                     Qt::Uninitialized);
    bytes.truncate(readWith(BwaFcgiBody::ForNothing, bytes.data(), static_cast<int>(bytes.size())));
    if (m_body && m_body->hasEnded()) {
        m_connections->noteEndOfInput(m_request->ipcFd);
    }
    return bytes;
}

bool BwaFcgiExchange::bodyIsOver() const
{
    return m_body ? m_body->isOver() : m_request->in->isClosed != 0;
}

void BwaFcgiExchange::waitForPeer()
{
    if (m_isBlocking) {
        return;
    }
    m_isBlocking = true;
    ::fcntl(m_request->ipcFd, F_SETFL, 0);
    const timeval time = timeOf(m_connections->transferTimeout);
    ::setsockopt(m_request->ipcFd, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time);
    ::setsockopt(m_request->ipcFd, SOL_SOCKET, SO_SNDTIMEO, &time, sizeof time);
}

bool BwaFcgiExchange::canWrite() const
{
    pollfd output = {m_request->ipcFd, POLLOUT, 0};
    return !isGone() && ::poll(&output, 1, 0) == 1 && (output.revents & POLLOUT) != 0;
}

bool BwaFcgiExchange::isGone() const
{
    return m_connections && m_connections->isGone(m_request->ipcFd);
}

void BwaFcgiExchange::watch(BwaFcgiRequest* request)
{
    if (m_body && m_body->hasEnded()) {
        m_connections->noteEndOfInput(m_request->ipcFd);
    }
    if (m_connections) {
        m_connections->watch(m_request->ipcFd, request);
    }
}

void BwaFcgiExchange::complete()
{
    closeStreams(m_request);
    if (m_connections && !m_connections->areKept()) {
        // Tells a web server that keeps connections not to choose this one for its next request.
        ::shutdown(m_request->ipcFd, SHUT_WR);
    }
    const bool isReplySent = FCGX_GetError(m_request->out) == 0;
    if (m_connections) {
        leaveConnection(isReplySent);
        deleteInTwoSteps(std::exchange(m_request, nullptr), m_connections.data());
    } else {
        m_request->keepConnection = 0;                 // nobody would read the next request
        m_request->detached = inputHasEnded() ? 1 : 0; // 1: close at once; 0: wait for the peer
        finishAndDelete(std::exchange(m_request, nullptr));
    }
}

// Keeps the connection or closes it. To close a connection that has unread input resets it, and the
// web server may lose the reply; so such a connection lingers.
void BwaFcgiExchange::leaveConnection(bool isReplySent)
{
    const bool hasEnded = isReplySent && inputHasEnded();
    const int connection = std::exchange(m_request->ipcFd, -1);
    if (hasEnded && m_request->keepConnection) {
        m_connections->keep(connection);
    } else if (hasEnded || !isReplySent) {
        m_connections->closeNow(connection);
    } else {
        m_connections->linger(connection);
    }
}

// Reads and drops the input that has arrived, without waiting. Returns whether the input has ended.
bool BwaFcgiExchange::inputHasEnded()
{
    char unread[4096];
    int size = sizeof unread;
    if (m_isBlocking) {
        ::fcntl(m_request->ipcFd, F_SETFL, O_NONBLOCK);
    }
    for (int total = 0; size == sizeof unread && total < mostUnread; total += size) {
        size = readWith(BwaFcgiBody::ForNothing, unread, sizeof unread);
    }
    return m_body ? m_body->hasEnded()
                  : m_request->in->isClosed != 0 && FCGX_GetError(m_request->in) == 0;
}

void BwaFcgiExchange::drop(FCGX_Request* request, BwaFcgiConnections* connections)
{
    closeStreams(request);
    if (connections) {
        connections->closeNow(std::exchange(request->ipcFd, -1));
    }
    request->keepConnection = 0;
    request->detached = 1;
    finishAndDelete(request);
}
