// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Web servers that take nothing of a reply, or send nothing more of a body.

#include "BwaStringStreaming.h"
#include "support/ListenerFixture.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <thread>
#include <utility>

namespace {

const int standardInput = 5;
const int standardOutput = 6;
const int transferTimeout = 100; // milliseconds
const int headerSize = 8;        // bytes of a record's header

// The bytes of content that the record at a position announces.
int contentSize(const QByteArray& records, int position)
{
    return static_cast<quint8>(records.at(position + 4)) * 256 +
        static_cast<quint8>(records.at(position + 5));
}

// The request on a connection that is kept, without the end of its input.
QByteArray openRequest(const QByteArray& pathInfo)
{
    return FcgiClient::requestBytes(apiRequest(pathInfo), QByteArray(), true).chopped(8);
}

// A request to /slow is handled by the test, one to /held is held; others are answered.
class BwaFcgiListenerSlowPeer : public TransportFixture
{
public:
    BwaFcgiListenerSlowPeer()
    {
        serve("/api", [this](BwaFcgiRequest* request) {
            if (request->fullPath() == QLatin1String("/api/slow")) {
                handle(request);
            } else if (request->fullPath() == QLatin1String("/api/held")) {
                held = request;
            } else {
                answerPathInfo(request);
            }
        });
    }
    ~BwaFcgiListenerSlowPeer() override { delete held; }

protected:
    std::unique_ptr<FcgiClient> heldClient()
    {
        startListening();
        auto client = connectedClient();
        client->sendRequest(apiRequest("/held"));
        runEventLoopUntil([this] { return held != nullptr; });
        return client;
    }

    void expectOthersAreServed()
    {
        const qint64 milliseconds = millisecondsOf([this] {
            const auto client = connectedClient();
            client->sendRequest(apiRequest("/other"));
            EXPECT_EQ(replyTo(*client).out, QByteArray("/other"));
        });
        EXPECT_LT(milliseconds, 1000);
    }

    // Writes pieces of 4000 bytes as long as the web server takes them; how many bytes that is.
    int writeWhilePossible()
    {
        const QByteArray piece(4000, 'x');
        int written = 0;
        while (held->canWrite() && written < 64 * 1024 * 1024) {
            held->out().write(piece.constData(), piece.size());
            held->out().flush();
            written += static_cast<int>(piece.size());
        }
        return written;
    }

    BwaFcgiRequest* held = nullptr; // owned
    std::function<void(BwaFcgiRequest*)> handle;
};

} // namespace

TEST_P(BwaFcgiListenerSlowPeer, ThatDoesNotReadCannotBeWrittenToUntilItDoes)
{
    const auto client = heldClient();
    held->out() << "Content-Type: text/plain\n\n";

    const int written = writeWhilePossible();
    ASSERT_LT(written, 64 * 1024 * 1024);
    EXPECT_FALSE(held->canWrite());
    expectOthersAreServed();
    serveWhile([&] { receivedBytes(*client, written / 2); });

    runEventLoopUntil([this] { return held->canWrite(); });
    EXPECT_FALSE(held->isGone());
}

TEST_P(BwaFcgiListenerSlowPeer, ThatReadsAtLastGetsAllThatWasWritten)
{
    const auto client = heldClient();
    const int written = writeWhilePossible();
    FcgiReply reply;
    std::thread reader([&] { reply = client->readReply(); });

    delete std::exchange(held, nullptr);
    reader.join();

    EXPECT_EQ(reply.out, QByteArray(written, 'x'));
    EXPECT_TRUE(reply.ended);
}

TEST_P(BwaFcgiListenerSlowPeer, ThatTakesNothingOfAReplyEndsThatRequestOnly)
{
    bool isGood = true;
    qint64 milliseconds = -1;
    handle = [&](BwaFcgiRequest* request) {
        const QByteArray megabyte(1024 * 1024, 'x');
        milliseconds = millisecondsOf([&] {
            for (int count = 0; count < 64; ++count) {
                request->out().write(megabyte.constData(), megabyte.size());
            }
            isGood = request->out().good();
            delete request;
        });
    };
    listener().setTransferTimeout(transferTimeout);
    startListening();
    const auto client = connectedClient();

    client->sendRequest(apiRequest("/slow"));
    runEventLoopUntil([&] { return milliseconds >= 0; });

    EXPECT_FALSE(isGood);
    EXPECT_GE(milliseconds, transferTimeout - 1);
    EXPECT_LT(milliseconds, 5000);
    expectOthersAreServed();
    FcgiReply reply;
    serveWhile([&] { reply = client->readReply(); });
    EXPECT_FALSE(reply.ended);
}

TEST_P(BwaFcgiListenerSlowPeer, ThatReadsAfterAFailedWriteGetsNothingBehindTheCutRecord)
{
    std::unique_ptr<FcgiClient> client;
    QByteArray received;
    handle = [&](BwaFcgiRequest* request) {
        const QByteArray megabytes(64 * 1024 * 1024, 'x');
        request->out().write(megabytes.constData(), megabytes.size());
        received = receivedBytes(*client, 1024 * 1024); // so there is room for what must not follow
        delete request;
    };
    listener().setTransferTimeout(transferTimeout);
    startListening();
    client = connectedClient();

    client->sendRequest(apiRequest("/slow"));
    runEventLoopUntil([&] { return !received.isEmpty(); });
    received += receivedBytes(*client, 64 * 1024 * 1024);

    int position = 0;
    while (position + headerSize <= received.size()) {
        ASSERT_EQ(received.at(position + 1), standardOutput) << "at " << position;
        position += headerSize + contentSize(received, position) + received.at(position + 6);
    }
}

TEST_P(BwaFcgiListenerSlowPeer, ThatStallsInABodyCutsItShort)
{
    QByteArray body;
    handle = [&](BwaFcgiRequest* request) {
        body = request->input()->read(1000);
        answerPathInfo(request);
    };
    listener().setTransferTimeout(transferTimeout);
    startListening();
    const auto client = connectedClient();

    client->send(openRequest("/slow") + recordOf(1, standardInput, "body").chopped(1));

    const qint64 milliseconds =
        millisecondsOf([&] { EXPECT_EQ(replyTo(*client).out, QByteArray("/slow")); });
    EXPECT_EQ(body, QByteArray("bod"));
    EXPECT_GE(milliseconds, transferTimeout - 1);
    EXPECT_TRUE(client->isClosedByPeer());
    expectOthersAreServed();
}

INSTANTIATE_TEST_SUITE_P(Transports, BwaFcgiListenerSlowPeer, testing::Bool(),
                         [](const auto& info) { return info.param ? "Tcp" : "Unix"; });

// What a hook leaves

namespace {

struct Beginning {
    const char* name;
    const char* text;
};

class BwaFcgiListenerRequestOutlivingItsHook
    : public ListenerFixture
    , public testing::WithParamInterface<Beginning>
{
};

} // namespace

TEST_P(BwaFcgiListenerRequestOutlivingItsHook, SendsWhatHasBeenWritten)
{
    BwaFcgiRequest* held = nullptr;
    serve("/api", [&](BwaFcgiRequest* request) {
        request->out() << GetParam().text;
        held = request;
    });
    start();
    FcgiClient client(path());
    client.sendRequest(apiRequest());
    runEventLoopUntil([&] { return held != nullptr; });

    const QByteArray text(GetParam().text);
    const int padding = (8 - static_cast<int>(text.size()) % 8) % 8; // as libfcgi pads
    const QByteArray sent = recordOf(1, standardOutput, text, padding).chopped(padding);
    EXPECT_EQ(receivedBytes(client, static_cast<int>(sent.size())), sent);

    receivedBytes(client, padding);
    held->out() << "rest";
    delete held;
    EXPECT_EQ(client.readReply().out, QByteArray("rest"));
}

INSTANTIATE_TEST_SUITE_P(Cases, BwaFcgiListenerRequestOutlivingItsHook,
                         testing::Values(Beginning{"HalfAHeader", "Content-Type: text/plain\n"},
                                         Beginning{"AHeader", "Content-Type: text/plain\n\n"},
                                         Beginning{"AHeaderAndPartOfABody",
                                                   "Content-Type: text/plain\n\npart"}),
                         [](const auto& info) { return std::string(info.param.name); });
