// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiListenerThread.h"

#include "fcgi/BwaFcgiFinish_p.h"
#include "fcgi/BwaFcgiOpenRequests_p.h"
#include "fcgi/BwaFcgiSocket_p.h"

#include <QString>
#include <QThread>

#include <cerrno>
#include <exception>

#include <sys/socket.h>
#include <unistd.h>

namespace {

const int backlog = 50; // connections that wait to be accepted

const unsigned long moment = 20; // milliseconds until a lack may have passed

// libfcgi shuts down for the whole process and for good, and a thread that is in accept at that
// moment may never leave it. So the last accepting thread does it on its way out.
std::mutex shutDownMutex;
int acceptingThreads = 0;
bool shutDownWanted = false;

void enterAccepting()
{
    const std::lock_guard<std::mutex> lock(shutDownMutex);
    ++acceptingThreads;
}

void leaveAccepting(bool shutDown)
{
    const std::lock_guard<std::mutex> lock(shutDownMutex);
    --acceptingThreads;
    shutDownWanted = shutDownWanted || shutDown;
    if (acceptingThreads == 0 && shutDownWanted) {
        FCGX_ShutdownPending();
    }
}

// A Unix socket that is shut down still hands out who has connected before, and libfcgi waits two
// seconds for the first byte of each. Accepting never blocks on such a socket.
void refuseWaitingConnections(int descriptor)
{
    int connection = ::accept(descriptor, nullptr, nullptr);
    while (connection >= 0) {
        ::close(connection);
        connection = ::accept(descriptor, nullptr, nullptr);
    }
}

// libfcgi writes the number meanwhile, in one piece.
int connectionOf(const FCGX_Request* request)
{
    return request ? __atomic_load_n(&request->ipcFd, __ATOMIC_RELAXED) : -1;
}

// Whether accepting has failed for a lack that passes, usually of descriptors.
bool isPassing(int acceptResult)
{
    return acceptResult == -EMFILE || acceptResult == -ENFILE || acceptResult == -ENOBUFS ||
        acceptResult == -ENOMEM;
}

} // namespace

BwaFcgiListenerThread::BwaFcgiListenerThread(QObject* parent)
    : QObject(parent)
    , m_stopRequested(false)
    , m_descriptor(-1)
    , m_awaited(nullptr)
{
}

BwaFcgiListenerThread::~BwaFcgiListenerThread() = default;

void BwaFcgiListenerThread::stopListening()
{
    const std::lock_guard<std::mutex> lock(m_endMutex);
    if (m_descriptor < 0) {
        return;
    }
    m_stopRequested = true;
    if (m_openRequests) {
        m_openRequests->wake();
    }
    ::shutdown(m_descriptor, SHUT_RD); // ends a blocked accept
    refuseWaitingConnections(m_descriptor);
    const int connection = connectionOf(m_awaited);
    if (connection >= 0) {
        ::shutdown(connection, SHUT_RDWR); // ends a blocked read of a request
    }
}

void BwaFcgiListenerThread::listen(quint16 listeningPort)
{
    if (listeningPort == 0) {
        internalListen(QString());
        return;
    }
    // Settled: the text has no place for the port and stays as it is, which Qt warns of.
    internalListen(QString::fromLatin1(":%d").arg(listeningPort));
}

void BwaFcgiListenerThread::listen(const QString& unixSocket)
{
    internalListen(unixSocket);
}

void BwaFcgiListenerThread::internalListen(const QString& address)
{
    if (m_descriptor >= 0) {
        return;
    }
    if (address.isNull()) {
        m_descriptor = isListeningSocket(STDIN_FILENO) ? STDIN_FILENO : -1;
    } else {
        m_descriptor = openFcgiSocket(address.toLatin1(), backlog);
    }
    if (m_descriptor >= 0) {
        enterAccepting();
        acceptRequests(m_descriptor);
        endListening();
        leaveAccepting(m_stopRequested);
    }
    if (!m_stopRequested) {
        Q_EMIT listeningError();
    }
    m_stopRequested = false; // the last that the thread does with this object
}

void BwaFcgiListenerThread::acceptRequests(int descriptor)
{
    bool goesOn = true;
    while (goesOn && !m_stopRequested) {
        if (m_openRequests) {
            m_openRequests->waitForRoom(m_stopRequested);
        }
        try {
            goesOn = acceptRequest(descriptor);
        } catch (const std::exception&) {
            QThread::msleep(moment); // memory is short
        }
    }
}

// Waits for the next request; false when none can come any more.
bool BwaFcgiListenerThread::acceptRequest(int descriptor)
{
    freeFinishedRequest();
    FCGX_Request* const request = new FCGX_Request;
    FCGX_InitRequest(request, descriptor, 0);
    setAwaited(request);
    const bool isAccepted = accept(request);
    setAwaited(nullptr); // before anything closes its connection
    if (!isAccepted) {
        FCGX_Free(request, 1);
        delete request;
        return false;
    }
    if (FCGX_GetError(request->in) != 0) {
        closeAndDelete(request); // cut short: what it asks for may not be what was meant
    } else {
        handOver(request);
    }
    return true;
}

bool BwaFcgiListenerThread::accept(FCGX_Request* request)
{
    while (!m_stopRequested) {
        const int result = FCGX_Accept_r(request);
        if (!isPassing(result)) {
            return result == 0;
        }
        QThread::msleep(moment);
    }
    return false;
}

void BwaFcgiListenerThread::handOver(FCGX_Request* request)
{
    try {
        if (m_openRequests) {
            m_openRequests->add(request);
        }
        Q_EMIT newRequest(request);
    } catch (const std::exception&) {
        if (m_openRequests) {
            m_openRequests->take(request);
            m_openRequests->finished();
        }
        closeAndDelete(request);
        throw;
    }
}

void BwaFcgiListenerThread::setAwaited(FCGX_Request* request)
{
    const std::lock_guard<std::mutex> lock(m_endMutex);
    m_awaited = request;
}

void BwaFcgiListenerThread::endListening()
{
    const std::lock_guard<std::mutex> lock(m_endMutex);
    freeFinishedRequest();
    ::close(m_descriptor.exchange(-1));
}
