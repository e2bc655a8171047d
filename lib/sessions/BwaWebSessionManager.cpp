// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "sessions/BwaWebSessionManager.h"

#include "sessions/BwaSessionSignalSender_p.h"
#include "sessions/BwaWebSession.h"

namespace {

void removeAll(const QList<BwaWebSession*>& sessions)
{
    for (BwaWebSession* session : sessions) {
        session->remove();
    }
}

} // namespace

BwaWebSessionManager::BwaWebSessionManager(QObject* parent)
    : QObject(parent)
{
}

BwaWebSessionManager::~BwaWebSessionManager() = default;

BwaWebSession* BwaWebSessionManager::createSession(const QString& username, int tokenLifetime,
                                                   int removalDelay)
{
    return adopt(new BwaWebSession(username, tokenLifetime, removalDelay, this));
}

BwaWebSession* BwaWebSessionManager::createSession(const QString& username, const QUuid& sessionId,
                                                   const QUuid& token)
{
    return adopt(new BwaWebSession(username, sessionId, token, this));
}

QList<BwaWebSession*> BwaWebSessionManager::sessions(const QString& username) const
{
    QList<BwaWebSession*> found;
    for (BwaWebSession* session : m_sessions) {
        if (session->username() == username) {
            found.append(session);
        }
    }
    return found;
}

void BwaWebSessionManager::removeSession(QUuid sessionId)
{
    if (BwaWebSession* const session = findSession(sessionId)) {
        session->remove();
    }
}

void BwaWebSessionManager::removeSessions(const QString& username)
{
    removeAll(sessions(username));
}

void BwaWebSessionManager::removeSessions()
{
    removeAll(m_sessions.values());
}

void BwaWebSessionManager::existingSessionAboutToRemove()
{
    BwaWebSession* const session = senderSession();
    if (!session) {
        return;
    }
    disconnect(session, SIGNAL(aboutToRemove()), this, SLOT(existingSessionAboutToRemove()));
    disconnect(session, SIGNAL(tokenExpired()), this, SLOT(existingSessionTokenExpired()));
    const QUuid sessionId = session->sessionId();
    m_sessions.remove(sessionId);
    Q_EMIT aboutToRemove(sessionId);
}

void BwaWebSessionManager::existingSessionTokenExpired()
{
    if (const BwaWebSession* const session = senderSession()) {
        Q_EMIT tokenExpired(session->sessionId());
    }
}

BwaWebSession* BwaWebSessionManager::adopt(BwaWebSession* session)
{
    connect(session, SIGNAL(aboutToRemove()), this, SLOT(existingSessionAboutToRemove()));
    connect(session, SIGNAL(tokenExpired()), this, SLOT(existingSessionTokenExpired()));
    m_sessions.insert(session->sessionId(), session);
    Q_EMIT sessionCreated(session->sessionId());
    return session;
}

// The session whose signal called this slot. The manager connects its slots to a session before the
// application can, so its slot is called first and takes the sender from BwaSessionSignalSender. If
// that session is not in the map, another session has the same id, or the session belongs to
// another manager. Then this function asks Qt's sender(), which is slower.
BwaWebSession* BwaWebSessionManager::senderSession() const
{
    BwaWebSession* const session = BwaSessionSignalSender::take();
    const bool isOurs = session && findSession(session->sessionId()) == session;
    return isOurs ? session : qobject_cast<BwaWebSession*>(sender());
}
