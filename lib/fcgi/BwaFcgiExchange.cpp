// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BwaGlobal.h"
#include "cgi/BwaGrowingRead_p.h"
#include "fcgi/BwaFcgiExchange_p.h"

#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>

namespace {

const std::size_t mostUnread = std::size_t{64} * 1024; // bytes that are read to save a connection

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

QByteArray BwaFcgiExchange::read(unsigned int size)
{
    return growingRead(size,
                       [this](char* buffer, int length) { return readPiece(buffer, length); });
}

int BwaFcgiExchange::readPiece(char* buffer, int size)
{
    if (m_body) {
        const auto most = static_cast<std::size_t>(size);
        return static_cast<int>(m_body->read(buffer, most, BwaFcgiBody::ForAll));
    }
    return FCGX_GetStr(buffer, size, m_request->in);
}

QByteArray BwaFcgiExchange::readAvailable(unsigned int most)
{
    if (!m_body) {
        return read(most); // libfcgi has all of it, or the connection is one that waits
    }
    QByteArray bytes(static_cast<BwaSize>(most), Qt::Uninitialized);
    const std::size_t size = m_body->read(bytes.data(), most, BwaFcgiBody::ForNothing);
    bytes.truncate(static_cast<BwaSize>(size));
    if (m_body->hasEnded()) {
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
    FCGX_FClose(m_request->err);
    FCGX_FClose(m_request->out); // sends END_REQUEST, too
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
    std::size_t size = sizeof unread;
    if (m_isBlocking) {
        ::fcntl(m_request->ipcFd, F_SETFL, O_NONBLOCK);
    }
    for (std::size_t total = 0; size == sizeof unread && total < mostUnread; total += size) {
        size = m_body ? m_body->read(unread, sizeof unread, BwaFcgiBody::ForNothing)
                      : static_cast<std::size_t>(FCGX_GetStr(unread, sizeof unread, m_request->in));
    }
    return m_body ? m_body->hasEnded()
                  : m_request->in->isClosed != 0 && FCGX_GetError(m_request->in) == 0;
}

void BwaFcgiExchange::drop(FCGX_Request* request, BwaFcgiConnections* connections)
{
    FCGX_FClose(request->err);
    FCGX_FClose(request->out);
    if (connections) {
        connections->closeNow(std::exchange(request->ipcFd, -1));
    }
    request->keepConnection = 0;
    request->detached = 1;
    finishAndDelete(request);
}
