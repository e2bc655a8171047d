// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "redis/BwaRedisSession.h"

#include "json/BwaJson.h"

BwaRedisSession::BwaRedisSession(const QString& username, const QUuid& sessionId,
                                 const QUuid& token, TokenState state, QObject* parent)
    : BwaWebSession(username, sessionId, token, state, parent)
{
}

BwaRedisSession::~BwaRedisSession() = default;

QStringList BwaRedisSession::roles() const
{
    return m_roles.isEmpty() ? QStringList() : BwaJson::parse(m_roles).toStringList();
}

QVariantMap BwaRedisSession::data() const
{
    return m_data.isEmpty() ? QVariantMap() : BwaJson::parse(m_data).toMap();
}
