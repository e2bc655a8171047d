// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef GATEWAY_H
#define GATEWAY_H

#include "Accounts.h"
#include "Devices.h"
#include "Firmware.h"

#include <QThreadPool>

/** Finds the addresses at which devices answer on a bus; blocks, in a thread of the pool. */
using BusScan = std::function<QVariantList(qint64 bus, const BwaRestCancel& cancel)>;

/**
 * In place of a driver: asks one address after another, as long as somebody waits for the reply.
 */
QVariantList scanBus(qint64 bus, const BwaRestCancel& cancel);

/** The settings that the operator chooses. */
struct GatewaySettings {
    QString accounts;        // a file: see Accounts
    QString folder;          // for firmware images
    QStringList origins;     // of pages on other hosts that may use the API
    bool allowsHttp = false; // cookies go over plain HTTP, too
    BusScan scan = scanBus;
    int scanTime = 10000; // milliseconds that a client waits for a scan at most
};

/** The whole API without its listener, so that tests can use it. */
class Gateway
{
public:
    /** @throws std::runtime_error when a file cannot be used */
    explicit Gateway(const GatewaySettings& settings);

    BwaRestService& service() { return m_service; }

private:
    void addScan(BwaRestGroup& operators, const BusScan& scan, int scanTime);
    void addDescription();

    // Each member must outlive the members below it.
    BwaRestEvents m_events{BwaRestEvents::DropOldest, 100};
    Accounts m_accounts;
    Devices m_devices{m_events};
    Firmware m_firmware;
    QThreadPool m_pool;
    BwaRestService m_service;
};

#endif
