// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "ClientProcessor.h"

#include "Replies.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"

#include <QJsonObject>

void ClientProcessor::processGetMethod(BwaFcgiRequest* request)
{
    const BwaCgiEnvironment& environment = request->cgiRequest()->environment();
    sendJson(request,
             QJsonObject{{QStringLiteral("address"), fromUtf8Wire(environment.remoteAddr())},
                         {QStringLiteral("https"), environment.https()}});
    delete request;
}
