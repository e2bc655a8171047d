// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Requests that are answered later, and whose client goes away meanwhile.

#include "BwaStringStreaming.h"
#include "support/ListenerFixture.h"
#include "support/QtPrinters.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <utility>

namespace {

const int abortRequest = 2;

class BwaFcgiListenerGoneClient : public ListenerFixture
{
public:
    BwaFcgiListenerGoneClient()
    {
        serve("/api", [this](BwaFcgiRequest* request) { whenCalled(request); });
    }
    ~BwaFcgiListenerGoneClient() override { delete held; }

protected:
    // A client whose request, with the body that it sends, is held.
    std::unique_ptr<FcgiClient> heldClient(const QByteArray& body = QByteArray())
    {
        start();
        auto client = std::make_unique<FcgiClient>(path());
        send(client.get(), body);
        return client;
    }

    void send(FcgiClient* client, const QByteArray& body = QByteArray())
    {
        client->send(FcgiClient::requestBytes(apiRequest("/x"), body, true));
        runEventLoopUntil([this] { return held != nullptr; });
    }

    void countCalls()
    {
        held->onGone([this] { ++calls; });
    }

    void serveUntilCalled()
    {
        runEventLoopUntil([this] { return calls > 0; });
    }

    static void serveForAMoment()
    {
        QElapsedTimer timer;
        timer.start();
        runEventLoopUntil([&] { return timer.elapsed() > 100; });
    }

    // Deletes the request that is held, and checks that the next one is held, too.
    void expectServing()
    {
        delete std::exchange(held, nullptr);
        FcgiClient next(path());
        send(&next);
        answerPathInfo(std::exchange(held, nullptr));
        EXPECT_EQ(next.readReply().out, QByteArray("/x"));
    }

    BwaFcgiRequest* held = nullptr; // owned
    int calls = 0;
    std::function<void(BwaFcgiRequest*)> whenCalled = [this](BwaFcgiRequest* request) {
        held = request;
    };
};

} // namespace

TEST_F(BwaFcgiListenerGoneClient, WhenTheClientStaysIsNotTold)
{
    const auto client = heldClient();
    countCalls();

    serveForAMoment();

    EXPECT_EQ(calls, 0);
    EXPECT_FALSE(held->isGone());
    EXPECT_TRUE(held->canWrite());
    answerPathInfo(std::exchange(held, nullptr));
    EXPECT_EQ(client->readReply().out, QByteArray("/x"));
    serveForAMoment();
    EXPECT_EQ(calls, 0);
}

TEST_F(BwaFcgiListenerGoneClient, WhenAUnixConnectionClosesIsToldOnce)
{
    auto client = heldClient();
    countCalls();

    client.reset();
    serveUntilCalled();
    serveForAMoment();

    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(held->isGone());
    EXPECT_FALSE(held->canWrite());
    expectServing();
}

TEST_F(BwaFcgiListenerGoneClient, WhenATcpConnectionClosesIsToldOnce)
{
    auto client = FcgiClient::onPort(startOnPort());
    send(client.get());
    countCalls();

    client.reset();
    serveUntilCalled();
    serveForAMoment();

    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(held->isGone());
}

TEST_F(BwaFcgiListenerGoneClient, WhenATcpConnectionIsResetIsTold)
{
    const auto client = FcgiClient::onPort(startOnPort());
    send(client.get());
    countCalls();

    client->abort();
    serveUntilCalled();

    EXPECT_TRUE(held->isGone());
}

TEST_F(BwaFcgiListenerGoneClient, WhenTheRequestIsAbortedIsToldOnce)
{
    const auto client = heldClient("body");
    countCalls();

    client->send(recordOf(1, abortRequest, QByteArray()));
    serveUntilCalled();
    client->send(recordOf(1, abortRequest, QByteArray()));
    serveForAMoment();

    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(held->isGone());
    expectServing();
}

TEST_F(BwaFcgiListenerGoneClient, WhenAbortedAfterALongBodyThatTheHookHasReadIsTold)
{
    whenCalled = [this](BwaFcgiRequest* request) {
        EXPECT_EQ(request->input()->read(100000).size(), 50000);
        held = request;
    };
    const auto client = heldClient(QByteArray(50000, 'x'));
    countCalls();

    client->send(recordOf(1, abortRequest, QByteArray()));
    serveUntilCalled();

    EXPECT_TRUE(held->isGone());
}

TEST_F(BwaFcgiListenerGoneClient, WhenAbortedAfterALongBodyThatWasReadLaterIsTold)
{
    const auto client = heldClient(QByteArray(50000, 'x'));
    countCalls();
    client->send(recordOf(1, abortRequest, QByteArray()));
    serveForAMoment();
    EXPECT_EQ(calls, 0); // nobody has looked behind the body

    runEventLoopUntil([this] { return held->readAvailable(1000).isEmpty(); });
    serveUntilCalled();

    EXPECT_TRUE(held->isGone());
}

TEST_F(BwaFcgiListenerGoneClient, WhenSetWithinTheHookIsTold)
{
    whenCalled = [this](BwaFcgiRequest* request) {
        held = request;
        countCalls();
    };
    auto client = heldClient();

    client.reset();
    serveUntilCalled();

    EXPECT_EQ(calls, 1);
}

TEST_F(BwaFcgiListenerGoneClient, WhenTheClientHadGoneBeforeItWasSetIsTold)
{
    auto client = heldClient();
    client.reset();
    runEventLoopUntil([this] { return held->isGone(); });

    countCalls();
    EXPECT_EQ(calls, 0); // not within the call
    serveUntilCalled();
    serveForAMoment();

    EXPECT_EQ(calls, 1);
}

TEST_F(BwaFcgiListenerGoneClient, WhenSetTwiceTellsTheSecondOnly)
{
    auto client = heldClient();
    held->onGone([] { ADD_FAILURE() << "the first is told"; });
    countCalls();

    client.reset();
    serveUntilCalled();

    EXPECT_EQ(calls, 1);
}

TEST_F(BwaFcgiListenerGoneClient, MayDeleteTheRequest)
{
    auto client = heldClient();
    const int before = connectedSockets();
    held->onGone([this] {
        delete std::exchange(held, nullptr);
        ++calls;
    });

    client.reset();
    serveUntilCalled();

    EXPECT_EQ(connectedSockets(), before - 2);
    expectServing();
}

TEST_F(BwaFcgiListenerGoneClient, WhenTheRequestHasBeenAnsweredIsNotTold)
{
    auto client = heldClient();
    countCalls();

    client.reset();
    answerPathInfo(std::exchange(held, nullptr));
    serveForAMoment();

    EXPECT_EQ(calls, 0);
    expectServing();
}

TEST_F(BwaFcgiListenerGoneClient, WhenTheListenerHasGoneIsNotTold)
{
    auto client = heldClient();
    countCalls();

    client.reset();
    waitUntil([this] { return held->isGone(); }); // told through the event loop, which does not run
    destroyListener();
    serveForAMoment();

    EXPECT_EQ(calls, 0);
    EXPECT_TRUE(held->isGone());
}

TEST_F(BwaFcgiListenerGoneClient, CanStillBeAnswered)
{
    auto client = heldClient();
    countCalls();
    client.reset();
    serveUntilCalled();

    held->out() << QString(1000000, QLatin1Char('x'));

    expectServing();
}

TEST_F(BwaFcgiListenerGoneClient, WhenManyGoAtOnceTellsEach)
{
    std::vector<BwaFcgiRequest*> requests;
    int gone = 0;
    whenCalled = [&](BwaFcgiRequest* request) {
        request->onGone([&gone, request] {
            ++gone;
            delete request;
        });
        requests.push_back(request);
    };
    start();
    std::vector<std::unique_ptr<FcgiClient>> clients(50);
    for (auto& client : clients) {
        client = std::make_unique<FcgiClient>(path());
        client->send(FcgiClient::requestBytes(apiRequest(), QByteArray(), true));
    }
    runEventLoopUntil([&] { return requests.size() == clients.size(); });

    clients.clear();

    runEventLoopUntil([&] { return gone == 50; });
    EXPECT_EQ(connectedSockets(), 0);
}
