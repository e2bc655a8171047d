// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAABSTRACTFCGISESSIONIDENTIFIER_H
#define BWAABSTRACTFCGISESSIONIDENTIFIER_H

#include "BwaGlobal.h"

class BwaFcgiRequest;
class BwaWebSession;

/** Finds the session of a request, and refuses a request that has none. */
class BWA_EXPORT BwaAbstractFcgiSessionIdentifier
{
public:
    virtual ~BwaAbstractFcgiSessionIdentifier();

    /**
     * The session that @a request names and whose current token it presents, or null. The token may
     * have expired. Neither replies nor logs.
     */
    virtual BwaWebSession* session(BwaFcgiRequest* request) = 0;
    /** Replies with a refusal, here 403. The caller deletes the request. */
    virtual void sendUnauthorizedReply(BwaFcgiRequest* request);
};

#endif
