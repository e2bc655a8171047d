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
 *     BwaWebSessionManager manager;
 *     BwaSessionTokenFcgiSessionIdentifier identifier(&manager, QStringLiteral("notes"));
 *     // The service owns the processor, whose hooks call authenticateRequest().
 *     BwaStandardFcgiService service(new NotesProcessor(&identifier));
 *     // When a user has logged in, the reply has the id and the token of a new session. Here the
 *     // token is valid for 10 minutes, and can be renewed for another hour.
 *     const BwaWebSession* session = manager.createSession(user, 600000, 3600000);
 *
 * A manager and its sessions live in the thread of the listener whose requests they authenticate.
 * Move a manager there before it has sessions, because the timers of a session run in the thread in
 * which it was created. The manager must outlive the session identifiers that use it. It deletes
 * its sessions with itself, without any signal.
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
     * A new session that never expires, owned by the manager. Use an id once only: an older session
     * with the same id lives on but is no longer found, and when the older one is removed, the new
     * one is no longer found either.
     */
    BwaWebSession* createSession(const QString& username, const QUuid& sessionId,
                                 const QUuid& token);
    /** The sessions of exactly that user, in the order of their ids. */
    QList<BwaWebSession*> sessions(const QString& username) const;
    /** The session of that id, or null. */
    BwaWebSession* findSession(const QUuid& sessionId) const { return m_sessions.value(sessionId); }

    // Settled: signals and slots keep this order, in which the meta-object lists them. A new one
    // follows the others of its kind.
Q_SIGNALS:
    /** A session has been created, and can be found. */
    void sessionCreated(QUuid sessionId);
    /** A session ends: it can no longer be found, but still exists. */
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
    BWA_HIDDEN BwaWebSession* adopt(BwaWebSession* session);
    BWA_HIDDEN BwaWebSession* senderSession() const;

    QMap<QUuid, BwaWebSession*> m_sessions; // owned as QObject children
};

#endif
