// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Gateway.h"

#include <QThread>

namespace {

constexpr int poolThreads = 4; // logins and scans at a time
constexpr int mostWaiting = 16;
constexpr int mostBodyBytes = 64 * 1024;
constexpr int buses = 8;

} // namespace

//! [work]
QVariantList scanBus(qint64 bus, const BwaRestCancel& cancel)
{
    QVariantList found;
    for (int address = 1; address <= 16 && !cancel.isRequested(); ++address) {
        QThread::msleep(50); // as long as a device may take to answer
        if (address % buses == bus) {
            found.append(address);
        }
    }
    return found;
}
//! [work]

Gateway::Gateway(const GatewaySettings& settings)
    : m_accounts(settings.accounts)
    , m_firmware(settings.folder, m_events)
{
    //! [service]
    m_pool.setMaxThreadCount(poolThreads);
    m_service.setPool(&m_pool, mostWaiting);
    m_service.allowOrigins(settings.origins, true);
    m_service.limit(mostBodyBytes);
    //! [service]
    if (settings.allowsHttp) {
        m_accounts.sessions().allowHttp();
    }

    m_accounts.addTo(m_service);
    //! [groups]
    BwaRestGroup& readers = m_service.group("").needs(m_accounts.sessions());
    BwaRestGroup& operators = m_service.group("").needs(m_accounts.sessions(), "operator");
    m_devices.addTo(readers.group("/devices"), operators.group("/devices"));
    //! [groups]
    m_firmware.addTo(readers, operators);
    readers.get("/events", [this](const BwaRestCall& call) { return m_events.join(call); })
        .says("What happens to devices and images, as server-sent events");
    addScan(operators, settings.scan, settings.scanTime);
    addDescription();
}

//! [scan]
void Gateway::addScan(BwaRestGroup& operators, const BusScan& scan, int scanTime)
{
    operators.post("/buses/{bus:int}/scan", [this, scan, scanTime](const BwaRestCall& call) {
        const qint64 bus = call.number("bus");
        if (bus < 0 || bus >= buses) {
            throw BwaRestProblem(404, "There is no such bus");
        }
        m_events.send(QVariantMap{{"bus", bus}, {"user", call.session()->user}}, "scan");
        return call.onPool(
            [scan, bus](const BwaRestCancel& cancel) -> BwaRestReply {
                return QVariantMap{{"bus", bus}, {"addresses", scan(bus, cancel)}};
            },
            scanTime);
    });
}
//! [scan]

void Gateway::addDescription()
{
    m_service.get("/openapi.json", [this](const BwaRestCall&) {
        QVariantMap document = m_service.describe("Device gateway", "1.0");
        document.insert("servers", QVariantList{QVariantMap{{"url", "/api"}}});
        return BwaRestReply(document);
    });
}
