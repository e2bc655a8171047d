// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef PAGEPROCESSOR_H
#define PAGEPROCESSOR_H

#include "services/BwaStandardFcgiRequestProcessor.h"

/** GET: an HTML page that greets the "name" of the query. */
class PageProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processGetMethod(BwaFcgiRequest* request) override;
};

#endif
