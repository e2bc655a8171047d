// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef FORMPROCESSOR_H
#define FORMPROCESSOR_H

#include "services/BwaStandardFcgiRequestProcessor.h"

/** POST: the fields of an urlencoded form. */
class FormProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processPostMethod(BwaFcgiRequest* request) override;
};

#endif
