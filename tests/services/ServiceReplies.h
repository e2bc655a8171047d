// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef SERVICEREPLIES_H
#define SERVICEREPLIES_H

#include "services/BwaAbstractFcgiService.h"
#include "support/FcgiExchange.h"

#include <gtest/gtest.h>

/** A request to the script "/app". */
inline FcgiParameters requestTo(const QByteArray& pathInfo)
{
    return {{"SCRIPT_NAME", "/app"}, {"PATH_INFO", pathInfo}};
}

/** What @a service, which must delete the request, answers to it. */
inline FcgiReply replyOf(BwaAbstractFcgiService& service, const FcgiParameters& parameters)
{
    FcgiExchange exchange(parameters);

    service.processRequest(exchange.takeRequest());

    FcgiReply reply = exchange.reply();
    EXPECT_TRUE(reply.ended) << "the request was not deleted";
    return reply;
}

#endif
