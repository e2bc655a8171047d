// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTSESSIONSTORE_H
#define BWARESTSESSIONSTORE_H

#include "rest/BwaRestGlobal.h"

#include <QString>
#include <QStringList>
#include <QUuid>
#include <QVariant>

#include <memory>

/** Who has logged in; what BwaRestCall::session() gives. */
struct BwaRestSession {
    QString user;      /**< As given to BwaRestSessions::login(). */
    QStringList roles; /**< What the user may do, in words of the application. */
    QVariantMap data;  /**< The application's own; the store may take JSON only. */
};

/** A session, and what proves it. */
struct BwaRestGrant {
    QUuid sessionId;                               /**< Says which session it is. */
    QUuid token;                                   /**< The current one, or the one before. */
    std::shared_ptr<const BwaRestSession> session; /**< Null: there is no such session. */
};

/**
 * Keeps the sessions of BwaRestSessions, where other processes may have them, too.
 * BwaRedisRestStore is one.
 *
 * Its functions are called in the listener's thread, which serves nothing else until they return.
 * What they throw becomes the reply: BwaRestProblem with 503 when the store cannot be reached.
 */
class BWA_REST_EXPORT BwaRestSessionStore
{
    Q_DISABLE_COPY(BwaRestSessionStore)

public:
    BwaRestSessionStore();
    virtual ~BwaRestSessionStore();

    /** A new session, with an id and a token that nobody can guess. Never without one. */
    virtual BwaRestGrant create(const BwaRestSession& session) = 0;
    /**
     * The session with that id, if @a token is its token and has not expired, or if it is the token
     * before, for a grace time; otherwise none. The arguments are not null. How long the comparison
     * takes must not depend on where a wrong token differs.
     */
    virtual BwaRestGrant find(const QUuid& sessionId, const QUuid& token) = 0;
    /**
     * Finds the session as find() does, gives it a new token, and returns it with that. When
     * @a token is the one before, returns the current one instead.
     */
    virtual BwaRestGrant renew(const QUuid& sessionId, const QUuid& token) = 0;
    /** Ends a session; an unknown id is ignored. */
    virtual void remove(const QUuid& sessionId) = 0;
    /** For how long a new token is taken, in milliseconds. */
    virtual int tokenLifetime() const = 0;
};

#endif
