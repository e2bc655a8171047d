// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef RESTREPLIES_H
#define RESTREPLIES_H

#include "rest/BwaRestService.h"
#include "testing/BwaTestRequest.h"

/** What a service whose GET handler at "/" does this replies to @a request. */
inline BwaTestReply answeringTo(const BwaTestRequest& request, const BwaRestGroup::Handler& handler)
{
    BwaRestService service;
    service.get("", handler);
    service.put("", handler);
    return request.sendTo(service);
}

/** What a client gets when a handler returns @a reply to GET. */
inline BwaTestReply answering(const BwaRestReply& reply,
                              const BwaTestRequest& request = BwaTestRequest("GET"))
{
    return answeringTo(request, [&reply](const BwaRestCall&) { return reply; });
}

#endif
