// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTOUTCOME_P_H
#define BWARESTOUTCOME_P_H

#include "rest/BwaRestProblem.h"
#include "rest/BwaRestReply.h"

/** Makes a reply of what a function of the application returns or throws. Any thread may use it. */
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

    /** Throws a BwaRestProblem. */
    [[noreturn]] static void refuse(int status, const char* detail)
    {
        throw BwaRestProblem(status, QString::fromLatin1(detail));
    }

    /** A 500. @a reason goes to the log only, not to the client. */
    static BwaRestReply failure(const QByteArray& reason)
    {
        BwaRestReply reply = BwaRestProblem(500);
        reply.m_complaints.append(reason);
        return reply;
    }
};

#endif
