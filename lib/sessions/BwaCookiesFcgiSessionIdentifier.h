// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWACOOKIESFCGISESSIONIDENTIFIER_H
#define BWACOOKIESFCGISESSIONIDENTIFIER_H

#include "sessions/BwaAbstractFcgiSessionIdentifier.h"

#include <QString>

class BwaWebSessionManager;

/** Finds a session by two cookies: its id and its token. A request without is refused with 403. */
class BWA_EXPORT BwaCookiesFcgiSessionIdentifier : public BwaAbstractFcgiSessionIdentifier
{
public:
    /** @a manager must outlive this. */
    BwaCookiesFcgiSessionIdentifier(const BwaWebSessionManager* manager,
                                    const QString& sessionIdCookieName,
                                    const QString& tokenCookieName);
    ~BwaCookiesFcgiSessionIdentifier() override;

    /** Of cookies with the same name, the last before both names have been seen counts. */
    BwaWebSession* session(BwaFcgiRequest* request) override;

    /** Where sessions are looked up; not owned. */
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
