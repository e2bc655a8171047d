// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef FCGIEXCHANGE_H
#define FCGIEXCHANGE_H

#include "support/FcgiClient.h"

#include <fcgiapp.h>

#include <memory>

class BwaFcgiRequest;

/**
 * One FastCGI request accepted from a real socket, without a second thread: for tests of what goes
 * over the connection. Other tests need no connection; see TestReplies.h.
 *
 * The client's end has sent everything before the request is accepted, so parameters, body and
 * reply must fit into the socket's buffers (about 100 KB each way).
 */
class FcgiExchange
{
public:
    explicit FcgiExchange(const FcgiParameters& parameters = FcgiParameters(),
                          const QByteArray& body = QByteArray());
    ~FcgiExchange();
    /** Sends @a bytes unchanged; they must contain a request that can be accepted. */
    static FcgiExchange ofBytes(const QByteArray& bytes);

    /** The accepted raw request, made by plain new; the caller owns it. Only one of the two, once.
     */
    FCGX_Request* takeFcgxRequest();
    /** The accepted request as the library wraps it; the caller owns it. */
    BwaFcgiRequest* takeRequest();
    /** Everything that came back; to be called when the request has been deleted. */
    FcgiReply reply();
    /** The front server's end, for tests that close or damage it. */
    FcgiClient& client() { return *m_client; }

private:
    struct SentBytes {
        QByteArray bytes;
    };

    explicit FcgiExchange(const SentBytes& sent);

    std::unique_ptr<FcgiClient> m_client;
    FCGX_Request* m_request; // owned until taken
};

#endif
