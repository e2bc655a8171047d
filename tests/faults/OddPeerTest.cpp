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

    // Waits until the listener has taken notice of the first @a sent bytes of the request. A record
    // is taken from the connection when its type is known; who is answered until then came later.
    void waitUntilNoticed(const FcgiClient& client, int sent)
    {
        if (sent < 8) {
            expectGoodAnswer();
        } else {
            waitUntilRead(client);
        }
    }

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
            waitUntilNoticed(client, cut);
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
        for (int sent = 0; sent < wholeRequest().size(); ++sent) {
            client.send(wholeRequest().mid(sent, 1));
            waitUntilNoticed(client, sent + 1);
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

    waitUntil([&] { return openDescriptors() <= before; }); // the last one may have been open then
}

TEST_F(OddPeer, WhenAPeerSaysNothingServesTheNextOneAtOnce)
{
    start();

    serveWhile([&] {
        const FcgiClient silent(path());
        EXPECT_LT(millisecondsOf([&] { expectGoodAnswer(); }), 1000);
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
