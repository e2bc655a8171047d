// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Closing a connection with input unread resets it, and a reply on its way may be lost. So the
// sending side is closed first, and what still comes is read until the web server closes, too.
// libfcgi does the same, but without an end as long as bytes keep dripping in.
//
// The accepting thread has allocated the parameters, and memory is cheapest where the thread that
// allocated it also frees it. So they wait for that thread in a finished request, at most one.

#include "fcgi/BwaFcgiFinish_p.h"

#include <QByteArray>
#include <QElapsedTimer>

#include <atomic>
#include <cerrno>
#include <utility>

#include <poll.h>
#include <sys/socket.h>

namespace {

std::atomic<FCGX_Request*> finishedRequest; // owned; holds nothing but parameters

void freeAndDelete(FCGX_Request* request)
{
    if (request) {
        FCGX_Free(request, 0);
        delete request;
    }
}

const ssize_t endOfBodySize = 8; // bytes of the empty record that ends each body

// Reads what has come, and tells how many bytes; none when the connection has ended or nothing is
// there.
ssize_t discardInput(int connection)
{
    char unread[4096];
    return ::recv(connection, unread, sizeof unread, MSG_DONTWAIT);
}

void waitForClose(int connection)
{
    QElapsedTimer timer;
    timer.start();
    ::shutdown(connection, SHUT_WR);
    pollfd input = {connection, POLLIN, 0};
    qint64 left = lingerTime();
    bool isOpen = true;
    while (isOpen && left > 0) {
        const int ready = ::poll(&input, 1, static_cast<int>(left));
        isOpen = ready > 0 ? discardInput(connection) > 0 : ready < 0 && errno == EINTR;
        left = lingerTime() - timer.elapsed();
    }
}

void endReply(FCGX_Request* request)
{
    FCGX_FClose(request->err);
    FCGX_FClose(request->out);
}

// Closes the connection, and frees all but the parameters.
void release(FCGX_Request* request)
{
    request->keepConnection = 0; // nobody will accept a second request on the connection
    FCGX_Detach(request);        // closes without waiting
    FCGX_Request parameters = {};
    std::swap(parameters.paramsPtr, request->paramsPtr);
    FCGX_Finish_r(request);
    *request = parameters;
    freeAndDelete(finishedRequest.exchange(request));
}

} // namespace

void finishAndDelete(FCGX_Request* request)
{
    endReply(request);
    // A web server that keeps connections does not mean to close this one. It is waited for only
    // when a part of the body has come unread, of which more may come.
    if (request->keepConnection && discardInput(request->ipcFd) <= endOfBodySize) {
        ::shutdown(request->ipcFd, SHUT_WR); // a program started meanwhile may have it open, too
    } else if (request->ipcFd >= 0) {
        waitForClose(request->ipcFd);
    }
    release(request);
}

void closeAndDelete(FCGX_Request* request)
{
    endReply(request);
    ::shutdown(request->ipcFd, SHUT_RDWR); // a program started meanwhile may have it open, too
    release(request);
}

void freeFinishedRequest()
{
    freeAndDelete(finishedRequest.exchange(nullptr));
}

int lingerTime()
{
    static const int milliseconds = [] {
        bool ok = false;
        const int value = qgetenv("LIBFCGI_OS_CLOSE_POLL_TIMEOUT").toInt(&ok);
        return ok ? value : 200;
    }();
    return milliseconds;
}
