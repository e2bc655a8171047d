// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiRequest.h"
#include "rest/BwaRestStatus_p.h"

namespace {

struct KnownLine {
    int status;
    const char* line;
};

// The most frequent statuses, as complete lines, so that these are not put together for each reply.
const KnownLine knownLines[] = {
    {200, "200 OK"},
    {201, "201 Created"},
    {202, "202 Accepted"},
    {204, "204 No Content"},
    {206, "206 Partial Content"},
    {301, "301 Moved Permanently"},
    {302, "302 Found"},
    {303, "303 See Other"},
    {304, "304 Not Modified"},
    {307, "307 Temporary Redirect"},
    {308, "308 Permanent Redirect"},
};

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
    for (const KnownLine& known : knownLines) {
        if (known.status == status) {
            return known.line;
        }
    }
    return QByteArray::number(status) + ' ' + phraseOf(status);
}
