// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "support/FcgiExchange.h"

#include "fcgi/BwaFcgiRequest.h"

#include <QTemporaryDir>

#include <stdexcept>
#include <utility>

namespace {

// One for the process: opening it takes longer than most exchanges.
struct ListeningSocket {
    QTemporaryDir folder;
    QByteArray path = folder.path().toLatin1() + "/socket";
    int descriptor = FCGX_OpenSocket(path.constData(), 5);
};

const ListeningSocket& listeningSocket()
{
    static const ListeningSocket socket;
    return socket;
}

} // namespace

FcgiExchange::FcgiExchange(const FcgiParameters& parameters, const QByteArray& body)
    : FcgiExchange(SentBytes{FcgiClient::requestBytes(parameters, body)})
{
}

FcgiExchange FcgiExchange::ofBytes(const QByteArray& bytes)
{
    return FcgiExchange(SentBytes{bytes});
}

FcgiExchange::FcgiExchange(const SentBytes& sent)
    : m_client(std::make_unique<FcgiClient>(listeningSocket().path))
    , m_request(nullptr)
{
    m_client->send(sent.bytes);
    m_client->shutDownSending(); // so that finishing the request does not wait for more

    FCGX_Init();
    auto request = std::make_unique<FCGX_Request>();
    FCGX_InitRequest(request.get(), listeningSocket().descriptor, 0);
    if (FCGX_Accept_r(request.get()) != 0) {
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
