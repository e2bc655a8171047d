// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Peers that speak slowly, in odd pieces, or not at all.

#include "FaultFixture.h"
#include "support/QtPrinters.h"

namespace {

const QByteArray form = "a=1&b=2&c=3&d=" + QByteArray(200, 'd');

class OddPeer : public FaultFixture
{
protected:
    static QByteArray wholeRequest() { return FcgiClient::requestBytes(formRequest(form), form); }

    // One that does not close the connection.
    std::unique_ptr<FcgiClient> answeredClient() const
    {
        auto client = std::make_unique<FcgiClient>(path());
        client->sendRequest(formRequest(form), form);
        EXPECT_EQ(client->readReply().out, QByteArray("4"));
        return client;
    }

    static void expectAnswer(FcgiClient& client)
    {
        client.shutDownSending();
        EXPECT_EQ(client.readReply().out, QByteArray("4"));
    }
};

} // namespace

TEST_F(OddPeer, GivenARequestCutInTwoAnywhereAnswersTheSame)
{
    ASSERT_GT(wholeRequest().size(), 512);
    start();

    serveWhile([&] {
        for (int cut = 1; cut <= 512; ++cut) {
            FcgiClient client(path());
            client.send(wholeRequest().left(cut));
            waitUntilRead(client);
            client.send(wholeRequest().mid(cut));
            expectAnswer(client);
        }
    });
}

TEST_F(OddPeer, GivenARequestByteByByteAnswersTheSame)
{
    start();

    serveWhile([&] {
        FcgiClient client(path());
        for (const char byte : wholeRequest()) {
            client.send(QByteArray(1, byte));
            waitUntilRead(client);
        }
        expectAnswer(client);
    });
}

TEST_F(OddPeer, WhenNobodyClosesTheConnectionsAreClosed)
{
    start();
    serveWhile([&] { expectGoodAnswer(); });
    const int before = openDescriptors();

    serveWhile([&] {
        std::vector<std::unique_ptr<FcgiClient>> clients(20);
        for (auto& client : clients) {
            client = answeredClient();
        }
        for (const auto& client : clients) {
            EXPECT_TRUE(client->isClosedByPeer());
        }
    });

    EXPECT_EQ(openDescriptors(), before);
}

// libfcgi gives a peer on a Unix socket two seconds to begin.
TEST_F(OddPeer, WhenAPeerSaysNothingServesTheNextOneAfterAWhile)
{
    start();

    serveWhile([&] {
        const FcgiClient silent(path());
        EXPECT_LT(millisecondsOf([&] { expectGoodAnswer(); }), 6000);
    });
}

TEST_F(OddPeer, WhenAPeerGoesAfterHalfARequestServesTheNextOne)
{
    start();

    serveWhile([&] {
        for (int sent = 1; sent < wholeRequest().size(); ++sent) {
            FcgiClient half(path());
            half.send(wholeRequest().left(sent));
        }
        expectGoodAnswer();
    });
}
