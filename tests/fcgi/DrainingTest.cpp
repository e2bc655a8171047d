// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The orderly end: stopAccepting() and drained().

#include "support/ListenerFixture.h"
#include "support/QtPrinters.h"

#include <QElapsedTimer>

#include <fcgiapp.h>
#include <gtest/gtest.h>

#include <utility>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

const qint64 atOnce = 700;        // milliseconds; a connection that is silent has 1000
const qint64 aboutASecond = 3000; // milliseconds; the machine may be busy

class BwaFcgiListenerDraining : public ListenerFixture
{
public:
    BwaFcgiListenerDraining()
    {
        serve("/api", answerPathInfo);
        serve("/held", [this](BwaFcgiRequest* request) { held = request; });
    }
    ~BwaFcgiListenerDraining() override { delete held; }

protected:
    void SetUp() override
    {
        QObject::connect(&listener(), &BwaFcgiListener::drained, [this] { ++drained; });
    }

    // Until the listener has drained, as often as is expected.
    qint64 timeUntilDrained(int times = 1)
    {
        return millisecondsOf([&] { runEventLoopUntil([&] { return drained >= times; }); });
    }

    static void serveForAMoment()
    {
        QElapsedTimer timer;
        timer.start();
        runEventLoopUntil([&] { return timer.elapsed() > 100; });
    }

    std::unique_ptr<FcgiClient> heldClient()
    {
        auto client = std::make_unique<FcgiClient>(path());
        client->send(
            FcgiClient::requestBytes({{"SCRIPT_NAME", "/held"}, {"PATH_INFO", "/x"}}, "", true));
        runEventLoopUntil([this] { return held != nullptr; });
        return client;
    }

    // A client that has connected, been accepted, and says nothing.
    std::unique_ptr<FcgiClient> silentClient()
    {
        const int before = connectedSockets();
        auto client = std::make_unique<FcgiClient>(path());
        waitUntil([&] { return connectedSockets() == before + 2; });
        return client;
    }

    std::unique_ptr<FcgiClient> keptClient()
    {
        auto client = std::make_unique<FcgiClient>(path());
        client->send(FcgiClient::requestBytes(apiRequest("/kept"), QByteArray(), true));
        EXPECT_EQ(replyTo(*client).out, QByteArray("/kept"));
        return client;
    }

    void answerHeld() { answerPathInfo(std::exchange(held, nullptr)); }

    BwaFcgiRequest* held = nullptr; // owned
    int drained = 0;
};

} // namespace

TEST_F(BwaFcgiListenerDraining, WhenIdleIsDoneAtOnce)
{
    start();
    replyTo(apiRequest());

    listener().stopAccepting();

    EXPECT_EQ(drained, 0); // not within the call
    EXPECT_LT(timeUntilDrained(), atOnce);
    serveForAMoment();
    EXPECT_EQ(drained, 1);
    EXPECT_EQ(listeningErrors, 0);
    EXPECT_TRUE(listener().errorString().isNull());
}

TEST_F(BwaFcgiListenerDraining, WithoutListeningIsDoneAtOnce)
{
    listener().stopAccepting();

    EXPECT_LT(timeUntilDrained(), atOnce);
    serveForAMoment();
    EXPECT_EQ(drained, 1);
    start();
    EXPECT_EQ(replyTo(apiRequest("/x")).out, QByteArray("/x"));
}

TEST_F(BwaFcgiListenerDraining, WhenAskedForAgainIsReportedOnce)
{
    start();
    replyTo(apiRequest());

    listener().stopAccepting();
    waitUntil([] { return listeningSocket() < 0; });
    listener().stopAccepting();
    timeUntilDrained();
    serveForAMoment();

    EXPECT_EQ(drained, 1);
}

TEST_F(BwaFcgiListenerDraining, AtAnyMomentIsReportedOnceAndListeningAgainWorks)
{
    for (int round = 1; round <= 300; ++round) {
        start();
        if (round % 3 != 0) {
            ASSERT_EQ(replyTo(apiRequest("/x")).out, QByteArray("/x")) << round;
        }
        listener().stopAccepting();
        timeUntilDrained(round);
        ASSERT_EQ(drained, round);
    }
    serveForAMoment();
    EXPECT_EQ(drained, 300);
}

TEST_F(BwaFcgiListenerDraining, UntilItIsDoneListeningAgainIsIgnored)
{
    start();
    replyTo(apiRequest());
    listener().stopAccepting();
    waitUntil([] { return listeningSocket() < 0; });
    const Watchdog watchdog(20);

    start();
    timeUntilDrained();

    EXPECT_EQ(listeningSocket(), -1);
    start();
    EXPECT_EQ(replyTo(apiRequest("/x")).out, QByteArray("/x"));
}

TEST_F(BwaFcgiListenerDraining, BeforeItIsReportedListeningIsIgnored)
{
    const Watchdog watchdog(20);

    listener().stopAccepting();
    start();
    timeUntilDrained();

    EXPECT_FALSE(threadNames().contains("BwaFcgiListener"));
}

TEST_F(BwaFcgiListenerDraining, FromItsSlotListeningAgainWorks)
{
    QObject::connect(&listener(), &BwaFcgiListener::drained, [this] { start(); });
    start();
    replyTo(apiRequest());

    listener().stopAccepting();
    timeUntilDrained();

    EXPECT_EQ(replyTo(apiRequest("/x")).out, QByteArray("/x"));
}

// The accepting thread waits for room, so nobody accepts them before.
TEST_F(BwaFcgiListenerDraining, ServesThoseWhoHaveConnected)
{
    listener().setMostWaiting(1);
    start();
    std::vector<std::unique_ptr<FcgiClient>> clients(20);
    for (auto& client : clients) {
        client = std::make_unique<FcgiClient>(path());
        client->sendRequest(apiRequest("/x"));
    }
    EXPECT_LT(connectedSockets(), 30);

    listener().stopAccepting();
    timeUntilDrained();

    for (const auto& client : clients) {
        EXPECT_EQ(client->readReply().out, QByteArray("/x"));
    }
    EXPECT_EQ(connectedSockets(), 20); // the clients' own
}

TEST_F(BwaFcgiListenerDraining, WaitsForWhatIsOpen)
{
    start();
    const auto client = heldClient();

    listener().stopAccepting();
    serveForAMoment();
    EXPECT_EQ(drained, 0);
    answerHeld();

    EXPECT_LT(timeUntilDrained(), atOnce);
    EXPECT_EQ(client->readReply().out, QByteArray("/x"));
    EXPECT_TRUE(client->isClosedByPeer());
}

TEST_F(BwaFcgiListenerDraining, StillTellsThatAClientHasGone)
{
    start();
    auto client = heldClient();
    held->onGone([this] { delete std::exchange(held, nullptr); });
    listener().stopAccepting();
    serveForAMoment();

    client.reset();

    EXPECT_LT(timeUntilDrained(), atOnce);
    EXPECT_EQ(held, nullptr);
}

TEST_F(BwaFcgiListenerDraining, ClosesIdleConnectionsThatWereKept)
{
    start();
    const auto client = keptClient();

    listener().stopAccepting();

    EXPECT_LT(timeUntilDrained(), atOnce);
    EXPECT_TRUE(client->isClosedByPeer());
}

TEST_F(BwaFcgiListenerDraining, ServesWhatHasComeOnAKeptConnection)
{
    listener().setMostWaiting(1);
    start();
    const auto client = keptClient();
    const auto first = std::make_unique<FcgiClient>(path());
    first->sendRequest(apiRequest("/first"));
    waitUntil([&] { return unreadBytes(*first) == 0; }); // and now there is no room
    client->send(FcgiClient::requestBytes(apiRequest("/second"), QByteArray(), true));

    listener().stopAccepting();
    timeUntilDrained();

    EXPECT_EQ(first->readReply().out, QByteArray("/first"));
    EXPECT_EQ(client->readReply().out, QByteArray("/second"));
}

TEST_F(BwaFcgiListenerDraining, WaitsForSilentConnectionsNoLongerThanASecond)
{
    start();
    const auto silent = silentClient();
    const auto half = silentClient();
    half->send(FcgiClient::requestBytes(apiRequest()).left(20));
    waitUntil([&] { return unreadBytes(*half) == 0; });

    listener().stopAccepting();

    EXPECT_LT(timeUntilDrained(), aboutASecond);
    EXPECT_TRUE(silent->isClosedByPeer());
    EXPECT_TRUE(half->isClosedByPeer());
}

TEST_F(BwaFcgiListenerDraining, ServesAConnectionThatSpeaksInTime)
{
    start();
    const auto silent = silentClient();
    listener().stopAccepting();
    waitUntil([] { return listeningSocket() < 0; });

    silent->send(FcgiClient::requestBytes(apiRequest("/x"), QByteArray(), true));

    EXPECT_EQ(replyTo(*silent).out, QByteArray("/x"));
    EXPECT_LT(timeUntilDrained(), atOnce);
}

TEST_F(BwaFcgiListenerDraining, WhenTheSocketFailsIsReportedAllTheSame)
{
    start();
    const auto client = heldClient();

    shutdown(listeningSocket(), SHUT_RD);
    listener().stopAccepting(); // before or after the failure has been noticed
    answerHeld();
    timeUntilDrained();

    EXPECT_LE(listeningErrors, 1);
    EXPECT_EQ(client->readReply().out, QByteArray("/x"));
}

// Destroying

TEST_F(BwaFcgiListenerDraining, WhenDoneCanBeDestroyed)
{
    start();
    replyTo(apiRequest());
    listener().stopAccepting();
    timeUntilDrained();
    const Watchdog watchdog(20);

    EXPECT_LT(millisecondsOf([this] { destroyListener(); }), atOnce);
    waitUntil([] { return !threadNames().contains("BwaFcgiListener"); });
}

TEST_F(BwaFcgiListenerDraining, CanBeDestroyedMeanwhile)
{
    start();
    const auto client = heldClient();
    const auto silent = silentClient();
    listener().stopAccepting();
    waitUntil([] { return listeningSocket() < 0; });
    const Watchdog watchdog(20);

    EXPECT_LT(millisecondsOf([this] { destroyListener(); }), atOnce);

    EXPECT_TRUE(silent->isClosedByPeer());
    answerHeld();
    EXPECT_EQ(client->readReply().out, QByteArray("/x"));
    EXPECT_EQ(drained, 0);
}

TEST_F(BwaFcgiListenerDraining, CanBeDestroyedAtOnce)
{
    start();
    replyTo(apiRequest());
    const Watchdog watchdog(20);

    listener().stopAccepting();
    EXPECT_LT(millisecondsOf([this] { destroyListener(); }), atOnce);

    QCoreApplication::processEvents();
    EXPECT_EQ(drained, 0);
}

// A socket that was handed over

namespace {

class BwaFcgiListenerDrainingHandedOverSocket : public BwaFcgiListenerDraining
{
protected:
    void TearDown() override { close(manager); }

    // The service manager's own descriptor of the socket.
    const int manager = FCGX_OpenSocket(path().constData(), 5);
};

} // namespace

TEST_F(BwaFcgiListenerDrainingHandedOverSocket, LeavesItToTheNextProcess)
{
    const StandardInput input(dup(manager));
    listener().listen();
    EXPECT_EQ(replyTo(apiRequest("/x")).out, QByteArray("/x"));
    listener().stopAccepting();
    timeUntilDrained();
    destroyListener();

    FcgiClient client(path());

    pollfd entry = {manager, POLLIN, 0};
    ASSERT_EQ(poll(&entry, 1, 10000), 1);
    EXPECT_EQ(entry.revents, POLLIN);
    const int connection = accept(manager, nullptr, nullptr);
    EXPECT_GE(connection, 0);
    close(connection);
}

// Those who connect while nobody accepts are served by the next one.
TEST_F(BwaFcgiListenerDrainingHandedOverSocket, LosesNoRequestBetweenTwoListeners)
{
    {
        const StandardInput input(dup(manager));
        listener().listen();
        replyTo(apiRequest());
        listener().stopAccepting();
        timeUntilDrained();
        destroyListener();
    }
    FcgiClient client(path());
    client.sendRequest(apiRequest("/x"));
    const StandardInput input(dup(manager));

    listener().listen();

    EXPECT_EQ(replyTo(client).out, QByteArray("/x"));
    EXPECT_EQ(listeningErrors, 0);
}
