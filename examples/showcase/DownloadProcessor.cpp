// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "DownloadProcessor.h"

#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpPlainTextHeader.h"

// The path is one of the front server, which maps /files/ to a folder. It must never be made of
// what the client sent.
void DownloadProcessor::processGetMethod(BwaFcgiRequest* request)
{
    request->out() << "X-Accel-Redirect: /files/welcome.txt\n" << BwaHttpPlainTextHeader();
    delete request;
}
