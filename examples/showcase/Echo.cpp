// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Headers.h"
#include "Routes.h"
#include "cgi/BwaCgiEnvironment.h"

#include <QMap>

namespace {

using Pairs = QList<QPair<QString, QString>>;

// The values of each name. A list at a time: a variant that grows would be copied each time.
QVariantMap listed(const Pairs& pairs)
{
    QMap<QString, QStringList> lists;
    for (const auto& pair : pairs) {
        lists[pair.first].append(pair.second);
    }
    QVariantMap json;
    for (auto list = lists.cbegin(); list != lists.cend(); ++list) {
        json.insert(list.key(), list.value());
    }
    return json;
}

// The cookies that scripts may read. Any other may be HttpOnly: shown here it would be no longer.
QVariantList openCookies(const BwaCgiEnvironment& environment)
{
    QVariantList open;
    for (const BwaHttpCookie& cookie : environment.cookies()) {
        if (cookie.name == QLatin1String("size") || cookie.name == QLatin1String("theme")) {
            open.append(QVariantMap{{"name", cookie.name},
                                    {"value", QString::fromUtf8(cookie.value.toLatin1())}});
        }
    }
    return open;
}

} // namespace

void addEcho(BwaRestGroup& api)
{
    api.get("/echo",
            [](const BwaRestCall& call) {
                return guarded(QVariantMap{{"cookies", openCookies(call.environment())},
                                           {"query", listed(call.queryPairs())}});
            })
        .says("The query and some cookies");
    api.post("/form", [](const BwaRestCall& call) { return guarded(listed(call.formPairs())); })
        .says("The fields of an urlencoded form");
    api.get("/client",
            [](const BwaRestCall& call) {
                return guarded(QVariantMap{{"address", call.environment().remoteAddr()},
                                           {"https", call.environment().https()}});
            })
        .says("What the web server says about the client");
}
