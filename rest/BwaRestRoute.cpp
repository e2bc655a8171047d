// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestRoute.h"

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
