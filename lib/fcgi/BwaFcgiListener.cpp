// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiListener.h"

#include "BwaStringStreaming.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiFinish_p.h"
#include "fcgi/BwaFcgiOpenRequests_p.h"
#include "fcgi/BwaFcgiRequest.h"
#include "services/BwaAbstractFcgiService.h"

#include <QMetaType>

#include <csignal>
#include <cstdlib>
#include <exception>

namespace {

const unsigned long stopInterval = 20; // milliseconds between two attempts to stop the thread

/** Keeps what the application has set for a signal. */
class SignalDisposition
{
public:
    explicit SignalDisposition(int signal)
        : m_signal(signal)
    {
        ::sigaction(m_signal, nullptr, &m_action);
    }
    ~SignalDisposition() { ::sigaction(m_signal, &m_action, nullptr); }
    Q_DISABLE_COPY(SignalDisposition)

private:
    int m_signal;
    struct sigaction m_action = {};
};

// libfcgi takes SIGTERM and SIGUSR1 for itself, and a process would then outlive its SIGTERM.
bool initializeLibfcgi()
{
    const SignalDisposition terminate(SIGTERM);
    const SignalDisposition user(SIGUSR1);
    // For the requests that libfcgi refuses by itself; nobody else is to see the variable.
    const char* const variable = "LIBFCGI_OS_CLOSE_POLL_TIMEOUT";
    const bool isSet = !qgetenv(variable).isNull();
    ::setenv(variable, QByteArray::number(lingerTime()).constData(), 0);
    FCGX_Init();
    if (!isSet) {
        ::unsetenv(variable);
    }
    qRegisterMetaType<FCGX_Request*>("FCGX_Request*");
    return true;
}

} // namespace

BwaFcgiListener::BwaFcgiListener(const QMap<QString, BwaAbstractFcgiService*>& services,
                                 QObject* parent)
    : QObject(parent)
    , m_services(services)
    , m_openRequests(new BwaFcgiOpenRequests(mostOpenRequests()))
{
    m_thread.setObjectName(QString::fromLatin1("BwaFcgiListener's thread"));
    m_worker.m_openRequests = m_openRequests;
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
    // Again and again: the thread may be about to open its socket, or to read from a silent peer.
    do {
        m_worker.stopListening();
    } while (!m_thread.wait(stopInterval));
    // ThreadSanitizer does not see the wait. Here it sees that the thread has let go of the worker.
    Q_ASSERT(!m_worker.m_stopRequested);
    dropUndeliveredRequests();
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
    static const bool initialized = initializeLibfcgi();
    Q_UNUSED(initialized)
    if (m_thread.isRunning()) {
        return false;
    }
    m_thread.start(QThread::InheritPriority);
    return true;
}

void BwaFcgiListener::newRequest(FCGX_Request* request)
{
    m_openRequests->take(request);
    BwaFcgiRequest* wrapper = nullptr;
    try {
        wrapper = new BwaFcgiRequest(request);
    } catch (const std::exception& exception) {
        BwaFcgiRequest::logException(exception);
        finishAndDelete(request);
        m_openRequests->finished();
        return;
    }
    wrapper->m_openRequests = m_openRequests;
    wrapper->cgiRequest()->setRequestLimits(m_requestLimits);
    const BwaFcgiRequest::Watch watch(wrapper);
    try {
        handOver(wrapper);
    } catch (const std::exception& exception) {
        BwaFcgiRequest::logException(exception);
        if (watch.requestLives()) {
            wrapper->abandon(); // not deleted: the service may still hold it
        }
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

// The signals that would bring them go with this object.
void BwaFcgiListener::dropUndeliveredRequests()
{
    while (FCGX_Request* const request = m_openRequests->takeNext()) {
        closeAndDelete(request);
    }
}
