// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAABSTRACTFCGISESSIONIDENTIFIER_H
#define BWAABSTRACTFCGISESSIONIDENTIFIER_H

#include "BwaGlobal.h"

class BwaFcgiRequest;
class BwaWebSession;

/** How the session of a request is found, and how a request without one is refused. */
class BWA_EXPORT BwaAbstractFcgiSessionIdentifier
{
public:
    virtual ~BwaAbstractFcgiSessionIdentifier();

    /**
     * The session that @a request names and whose current token it presents, or null. The token may
     * have expired. Neither replies nor logs.
     */
    virtual BwaWebSession* session(BwaFcgiRequest* request) = 0;
    /** Replies with a refusal, here 403. The request stays the caller's. */
    virtual void sendUnauthorizedReply(BwaFcgiRequest* request);
};

#endif
