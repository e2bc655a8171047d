// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Devices.h"

#include "json/BwaJson.h"

#include <QCryptographicHash>

namespace {

constexpr int mostDevices = 10000;

const auto deviceFields = BwaRestFields<Device>()
                              .add("id", &Device::id, BwaRestRule::any().readOnly())
                              .add("name", &Device::name, BwaRestRule::length(1, 64))
                              .add("bus", &Device::bus, BwaRestRule::range(0, 7))
                              .add("address", &Device::address, BwaRestRule::range(1, 247))
                              .add("enabled", &Device::enabled, BwaRestRule::any().orDefault())
                              .add("labels", &Device::labels, BwaRestRule::length(0, 8).orDefault())
                              .add("note", &Device::note, BwaRestRule::length(0, 500).orDefault());

const auto queryFields =
    BwaRestFields<DeviceQuery>()
        .add("first", &DeviceQuery::first, BwaRestRule::range(0, mostDevices).orDefault())
        .add("count", &DeviceQuery::count, BwaRestRule::range(1, 100).orDefault())
        .add("enabled", &DeviceQuery::enabled, BwaRestRule::any().orDefault())
        .add("label", &DeviceQuery::label, BwaRestRule::any().orDefault())
        .add("search", &DeviceQuery::search, BwaRestRule::length(0, 64).orDefault());

//! [tag]
// The tag is made of the content, so that two states never have the same tag, not even after a
// restart.
QByteArray tagOf(const Device& device)
{
    return QCryptographicHash::hash(BwaJson::write(deviceFields.json(device)),
                                    QCryptographicHash::Sha256)
        .toHex();
}

BwaRestReply shown(const Device& device)
{
    return BwaRestReply(deviceFields.json(device)).etag(tagOf(device));
}
//! [tag]

bool isWanted(const Device& device, const DeviceQuery& query)
{
    return (!query.enabled || *query.enabled == device.enabled) &&
        (!query.label || device.labels.contains(*query.label)) &&
        (device.name.contains(query.search, Qt::CaseInsensitive) ||
         device.note.value_or("").contains(query.search, Qt::CaseInsensitive));
}

} // namespace

Devices::Devices(BwaRestEvents& events)
    : m_events(events)
{
}

//! [routes]
void Devices::addTo(BwaRestGroup& readers, BwaRestGroup& operators)
{
    readers
        .get("", queryFields,
             [this](const BwaRestCall&, const DeviceQuery& query) { return list(query); })
        .says("Lists devices by their ids");
    readers.get("/{id:int}", [this](const BwaRestCall& call) { return shown(at(call)); })
        .gives(deviceFields);
    operators
        .post("", deviceFields,
              [this](const BwaRestCall&, const Device& device) { return add(device); })
        .gives(deviceFields, 201);
    operators
        .patch("/{id:int}", deviceFields,
               [this](const BwaRestCall& call, auto change) {
                   Device& device = at(call);
                   call.requireMatch(tagOf(device));
                   Device changed = device;
                   change(changed);
                   checkName(changed);
                   device = changed;
                   tell(device, "changed");
                   return shown(device);
               })
        .gives(deviceFields);
    operators.remove("/{id:int}", [this](const BwaRestCall& call) {
        const Device device = at(call);
        call.requireMatch(tagOf(device));
        m_devices.remove(device.id);
        tell(device, "removed");
        return BwaRestReply::empty();
    });
}
//! [routes]

//! [at]
Device& Devices::at(const BwaRestCall& call)
{
    const auto device = m_devices.find(call.number("id"));
    if (device == m_devices.end()) {
        throw BwaRestProblem(404, "There is no such device");
    }
    return *device;
}
//! [at]

BwaRestReply Devices::list(const DeviceQuery& query) const
{
    QList<Device> wanted;
    for (const Device& device : m_devices) {
        if (isWanted(device, query)) {
            wanted.append(device);
        }
    }
    QVariantList page;
    for (const Device& device : wanted.mid(query.first, query.count)) {
        page.append(deviceFields.json(device));
    }
    return QVariantMap{{"devices", page}, {"total", wanted.size()}};
}

BwaRestReply Devices::add(Device device)
{
    checkName(device);
    if (m_devices.size() >= mostDevices) {
        throw BwaRestProblem(507, "There are too many devices");
    }
    device.id = ++m_lastId;
    m_devices.insert(device.id, device);
    tell(device, "added");
    return BwaRestReply::created(QString("/devices/%1").arg(device.id), deviceFields.json(device))
        .etag(tagOf(device));
}

void Devices::checkName(const Device& device) const
{
    for (const Device& other : m_devices) {
        if (other.name == device.name && other.id != device.id) {
            throw BwaRestProblem(409, "Another device has this name");
        }
    }
}

void Devices::tell(const Device& device, const char* change)
{
    m_events.send(QVariantMap{{"id", device.id}, {"name", device.name}}, change);
}
