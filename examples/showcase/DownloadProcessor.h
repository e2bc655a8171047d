// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef DOWNLOADPROCESSOR_H
#define DOWNLOADPROCESSOR_H

#include "services/BwaStandardFcgiRequestProcessor.h"

/** GET: a file that nginx or Caddy send themselves (X-Accel-Redirect). */
class DownloadProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processGetMethod(BwaFcgiRequest* request) override;
};

#endif
