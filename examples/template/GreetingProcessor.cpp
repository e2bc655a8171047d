// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "GreetingProcessor.h"

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpJsonHeader.h"
#include "json/BwaJsonUtilities.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <memory>

namespace {

void greet(BwaFcgiRequest* request, const QString& name)
{
    const QJsonObject reply = {{QStringLiteral("greeting"), QStringLiteral("Hello, ") + name}};
    request->out() << BwaHttpJsonHeader()
                   << QJsonDocument(reply).toJson(QJsonDocument::Compact).constData() << '\n';
}

} // namespace

// No session identifier: everybody may ask.
GreetingProcessor::GreetingProcessor()
    : BwaStandardFcgiRequestProcessor(nullptr)
{
}

void GreetingProcessor::processGetMethod(BwaFcgiRequest* request)
{
    const std::unique_ptr<BwaFcgiRequest> owner(request); // its deletion completes the reply
    const QString name =
        request->cgiRequest()->queryVariables().value(QStringLiteral("name")); // bytes as Latin-1
    if (name.isEmpty()) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
        return;
    }
    greet(request, QString::fromUtf8(name.toLatin1()));
}

void GreetingProcessor::processPostMethod(BwaFcgiRequest* request)
{
    const std::unique_ptr<BwaFcgiRequest> owner(request);
    if (request->cgiRequest()->environment().contentLength() == 0) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
        return;
    }
    bool isJson = false;
    const QVariantMap body = parseJsonContent(request, &isJson).toMap();
    QString name;
    if (BwaJsonUtilities::stringValue(body, QStringLiteral("name"), name)) {
        greet(request, name);
    } else if (isJson || !request->cgiRequest()->body().isEmpty()) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
    } // otherwise the body could not be read, and parseJsonContent has answered
}
