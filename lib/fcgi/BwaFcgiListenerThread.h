// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGILISTENERTHREAD_H
#define BWAFCGILISTENERTHREAD_H

#include "BwaGlobal.h"

#include <QObject>
#include <QSharedPointer>
#include <QString>

#include <fcgiapp.h>

#include <atomic>
#include <functional>
#include <mutex>

class BwaFcgiConnections;

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
     * Shuts the listening socket down and makes a running listen() return without listeningError();
     * does nothing when none runs. For the thread that receives newRequest(). Unless there are
     * other objects of this class, libfcgi is shut down, too: for the whole process and for good.
     */
    void stopListening();

    // Settled: signals and slots keep this order, in which the meta-object lists them. A new one
    // follows the others of its kind.
Q_SIGNALS:
    /**
     * A request has been accepted. The receiver owns @a request, which was made by plain new. When
     * a directly connected slot throws a std::exception, the request is dropped: the slot must not
     * have deleted it.
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

    BWA_HIDDEN void internalListen(const QString& address);
    BWA_HIDDEN bool openSocket(const QString& address);
    BWA_HIDDEN QString acceptRequests();
    BWA_HIDDEN void closeSocket();
    BWA_HIDDEN QString errorString();
    BWA_HIDDEN void setErrorString(const QString& text);

    std::atomic<bool> m_stopRequested;
    std::atomic<int> m_descriptor;      // -1: not listening
    std::atomic<bool> m_drainRequested; // by stopAccepting()
    std::atomic<bool> m_hasEnded;       // listen() has ended and may be called again
    std::atomic<int> m_backlog;         // connections
    std::mutex m_mutex;                 // the descriptor is not closed while it is held
    bool m_isRunning;                   // listen() has opened its socket; under m_mutex
    QString m_errorString;              // null: no error; under m_mutex
    QSharedPointer<BwaFcgiConnections> m_connections; // shared with the listener
    std::function<void()> m_whenDrained;              // called when listen() has ended by draining
};

#endif
