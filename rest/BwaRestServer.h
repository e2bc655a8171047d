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
 * What main() does: listens, writes the access log, and stops in order.
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
    /** The root service of each script name; not owned, they must outlive this. */
    explicit BwaRestServer(const QMap<QString, BwaAbstractFcgiService*>& services);
    ~BwaRestServer();

    /**
     * Writes a line on the standard output for each request when it has been answered: the time
     * (UTC), the status, the bytes of the reply, the milliseconds it took, and the path, in which
     * control characters become "?".
     */
    BwaRestServer& accessLog();
    /**
     * Has run() call @a function with its listener before that listens: for a longer backlog, or to
     * connect its signal requestCompleted.
     */
    BwaRestServer& prepare(const std::function<void(BwaFcgiListener&)>& function);
    /** How long run() waits for open calls when it is to stop; 10000 unless set. */
    BwaRestServer& stopWithin(int milliseconds);

    /**
     * Serves at @a address, as BwaFcgiListener::listen() takes it: null is descriptor 0. Needs a
     * QCoreApplication, whose event loop it runs.
     *
     * SIGTERM and SIGINT stop it: from then on nothing new is accepted, event streams end, and what
     * is open may be answered. When the time of stopWithin() is over, the calls that are still held
     * are answered with 503.
     *
     * @return 0 when all that was accepted has been answered; 1 when it could not listen, which it
     *         says on the standard error, or when a request has stayed open
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
