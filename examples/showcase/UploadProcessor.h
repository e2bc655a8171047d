// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef UPLOADPROCESSOR_H
#define UPLOADPROCESSOR_H

#include "services/BwaStandardFcgiRequestProcessor.h"

/** POST: the size and digest of every file of a multipart form, and its other fields. */
class UploadProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processPostMethod(BwaFcgiRequest* request) override;
};

#endif
