// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestService.h"

#include "rest/BwaRestCall.h"
#include "rest/BwaRestDescription_p.h"
#include "rest/BwaRestExchange_p.h"
#include "rest/BwaRestHeldCalls_p.h"
#include "rest/BwaRestOutcome_p.h"
#include "rest/BwaRestProblem.h"

#include <utility>

BwaRestService::BwaRestService(QObject* parent)
    : BwaDispatcherFcgiService(parent)
    , m_settings(new BwaRestSettings)
    , m_calls(new BwaRestHeldCalls)
{
    m_calls->setParent(this);
    m_settings->calls = m_calls;
    connect(this, &BwaRestService::stopping, m_calls, [this] { m_calls->endStreams(); });
}

// Destroys the calls before other members: ending a call needs the settings and may call functions
// of the application.
BwaRestService::~BwaRestService()
{
    delete m_calls;
}

void BwaRestService::setFileHeader(FileHeader header)
{
    m_settings->fileHeader = header == XSendfile ? "X-Sendfile" : "X-Accel-Redirect";
}

void BwaRestService::allowOrigins(const QStringList& origins, bool credentials)
{
    m_settings->origins = BwaRestOrigins(origins, credentials);
}

void BwaRestService::setPool(QThreadPool* pool, int mostWaiting)
{
    m_settings->pool = std::make_shared<BwaRestPool>(pool, mostWaiting);
}

QVariantMap BwaRestService::describe(const QString& title, const QString& version) const
{
    return BwaRestDescription::of(router().routes(), title, version);
}

void BwaRestService::processRequest(BwaFcgiRequest* request)
{
    auto exchange = std::make_unique<BwaRestExchange>(request, *m_settings);
    const BwaRestReply reply = BwaRestOutcome::of([&] { return replyTo(*exchange); });
    m_calls->conclude(std::move(exchange), reply);
}

void BwaRestService::endCalls()
{
    m_calls->endAll();
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
    route.group()->checkNeeds(&exchange);
    if (const std::optional<BwaRestReply> reply = route.group()->askHooks(call)) {
        return *reply;
    }
    return route.handler()(call);
}
