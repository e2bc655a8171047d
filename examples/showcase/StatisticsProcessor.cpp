// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "StatisticsProcessor.h"

#include "Replies.h"
#include "Statistics.h"
#include "fcgi/BwaFcgiRequest.h"

#include <QJsonArray>
#include <QJsonObject>

namespace {

QJsonArray secondsToJson(const QVector<Statistics::Second>& seconds)
{
    QJsonArray array;
    for (const Statistics::Second& second : seconds) {
        array.append(QJsonArray{second.succeeded, second.refused, second.failed});
    }
    return array;
}

QJsonObject statusesToJson(const QMap<int, int>& statuses)
{
    QJsonObject object;
    for (auto status = statuses.constBegin(); status != statuses.constEnd(); ++status) {
        object.insert(QString::number(status.key()), status.value());
    }
    return object;
}

} // namespace

StatisticsProcessor::StatisticsProcessor(Statistics* statistics, const QElapsedTimer* clock)
    : BwaStandardFcgiRequestProcessor(nullptr)
    , m_statistics(statistics)
    , m_clock(clock)
{
}

void StatisticsProcessor::processGetMethod(BwaFcgiRequest* request)
{
    const qint64 now = m_clock->elapsed() / 1000;
    sendJson(request,
             QJsonObject{{QStringLiteral("seconds"), secondsToJson(m_statistics->lastMinute(now))},
                         {QStringLiteral("statuses"), statusesToJson(m_statistics->statuses())}});
    delete request;
}
