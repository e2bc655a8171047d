// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "services/BwaStandardFcgiService.h"

#include "services/BwaAbstractFcgiRequestProcessor.h"

BwaStandardFcgiService::BwaStandardFcgiService(BwaAbstractFcgiRequestProcessor* processor,
                                               QObject* parent)
    : BwaAbstractFcgiService(parent)
    , m_processor(processor)
{
}

BwaStandardFcgiService::~BwaStandardFcgiService()
{
    delete m_processor;
}

void BwaStandardFcgiService::processRequest(BwaFcgiRequest* request)
{
    m_processor->processRequest(request);
}
