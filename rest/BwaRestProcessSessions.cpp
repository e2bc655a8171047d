// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestProcessSessions_p.h"
#include "sessions/BwaWebSession.h"

namespace {

// Takes the same time wherever the tokens differ.
bool areEqual(const QUuid& first, const QUuid& second)
{
    const QByteArray firstBytes = first.toRfc4122();
    const QByteArray secondBytes = second.toRfc4122();
    int difference = 0;
    for (int index = 0; index < firstBytes.size(); ++index) {
        difference |= firstBytes.at(index) ^ secondBytes.at(index);
    }
    return difference == 0;
}

} // namespace

BwaRestProcessSessions::BwaRestProcessSessions(int tokenLifetime, int graceTime)
    : m_tokenLifetime(tokenLifetime)
    , m_graceTime(graceTime)
{
    QObject::connect(&manager, &BwaWebSessionManager::aboutToRemove,
                     [this](const QUuid& sessionId) { m_entries.remove(sessionId); });
}

BwaRestGrant BwaRestProcessSessions::create(const BwaRestSession& session)
{
    const BwaWebSession* const created = manager.createSession(session.user, m_tokenLifetime, 0);
    Entry& entry = m_entries[created->sessionId()];
    entry.session = std::make_shared<const BwaRestSession>(session);
    return {created->sessionId(), created->token(), entry.session};
}

BwaRestGrant BwaRestProcessSessions::find(const QUuid& sessionId, const QUuid& token)
{
    const BwaWebSession* const session = manager.findSession(sessionId);
    const auto entry = m_entries.constFind(sessionId);
    if (!session || entry == m_entries.constEnd() || session->isTokenExpired()) {
        return {};
    }
    const bool isCurrent = areEqual(session->token(), token);
    const bool isPrevious = areEqual(entry->previousToken, token) && !entry->grace.hasExpired();
    return isCurrent || isPrevious ? BwaRestGrant{sessionId, token, entry->session}
                                   : BwaRestGrant();
}

BwaRestGrant BwaRestProcessSessions::renew(const QUuid& sessionId, const QUuid& token)
{
    BwaRestGrant grant = find(sessionId, token);
    if (!grant.session) {
        return grant;
    }
    BwaWebSession* const session = manager.findSession(sessionId);
    if (areEqual(session->token(), token)) {
        Entry& entry = m_entries[sessionId];
        entry.previousToken = token;
        entry.grace.setRemainingTime(m_graceTime);
        session->generateNewToken();
    }
    grant.token = session->token();
    return grant;
}
