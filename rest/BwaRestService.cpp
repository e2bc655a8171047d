// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestService.h"

#include "rest/BwaRestCall.h"
#include "rest/BwaRestExchange_p.h"
#include "rest/BwaRestOutcome_p.h"
#include "rest/BwaRestProblem.h"

BwaRestService::BwaRestService(QObject* parent)
    : BwaDispatcherFcgiService(parent)
    , m_settings(new BwaRestSettings)
{
}

BwaRestService::~BwaRestService() = default;

void BwaRestService::setFileHeader(FileHeader header)
{
    m_settings->fileHeader = header == XSendfile ? "X-Sendfile" : "X-Accel-Redirect";
}

void BwaRestService::allowOrigins(const QStringList& origins, bool credentials)
{
    m_settings->origins = BwaRestOrigins(origins, credentials);
}

void BwaRestService::processRequest(BwaFcgiRequest* request)
{
    BwaRestExchange exchange(request, *m_settings);
    exchange.write(BwaRestOutcome::of([&] { return replyTo(exchange); }));
}

BwaRestReply BwaRestService::replyTo(BwaRestExchange& exchange) const
{
    exchange.find(router(), servicePath());
    if (!exchange.resource) {
        return BwaRestProblem(404);
    }
    if (exchange.method == "OPTIONS") {
        return BwaRestReply::empty().header("Allow", exchange.resource->allow());
    }
    if (!exchange.entry) {
        return BwaRestProblem(405).header("Allow", exchange.resource->allow());
    }
    const BwaRestCall call(exchange);
    const BwaRestRoute& route = *exchange.entry->route;
    if (const std::optional<BwaRestReply> reply = route.group()->askHooks(call)) {
        return *reply;
    }
    return route.handler()(call);
}
