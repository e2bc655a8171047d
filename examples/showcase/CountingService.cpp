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
    const ReplyStatus status(request->out());
    m_service->processRequest(request);
    m_statistics->count(m_clock->elapsed() / 1000, status.code());
}
