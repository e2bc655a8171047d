// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "support/ListenerFixture.h"
#include "support/QtPrinters.h"
#include "support/Skips.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <random>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace {

const qint64 atOnce = 1000;   // milliseconds; the machine may be busy
const qint64 promised = 3000; // milliseconds, with connections that are stuck

// A request that stops in the middle of its parameters.
QByteArray halfRequest()
{
    const QByteArray whole =
        FcgiClient::requestBytes({{"SCRIPT_NAME", "/api"}, {"A", "0123456789"}});
    return whole.left(8 + 8 + 8 + 20); // the first record, the header of the second and 20 bytes
}

class BwaFcgiListenerStopping : public ListenerFixture
{
protected:
    // The descriptors that are open before anything listens are those after it, too.
    void SetUp() override { m_before = openDescriptors(); }

    // Destroys the listener, which must not take long, and checks that nothing is left of it.
    void destroyWithin(qint64 milliseconds)
    {
        const Watchdog watchdog(20);

        EXPECT_LT(millisecondsOf([this] { destroyListener(); }), milliseconds);
        // The system shows a thread for a moment after it has ended.
        waitUntil([] { return !threadNames().contains("BwaFcgiListener"); });
        QCoreApplication::processEvents();
        EXPECT_EQ(listeningErrors, 0);
    }

    FcgiReply replyFrom(const QString& address)
    {
        FcgiClient client(address.toLatin1());
        client.sendRequest(apiRequest());
        client.shutDownSending();
        return replyTo(client);
    }

    int openedDescriptors() const { return openDescriptors() - m_before; }

private:
    int m_before = 0;
};

// The wait status of a child process that runs body.
int statusOfChild(const std::function<int()>& body)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(20);
        _exit(body());
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

// In a child process: listens, and hands the listener to work.
int listenAndThen(const QString& address, const std::function<int(BwaFcgiListener*)>& work)
{
    const Application application;
    auto* const listener = new BwaFcgiListener(QMap<QString, BwaAbstractFcgiService*>());
    listener->listen(address);
    return work(listener);
}

// The wait status of a child process that listens and destroys the listener after delay.
int statusOfStopAfter(std::chrono::microseconds delay, const QString& address)
{
    const auto stop = [delay](BwaFcgiListener* listener) {
        std::this_thread::sleep_for(delay);
        return millisecondsOf([listener] { delete listener; }) < atOnce ? 0 : 1;
    };
    return statusOfChild([&] { return listenAndThen(address, stop); });
}

bool isThreadAsleep(const QByteArray& name)
{
    const QDir folder(QStringLiteral("/proc/self/task"));
    const QStringList tasks = folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    return std::any_of(tasks.begin(), tasks.end(), [&](const QString& task) {
        QFile state(folder.filePath(task + QLatin1String("/stat")));
        return state.open(QIODevice::ReadOnly) && state.readAll().contains("(" + name + ") S");
    });
}

// Whether a listener waits for connections: with its socket open, its thread sleeps nowhere else.
bool isAccepting()
{
    return listeningSocket() >= 0 && isThreadAsleep("BwaFcgiListener");
}

// The wait status of a child process that listens and, as soon as it accepts, destroys the
// listener. It ends with the milliseconds that this takes, 255 at most.
int statusOfStopWhenAccepting(const QString& address)
{
    const auto stop = [](BwaFcgiListener* listener) {
        waitUntil(isAccepting);
        const qint64 milliseconds = millisecondsOf([listener] { delete listener; });
        return static_cast<int>(std::min<qint64>(milliseconds, 255));
    };
    return statusOfChild([&] { return listenAndThen(address, stop); });
}

// In a child process, which ends with the result: connects @a peers clients that say nothing.
// Returns the milliseconds that destroying the listener takes then, 255 at most.
int stopWithSilentPeers(BwaFcgiListener* listener, const QString& address, int peers)
{
    std::vector<std::unique_ptr<FcgiClient>> clients;
    for (int count = 0; count < peers; ++count) {
        clients.push_back(std::make_unique<FcgiClient>(address.toLatin1()));
    }
    waitUntil([&] { return connectedSockets() == 2 * peers; });
    const qint64 milliseconds = millisecondsOf([listener] { delete listener; });
    return static_cast<int>(std::min<qint64>(milliseconds, 255));
}

struct Stuck {
    const char* name;
    bool onPort;
    QByteArray sent;
};

class BwaFcgiListenerStuckPeer
    : public BwaFcgiListenerStopping
    , public testing::WithParamInterface<Stuck>
{
protected:
    std::unique_ptr<FcgiClient> connectedClient(bool onPort)
    {
        if (onPort) {
            return FcgiClient::onPort(startOnPort());
        }
        start();
        return std::make_unique<FcgiClient>(path());
    }
};

} // namespace

// fresh-processes runs it again and again.
TEST_F(BwaFcgiListenerStopping, AfterTenRequestsIsDoneAtOnce)
{
    serve("/api", answerPathInfo);
    start();
    for (int i = 0; i < 10; ++i) {
        ASSERT_TRUE(replyTo(apiRequest("/x")).ended);
    }

    destroyWithin(promised);
}

TEST_F(BwaFcgiListenerStopping, WhenIdleIsDoneAtOnce)
{
    serve("/api", answerPathInfo);
    start();
    replyTo(apiRequest());

    destroyWithin(atOnce);

    EXPECT_EQ(openedDescriptors(), 0);
}

TEST_F(BwaFcgiListenerStopping, WhenIdleOnAPortIsDoneAtOnce)
{
    serve("/api", answerPathInfo);
    const quint16 port = startOnPort();
    const auto client = FcgiClient::onPort(port);
    client->sendRequest(apiRequest());
    client->shutDownSending();
    replyTo(*client);

    destroyWithin(atOnce);
}

TEST_F(BwaFcgiListenerStopping, RunsNothingThatWaitsForTheEventLoop)
{
    bool hasRun = false;
    QMetaObject::invokeMethod(
        &listener(), [&] { hasRun = true; }, Qt::QueuedConnection);
    start();

    destroyWithin(atOnce);

    EXPECT_FALSE(hasRun);
}

TEST_F(BwaFcgiListenerStopping, WhenNothingWasEverListenedToIsDoneAtOnce)
{
    listener();

    destroyWithin(atOnce);
}

TEST_F(BwaFcgiListenerStopping, WhenNothingWasEverListenedToLeavesOthersAlone)
{
    serve("/api", answerPathInfo);
    delete new BwaFcgiListener(QMap<QString, BwaAbstractFcgiService*>());

    start();

    EXPECT_EQ(replyTo(apiRequest("/x")).out, QByteArray("/x"));
}

TEST_F(BwaFcgiListenerStopping, AfterAListeningErrorIsDoneAtOnce)
{
    listener().listen(QStringLiteral("/proc/missing/socket"));
    runEventLoopUntil([this] { return listeningErrors == 1; });
    listeningErrors = 0;

    destroyWithin(atOnce);
}

TEST_F(BwaFcgiListenerStopping, DuringAListeningErrorIsDoneAtOnce)
{
    listener().listen(QStringLiteral("/proc/missing/socket"));

    destroyWithin(atOnce);
}

TEST_F(BwaFcgiListenerStopping, WhenAnotherListensAfterwardsThatIsAnErrorAtOnce)
{
    serve("/api", answerPathInfo);
    start();
    replyTo(apiRequest());
    destroyListener();

    const qint64 milliseconds = millisecondsOf([this] {
        start();
        runEventLoopUntil([this] { return listeningErrors > 0; });
    });

    EXPECT_LT(milliseconds, atOnce);
    EXPECT_EQ(listeningErrors, 1);
}

TEST_F(BwaFcgiListenerStopping, WhenTwoListenDestroysOneAfterTheOther)
{
    serve("/api", answerPathInfo);
    start();
    replyTo(apiRequest());
    auto other = std::make_unique<BwaFcgiListener>(QMap<QString, BwaAbstractFcgiService*>());
    const QString otherPath = folder() + QLatin1String("/other");
    other->listen(otherPath);
    EXPECT_TRUE(replyFrom(otherPath).ended);

    const Watchdog watchdog(20);
    EXPECT_LT(millisecondsOf([this] { destroyListener(); }), atOnce);
    EXPECT_TRUE(replyFrom(otherPath).ended); // for this one it may have been waiting already
    EXPECT_TRUE(replyFrom(otherPath).ended);
    EXPECT_LT(millisecondsOf([&] { other.reset(); }), atOnce);
}

// At any moment after listen(): the thread may not run yet, open its socket or accept already. Only
// one listener of a process can be stopped for good, so each has a process of its own.
TEST(BwaFcgiListenerStoppingAtAnyMoment, IsDoneAtOnce)
{
    if (underValgrind() || underEmulator()) {
        GTEST_SKIP() << "it starts 1000 processes and measures time";
    }
    const QTemporaryDir folder;
    const QString address = folder.path() + QLatin1String("/socket");
    const unsigned int seed = std::random_device()();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> delays(0, 1000); // microseconds

    for (int round = 0; round < 1000; ++round) {
        const std::chrono::microseconds delay(round % 4 == 0 ? 0 : delays(random));

        ASSERT_EQ(statusOfStopAfter(delay, address), 0)
            << "round " << round << ", after " << delay.count() << " us";
    }
}

// In 99 of 100 processes at least: the machine may be busy.
TEST(BwaFcgiListenerStoppingInAccept, TakesUnder100Milliseconds)
{
    if (underValgrind() || underEmulator()) {
        GTEST_SKIP() << "it starts 1000 processes and measures time";
    }
    const QTemporaryDir folder;
    const QString address = folder.path() + QLatin1String("/socket");
    int longest = 0;
    int late = 0;

    for (int round = 0; round < 1000; ++round) {
        const int status = statusOfStopWhenAccepting(address);
        ASSERT_TRUE(WIFEXITED(status)) << "round " << round;
        longest = std::max(longest, WEXITSTATUS(status));
        late += WEXITSTATUS(status) < 100 ? 0 : 1;
        ASSERT_LE(late, 10) << "round " << round;
    }

    RecordProperty("longest", longest);
}

TEST(BwaFcgiListenerStoppingWithSilentPeers, TakesUnder100Milliseconds)
{
    if (underValgrind()) {
        GTEST_SKIP() << "it starts 100 processes and measures time";
    }
    const QTemporaryDir folder;
    const QString address = folder.path() + QLatin1String("/socket");
    const auto stop = [&](BwaFcgiListener* listener) {
        return stopWithSilentPeers(listener, address, 20);
    };
    int late = 0; // the machine may be busy

    for (int round = 0; round < 100; ++round) {
        const int status = statusOfChild([&] { return listenAndThen(address, stop); });
        ASSERT_TRUE(WIFEXITED(status)) << "round " << round;
        late += WEXITSTATUS(status) < 100 ? 0 : 1;
        ASSERT_LE(late, 2) << "round " << round;
    }
}

TEST(BwaFcgiListenerSigterm, EndsTheProcess)
{
    const QTemporaryDir folder;
    const QString address = folder.path() + QLatin1String("/socket");

    const int status = statusOfChild(
        [&] { return listenAndThen(address, [](BwaFcgiListener*) { return raise(SIGTERM); }); });

    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

// Connections that are stuck

TEST_P(BwaFcgiListenerStuckPeer, IsDropped)
{
    const std::unique_ptr<FcgiClient> client = connectedClient(GetParam().onPort);
    waitUntil([] { return connectedSockets() == 2; });
    client->send(GetParam().sent);

    destroyWithin(promised);

    EXPECT_TRUE(client->isClosedByPeer());
}

INSTANTIATE_TEST_SUITE_P(Cases, BwaFcgiListenerStuckPeer,
                         testing::Values(Stuck{"SilentOnUnixSocket", false, QByteArray()},
                                         Stuck{"SilentOnPort", true, QByteArray()},
                                         Stuck{"OneByteOnUnixSocket", false, QByteArray("\1")},
                                         Stuck{"OneByteOnPort", true, QByteArray("\1")},
                                         Stuck{"HalfParametersOnUnixSocket", false, halfRequest()},
                                         Stuck{"HalfParametersOnPort", true, halfRequest()}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(BwaFcgiListenerStopping, WhenASilentPeerHasJustGoneIsDone)
{
    start();
    auto client = std::make_unique<FcgiClient>(path());
    waitUntil([] { return connectedSockets() == 2; });
    client.reset();

    destroyWithin(promised);
}

TEST_F(BwaFcgiListenerStopping, WhenConnectionsWaitToBeAcceptedIsDone)
{
    start();
    std::vector<std::unique_ptr<FcgiClient>> clients(20);
    for (auto& client : clients) {
        client = std::make_unique<FcgiClient>(path());
    }

    destroyWithin(promised);

    for (const auto& client : clients) {
        EXPECT_TRUE(client->isClosedByPeer());
    }
}

// Requests that were accepted and not handed out

namespace {

class BwaFcgiListenerUndelivered : public BwaFcgiListenerStopping
{
protected:
    // Many accepted requests, half of them with connections to be kept; the last one may be half
    // read yet. The event loop does not run.
    void acceptRequests()
    {
        serve("/api", [this](BwaFcgiRequest* request) {
            ++served;
            delete request;
        });
        start();
        int accepted = 0;
        for (auto& client : clients) {
            const bool keepConnection = accepted % 2 == 0;
            client = std::make_unique<FcgiClient>(path());
            client->send(FcgiClient::requestBytes(apiRequest(), "body", keepConnection));
            ++accepted;
            waitUntil([&] { return connectedSockets() == 2 * accepted; });
        }
    }

    int served = 0;
    // Waiting 1 s for each to close would take longer than is promised.
    std::array<std::unique_ptr<FcgiClient>, 20> clients;
};

} // namespace

TEST_F(BwaFcgiListenerUndelivered, AreFinishedWithoutAReply)
{
    acceptRequests();

    destroyWithin(promised);

    EXPECT_EQ(served, 0);
    for (std::size_t number = 0; number + 1 < clients.size(); ++number) {
        const FcgiReply reply = clients[number]->readReply();
        EXPECT_TRUE(reply.ended && reply.out.isEmpty());
    }
}

TEST_F(BwaFcgiListenerUndelivered, AreClosed)
{
    acceptRequests();

    destroyWithin(promised);

    for (auto& client : clients) {
        client->readReply();
        EXPECT_TRUE(client->isClosedByPeer());
        client.reset();
    }
    EXPECT_EQ(openedDescriptors(), 0);
}
