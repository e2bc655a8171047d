// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef ORDERPROCESSOR_H
#define ORDERPROCESSOR_H

#include "services/BwaStandardFcgiRequestProcessor.h"

/** POST: adds up an order {"article": text, "quantity": integer, "price": number, "gift": bool} */
class OrderProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processPostMethod(BwaFcgiRequest* request) override;
};

#endif
