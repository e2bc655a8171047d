// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef COUNTINGSERVICE_H
#define COUNTINGSERVICE_H

#include "services/BwaAbstractFcgiService.h"

#include <QElapsedTimer>

class Statistics;

/** Stands in front of another service and counts its replies, also those that come later. */
class CountingService : public BwaAbstractFcgiService
{
public:
    /** Nothing is owned; everything must outlive this. */
    CountingService(BwaAbstractFcgiService* service, Statistics* statistics,
                    const QElapsedTimer* clock);

    void processRequest(BwaFcgiRequest* request) override;

private:
    BwaAbstractFcgiService* m_service;
    Statistics* m_statistics;
    const QElapsedTimer* m_clock;
};

#endif
