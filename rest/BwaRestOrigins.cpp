// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestOrigins_p.h"
#include "rest/BwaRestText_p.h"

#include <stdexcept>

namespace {

const char preflightLifetime[] = "600"; // seconds

// The names in @a requested, a list from the client, that are valid names of headers: nothing else
// is written back.
QByteArray headerNames(const QByteArray& requested)
{
    QList<QByteArray> names;
    for (const QByteArray& name : requested.split(',')) {
        if (BwaRestText::isToken(name.trimmed())) {
            names.append(name.trimmed());
        }
    }
    return names.join(", ");
}

QByteArray line(const char* name, const QByteArray& value)
{
    return value.isEmpty() ? QByteArray() : QByteArray(name) + ": " + value + '\n';
}

} // namespace

BwaRestOrigins::BwaRestOrigins()
    : m_credentials(false)
{
}

BwaRestOrigins::BwaRestOrigins(const QStringList& origins, bool credentials)
    : m_credentials(credentials)
{
    for (const QString& origin : origins) {
        m_origins.append(origin.toUtf8());
    }
    if (credentials && m_origins.contains("*")) {
        throw std::logic_error("Credentials are not for all origins: browsers refuse it");
    }
}

bool BwaRestOrigins::allows(const QByteArray& origin) const
{
    return !origin.isNull() && (m_origins.contains("*") || m_origins.contains(origin));
}

// Writes Vary also without an origin, so that a cache does not give that reply to a page of another
// origin.
QByteArray BwaRestOrigins::lines(const QByteArray& origin, const QList<QByteArray>& exposed) const
{
    QByteArray vary = line("Vary", "Origin");
    if (!allows(origin)) {
        return vary;
    }
    return vary + line("Access-Control-Allow-Origin", origin) +
        line("Access-Control-Allow-Credentials", m_credentials ? "true" : "") +
        line("Access-Control-Expose-Headers", exposed.join(", "));
}

QByteArray BwaRestOrigins::preflightLines(const QByteArray& origin, const QByteArray& methods,
                                          const QByteArray& requested) const
{
    QByteArray vary = line("Vary", "Access-Control-Request-Method, Access-Control-Request-Headers");
    if (!allows(origin)) {
        return vary;
    }
    return vary + line("Access-Control-Allow-Methods", methods) +
        line("Access-Control-Allow-Headers", headerNames(requested)) +
        line("Access-Control-Max-Age", preflightLifetime);
}
