// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTOUTCOME_P_H
#define BWARESTOUTCOME_P_H

#include "rest/BwaRestProblem.h"
#include "rest/BwaRestReply.h"

/** Makes a reply of whatever an application's function does. Any thread may use it. */
class BwaRestOutcome
{
public:
    /** What @a function returns, or the reply to what it throws. */
    template <class Function>
    static BwaRestReply of(const Function& function)
    {
        try {
            return function();
        } catch (const BwaRestProblem& problem) {
            return problem;
        } catch (const std::exception& exception) {
            return failure(exception.what());
        }
    }

    /** Ends the function with a problem. */
    [[noreturn]] static void refuse(int status, const char* detail)
    {
        throw BwaRestProblem(status, QString::fromLatin1(detail));
    }

    /** 500; @a reason is for the log alone, where the client's reply says nothing of it. */
    static BwaRestReply failure(const QByteArray& reason)
    {
        BwaRestReply reply = BwaRestProblem(500);
        reply.m_complaints.append(reason);
        return reply;
    }
};

#endif
