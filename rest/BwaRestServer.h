// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTSERVER_H
#define BWARESTSERVER_H

#include "rest/BwaRestGlobal.h"

#include <QMap>
#include <QString>

#include <functional>

class BwaAbstractFcgiService;
class BwaFcgiListener;

/**
 * Runs an application: listens, writes the access log, and stops in an orderly way at a signal.
 *
 *     int main(int argc, char** argv)
 *     {
 *         QCoreApplication application(argc, argv);
 *         BwaRestService api;
 *         return BwaRestServer({{"/api", &api}}).accessLog().run(QString::fromLatin1(argv[1]));
 *     }
 */
class BWA_REST_EXPORT BwaRestServer
{
    Q_DISABLE_COPY(BwaRestServer)

public:
    /**
     * @a services has the root service of each script name; they are not owned and must outlive
     * this.
     */
    explicit BwaRestServer(const QMap<QString, BwaAbstractFcgiService*>& services);
    ~BwaRestServer();

    /**
     * Writes a line on the standard output for each request when it has been answered: the time
     * (UTC), the status, the bytes of the reply, the milliseconds it took, and the path, in which
     * control characters become "?".
     */
    BwaRestServer& accessLog();
    /**
     * Has run() call @a function with its listener before it listens, for example to set a longer
     * backlog or to connect the signal requestCompleted.
     */
    BwaRestServer& prepare(const std::function<void(BwaFcgiListener&)>& function);
    /**
     * Sets for how many milliseconds run() waits for open calls after a signal to stop; 10000
     * unless set.
     */
    BwaRestServer& stopWithin(int milliseconds);

    /**
     * Serves at @a address, as BwaFcgiListener::listen() takes it: null is descriptor 0. Needs a
     * QCoreApplication, whose event loop it runs.
     *
     * SIGTERM and SIGINT stop it: it accepts no more connections, ends event streams, and waits
     * until the open calls are answered. After the time of stopWithin(), the calls that are still
     * held are answered with 503.
     *
     * @return 0 when all accepted requests have been answered; 1 when it could not listen, for a
     * reason that it writes to the standard error, or when a request was still open one second
     * after the time of stopWithin()
     * @throws std::runtime_error when no descriptor is left for the signals
     */
    int run(const QString& address = QString());

private:
    QMap<QString, BwaAbstractFcgiService*> m_services; // not owned
    bool m_hasAccessLog;
    int m_stopTime;                                  // milliseconds
    std::function<void(BwaFcgiListener&)> m_prepare; // may be empty
};

#endif
