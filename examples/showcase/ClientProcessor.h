// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef CLIENTPROCESSOR_H
#define CLIENTPROCESSOR_H

#include "services/BwaStandardFcgiRequestProcessor.h"

/** GET: what the front server says about the client. */
class ClientProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processGetMethod(BwaFcgiRequest* request) override;
};

#endif
