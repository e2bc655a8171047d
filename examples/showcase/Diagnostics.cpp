// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Diagnostics.h"

#include "Headers.h"
#include "fcgi/BwaFcgiListener.h"

#include <stdexcept>

Diagnostics::Diagnostics()
{
    m_clock.start();
}

void Diagnostics::addTo(BwaRestGroup& api)
{
    api.get("/statistics", [this](const BwaRestCall&) { return statistics(); })
        .says("How many replies there were in each second of the last minute, and of each status");
    api.get("/failure",
            [](const BwaRestCall&) -> BwaRestReply {
                throw std::runtime_error("the machine is out of tea");
            })
        .says("Fails: the client learns nothing, the log has it all");
}

void Diagnostics::count(BwaFcgiListener& listener)
{
    QObject::connect(
        &listener, &BwaFcgiListener::requestCompleted, &listener,
        [this](const QString& /*path*/, int status) { m_statistics.count(now(), status); });
}

BwaRestReply Diagnostics::statistics()
{
    QVariantList seconds;
    for (const Statistics::Second& second : m_statistics.lastMinute(now())) {
        seconds.append(QVariant(QVariantList{second.succeeded, second.refused, second.failed}));
    }
    QVariantMap statuses;
    const QMap<int, int> counts = m_statistics.statuses();
    for (auto count = counts.cbegin(); count != counts.cend(); ++count) {
        statuses.insert(QString::number(count.key()), count.value());
    }
    return guarded(QVariantMap{{"seconds", seconds}, {"statuses", statuses}});
}
