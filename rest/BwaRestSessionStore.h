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

/** A user who has logged in; BwaRestCall::session() returns one. */
struct BwaRestSession {
    QString user;      /**< As given to BwaRestSessions::login(). */
    QStringList roles; /**< The roles of the user; the application chooses their names. */
    QVariantMap data;  /**< Data of the application; a store may accept only what is JSON. */
};

/** A session with the id and the token that prove it. */
struct BwaRestGrant {
    QUuid sessionId;                               /**< The id of the session. */
    QUuid token;                                   /**< The current token, or the previous one. */
    std::shared_ptr<const BwaRestSession> session; /**< Null: there is no such session. */
};

/**
 * Keeps the sessions of BwaRestSessions. Several processes can share a store, such as
 * BwaRedisRestStore.
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

    /**
     * Creates a session, with an id and a token that nobody can guess. The result always has a
     * session.
     */
    virtual BwaRestGrant create(const BwaRestSession& session) = 0;
    /**
     * The session with that id, if @a token is its current token and has not expired, or is its
     * previous token within a grace time; otherwise a grant without a session. The arguments are
     * not null. Compare tokens in a time that does not depend on where they differ.
     */
    virtual BwaRestGrant find(const QUuid& sessionId, const QUuid& token) = 0;
    /**
     * Finds the session as find() does, gives it a new token, and returns it with that. When
     * @a token is the previous one, the result has the current token instead.
     */
    virtual BwaRestGrant renew(const QUuid& sessionId, const QUuid& token) = 0;
    /** Ends a session; an unknown id is ignored. */
    virtual void remove(const QUuid& sessionId) = 0;
    /** How long a new token is valid, in milliseconds. */
    virtual int tokenLifetime() const = 0;
};

#endif
