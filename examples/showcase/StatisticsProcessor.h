// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef STATISTICSPROCESSOR_H
#define STATISTICSPROCESSOR_H

#include "services/BwaStandardFcgiRequestProcessor.h"

#include <QElapsedTimer>

class Statistics;

/**
 * GET: {"seconds": [[succeeded, refused, failed], ...], "statuses": {"200": number, ...}}, of the
 * last 60 seconds, the oldest first, and of all time since the start.
 */
class StatisticsProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    /** Neither is owned; both must outlive this. */
    StatisticsProcessor(Statistics* statistics, const QElapsedTimer* clock);

protected:
    void processGetMethod(BwaFcgiRequest* request) override;

private:
    Statistics* m_statistics;
    const QElapsedTimer* m_clock;
};

#endif
