// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "EchoProcessor.h"

#include "Replies.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"

#include <QJsonArray>
#include <QJsonObject>

namespace {

// The cookies that scripts may read. Any other may be HttpOnly: shown here it would be no longer.
bool isOpen(const BwaHttpCookie& cookie)
{
    return cookie.name == QLatin1String("size") || cookie.name == QLatin1String("theme");
}

QJsonArray openCookiesToJson(const QList<BwaHttpCookie>& cookies)
{
    QJsonArray array;
    for (const BwaHttpCookie& cookie : cookies) {
        if (!isOpen(cookie)) {
            continue;
        }
        array.append(QJsonObject{{QStringLiteral("name"), fromUtf8Wire(cookie.name)},
                                 {QStringLiteral("value"), fromUtf8Wire(cookie.value)}});
    }
    return array;
}

} // namespace

void EchoProcessor::processGetMethod(BwaFcgiRequest* request)
{
    const BwaCgiRequest* received = request->cgiRequest();
    sendJson(request,
             QJsonObject{
                 {QStringLiteral("cookies"), openCookiesToJson(received->environment().cookies())},
                 {QStringLiteral("query"), variablesToJson(received->queryVariables())}});
    delete request;
}
