// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiRequest.h"
#include "rest/BwaRestStatus_p.h"

namespace {

// Made whole: replies of these are the most frequent.
const char* knownLine(int status)
{
    switch (status) {
    case 200:
        return "200 OK";
    case 201:
        return "201 Created";
    case 202:
        return "202 Accepted";
    case 204:
        return "204 No Content";
    case 206:
        return "206 Partial Content";
    case 301:
        return "301 Moved Permanently";
    case 302:
        return "302 Found";
    case 303:
        return "303 See Other";
    case 304:
        return "304 Not Modified";
    case 307:
        return "307 Temporary Redirect";
    case 308:
        return "308 Permanent Redirect";
    default:
        return nullptr;
    }
}

QByteArray phraseOf(int status)
{
    if (status < 400) {
        return status < 300 ? "Success" : "Redirection";
    }
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
    const char* const known = knownLine(status);
    return known ? QByteArray(known) : QByteArray::number(status) + ' ' + phraseOf(status);
}
