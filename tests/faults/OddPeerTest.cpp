// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Peers that speak slowly, in odd pieces, or nonsense.

#include "FaultFixture.h"
#include "support/QtPrinters.h"

#include <algorithm>
#include <random>

#include <sys/socket.h>

// libfcgi loses 48 bytes for every management record of a type that it does not know.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" Q_DECL_EXPORT const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfcgi.so";
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

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

using Random = std::mt19937;

int below(Random& random, int limit)
{
    return std::uniform_int_distribution<int>(0, limit - 1)(random);
}

// Lengths of more than 8 MiB are left out: libfcgi ends the process when it gets no memory for
// them.
char anyByte(Random& random)
{
    return static_cast<char>(below(random, 0x81));
}

// Some bytes are replaced, taken out or doubled, and often the end is missing.
QByteArray damaged(QByteArray bytes, Random& random)
{
    const int damages = 1 + below(random, 4);
    for (int count = 0; count < damages; ++count) {
        const int position = below(random, std::min<int>(bytes.size(), 60));
        switch (below(random, 4)) {
        case 0:
            bytes.remove(position, 1 + below(random, 8));
            break;
        case 1:
            bytes.insert(position, anyByte(random));
            break;
        case 2:
            bytes.insert(position, bytes.mid(below(random, bytes.size()), 16));
            break;
        default:
            bytes[position] = anyByte(random);
        }
    }
    return below(random, 2) ? bytes.left(1 + below(random, bytes.size())) : bytes;
}

void sendAndClose(const QByteArray& path, const QByteArray& bytes)
{
    const FcgiClient client(path);
    // The application may have closed the connection already.
    send(client.descriptor(), bytes.constData(), static_cast<std::size_t>(bytes.size()),
         MSG_NOSIGNAL | MSG_DONTWAIT);
}

void sendDamaged(const QByteArray& path, const QByteArray& request, int times, Random& random)
{
    for (int count = 0; count < times; ++count) {
        sendAndClose(path, damaged(request, random));
    }
}

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

TEST_F(OddPeer, GivenDamagedRecordsServesTheNextOne)
{
    const unsigned int seed = std::random_device()();
    RecordProperty("seed", std::to_string(seed));
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    start();
    serveWhile([&] { expectGoodAnswer(); });
    const int before = openDescriptors();

    serveWhile([&] {
        for (int round = 0; round < faultRounds(); ++round) {
            sendDamaged(path(), wholeRequest(), 100, random);
            expectGoodAnswer();
        }
    });

    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(listeningErrors, 0);
}
