// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef FAILINGPROCESSOR_H
#define FAILINGPROCESSOR_H

#include "services/BwaStandardFcgiRequestProcessor.h"

/** GET: what a client sees of a failure that nobody handled. */
class FailingProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processGetMethod(BwaFcgiRequest* request) override;
};

#endif
