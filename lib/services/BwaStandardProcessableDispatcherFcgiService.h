// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWASTANDARDPROCESSABLEDISPATCHERFCGISERVICE_H
#define BWASTANDARDPROCESSABLEDISPATCHERFCGISERVICE_H

#include "services/BwaDispatcherFcgiService.h"

class BwaAbstractFcgiRequestProcessor;

/** A dispatcher that answers requests to itself through a processor. */
class BWA_EXPORT BwaStandardProcessableDispatcherFcgiService : public BwaDispatcherFcgiService
{
    Q_OBJECT

public:
    /** Takes @a processor over. */
    explicit BwaStandardProcessableDispatcherFcgiService(BwaAbstractFcgiRequestProcessor* processor,
                                                         QObject* parent = nullptr);
    ~BwaStandardProcessableDispatcherFcgiService() override;

    void processThisService(BwaFcgiRequest* request) override;

private:
    BwaAbstractFcgiRequestProcessor* m_processor; // owned
};

#endif
