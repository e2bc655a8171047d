// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAWEBSESSION_H
#define BWAWEBSESSION_H

#include "BwaGlobal.h"

#include <QObject>
#include <QString>
#include <QTimer>
#include <QUuid>

/**
 * What the server knows of one authenticated user: an id, and a token that the client presents with
 * each request.
 *
 * The token expires a while after it was generated; the session is removed a while after that,
 * unless a new token has been generated. A session lives in the thread of its manager, and ends
 * through remove(): a manager does not notice a plain delete.
 */
class BWA_EXPORT BwaWebSession : public QObject
{
    Q_OBJECT

public:
    /**
     * A session with an id and a token of its own, both 122 random bits of the system's generator.
     *
     * @a tokenLifetime is how many milliseconds a token is valid, @a removalDelay how many more
     * pass until the session is removed; negative: for ever.
     */
    BwaWebSession(const QString& username, int tokenLifetime, int removalDelay,
                  QObject* parent = nullptr);
    /**
     * A session that never expires; a warning on Qt's channel says so. Neither @a sessionId nor
     * @a token may be guessable.
     */
    BwaWebSession(const QString& username, const QUuid& sessionId, const QUuid& token,
                  QObject* parent = nullptr);
    ~BwaWebSession() override;

    /** Expires the token if it is valid, replaces it, and stops the removal timer. */
    QUuid generateNewToken();

    /** The id of the session, which never changes. */
    QUuid sessionId() const { return m_sessionId; }
    /** The current token, expired or not. */
    QUuid token() const { return m_token; }
    /** The user whose session it is, as given to the constructor. */
    QString username() const { return m_username; }
    /** Whether the token must no longer be accepted; generateNewToken() renews it. */
    bool isTokenExpired() const { return m_tokenExpired; }

    // Settled: signals and slots keep this order, in which the meta-object lists them. A new one
    // follows the others of its kind.
Q_SIGNALS:
    /** The session ends. It still exists; the event loop deletes it later. */
    void aboutToRemove();
    /** The token has expired, or is about to be replaced while valid. */
    void tokenExpired();

public Q_SLOTS:
    /** Emits aboutToRemove(), and lets the event loop delete the session. */
    void remove();

protected:
    /** Whether a token is still accepted. */
    enum TokenState { ValidToken, ExpiredToken };

    /**
     * For derived classes whose sessions are kept elsewhere, such as in a database. This object
     * only shows such a session: it neither expires nor removes it, and there is no warning.
     */
    BwaWebSession(const QString& username, const QUuid& sessionId, const QUuid& token,
                  TokenState state, QObject* parent);

private Q_SLOTS:
    void expireToken();

private:
    BWA_HIDDEN bool endToken(); // false when the token has expired already
    BWA_HIDDEN void stopRemoval();
    BWA_HIDDEN void setUpTimers();

    QUuid m_sessionId;
    QUuid m_token;
    bool m_tokenExpired;
    bool m_removalStarted; // lies in former padding, so the layout is unchanged
    QTimer m_removalTimer;
    QTimer m_tokenTimer;
    QString m_username;
    const int m_tokenLifetime; // milliseconds; negative: never
    const int m_removalDelay;  // milliseconds; negative: never
};

#endif
