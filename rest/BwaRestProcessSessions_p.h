// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTPROCESSSESSIONS_P_H
#define BWARESTPROCESSSESSIONS_P_H

#include "rest/BwaRestSessionStore.h"
#include "sessions/BwaWebSessionManager.h"

#include <QDeadlineTimer>
#include <QHash>

/** A store that keeps sessions in this process. */
class BwaRestProcessSessions : public BwaRestSessionStore
{
public:
    /** Both times in milliseconds. */
    BwaRestProcessSessions(int tokenLifetime, int graceTime);

    BwaRestGrant create(const BwaRestSession& session) override;
    BwaRestGrant find(const QUuid& sessionId, const QUuid& token) override;
    BwaRestGrant renew(const QUuid& sessionId, const QUuid& token) override;
    void remove(const QUuid& sessionId) override { manager.removeSession(sessionId); }
    int tokenLifetime() const override { return m_tokenLifetime; }

    BwaWebSessionManager manager;

private:
    struct Entry {
        std::shared_ptr<const BwaRestSession> session;
        QUuid previousToken; // null: none yet
        QDeadlineTimer grace;
    };

    int m_tokenLifetime;
    int m_graceTime;
    QHash<QUuid, Entry> m_entries; // by session id
};

#endif
