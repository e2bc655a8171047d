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
 * in which their headers were complete. A web server that is slow, silent or half done makes no
 * other one wait; connections are kept open when the web server asks for it.
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
     * accepted and not yet handed out. With the last listener of the process libfcgi is shut down:
     * no listener that is made later can accept.
     */
    ~BwaFcgiListener() override;

    /**
     * Accepts who has connected already, closes the listening socket without shutting it down, and
     * goes on answering; drained() follows. For an orderly end: destroy the listener then. With a
     * socket that was handed over nothing is lost, as the next process has it, too. Until drained()
     * listen() does nothing.
     */
    void stopAccepting();
    /** Why listening could not start or has ended by itself; null when neither has happened. */
    QString errorString();

    /** How many connections may wait to be accepted, 50 unless set. For the next listen(). */
    void setBacklog(int connections);
    /**
     * How many accepted requests may wait for their service, 1024 unless set and 1 at least.
     * Further ones stay in their connections until a service has returned.
     */
    void setMostWaiting(int requests);
    /**
     * How long a service waits for a web server that sends nothing more of a body, or takes nothing
     * of a reply: milliseconds, 10,000 unless set, 0 without end. Then the body is cut short, or
     * the rest of the reply is lost, and the connection is closed.
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
    /** For the accepting thread only. */
    void startListening(quint16 listeningPort = 0);
    /** For the accepting thread only. */
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
