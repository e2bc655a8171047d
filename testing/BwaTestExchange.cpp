// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Only libfcgi can make an FCGX_Request, by accepting one from a connection. So this sends an empty
// request through a pair of sockets, closes the sending end, and has libfcgi accept the request.
// Then it points the variables and the three streams to memory: from then on nothing is sent, and
// neither a large body nor a large reply can block.

#include "testing/BwaTestExchange_p.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

#include <sys/socket.h>
#include <unistd.h>

namespace {

// BEGIN_REQUEST with the role RESPONDER, and the end of the parameters.
const unsigned char emptyRequest[] = {1, 1, 0, 1, 0, 8, 0, 0, 0, 1, 0, 0,
                                      0, 0, 0, 0, 1, 4, 0, 1, 0, 0, 0, 0};

std::runtime_error failure(const char* what)
{
    return std::runtime_error(std::string("BwaTestRequest: ") + what + ": " + std::strerror(errno));
}

// FCGX_Init() sets handlers for these signals. This puts back those that the test program has set.
bool initializeLibfcgi()
{
    struct sigaction terminate = {};
    struct sigaction user = {};
    sigaction(SIGTERM, nullptr, &terminate);
    sigaction(SIGUSR1, nullptr, &user);
    FCGX_Init();
    sigaction(SIGTERM, &terminate, nullptr);
    sigaction(SIGUSR1, &user, nullptr);
    return true;
}

// A connection from which an empty request can be read.
int connectionWithEmptyRequest()
{
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        throw failure("no pair of sockets");
    }
    const ssize_t sent = write(ends[1], emptyRequest, sizeof emptyRequest);
    close(ends[1]);
    if (sent != static_cast<ssize_t>(sizeof emptyRequest)) {
        close(ends[0]);
        throw failure("no request sent");
    }
    return ends[0];
}

FCGX_Request* acceptEmptyRequest()
{
    static const bool initialized = initializeLibfcgi();
    Q_UNUSED(initialized)
    const int connection = connectionWithEmptyRequest();
    auto request = std::make_unique<FCGX_Request>();
    FCGX_InitRequest(request.get(), -1, 0);
    request->ipcFd = connection; // as if it had been kept open after another request
    request->keepConnection = 1;
    if (FCGX_Accept_r(request.get()) != 0) {
        throw failure("no request accepted");
    }
    return request.release();
}

void endInput(FCGX_Stream* stream)
{
    stream->isClosed = 1;
}

} // namespace

std::shared_ptr<BwaTestExchange> BwaTestExchange::begin(const QList<QByteArray>& variables,
                                                        const QByteArray& body)
{
    std::shared_ptr<BwaTestExchange> exchange(new BwaTestExchange(variables, body));
    exchange->m_self = exchange;
    return exchange;
}

BwaTestExchange::BwaTestExchange(const QList<QByteArray>& variables, const QByteArray& body)
    : m_variables(variables)
    , m_body(body)
    , m_request(acceptEmptyRequest())
{
    for (QByteArray& variable : m_variables) {
        m_entries.append(variable.data());
    }
    m_entries.append(nullptr);
    m_request->envp = m_entries.data();
    redirectInput();
    redirectOutput(m_request->out, &m_out);
    redirectOutput(m_request->err, &m_err);
}

void BwaTestExchange::redirectInput()
{
    FCGX_Stream* const stream = m_request->in;
    stream->rdNext = reinterpret_cast<unsigned char*>(m_body.data());
    stream->stop = stream->rdNext + m_body.size();
    stream->wrNext = stream->stop;
    stream->stopUnget = stream->rdNext;
    stream->fillBuffProc = &endInput;
}

// libfcgi does not use stopUnget in a stream that writes, so it holds the sink.
void BwaTestExchange::redirectOutput(FCGX_Stream* stream, Sink* sink)
{
    sink->exchange = this;
    stream->wrNext = sink->buffer;
    stream->stop = sink->buffer + sizeof sink->buffer;
    stream->rdNext = stream->stop;
    stream->stopUnget = reinterpret_cast<unsigned char*>(sink);
    stream->emptyBuffProc = &BwaTestExchange::takeWritten;
}

// Called when the buffer is full, when it is flushed, and when the stream is closed.
void BwaTestExchange::takeWritten(FCGX_Stream* stream, int doClose)
{
    auto* const sink = reinterpret_cast<Sink*>(stream->stopUnget);
    sink->bytes.append(reinterpret_cast<const char*>(sink->buffer),
                       static_cast<int>(stream->wrNext - sink->buffer));
    stream->wrNext = sink->buffer;
    if (doClose && sink == &sink->exchange->m_out) {
        sink->exchange->complete();
    }
}

// Called when the reply is closed, which is the request's last access to this object.
void BwaTestExchange::complete()
{
    const std::shared_ptr<BwaTestExchange> self = std::move(m_self);
    m_self.reset();
    if (m_whenComplete) {
        m_whenComplete();
    }
}
