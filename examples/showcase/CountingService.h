// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef COUNTINGSERVICE_H
#define COUNTINGSERVICE_H

#include "RateLimit.h"
#include "services/BwaAbstractFcgiService.h"

#include <QElapsedTimer>

class Statistics;

/**
 * Stands in front of another service and counts its replies, also those that come later.
 *
 * Each refusal writes a line to a log. After 100 of them it lets no more through until the minute
 * is over, so that no client can fill the disk.
 */
class CountingService : public BwaAbstractFcgiService
{
public:
    /** Nothing is owned; everything must outlive this. */
    CountingService(BwaAbstractFcgiService* service, Statistics* statistics,
                    const QElapsedTimer* clock);

    void processRequest(BwaFcgiRequest* request) override;

private:
    void limitLog(BwaFcgiRequest* request);
    void count(int statusCode);
    qint64 now() const { return m_clock->elapsed() / 1000; }

    BwaAbstractFcgiService* m_service;
    Statistics* m_statistics;
    const QElapsedTimer* m_clock;
    RateLimit m_refusals;
    bool m_isLogSilent;
};

#endif
