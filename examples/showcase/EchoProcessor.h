// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef ECHOPROCESSOR_H
#define ECHOPROCESSOR_H

#include "services/BwaStandardFcgiRequestProcessor.h"

/** GET: the variables of the query, and the cookies "size" and "theme", as they were understood. */
class EchoProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processGetMethod(BwaFcgiRequest* request) override;
};

#endif
