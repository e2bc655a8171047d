// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef PROFILEPROCESSOR_H
#define PROFILEPROCESSOR_H

#include "BwaStringStreaming.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpJsonHeader.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "sessions/BwaWebSession.h"

/** Replies with the user of the request's session. */
class ProfileProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        if (const BwaWebSession* const session = authenticateRequest(request)) {
            request->out() << BwaHttpJsonHeader() << "{\"user\":\"" << session->username()
                           << "\"}\n";
        }
        delete request;
    }
};

#endif
