// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWACOOKIESFCGISESSIONIDENTIFIER_H
#define BWACOOKIESFCGISESSIONIDENTIFIER_H

#include "sessions/BwaAbstractFcgiSessionIdentifier.h"
#include "sessions/BwaSessionCredentials.h"

#include <QString>

class BwaWebSessionManager;

/**
 * Finds a session by two cookies, which hold its id and its token. A request without a session is
 * refused with 403.
 */
class BWA_EXPORT BwaCookiesFcgiSessionIdentifier : public BwaAbstractFcgiSessionIdentifier
{
public:
    /** @a manager must outlive this. */
    BwaCookiesFcgiSessionIdentifier(const BwaWebSessionManager* manager,
                                    const QString& sessionIdCookieName,
                                    const QString& tokenCookieName);
    ~BwaCookiesFcgiSessionIdentifier() override;

    /**
     * Reads the cookies in their order until both names have been seen. Of cookies of the same name
     * that come before that, the last one counts.
     */
    BwaWebSession* session(BwaFcgiRequest* request) override;

    /** What @a request presents, as session() reads it; nothing is looked up. */
    BwaSessionCredentials credentials(BwaFcgiRequest* request) const;
    /** The manager that has the sessions; not owned. */
    const BwaWebSessionManager* sessionManager() const { return m_sessionManager; }
    /** The name of the cookie with the session's id. */
    QString sessionIdCookieName() const { return m_sessionIdCookieName; }
    /** The name of the cookie with the token. */
    QString tokenCookieName() const { return m_tokenCookieName; }

private:
    const BwaWebSessionManager* m_sessionManager; // not owned
    QString m_sessionIdCookieName;
    QString m_tokenCookieName;
};

#endif
