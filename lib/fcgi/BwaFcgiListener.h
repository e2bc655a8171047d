// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGILISTENER_H
#define BWAFCGILISTENER_H

#include "cgi/BwaRequestLimits.h"
#include "fcgi/BwaFcgiListenerThread.h"

#include <QMap>
#include <QObject>
#include <QSharedPointer>
#include <QString>
#include <QThread>

class BwaAbstractFcgiService;
class BwaFcgiOpenRequests;
class BwaFcgiRequest;

/**
 * Serves a web API: accepts FastCGI requests on a thread of its own and hands each, in the thread
 * of the listener, to the service of its script name.
 *
 * The listener's thread must run an event loop. Requests are served one after another, in the order
 * in which they were accepted.
 *
 * At most half as many requests as the process may open descriptors, and never more than 1024, are
 * accepted and not finished at a time; those that the application keeps to answer them later count
 * until they are deleted. Further ones wait in the backlog of the socket. So a service must not
 * hold so many requests until another one comes.
 */
class BWA_EXPORT BwaFcgiListener : public QObject
{
    Q_OBJECT

public:
    /**
     * Listens nowhere yet. @a services holds the root service of each script name (SCRIPT_NAME,
     * compared exactly); they are not owned and must outlive the listener.
     */
    explicit BwaFcgiListener(const QMap<QString, BwaAbstractFcgiService*>& services,
                             QObject* parent = nullptr);
    /**
     * Ends listening, waits for the accepting thread, and drops the requests that have been
     * accepted and not yet handed out. With the last listener that accepts, libfcgi is shut down
     * for the whole process: no listener can accept any more.
     */
    ~BwaFcgiListener() override;

    /**
     * What the bodies of the requests that are handed out from now on may hold; without, there are
     * no limits. A body beyond them fails, and BwaCgiRequest::bodyFailure() tells why.
     */
    void setRequestLimits(const BwaRequestLimits& limits) { m_requestLimits = limits; }
    /** As set. */
    const BwaRequestLimits& requestLimits() const { return m_requestLimits; }

Q_SIGNALS:
    /** For the accepting thread only. */
    void startListening(quint16 listeningPort = 0);
    /** For the accepting thread only. */
    void startListening(const QString& unixSocket);
    /**
     * Listening could not start or has ended by itself. The thread is about to end; listen() may be
     * called again once it has, for example from a timer.
     */
    void listeningError();

public Q_SLOTS:
    /**
     * Listens on descriptor 0, the socket that the web server or the service manager hands over.
     * Settled: with a port other than 0, on a Unix socket named ":%d" in the working directory. For
     * TCP, call listen() with "address:port".
     *
     * Ignored while listening already. SIGTERM and SIGUSR1 keep their dispositions. The first call
     * sets a variable of the environment for a moment: other threads must not read one meanwhile.
     *
     * Stopping shuts the socket down, also for the next process that would be handed it.
     */
    void listen(quint16 listeningPort = 0);
    /**
     * Listens on the Unix socket of that path, which is replaced if it exists, or on the TCP
     * address "host:port". A null text means descriptor 0.
     */
    void listen(const QString& unixSocket);

private Q_SLOTS:
    void newRequest(FCGX_Request* request);

private:
    bool startThread();
    void handOver(BwaFcgiRequest* request);
    void dropUndeliveredRequests();

    QMap<QString, BwaAbstractFcgiService*> m_services; // not owned
    BwaFcgiListenerThread m_worker;                    // lives in m_thread
    QThread m_thread;
    QSharedPointer<BwaFcgiOpenRequests> m_openRequests;
    BwaRequestLimits m_requestLimits;
};

#endif
