// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestServer.h"

#include "fcgi/BwaFcgiListener.h"
#include "rest/BwaRestService.h"
#include "rest/BwaRestStopSignals_p.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QTimer>

#include <algorithm>
#include <cstdio>

namespace {

const int endTime = 1000; // milliseconds for the last replies

QByteArray withoutControls(QByteArray text)
{
    std::replace_if(
        text.begin(), text.end(),
        [](char byte) { return static_cast<unsigned char>(byte) < ' ' || byte == 0x7f; }, '?');
    return text;
}

void writeAccess(const QString& path, int status, qint64 bytes, qint64 milliseconds)
{
    const QByteArray line = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs).toLatin1() +
        ' ' + QByteArray::number(status) + ' ' + QByteArray::number(bytes) + " B " +
        QByteArray::number(milliseconds) + " ms " + withoutControls(path.toLatin1()) + '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
    std::fflush(stdout);
}

QList<BwaRestService*> restServicesOf(const QMap<QString, BwaAbstractFcgiService*>& services)
{
    QList<BwaRestService*> found;
    for (BwaAbstractFcgiService* const service : services) {
        found += service->findChildren<BwaRestService*>();
        if (auto* const rest = qobject_cast<BwaRestService*>(service)) {
            found.append(rest);
        }
    }
    return found;
}

} // namespace

BwaRestServer::BwaRestServer(const QMap<QString, BwaAbstractFcgiService*>& services)
    : m_services(services)
    , m_hasAccessLog(false)
    , m_stopTime(10000)
{
}

BwaRestServer::~BwaRestServer() = default;

BwaRestServer& BwaRestServer::accessLog()
{
    m_hasAccessLog = true;
    return *this;
}

BwaRestServer& BwaRestServer::prepare(const std::function<void(BwaFcgiListener&)>& function)
{
    m_prepare = function;
    return *this;
}

BwaRestServer& BwaRestServer::stopWithin(int milliseconds)
{
    m_stopTime = milliseconds;
    return *this;
}

int BwaRestServer::run(const QString& address)
{
    BwaFcgiListener listener(m_services);
    const QList<BwaRestService*> services = restServicesOf(m_services);
    QTimer stopTimer;
    stopTimer.setSingleShot(true);
    QTimer endTimer;
    BwaRestStopSignals signals;

    QObject::connect(&signals, &BwaRestStopSignals::received, &listener, [&] {
        if (stopTimer.isActive()) {
            return; // a second signal does not start the time again
        }
        stopTimer.start(m_stopTime);
        listener.stopAccepting();
        for (BwaRestService* const service : services) {
            Q_EMIT service->stopping();
        }
    });
    QObject::connect(&stopTimer, &QTimer::timeout, &listener, [&] {
        for (BwaRestService* const service : services) {
            service->endCalls();
        }
        endTimer.start(endTime);
    });
    QObject::connect(&endTimer, &QTimer::timeout, &listener, [] { QCoreApplication::exit(1); });
    QObject::connect(&listener, &BwaFcgiListener::drained, &listener,
                     [] { QCoreApplication::exit(0); });
    QObject::connect(&listener, &BwaFcgiListener::listeningError, &listener, [&] {
        std::fprintf(stderr, "%s\n", listener.errorString().toLocal8Bit().constData());
        QCoreApplication::exit(1);
    });
    if (m_hasAccessLog) {
        QObject::connect(&listener, &BwaFcgiListener::requestCompleted, &listener, &writeAccess);
    }
    if (m_prepare) {
        m_prepare(listener);
    }
    address.isNull() ? listener.listen() : listener.listen(address);
    return QCoreApplication::exec();
}
