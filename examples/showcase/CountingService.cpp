// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "CountingService.h"

#include "ReplyStatus.h"
#include "Statistics.h"
#include "fcgi/BwaFcgiRequest.h"

CountingService::CountingService(BwaAbstractFcgiService* service, Statistics* statistics,
                                 const QElapsedTimer* clock)
    : m_service(service)
    , m_statistics(statistics)
    , m_clock(clock)
{
}

void CountingService::processRequest(BwaFcgiRequest* request)
{
    ReplyStatus::follow(request->out(),
                        [this](int code) { m_statistics->count(m_clock->elapsed() / 1000, code); });
    m_service->processRequest(request);
}
