// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "services/BwaStandardProcessableDispatcherFcgiService.h"

#include "services/BwaAbstractFcgiRequestProcessor.h"

BwaStandardProcessableDispatcherFcgiService::BwaStandardProcessableDispatcherFcgiService(
    BwaAbstractFcgiRequestProcessor* processor, QObject* parent)
    : BwaDispatcherFcgiService(parent)
    , m_processor(processor)
{
}

BwaStandardProcessableDispatcherFcgiService::~BwaStandardProcessableDispatcherFcgiService()
{
    delete m_processor;
}

void BwaStandardProcessableDispatcherFcgiService::processThisService(BwaFcgiRequest* request)
{
    m_processor->processRequest(request);
}
