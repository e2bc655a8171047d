// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef TESTREPLIES_H
#define TESTREPLIES_H

#include "fcgi/BwaFcgiRequest.h"
#include "testing/BwaTestRequest.h"

#include <QByteArray>
#include <QList>
#include <QPair>

#include <gtest/gtest.h>

/** Name and value of each CGI variable. */
using CgiVariables = QList<QPair<QByteArray, QByteArray>>;

/** A request with these variables and no others, and this body, whatever its length says. */
inline BwaTestRequest testRequest(const CgiVariables& variables,
                                  const QByteArray& body = QByteArray())
{
    BwaTestRequest request{QByteArray()};
    request.setBody(QByteArray(), body);
    for (const char* name : {"REQUEST_METHOD", "SCRIPT_NAME", "PATH_INFO", "QUERY_STRING",
                             "SERVER_PROTOCOL", "REMOTE_ADDR", "CONTENT_LENGTH"}) {
        request.setVariable(name, QByteArray());
    }
    for (const auto& variable : variables) {
        request.setVariable(variable.first, variable.second);
    }
    return request;
}

/** Does @a action with @a request, and expects that nothing is thrown: the listener catches it. */
template <typename Action>
// NOLINTNEXTLINE(readability-function-size): the nesting is the macro's
void expectNoThrow(const Action& action, BwaFcgiRequest* request)
{
    EXPECT_NO_THROW(action(request));
}

/** The reply of a service or a processor, which must delete the request and throw nothing. */
template <typename Receiver>
BwaTestReply replyOf(Receiver& receiver, const CgiVariables& variables)
{
    const auto process = [&receiver](BwaFcgiRequest* request) { receiver.processRequest(request); };
    return testRequest(variables).sendTo(
        [&process](BwaFcgiRequest* request) { expectNoThrow(process, request); });
}

/** The reply to a request that is passed to @a use, which must not delete it. */
template <typename Use>
BwaTestReply replyWhile(const Use& use, const CgiVariables& variables = CgiVariables(),
                        const QByteArray& body = QByteArray())
{
    return testRequest(variables, body).sendTo([&use](BwaFcgiRequest* request) {
        expectNoThrow(use, request);
        delete request;
    });
}

#endif
