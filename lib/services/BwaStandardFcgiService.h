// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWASTANDARDFCGISERVICE_H
#define BWASTANDARDFCGISERVICE_H

#include "services/BwaAbstractFcgiService.h"

class BwaAbstractFcgiRequestProcessor;

/** A leaf of the service tree: hands every request to its processor. */
class BWA_EXPORT BwaStandardFcgiService : public BwaAbstractFcgiService
{
    Q_OBJECT

public:
    /** Takes @a processor over. It may be null only while no request reaches the service. */
    explicit BwaStandardFcgiService(BwaAbstractFcgiRequestProcessor* processor,
                                    QObject* parent = nullptr);
    ~BwaStandardFcgiService() override;

    void processRequest(BwaFcgiRequest* request) override;

private:
    BwaAbstractFcgiRequestProcessor* m_processor; // owned
};

#endif
