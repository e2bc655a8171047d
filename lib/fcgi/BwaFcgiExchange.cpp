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

const int mostUnread = 64 * 1024; // bytes that are read to save a connection

void finishAndDelete(FCGX_Request* request)
{
    FCGX_Finish_r(request);
    delete request;
}

// The accepting thread has allocated the parameters, some dozen pieces, and frees them fastest.
void deleteInTwoSteps(FCGX_Request* request, BwaFcgiConnections* connections)
{
    FCGX_Request parameters = {};
    std::swap(parameters.paramsPtr, request->paramsPtr);
    FCGX_Finish_r(request);
    *request = parameters;
    connections->deleteLater(request);
}

// Ends the reply. What a failed write has cut off within a record must not be followed by another
// one, which the web server would take for the rest of it.
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

// Without m_body, libfcgi reads. It has all of the input already, unless the connection is not a
// listener's: then it waits.
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
        // At once, so that a web server that keeps connections does not pick this one.
        ::shutdown(m_request->ipcFd, SHUT_WR);
    }
    const bool isReplySent = FCGX_GetError(m_request->out) == 0;
    if (m_connections) {
        leaveConnection(isReplySent);
        deleteInTwoSteps(std::exchange(m_request, nullptr), m_connections.data());
    } else {
        m_request->keepConnection = 0;                 // nobody waits for its next request
        m_request->detached = inputHasEnded() ? 1 : 0; // closes at once; else waits for the peer
        finishAndDelete(std::exchange(m_request, nullptr));
    }
}

// Closing a connection with input unread resets it, and a reply on its way may be lost.
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

// Reads what has come of the input, without a wait.
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
