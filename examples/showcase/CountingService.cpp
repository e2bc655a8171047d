// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "CountingService.h"

#include "ReplyStatus.h"
#include "Statistics.h"
#include "fcgi/BwaFcgiRequest.h"

#include <ostream>

namespace {

constexpr int mostRefusals = 100; // that are logged in a minute

} // namespace

CountingService::CountingService(BwaAbstractFcgiService* service, Statistics* statistics,
                                 const QElapsedTimer* clock)
    : m_service(service)
    , m_statistics(statistics)
    , m_clock(clock)
    , m_refusals(mostRefusals)
    , m_isLogSilent(false)
{
}

void CountingService::processRequest(BwaFcgiRequest* request)
{
    ReplyStatus::follow(request->out(), [this](int statusCode) { count(statusCode); });
    limitLog(request);
    m_service->processRequest(request);
}

void CountingService::limitLog(BwaFcgiRequest* request)
{
    if (!m_refusals.isReached(QString(), now())) {
        m_isLogSilent = false;
        return;
    }
    if (!m_isLogSilent) {
        m_isLogSilent = true;
        request->err() << "Too many refusals: no more of them are logged in this minute";
    }
    request->err().setstate(std::ios_base::badbit); // takes nothing more
}

void CountingService::count(int statusCode)
{
    m_statistics->count(now(), statusCode);
    if (statusCode >= 400) {
        m_refusals.count(QString(), now());
    }
}
