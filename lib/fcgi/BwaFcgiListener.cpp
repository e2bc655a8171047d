// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiListener.h"

#include "BwaStringStreaming.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiConnections_p.h"
#include "fcgi/BwaFcgiExchange_p.h"
#include "fcgi/BwaFcgiGuard_p.h"
#include "fcgi/BwaFcgiLibrary_p.h"
#include "fcgi/BwaFcgiRequest.h"
#include "services/BwaAbstractFcgiService.h"

#include <QCoreApplication>
#include <QEvent>
#include <QMetaMethod>
#include <QTimer>

#include <exception>
#include <utility>

namespace {

const unsigned long stopInterval = 20; // milliseconds between two attempts to stop the thread
const int drainInterval = 20;          // milliseconds between two looks for open requests

} // namespace

BwaFcgiListener::BwaFcgiListener(const QMap<QString, BwaAbstractFcgiService*>& services,
                                 QObject* parent)
    : QObject(parent)
    , m_services(services)
    , m_connections(m_worker.m_connections)
{
    m_thread.setObjectName(QString::fromLatin1("BwaFcgiListener's thread"));
    m_connections->isForListener = true;
    m_connections->listener = this;
    m_connections->whenGone = [this] {
        QMetaObject::invokeMethod(this, "tellGone", Qt::QueuedConnection);
    };
    m_worker.m_whenDrained = [this] {
        QMetaObject::invokeMethod(this, "endDrained", Qt::QueuedConnection);
    };
    m_worker.moveToThread(&m_thread);
    connect(this, SIGNAL(startListening(quint16)), &m_worker, SLOT(listen(quint16)));
    connect(this, SIGNAL(startListening(QString)), &m_worker, SLOT(listen(QString)));
    connect(&m_worker, SIGNAL(newRequest(FCGX_Request*)), this, SLOT(newRequest(FCGX_Request*)));
    connect(&m_worker, SIGNAL(listeningError()), this, SIGNAL(listeningError()));
    connect(&m_worker, SIGNAL(listeningError()), &m_thread, SLOT(quit()));
}

BwaFcgiListener::~BwaFcgiListener()
{
    m_thread.quit();
    // Repeated, because the thread may not have opened its socket yet.
    do {
        m_worker.stopListening();
    } while (!m_thread.wait(stopInterval));
    // The thread resets this flag last. ThreadSanitizer does not see the wait above, but learns
    // from reading the flag that the thread no longer uses the worker.
    Q_ASSERT(!m_worker.m_stopRequested);
    m_connections->listener = nullptr;
    m_connections->whenGone = nullptr;
    // The signals that announce these requests are still queued; Qt drops them with this object.
    while (FCGX_Request* const request = m_connections->takeNext()) {
        BwaFcgiExchange::drop(request, m_connections.data());
    }
}

void BwaFcgiListener::stopAccepting()
{
    m_isDraining = true;
    m_worker.m_drainRequested = true;
    m_connections->wake();
    if (!m_thread.isRunning() || m_worker.m_hasEnded) {
        m_worker.m_whenDrained();
    }
}

QString BwaFcgiListener::errorString()
{
    return m_worker.errorString();
}

void BwaFcgiListener::setBacklog(int connections)
{
    m_worker.m_backlog = connections;
}

void BwaFcgiListener::setMostWaiting(int requests)
{
    m_connections->setMostWaiting(requests);
}

void BwaFcgiListener::setTransferTimeout(int milliseconds)
{
    m_connections->transferTimeout = milliseconds;
}

void BwaFcgiListener::listen(quint16 listeningPort)
{
    if (startThread()) {
        Q_EMIT startListening(listeningPort);
    }
}

void BwaFcgiListener::listen(const QString& unixSocket)
{
    if (startThread()) {
        Q_EMIT startListening(unixSocket);
    }
}

bool BwaFcgiListener::startThread()
{
    BwaFcgiLibrary::initialize();
    if (m_isDraining) {
        return false;
    }
    if (m_thread.isRunning()) {
        if (!m_worker.m_hasEnded) {
            return false;
        }
        m_thread.quit();
        m_thread.wait();
        // The thread that has ended posted a further quit(), which must not end the one that starts
        // now.
        QCoreApplication::removePostedEvents(&m_thread, QEvent::MetaCall);
    }
    m_worker.m_hasEnded = false;
    m_worker.m_drainRequested = false;
    m_thread.start(QThread::InheritPriority);
    return true;
}

void BwaFcgiListener::newRequest(FCGX_Request* request)
{
    const BwaFcgiConnections::Input input = m_connections->take(request);
    const bool isOurs = input != BwaFcgiConnections::Input::Unknown;
    BwaFcgiRequest* wrapper = nullptr;
    try {
        wrapper = new BwaFcgiRequest(request);
    } catch (const std::exception& exception) {
        BwaFcgiRequest::logException(exception);
        BwaFcgiExchange::drop(request, isOurs ? m_connections.data() : nullptr);
        return;
    }
    if (isOurs) {
        wrapper->join(m_connections, input == BwaFcgiConnections::Input::Whole);
    }
    wrapper->cgiRequest()->setRequestLimits(m_requestLimits);
    const bool livesOn = BwaFcgiRequest::Guard::run(
        wrapper, [&] { handOver(wrapper); },
        [&](const std::exception& exception) {
            BwaFcgiRequest::logException(exception);
            wrapper->abandon(); // not deleted: the service may still hold it
        });
    if (livesOn) {
        wrapper->goOn(); // NOLINT(clang-analyzer-cplusplus.NewDelete): the guard says so
    }
}

void BwaFcgiListener::handOver(BwaFcgiRequest* request)
{
    const BwaCgiEnvironment& environment = request->cgiRequest()->environment();
    BwaAbstractFcgiService* const service = m_services.value(environment.scriptName());
    if (service) {
        service->processRequest(request);
        return;
    }
    request->err() << QString::fromLatin1(
                          "Error in the FastCGI listener: Cannot find a Web service "
                          "to handle a request to script \"%1\" with path info "
                          "\"%2\"")
                          .arg(environment.scriptName(), environment.pathInfo());
    request->sendHttpError(BwaFcgiRequest::NotFound);
    delete request;
}

void BwaFcgiListener::tellGone()
{
    while (BwaFcgiRequest* const request = m_connections->nextGone()) {
        request->tellGone();
    }
}

// When the thread has ended by itself, requests may still be open, so this waits for them. It is
// called twice when the thread ends while stopAccepting() runs, but emits drained() once.
void BwaFcgiListener::endDrained()
{
    if (!m_connections->isIdle()) {
        QTimer::singleShot(drainInterval, this, SLOT(endDrained()));
    } else if (std::exchange(m_isDraining, false)) {
        m_thread.quit();
        m_thread.wait();
        Q_EMIT drained();
    }
}

bool BwaFcgiListener::reportsCompletion() const
{
    static const QMetaMethod signal = QMetaMethod::fromSignal(&BwaFcgiListener::requestCompleted);
    return isSignalConnected(signal);
}
