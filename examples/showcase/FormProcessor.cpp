// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "FormProcessor.h"

#include "Replies.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"

#include <QJsonObject>

void FormProcessor::processPostMethod(BwaFcgiRequest* request)
{
    if (readForm(request, "application/x-www-form-urlencoded")) {
        sendJson(request, variablesToJson(request->cgiRequest()->formVariables()));
    }
    delete request;
}
