// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "GreetingProcessor.h"

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpJsonHeader.h"
#include "json/BwaJson.h"
#include "json/BwaJsonUtilities.h"

#include <QVariant>

namespace {

void greet(BwaFcgiRequest* request, const QString& name)
{
    const QVariantMap reply = {{QStringLiteral("greeting"), QStringLiteral("Hello, ") + name}};
    request->out() << BwaHttpJsonHeader() << BwaJson::write(reply).constData() << '\n';
}

void greetByQuery(BwaFcgiRequest* request)
{
    const QString name =
        request->cgiRequest()->queryVariables().value(QStringLiteral("name")); // bytes as Latin-1
    if (name.isEmpty()) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
        return;
    }
    greet(request, QString::fromUtf8(name.toLatin1()));
}

void greetByBody(BwaFcgiRequest* request)
{
    if (request->cgiRequest()->environment().contentLength() == 0) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
        return;
    }
    const QVariant body = GreetingProcessor::parseJsonContent(request);
    QVariantMap object;
    QString name;
    if (BwaJsonUtilities::objectValue(body, object) &&
        BwaJsonUtilities::stringValue(object, QStringLiteral("name"), name)) {
        greet(request, name);
    } else if (!request->cgiRequest()->body().isEmpty()) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
    } // otherwise the body could not be read, and parseJsonContent has answered
}

} // namespace

// No session identifier: everybody may ask.
GreetingProcessor::GreetingProcessor()
    : BwaStandardFcgiRequestProcessor(nullptr)
{
}

// The last act of a hook is to delete the request, which completes the reply. A hook that throws
// leaves that to the library, which answers 500: so no smart pointer may hold the request here.

void GreetingProcessor::processGetMethod(BwaFcgiRequest* request)
{
    greetByQuery(request);
    delete request;
}

void GreetingProcessor::processPostMethod(BwaFcgiRequest* request)
{
    greetByBody(request);
    delete request;
}
