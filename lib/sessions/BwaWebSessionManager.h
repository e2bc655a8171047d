// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAWEBSESSIONMANAGER_H
#define BWAWEBSESSIONMANAGER_H

#include "BwaGlobal.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QUuid>

class BwaWebSession;

/**
 * Owns the web sessions of an application and finds them by their ids.
 *
 * It lives, as its sessions do, in the thread of the listener whose requests it authenticates. Move
 * it there before it has sessions: their timers run in the thread that has started them. It
 * must outlive the session identifiers that use it; the sessions end with it without any signal.
 */
class BWA_EXPORT BwaWebSessionManager : public QObject
{
    Q_OBJECT

public:
    /** A manager without sessions. */
    explicit BwaWebSessionManager(QObject* parent = nullptr);
    ~BwaWebSessionManager() override;

    /** A new session, owned by the manager. Lifetimes in milliseconds; negative: never. */
    BwaWebSession* createSession(const QString& username, int tokenLifetime, int removalDelay);
    /**
     * A new session that never expires, owned by the manager. One that has the id already is no
     * longer found, lives on, and takes the id's entry with it when it is removed.
     */
    BwaWebSession* createSession(const QString& username, const QUuid& sessionId,
                                 const QUuid& token);
    /** The sessions of exactly that user, in the order of their ids. */
    QList<BwaWebSession*> sessions(const QString& username) const;
    /** The session of that id, or null. */
    BwaWebSession* findSession(const QUuid& sessionId) const { return m_sessions.value(sessionId); }

Q_SIGNALS:
    /** The session can be found from now on. */
    void sessionCreated(QUuid sessionId);
    /** The session is no longer found, but still exists. */
    void aboutToRemove(QUuid sessionId);
    /** The token of the session has expired, or is about to be replaced while valid. */
    void tokenExpired(QUuid sessionId);

public Q_SLOTS:
    /** Removes a session; an unknown id is ignored. */
    void removeSession(QUuid sessionId);
    /** Removes all sessions of a user. */
    void removeSessions(const QString& username);
    /** Removes all sessions. */
    void removeSessions();

private Q_SLOTS:
    void existingSessionAboutToRemove();
    void existingSessionTokenExpired();

private:
    BwaWebSession* adopt(BwaWebSession* session);
    BwaWebSession* senderSession() const;

    QMap<QUuid, BwaWebSession*> m_sessions; // owned as QObject children
};

#endif
