// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "SampleRequest.h"

#include <fcgi_config.h>

#include <fastcgi.h>
#include <fcntl.h>
#include <unistd.h>

SampleRequest::SampleRequest(const std::string& pathInfo, const std::string& credentials)
    : m_nowhere(::open("/dev/null", O_WRONLY))
    , m_variables({"FCGI_ROLE=RESPONDER",
                   "QUERY_STRING=name=Ada",
                   "REQUEST_METHOD=GET",
                   "CONTENT_TYPE=",
                   "CONTENT_LENGTH=",
                   "SCRIPT_NAME=/api",
                   "PATH_INFO=" + pathInfo,
                   "REQUEST_URI=/api" + pathInfo + "?name=Ada",
                   "DOCUMENT_URI=/api" + pathInfo,
                   "DOCUMENT_ROOT=/usr/share/nginx/html",
                   "SERVER_PROTOCOL=HTTP/1.1",
                   "REQUEST_SCHEME=http",
                   "GATEWAY_INTERFACE=CGI/1.1",
                   "SERVER_SOFTWARE=nginx/1.22.1",
                   "REMOTE_ADDR=127.0.0.1",
                   "REMOTE_PORT=50422",
                   "REMOTE_USER=",
                   "SERVER_ADDR=127.0.0.1",
                   "SERVER_PORT=8080",
                   "SERVER_NAME=localhost",
                   "HTTP_HOST=benchmark",
                   "HTTP_USER_AGENT=curl/7.88.1",
                   "HTTP_ACCEPT=*/*",
                   "HTTP_COOKIE=theme=dark",
                   "HTTP_AUTHORIZATION=SESSION-TOKEN " + credentials})
    , m_request(new FCGX_Request)
    , m_isWrapped(false)
{
    for (std::string& variable : m_variables) {
        m_entries.push_back(&variable[0]);
    }
    m_entries.push_back(nullptr);
    FCGX_InitRequest(m_request, -1, 0);
    m_request->envp = m_entries.data();
    m_request->in = FCGX_CreateWriter(m_nowhere, 1, 8, FCGI_STDIN); // libfcgi offers no reader
    m_request->in->isClosed = 1;                                    // the body has ended
    m_request->out = FCGX_CreateWriter(m_nowhere, 1, 8192, FCGI_STDOUT);
    m_request->err = FCGX_CreateWriter(m_nowhere, 1, 512, FCGI_STDERR);
}

SampleRequest::~SampleRequest()
{
    if (!m_isWrapped) {
        FCGX_Finish_r(m_request);
        delete m_request;
    }
    ::close(m_nowhere);
}

std::unique_ptr<BwaFcgiRequest> SampleRequest::wrapped()
{
    auto request = std::make_unique<BwaFcgiRequest>(m_request);
    m_isWrapped = true;
    return request;
}
