// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef GREETINGPROCESSOR_H
#define GREETINGPROCESSOR_H

#include "services/BwaStandardFcgiRequestProcessor.h"

/** Greets by name: GET with the query variable "name", or POST of {"name": "..."}. */
class GreetingProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    GreetingProcessor();

protected:
    void processGetMethod(BwaFcgiRequest* request) override;
    void processPostMethod(BwaFcgiRequest* request) override;
};

#endif
