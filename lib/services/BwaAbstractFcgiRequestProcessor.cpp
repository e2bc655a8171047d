// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "services/BwaAbstractFcgiRequestProcessor.h"

#include "BwaStringStreaming.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "json/BwaJson.h"

namespace {

bool isJsonInUtf8(const QPair<QString, QHash<QString, QString>>& contentType)
{
    const QHash<QString, QString>& parameters = contentType.second;
    const auto charset = parameters.constFind(QString::fromLatin1("charset"));
    return contentType.first.toLower() == QLatin1String("application/json") &&
        (charset == parameters.constEnd() || charset.value().toLower() == QLatin1String("utf-8"));
}

} // namespace

BwaAbstractFcgiRequestProcessor::~BwaAbstractFcgiRequestProcessor() = default;

BwaCgiEnvironment::ServerProtocol
BwaAbstractFcgiRequestProcessor::parseServerProtocol(BwaFcgiRequest* request)
{
    return BwaCgiEnvironment::parseServerProtocol(
        request->cgiRequest()->environment().serverProtocol());
}

QPair<QString, QHash<QString, QString>>
BwaAbstractFcgiRequestProcessor::parseContentType(BwaFcgiRequest* request)
{
    return BwaCgiEnvironment::parseContentType(request->cgiRequest()->environment().contentType());
}

QVariant BwaAbstractFcgiRequestProcessor::parseJsonContent(BwaFcgiRequest* request, bool* ok)
{
    bool ignored = false;
    bool& accepted = ok ? *ok : ignored;
    accepted = false;
    if (!isJsonInUtf8(parseContentType(request))) {
        logError(request,
                 QString::fromLatin1("Media type for a request body must be \"application/json\" "
                                     "and charset (if present) must be \"utf-8\""));
        request->sendHttpError(BwaFcgiRequest::UnsupportedMediaType);
        return QVariant();
    }
    if (!request->cgiRequest()->processBodyContent()) {
        // Settled: the doubled article.
        logError(request,
                 QString::fromLatin1("Cannot read the all the content of the body to parse it"));
        request->sendHttpError(BwaFcgiRequest::BadRequest);
        return QVariant();
    }
    return BwaJson::parse(request->cgiRequest()->body(), &accepted);
}

void BwaAbstractFcgiRequestProcessor::logError(BwaFcgiRequest* request, const QString& message)
{
    const BwaCgiEnvironment& environment = request->cgiRequest()->environment();
    request->err() << QString::fromLatin1("Error in request processor for request to script "
                                          "\"%1\" with path info \"%2\": %3")
                          .arg(environment.scriptName(), environment.pathInfo(), message);
}
