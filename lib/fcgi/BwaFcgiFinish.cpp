// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Closing a connection with input unread resets it, and a reply on its way may be lost. So the
// sending side is closed first, and what still comes is read until the web server closes, too.
// libfcgi does the same, but without an end as long as bytes keep dripping in.

#include "fcgi/BwaFcgiFinish_p.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QMutex>
#include <QMutexLocker>

#include <algorithm>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

void waitForClose(int connection)
{
    QElapsedTimer timer;
    timer.start();
    ::shutdown(connection, SHUT_WR);
    char unread[4096];
    pollfd input = {connection, POLLIN, 0};
    qint64 left = lingerTime();
    while (left > 0 && ::poll(&input, 1, static_cast<int>(left)) > 0 &&
           ::recv(connection, unread, sizeof unread, MSG_DONTWAIT) > 0) {
        left = lingerTime() - timer.elapsed();
    }
}

void freeRequest(FCGX_Request* request)
{
    FCGX_Free(request, 0);
    delete request;
}

/** The requests that have been finished and not yet freed; usable from any thread. */
class FinishedRequests
{
public:
    /** False when there are too many already. */
    bool keep(FCGX_Request* request)
    {
        QMutexLocker locker(&m_mutex);
        if (m_count == most) {
            return false;
        }
        m_requests[m_count++] = request;
        return true;
    }

    void freeAll()
    {
        QMutexLocker locker(&m_mutex);
        std::for_each(m_requests, m_requests + m_count, freeRequest);
        m_count = 0;
    }

private:
    static constexpr int most = 8;

    QMutex m_mutex;
    FCGX_Request* m_requests[most]; // owned
    int m_count = 0;
};

FinishedRequests& finishedRequests()
{
    static FinishedRequests requests;
    return requests;
}

} // namespace

void finishAndDelete(FCGX_Request* request)
{
    FCGX_FClose(request->err);
    FCGX_FClose(request->out);
    if (request->ipcFd >= 0) {
        waitForClose(request->ipcFd);
    }
    // Closed also if the web server would keep it: nobody accepts a second request on it.
    ::close(request->ipcFd);
    request->ipcFd = -1;
    if (!finishedRequests().keep(request)) {
        freeRequest(request);
    }
}

void freeFinishedRequests()
{
    finishedRequests().freeAll();
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
