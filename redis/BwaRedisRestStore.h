// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAREDISRESTSTORE_H
#define BWAREDISRESTSTORE_H

#include "redis/BwaRedisSession.h"
#include "redis/BwaRedisSessions.h"
#include "rest/BwaRestProblem.h"
#include "rest/BwaRestSessionStore.h"

/**
 * Keeps the sessions of BwaRestSessions in Redis, with roles and data, so that every process of an
 * application finds them.
 *
 *     BwaRedisSessions shared(settings);
 *     auto store = std::make_unique<BwaRedisRestStore>(&shared);
 *     BwaRestSessions sessions(QStringLiteral("notes"), std::move(store));
 *     BwaRestGroup& notes = api.group("/notes").needs(sessions);
 *
 * A call to such a group asks Redis once, if the client sends an id and a token. While Redis does
 * not answer, such calls and logins are refused with 503 and Retry-After. BwaJson must be able to
 * write the data; they come back as BwaJson::parse() returns them. An expired token cannot be
 * renewed, so leave the removalDelay of the settings at 0.
 *
 * The whole class is in this header, so that neither library depends on the other: link
 * BWebApi::redis and BWebApi::rest.
 */
class BwaRedisRestStore : public BwaRestSessionStore
{
public:
    /** @a sessions is not owned, and must outlive this. */
    explicit BwaRedisRestStore(BwaRedisSessions* sessions)
        : m_sessions(sessions)
    {
    }

    /** @throws std::invalid_argument when BwaJson cannot write the data */
    BwaRestGrant create(const BwaRestSession& session) override
    {
        const BwaRedisSession* const created =
            m_sessions->create(session.user, session.roles, session.data);
        requireAnswer(created != nullptr);
        return grantOf(created);
    }

    BwaRestGrant find(const QUuid& sessionId, const QUuid& token) override
    {
        const BwaRedisSession* const found = m_sessions->find(sessionId, token);
        requireAnswer(found != nullptr);
        return found && !found->isTokenExpired() ? grantOf(found) : BwaRestGrant();
    }

    BwaRestGrant renew(const QUuid& sessionId, const QUuid& token) override
    {
        const BwaRedisSession* const found = m_sessions->find(sessionId, token);
        requireAnswer(found != nullptr);
        if (!found || found->isTokenExpired()) {
            return {};
        }
        const BwaRedisSession* const renewed = m_sessions->renew(found);
        requireAnswer(renewed != nullptr);
        return renewed ? grantOf(renewed) : BwaRestGrant();
    }

    void remove(const QUuid& sessionId) override
    {
        requireAnswer(m_sessions->removeSession(sessionId));
    }

    int tokenLifetime() const override { return m_sessions->tokenLifetime(); }

private:
    static BwaRestGrant grantOf(const BwaRedisSession* session)
    {
        return {session->sessionId(), session->token(),
                std::make_shared<const BwaRestSession>(
                    BwaRestSession{session->username(), session->roles(), session->data()})};
    }

    void requireAnswer(bool isDone) const
    {
        if (!isDone && !m_sessions->hasAnswered()) {
            throw BwaRestProblem(
                BwaRestProblem(503, QString::fromLatin1("The sessions cannot be reached"))
                    .header("Retry-After", QByteArray::number(m_sessions->retryAfter())));
        }
    }

    BwaRedisSessions* m_sessions; // not owned
};

#endif
