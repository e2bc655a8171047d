// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef SAMPLEREQUEST_H
#define SAMPLEREQUEST_H

#include "fcgi/BwaFcgiRequest.h"

#include <fcgiapp.h>

#include <memory>
#include <string>
#include <vector>

/** A raw request with the variables that a web server sends, and with streams that lead nowhere. */
class SampleRequest
{
    Q_DISABLE_COPY(SampleRequest)

public:
    /** @a credentials: those of a session, "id:token". */
    explicit SampleRequest(const std::string& pathInfo, const std::string& credentials = ":");
    ~SampleRequest();

    FCGX_Request* fcgxRequest() { return m_request; }
    /** The request as the library's; to be called once. */
    std::unique_ptr<BwaFcgiRequest> wrapped();

private:
    int m_nowhere;
    std::vector<std::string> m_variables;
    std::vector<char*> m_entries; // into m_variables, and a null
    FCGX_Request* m_request;      // owned until it is wrapped
    bool m_isWrapped;
};

#endif
