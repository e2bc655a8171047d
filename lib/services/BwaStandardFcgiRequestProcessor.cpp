// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "services/BwaStandardFcgiRequestProcessor.h"

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiGuard_p.h"
#include "fcgi/BwaFcgiRequest.h"
#include "sessions/BwaAbstractFcgiSessionIdentifier.h"
#include "sessions/BwaWebSession.h"

#include <exception>

BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor(
    BwaAbstractFcgiSessionIdentifier* sessionIdentifier)
    : m_sessionIdentifier(sessionIdentifier)
{
}

BwaStandardFcgiRequestProcessor::~BwaStandardFcgiRequestProcessor() = default;

void BwaStandardFcgiRequestProcessor::processRequest(BwaFcgiRequest* request)
{
    const auto answerException = [request](const std::exception& exception) {
        logError(request, QString::fromLatin1(exception.what()));
        request->sendHttpError(BwaFcgiRequest::InternalServerError);
        delete request;
    };
    BwaFcgiRequest::Guard::run(
        request, [this, request] { callMethodHook(request); }, answerException);
}

void BwaStandardFcgiRequestProcessor::callMethodHook(BwaFcgiRequest* request)
{
    const QString method = request->cgiRequest()->environment().requestMethod();
    if (method == QLatin1String("GET")) {
        processGetMethod(request);
    } else if (method == QLatin1String("PUT")) {
        processPutMethod(request);
    } else if (method == QLatin1String("POST")) {
        processPostMethod(request);
    } else if (method == QLatin1String("DELETE")) {
        processDeleteMethod(request);
    } else {
        processOtherMethod(request, method);
    }
}

void BwaStandardFcgiRequestProcessor::processGetMethod(BwaFcgiRequest* request)
{
    processNotAllowedMethod(request);
}

void BwaStandardFcgiRequestProcessor::processPostMethod(BwaFcgiRequest* request)
{
    processNotAllowedMethod(request);
}

void BwaStandardFcgiRequestProcessor::processPutMethod(BwaFcgiRequest* request)
{
    processNotAllowedMethod(request);
}

void BwaStandardFcgiRequestProcessor::processDeleteMethod(BwaFcgiRequest* request)
{
    processNotAllowedMethod(request);
}

void BwaStandardFcgiRequestProcessor::processOtherMethod(BwaFcgiRequest* request,
                                                         const QString& /*method*/)
{
    processNotAllowedMethod(request);
}

BwaWebSession* BwaStandardFcgiRequestProcessor::authenticateRequest(BwaFcgiRequest* request,
                                                                    bool acceptExpiredToken)
{
    BwaWebSession* const session = m_sessionIdentifier->session(request);
    if (session && (acceptExpiredToken || !session->isTokenExpired())) {
        return session;
    }
    logError(request, QString::fromLatin1("No session can be used to authenticate the request"));
    m_sessionIdentifier->sendUnauthorizedReply(request);
    return nullptr;
}

void BwaStandardFcgiRequestProcessor::processNotAllowedMethod(BwaFcgiRequest* request)
{
    request->sendHttpError(BwaFcgiRequest::MethodNotAllowed);
    delete request;
}
