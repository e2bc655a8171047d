// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGIGUARD_P_H
#define BWAFCGIGUARD_P_H

#include "fcgi/BwaFcgiRequest.h"

/**
 * Knows, as long as it exists, whether a request has been deleted. Guards of one request nest: the
 * listener's is the outermost, then come those of the dispatchers, then that of the processor.
 */
class BwaFcgiRequest::Guard
{
    Q_DISABLE_COPY(Guard)

public:
    /**
     * Calls @a handle, which may delete @a request. When it throws a std::exception, calls
     * @a answer with it, or, when the request has been deleted already, logs it.
     *
     * @return whether nothing was thrown and the request still lives
     */
    template <typename Handle, typename Answer>
    static bool run(BwaFcgiRequest* request, Handle handle, Answer answer)
    {
        const Guard guard(request);
        try {
            handle();
            return guard.m_request;
        } catch (const std::exception& exception) {
            if (guard.m_request) {
                answer(exception);
            } else {
                logException(exception);
            }
        }
        return false;
    }

private:
    friend class BwaFcgiRequest;

    explicit Guard(BwaFcgiRequest* request)
        : m_request(request)
        , m_outer(request->m_guard)
    {
        request->m_guard = this;
    }
    ~Guard()
    {
        if (m_request) {
            m_request->m_guard = m_outer;
        }
    }

    BwaFcgiRequest* m_request; // not owned; null once deleted
    Guard* m_outer;            // not owned; the next one of the same request, or null
};

#endif
