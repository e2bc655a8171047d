// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "FormProcessor.h"

#include "Replies.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"

#include <QJsonObject>

void FormProcessor::processPostMethod(BwaFcgiRequest* request)
{
    if (request->cgiRequest()->processBodyContent()) {
        sendJson(request, variablesToJson(request->cgiRequest()->formVariables()));
    } else {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
    }
    delete request;
}
