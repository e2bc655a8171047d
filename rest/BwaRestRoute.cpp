// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestRoute.h"

#include "rest/BwaRestSchema.h"

BwaRestRoute::BwaRestRoute(const BwaRestGroup* group, const QByteArray& method,
                           const QByteArray& pattern, const Handler& handler)
    : m_group(group)
    , m_method(method)
    , m_pattern(pattern)
    , m_handler(handler)
{
}

BwaRestRoute::~BwaRestRoute() = default;

BwaRestRoute& BwaRestRoute::says(const QString& summary)
{
    m_summary = summary;
    return *this;
}

BwaRestRoute& BwaRestRoute::takes(const BwaRestSchema& body)
{
    m_taken = m_method == "PATCH" ? body.mergeDescription() : body.description();
    return *this;
}

BwaRestRoute& BwaRestRoute::gives(const BwaRestSchema& reply, int status)
{
    m_given.insert(status, reply.description());
    return *this;
}
