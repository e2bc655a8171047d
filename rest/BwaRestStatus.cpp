// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiRequest.h"
#include "rest/BwaRestStatus_p.h"

namespace {

const char* phraseOfSuccess(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 201:
        return "Created";
    case 202:
        return "Accepted";
    case 204:
        return "No Content";
    case 206:
        return "Partial Content";
    case 301:
        return "Moved Permanently";
    case 302:
        return "Found";
    case 303:
        return "See Other";
    case 304:
        return "Not Modified";
    case 307:
        return "Temporary Redirect";
    case 308:
        return "Permanent Redirect";
    default:
        return status < 300 ? "Success" : "Redirection";
    }
}

QByteArray phraseOfError(int status)
{
    const auto error = static_cast<BwaFcgiRequest::StandardHttpError>(status);
    const auto known = BwaFcgiRequest::standardHttpErrorParameters(error);
    if (known.first == status) {
        return known.second.toLatin1();
    }
    return status < 500 ? "Client Error" : "Server Error";
}

} // namespace

QByteArray BwaRestStatus::line(int status)
{
    return QByteArray::number(status) + ' ' +
        (status < 400 ? QByteArray(phraseOfSuccess(status)) : phraseOfError(status));
}
