// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "sessions/BwaAbstractFcgiSessionIdentifier.h"

#include "fcgi/BwaFcgiRequest.h"

BwaAbstractFcgiSessionIdentifier::~BwaAbstractFcgiSessionIdentifier() = default;

void BwaAbstractFcgiSessionIdentifier::sendUnauthorizedReply(BwaFcgiRequest* request)
{
    request->sendHttpError(BwaFcgiRequest::Forbidden);
}
