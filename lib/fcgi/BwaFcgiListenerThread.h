// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGILISTENERTHREAD_H
#define BWAFCGILISTENERTHREAD_H

#include "BwaGlobal.h"

#include <QObject>
#include <QSharedPointer>

#include <fcgiapp.h>

#include <atomic>
#include <mutex>

class BwaFcgiOpenRequests;

/**
 * Accepts FastCGI requests; the worker of a BwaFcgiListener, whose thread it lives in.
 *
 * listen() blocks its thread until stopListening() is called or the listening socket fails.
 */
class BWA_EXPORT BwaFcgiListenerThread : public QObject
{
    Q_OBJECT

public:
    /** Does not listen yet. Without a @a parent it can be moved to its thread. */
    explicit BwaFcgiListenerThread(QObject* parent = nullptr);
    ~BwaFcgiListenerThread() override;

    /**
     * Makes a running listen() return without listeningError(); does nothing when none runs. To be
     * called from the thread that receives newRequest(). A request that is half received may hold
     * listen() up: call again until the thread has ended.
     */
    void stopListening();

Q_SIGNALS:
    /**
     * A request has been accepted; made by plain new, the receiver owns it. When a directly
     * connected slot throws a std::exception, the request is dropped: it must not be gone then.
     */
    void newRequest(FCGX_Request* request);
    /** Listening could not start or has ended by itself. */
    void listeningError();

public Q_SLOTS:
    /** Settled: a port other than 0 listens on a Unix socket named ":%d". 0: on descriptor 0. */
    void listen(quint16 listeningPort = 0);
    /** An address as FCGX_OpenSocket() takes it; null: descriptor 0. */
    void listen(const QString& unixSocket);

private:
    friend class BwaFcgiListener;

    void internalListen(const QString& address);
    void acceptRequests(int descriptor);
    bool acceptRequest(int descriptor);
    bool accept(FCGX_Request* request);
    void handOver(FCGX_Request* request);
    void setAwaited(FCGX_Request* request);
    void endListening();

    std::atomic<bool> m_stopRequested;
    std::atomic<int> m_descriptor; // -1: not listening
    // Neither the descriptor nor the awaited request goes while stopListening() looks at them.
    std::mutex m_endMutex;
    FCGX_Request* m_awaited; // not owned; null unless one is waited for; under m_endMutex
    QSharedPointer<BwaFcgiOpenRequests> m_openRequests; // the listener's, or null
};

#endif
