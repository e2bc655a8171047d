// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiListenerThread.h"

#include "fcgi/BwaFcgiAcceptLoop_p.h"
#include "fcgi/BwaFcgiConnections_p.h"
#include "fcgi/BwaFcgiLibrary_p.h"
#include "fcgi/BwaFcgiSocket_p.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

const int defaultBacklog = 50; // connections that wait to be accepted

std::atomic<int> objects{0}; // of BwaFcgiListenerThread, in this process

} // namespace

BwaFcgiListenerThread::BwaFcgiListenerThread(QObject* parent)
    : QObject(parent)
    , m_stopRequested(false)
    , m_descriptor(-1)
    , m_drainRequested(false)
    , m_hasEnded(false)
    , m_backlog(defaultBacklog)
    , m_isRunning(false)
    , m_connections(new BwaFcgiConnections)
{
    ++objects;
}

BwaFcgiListenerThread::~BwaFcgiListenerThread()
{
    --objects;
}

void BwaFcgiListenerThread::stopListening()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_isRunning) {
        return;
    }
    m_stopRequested = true;
    if (m_descriptor >= 0) {
        ::shutdown(m_descriptor, SHUT_RD);
        if (objects == 1) {
            BwaFcgiLibrary::shutDown();
        }
    }
    m_connections->wake();
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
    BwaFcgiLibrary::initialize();
    if (openSocket(address)) {
        setErrorString(acceptRequests());
        closeSocket();
    }
    const bool hasFailed = !errorString().isNull();
    m_hasEnded = true;
    if (!m_stopRequested && hasFailed) {
        Q_EMIT listeningError();
    }
    if (!m_stopRequested && m_drainRequested) {
        m_whenDrained();
    }
    m_stopRequested = false; // must be the thread's last access to this object
}

bool BwaFcgiListenerThread::openSocket(const QString& address)
{
    QString reason;
    int descriptor = -1;
    if (BwaFcgiLibrary::isShutDown()) {
        reason =
            QLatin1String("cannot listen: the last listener of this process has been destroyed");
    } else if (QString::fromLatin1(address.toLatin1()) != address) {
        reason = QLatin1String("cannot listen: the address has characters that are no bytes");
    } else if (!address.isNull()) {
        descriptor = BwaFcgiSocket::open(address.toLatin1(), m_backlog, &reason);
    } else if (BwaFcgiSocket::isListening(STDIN_FILENO)) {
        descriptor = STDIN_FILENO;
    } else {
        reason = QLatin1String("cannot listen: descriptor 0 is no listening socket");
    }
    setErrorString(reason);
    if (descriptor < 0) {
        return false;
    }
    // Another process may share a socket that was handed over, and may accept a connection before
    // this one does. Then accept() must fail, not wait.
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_descriptor = descriptor;
    m_isRunning = true;
    return true;
}

// Accepts requests until it is told to stop. Returns why it cannot go on; null when it was told to
// stop.
QString BwaFcgiListenerThread::acceptRequests()
{
    BwaFcgiAcceptLoop loop(m_descriptor, m_connections.data(), {m_stopRequested, m_drainRequested},
                           [this](FCGX_Request* request) { Q_EMIT newRequest(request); });
    loop.whenDraining = [this] {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ::close(m_descriptor.exchange(-1));
    };
    loop.run();
    return loop.failure();
}

void BwaFcgiListenerThread::closeSocket()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isRunning = false;
    if (m_descriptor >= 0) {
        ::close(m_descriptor.exchange(-1));
    }
}

QString BwaFcgiListenerThread::errorString()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_errorString;
}

void BwaFcgiListenerThread::setErrorString(const QString& text)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_errorString = text;
}
