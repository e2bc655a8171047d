// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "support/FcgiExchange.h"

#include "fcgi/BwaFcgiRequest.h"

#include <stdexcept>
#include <utility>

#include <unistd.h>

FcgiExchange::FcgiExchange(const FcgiParameters& parameters, const QByteArray& body)
    : FcgiExchange(SentBytes{FcgiClient::requestBytes(parameters, body)})
{
}

FcgiExchange FcgiExchange::ofBytes(const QByteArray& bytes)
{
    return FcgiExchange(SentBytes{bytes});
}

FcgiExchange::FcgiExchange(const SentBytes& sent)
    : m_listeningSocket(-1)
    , m_request(nullptr)
{
    const QByteArray path = m_folder.path().toLatin1() + "/socket";
    m_listeningSocket = FCGX_OpenSocket(path.constData(), 5);
    m_client = std::make_unique<FcgiClient>(path);
    m_client->send(sent.bytes);
    m_client->shutDownSending(); // so that finishing the request does not wait for more

    FCGX_Init();
    auto request = std::make_unique<FCGX_Request>();
    FCGX_InitRequest(request.get(), m_listeningSocket, 0);
    if (FCGX_Accept_r(request.get()) != 0) {
        close(m_listeningSocket);
        throw std::runtime_error("the request was not accepted");
    }
    m_request = request.release();
}

FcgiExchange::~FcgiExchange()
{
    if (m_request) {
        FCGX_Free(m_request, 1);
        delete m_request;
    }
    close(m_listeningSocket);
}

FCGX_Request* FcgiExchange::takeFcgxRequest()
{
    return std::exchange(m_request, nullptr);
}

BwaFcgiRequest* FcgiExchange::takeRequest()
{
    return new BwaFcgiRequest(takeFcgxRequest());
}

FcgiReply FcgiExchange::reply()
{
    return m_client->readReply();
}
