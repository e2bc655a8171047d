// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWASESSIONTOKENFCGISESSIONIDENTIFIER_H
#define BWASESSIONTOKENFCGISESSIONIDENTIFIER_H

#include "sessions/BwaAbstractFcgiSessionIdentifier.h"
#include "sessions/BwaSessionCredentials.h"

#include <QString>

class BwaWebSessionManager;

/**
 * Finds a session by the Authorization header: "SESSION-TOKEN", one blank, the session's id, ":"
 * and its token. A request without a session is refused with a 401 challenge.
 */
class BWA_EXPORT BwaSessionTokenFcgiSessionIdentifier : public BwaAbstractFcgiSessionIdentifier
{
public:
    /** "SESSION-TOKEN". */
    static const QString S_AUTHENTICATION_SCHEME_NAME; // NOLINT(readability-identifier-naming)

    /** @a manager must outlive this; @a realm is announced in the challenge. */
    BwaSessionTokenFcgiSessionIdentifier(const BwaWebSessionManager* manager, const QString& realm);
    ~BwaSessionTokenFcgiSessionIdentifier() override;

    BwaWebSession* session(BwaFcgiRequest* request) override;
    void sendUnauthorizedReply(BwaFcgiRequest* request) override;

    /** What @a request presents, as session() reads it; nothing is looked up. */
    BwaSessionCredentials credentials(BwaFcgiRequest* request) const;
    /** The manager that has the sessions; not owned. */
    const BwaWebSessionManager* sessionManager() const { return m_sessionManager; }
    /** The realm of the challenge. */
    QString realm() const { return m_realm; }

private:
    const BwaWebSessionManager* m_sessionManager; // not owned
    QString m_realm;
};

#endif
