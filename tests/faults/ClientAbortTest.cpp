// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Connections that are reset, one after another, wherever that hurts.

#include "FaultFixture.h"
#include "cgi/BwaCgiRequest.h"
#include "support/QtPrinters.h"

#include <sys/socket.h>

namespace {

struct Place {
    const char* name;
    QByteArray sent;
    int received; // bytes of the reply that are waited for
};

const QByteArray body(3000, 'b');

QByteArray uploadTo(const QByteArray& pathInfo)
{
    return FcgiClient::requestBytes({{"SCRIPT_NAME", "/abort"},
                                     {"PATH_INFO", pathInfo},
                                     {"CONTENT_TYPE", "text/plain"},
                                     {"CONTENT_LENGTH", QByteArray::number(body.size())}},
                                    body);
}

// Reads the body and answers with more than a connection holds.
void answerAtLength(BwaFcgiRequest* request)
{
    request->cgiRequest()->processBodyContent();
    const QByteArray piece(10000, 'r');
    for (int count = 0; count < 1000; ++count) {
        request->out().write(piece.constData(), piece.size());
    }
    delete request;
}

class ClientAbort
    : public FaultFixture
    , public testing::WithParamInterface<Place>
{
protected:
    // A client that goes away where the parameter says.
    void abortOnce(quint16 port)
    {
        const auto client = FcgiClient::onPort(port);
        client->send(GetParam().sent);
        if (GetParam().received > 0) {
            QByteArray beginning(GetParam().received, '\0');
            EXPECT_EQ(recv(client->descriptor(), beginning.data(),
                           static_cast<std::size_t>(beginning.size()), MSG_WAITALL),
                      beginning.size());
        }
        client->abort();
    }
};

} // namespace

TEST_P(ClientAbort, LeavesNothingBehindAndTheNextIsServed)
{
    serve("/abort", answerAtLength);
    const quint16 port = startOnPort();
    serveWhile([&] { expectGoodAnswer(*FcgiClient::onPort(port)); });
    const int before = openDescriptors();

    serveWhile([&] {
        for (int round = 0; round < faultRounds(); ++round) {
            abortOnce(port);
        }
        expectGoodAnswer(*FcgiClient::onPort(port));
    });

    waitUntil([&] { return openDescriptors() <= before; }); // the last one may have been open then
    EXPECT_EQ(listeningErrors, 0);
}

INSTANTIATE_TEST_SUITE_P(Places, ClientAbort,
                         testing::Values(Place{"BeforeAnything", QByteArray(), 0},
                                         Place{"InTheParameters", uploadTo("/p").left(50), 0},
                                         Place{"InTheBody", uploadTo("/b").left(1000), 0},
                                         Place{"AfterTheRequest", uploadTo("/r"), 0},
                                         Place{"InTheReply", uploadTo("/a"), 20000}),
                         [](const auto& info) { return info.param.name; });
