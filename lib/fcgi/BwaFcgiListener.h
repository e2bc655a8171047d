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
class BwaFcgiConnections;
class BwaFcgiRequest;

/**
 * Serves a web API: accepts FastCGI requests on a thread of its own and hands each, in the thread
 * of the listener, to the service of its script name.
 *
 *     BwaFcgiListener listener({{QStringLiteral("/api"), &service}});
 *     QObject::connect(&listener, &BwaFcgiListener::listeningError, [&listener] {
 *         qCritical("%s", qPrintable(listener.errorString()));
 *         QCoreApplication::exit(1);
 *     });
 *     listener.listen(path); // a Unix socket, or a TCP port such as "127.0.0.1:9000"
 *
 * The listener's thread must run an event loop. Requests are served one after another, in the order
 * in which their headers were complete. A web server that is slow, silent or stops within a request
 * makes no other one wait. Connections are kept open when the web server asks for it.
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
     * accepted but not yet handed to a service. The last listener of the process shuts libfcgi
     * down: a listener that is constructed later cannot listen.
     */
    ~BwaFcgiListener() override;

    /**
     * Begins an orderly end: accepts the connections that are waiting already, closes the listening
     * socket, and goes on answering. drained() follows when all is answered; then destroy the
     * listener. The socket is not shut down: if it was handed over, the next process accepts from
     * it and no request is lost. Until drained(), listen() does nothing.
     */
    void stopAccepting();
    /** Why listening could not start or has ended by itself; null when neither has happened. */
    QString errorString();

    /**
     * Sets how many connections may wait to be accepted, 50 unless set; takes effect at the next
     * listen().
     */
    void setBacklog(int connections);
    /**
     * Sets how many accepted requests may wait until their service is called: 1024 unless set, 1 at
     * least. Further requests are not read from their connections until a service has returned.
     */
    void setMostWaiting(int requests);
    /**
     * Sets how long reading a body waits for a web server that sends nothing, and writing a reply
     * for one that takes nothing: in milliseconds, 10,000 unless set, 0 for ever. After that the
     * body ends early, or the rest of the reply is lost, and the connection is closed.
     */
    void setTransferTimeout(int milliseconds);

    /**
     * Limits the bodies of the requests that are handed out from now on; unless this is called,
     * there are no limits. A body beyond them fails, and BwaCgiRequest::bodyFailure() tells why.
     */
    void setRequestLimits(const BwaRequestLimits& limits) { m_requestLimits = limits; }
    /** What setRequestLimits() has set. */
    const BwaRequestLimits& requestLimits() const { return m_requestLimits; }

    // Settled: signals and slots keep this order, in which the meta-object lists them. A new one
    // follows the others of its kind.
Q_SIGNALS:
    /** Internal: tells the accepting thread to listen. */
    void startListening(quint16 listeningPort = 0);
    /** Internal: tells the accepting thread to listen. */
    void startListening(const QString& unixSocket);
    /**
     * Listening could not start or has ended by itself; errorString() says why. listen() may be
     * called again at once.
     */
    void listeningError();
    /** After stopAccepting(): no request is open any more, and none will come. */
    void drained();
    /**
     * A request has been answered; emitted when it is deleted. A slot must not throw.
     *
     * @param path the script name and the path info
     * @param status the code of the reply's header block
     * @param bytes of the reply: header block and body
     * @param milliseconds from the moment the request was handed to its service
     */
    void requestCompleted(const QString& path, int status, qint64 bytes, qint64 milliseconds);

public Q_SLOTS:
    /**
     * Listens on descriptor 0, the socket that the web server or the service manager hands over.
     * Settled: with a port other than 0, on a Unix socket named ":%d" in the working directory. For
     * TCP, call listen() with "address:port".
     *
     * Ignored while listening already. SIGTERM and SIGUSR1 keep their dispositions. The socket
     * becomes non-blocking, also for other processes that have it; destroying the listener shuts it
     * down for all of them, stopAccepting() does not.
     */
    void listen(quint16 listeningPort = 0);
    /**
     * Listens on the Unix socket of that path, which is replaced if it exists, or on the TCP
     * address "host:port". A null text means descriptor 0. The text is taken as Latin-1 bytes; one
     * with other characters is an error.
     */
    void listen(const QString& unixSocket);

private Q_SLOTS:
    void newRequest(FCGX_Request* request);
    void tellGone();
    void endDrained();

private:
    friend class BwaFcgiRequest;

    BWA_HIDDEN bool startThread();
    BWA_HIDDEN void handOver(BwaFcgiRequest* request);
    BWA_HIDDEN bool reportsCompletion() const;

    QMap<QString, BwaAbstractFcgiService*> m_services; // not owned
    BwaFcgiListenerThread m_worker;                    // lives in m_thread
    QThread m_thread;
    QSharedPointer<BwaFcgiConnections> m_connections; // shared with the worker and the requests
    BwaRequestLimits m_requestLimits;
    bool m_isDraining = false; // from stopAccepting() to drained()
};

#endif
