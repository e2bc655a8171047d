// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef DEVICES_H
#define DEVICES_H

#include <QMap>

#include <optional>

#include <bwebapi/rest.h>

/** A device on one of the gateway's buses. */
struct Device {
    qint64 id = 0; // given by the gateway, never used twice
    QString name;  // unique
    int bus = 0;
    int address = 1;
    bool enabled = true;
    QStringList labels;
    std::optional<QString> note;
};

/** The query of a client for the list. */
struct DeviceQuery {
    int first = 0;
    int count = 20;
    std::optional<bool> enabled;  // only devices in this state
    std::optional<QString> label; // only devices with this label
    QString search;               // only devices with this text in name or note, in any case
};

/** The devices, and the routes to them. They are in memory: your database goes here. */
class Devices
{
public:
    /** Tells @a events of each change; not owned, must outlive this. */
    explicit Devices(BwaRestEvents& events);

    /** Adds the routes below the prefix of both groups. */
    void addTo(BwaRestGroup& readers, BwaRestGroup& operators);

private:
    Device& at(const BwaRestCall& call);
    BwaRestReply list(const DeviceQuery& query) const;
    BwaRestReply add(Device device);
    void checkName(const Device& device) const;
    void tell(const Device& device, const char* change);

    BwaRestEvents& m_events;
    QMap<qint64, Device> m_devices; // by their ids
    qint64 m_lastId = 0;
};

#endif
