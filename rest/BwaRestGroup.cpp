// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestGroup.h"

#include "rest/BwaRestRouter_p.h"
#include "rest/BwaRestSessions.h"

#include <stdexcept>

namespace {

const qint64 defaultLimit = 1048576; // bytes

} // namespace

BwaRestGroup::BwaRestGroup()
    : m_parent(nullptr)
    , m_router(std::make_shared<BwaRestRouter>())
    , m_limit(defaultLimit)
{
}

BwaRestGroup::BwaRestGroup(BwaRestGroup* parent, const QByteArray& prefix)
    : m_parent(parent)
    , m_prefix(prefix)
    , m_router(parent->m_router)
    , m_limit(-1)
{
}

BwaRestGroup::~BwaRestGroup() = default;

BwaRestRoute& BwaRestGroup::get(const char* pattern, const Handler& handler)
{
    return add("GET", pattern, handler);
}

BwaRestRoute& BwaRestGroup::post(const char* pattern, const Handler& handler)
{
    return add("POST", pattern, handler);
}

BwaRestRoute& BwaRestGroup::put(const char* pattern, const Handler& handler)
{
    return add("PUT", pattern, handler);
}

BwaRestRoute& BwaRestGroup::patch(const char* pattern, const Handler& handler)
{
    return add("PATCH", pattern, handler);
}

BwaRestRoute& BwaRestGroup::remove(const char* pattern, const Handler& handler)
{
    return add("DELETE", pattern, handler);
}

BwaRestRoute& BwaRestGroup::add(const char* method, const char* pattern, const Handler& handler)
{
    return m_router->add(std::make_unique<BwaRestRoute>(this, method, m_prefix + pattern, handler));
}

BwaRestGroup& BwaRestGroup::group(const char* prefix)
{
    m_groups.emplace_back(new BwaRestGroup(this, m_prefix + prefix));
    return *m_groups.back();
}

BwaRestGroup& BwaRestGroup::before(const Hook& hook)
{
    m_hooks.push_back(hook);
    return *this;
}

BwaRestGroup& BwaRestGroup::needs(const BwaRestSessions& sessions, const QString& role)
{
    m_needs.push_back({&sessions, role});
    return *this;
}

BwaRestGroup& BwaRestGroup::limit(qint64 bodySize)
{
    if (bodySize < 0) {
        throw std::logic_error("The limit of a body is negative");
    }
    m_limit = bodySize;
    return *this;
}

qint64 BwaRestGroup::bodyLimit() const
{
    return m_limit < 0 ? m_parent->bodyLimit() : m_limit;
}

void BwaRestGroup::checkNeeds(BwaRestExchange* exchange) const
{
    if (m_parent) {
        m_parent->checkNeeds(exchange);
    }
    for (const Need& need : m_needs) {
        need.sessions->check(exchange, need.role);
    }
}

std::optional<BwaRestReply> BwaRestGroup::askHooks(const BwaRestCall& call) const
{
    std::optional<BwaRestReply> reply = m_parent ? m_parent->askHooks(call) : std::nullopt;
    for (auto hook = m_hooks.begin(); !reply && hook != m_hooks.end(); ++hook) {
        reply = (*hook)(call);
    }
    return reply;
}
