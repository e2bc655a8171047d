// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"
#include "support/ListenerFixture.h"
#include "support/QtPrinters.h"
#include "support/Skips.h"

#include <QElapsedTimer>

#include <gmock/gmock.h>

#include <stdexcept>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using testing::ElementsAre;

void setMostDescriptors(rlim_t most)
{
    rlimit limit = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    limit.rlim_cur = most;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
}

// Lets this process open few descriptors, as long as it lives.
class FewDescriptors
{
public:
    explicit FewDescriptors(rlim_t most)
    {
        getrlimit(RLIMIT_NOFILE, &m_before);
        setMostDescriptors(most);
    }
    FewDescriptors(const FewDescriptors&) = delete;
    FewDescriptors& operator=(const FewDescriptors&) = delete;
    ~FewDescriptors() { setMostDescriptors(m_before.rlim_cur); }

private:
    rlimit m_before = {};
};

// Takes every descriptor that the process may still open.
std::vector<int> allDescriptors()
{
    std::vector<int> descriptors;
    for (int next = open("/dev/null", O_RDONLY); next >= 0; next = open("/dev/null", O_RDONLY)) {
        descriptors.push_back(next);
    }
    return descriptors;
}

// A listener whose service keeps the requests.
class BwaFcgiListenerOpenRequests : public ListenerFixture
{
public:
    BwaFcgiListenerOpenRequests()
    {
        serve("/api", [this](BwaFcgiRequest* request) { held.push_back(request); });
    }

    ~BwaFcgiListenerOpenRequests() override
    {
        for (BwaFcgiRequest* const request : held) {
            delete request;
        }
    }

protected:
    void send(const QByteArray& pathInfo, const char* scriptName = "/api")
    {
        clients.push_back(std::make_unique<FcgiClient>(path()));
        clients.back()->sendRequest({{"SCRIPT_NAME", scriptName}, {"PATH_INFO", pathInfo}});
        clients.back()->shutDownSending();
    }

    void serveUntilHeld(std::size_t count)
    {
        runEventLoopUntil([&] { return held.size() >= count; });
    }

    static void serveForAMoment()
    {
        QElapsedTimer timer;
        timer.start();
        runEventLoopUntil([&] { return timer.elapsed() > 100; });
    }

    QList<QByteArray> heldPaths() const
    {
        QList<QByteArray> paths;
        for (BwaFcgiRequest* const request : held) {
            paths.append(request->cgiRequest()->environment().pathInfo().toLatin1());
        }
        return paths;
    }

    void deleteFirstHeld()
    {
        delete held.front();
        held.erase(held.begin());
    }

    std::vector<BwaFcgiRequest*> held; // owned
    std::vector<std::unique_ptr<FcgiClient>> clients;
};

} // namespace

// Requests that are kept do not count, and one that is being served does not either.
TEST_F(BwaFcgiListenerOpenRequests, GivenRoomForOneAreHandedOutInOrder)
{
    listener().setMostWaiting(1);
    start();
    for (const char* pathInfo : {"/a", "/b", "/c", "/d", "/e"}) {
        send(pathInfo);
    }

    serveUntilHeld(5);

    EXPECT_THAT(heldPaths(), ElementsAre("/a", "/b", "/c", "/d", "/e"));
}

// The accepting thread has taken half a header of "/early", and waits for room for "/b". Until it
// has that, it is told of two things at once: a request and a connection.
TEST_F(BwaFcgiListenerOpenRequests, AreNotOvertakenByConnectionsThatAreAcceptedLater)
{
    listener().setMostWaiting(1);
    start();
    FcgiClient early(path());
    const QByteArray request =
        FcgiClient::requestBytes({{"SCRIPT_NAME", "/api"}, {"PATH_INFO", "/early"}});
    early.send(request.left(16));
    waitUntil([&] { return unreadBytes(early) == 0; });
    send("/a");
    waitUntil([this] { return unreadBytes(*clients.front()) == 0; });
    send("/b");
    send("/late");

    early.send(request.mid(16));
    early.shutDownSending();
    serveUntilHeld(4);

    const QList<QByteArray> paths = heldPaths();
    EXPECT_LT(paths.indexOf("/early"), paths.indexOf("/late"));
}

TEST_F(BwaFcgiListenerOpenRequests, GivenRoomForTwoLeavesTheOthersInTheirConnections)
{
    listener().setMostWaiting(2);
    start();
    for (const char* pathInfo : {"/a", "/b", "/c"}) {
        send(pathInfo);
    }
    waitUntil([this] { return clients.size() == 3 && unreadBytes(*clients.at(1)) == 0; });

    EXPECT_GT(unreadBytes(*clients.at(2)), 0);
    serveUntilHeld(3);
}

TEST_F(BwaFcgiListenerOpenRequests, GivenNoRoomAtAllAreServedOneByOne)
{
    listener().setMostWaiting(0);
    start();

    for (const char* pathInfo : {"/a", "/b", "/c"}) {
        send(pathInfo);
        serveUntilHeld(1);
        EXPECT_THAT(heldPaths(), ElementsAre(pathInfo));
        deleteFirstHeld();
    }
}

TEST_F(BwaFcgiListenerOpenRequests, WhenTheyWereCutShortMakeRoomForTheNext)
{
    listener().setMostWaiting(2);
    start();
    for (int count = 0; count < 2; ++count) {
        FcgiClient cutShort(path());
        cutShort.send(FcgiClient::requestBytes({}).left(16));
        cutShort.shutDownSending();
    }

    send("/c");

    serveUntilHeld(1);
    EXPECT_THAT(heldPaths(), ElementsAre("/c"));
}

TEST_F(BwaFcgiListenerOpenRequests, WhenNoMoreAreTakenTheListenerStopsAtOnce)
{
    listener().setMostWaiting(1);
    start();
    send("/a");
    send("/b");
    waitUntil([this] { return unreadBytes(*clients.at(0)) == 0; });

    const Watchdog watchdog(20);
    EXPECT_LT(millisecondsOf([this] { destroyListener(); }), 1000);
}

// Applications are told to delete them before; those that do not must not suffer for it.
TEST_F(BwaFcgiListenerOpenRequests, WhenTheListenerHasGoneCanStillBeAnswered)
{
    start();
    send("/a");
    serveUntilHeld(1);

    destroyListener();
    answerPathInfo(held.front());
    held.clear();

    EXPECT_EQ(clients.front()->readReply().out, QByteArray("/a"));
}

// A connection that says nothing goes when the descriptors run out; one that is served stays.
class BwaFcgiListenerOutOfDescriptors : public BwaFcgiListenerOpenRequests
{
public:
    ~BwaFcgiListenerOutOfDescriptors() override { giveDescriptorsBack(); }

protected:
    void SetUp() override
    {
        if (underValgrind()) {
            GTEST_SKIP() << "valgrind takes some of the descriptors itself";
        }
        start();
    }

    void takeAllDescriptorsButOne()
    {
        m_few = std::make_unique<FewDescriptors>(static_cast<rlim_t>(openDescriptors()) + 10);
        m_taken = allDescriptors();
        close(m_taken.back()); // for the next client's own end
        m_taken.pop_back();
    }

    void giveDescriptorsBack()
    {
        for (const int descriptor : m_taken) {
            close(descriptor);
        }
        m_taken.clear();
        m_few.reset();
    }

private:
    std::unique_ptr<FewDescriptors> m_few;
    std::vector<int> m_taken;
};

TEST_F(BwaFcgiListenerOutOfDescriptors, GivesUpTheConnectionThatIsSilentForLongest)
{
    FcgiClient oldest(path());
    waitUntil([] { return connectedSockets() == 2; });
    FcgiClient newer(path());
    waitUntil([] { return connectedSockets() == 4; });
    takeAllDescriptorsButOne();

    send("/waiting");
    serveUntilHeld(1);

    EXPECT_THAT(heldPaths(), ElementsAre("/waiting"));
    EXPECT_TRUE(oldest.isClosedByPeer());
    newer.sendRequest({{"SCRIPT_NAME", "/api"}, {"PATH_INFO", "/newer"}});
    serveUntilHeld(2);
    EXPECT_THAT(heldPaths(), ElementsAre("/waiting", "/newer"));
}

TEST_F(BwaFcgiListenerOutOfDescriptors, AcceptsOnceThereAreSome)
{
    send("/served");
    serveUntilHeld(1);
    takeAllDescriptorsButOne();
    send("/waiting");
    serveForAMoment();
    EXPECT_THAT(heldPaths(), ElementsAre("/served"));

    giveDescriptorsBack();
    serveUntilHeld(2);

    EXPECT_THAT(heldPaths(), ElementsAre("/served", "/waiting"));
    EXPECT_EQ(listeningErrors, 0);
}

TEST_F(BwaFcgiListenerOutOfDescriptors, TakesARequestInPiecesOnAConnectionThatIsThere)
{
    FcgiClient client(path());
    waitUntil([] { return connectedSockets() == 2; });
    takeAllDescriptorsButOne();
    const int last = open("/dev/null", O_RDONLY);
    const QByteArray request = FcgiClient::requestBytes(apiRequest("/pieces"), "body");

    client.send(request.chopped(28));
    waitUntil([&] { return unreadBytes(client) == 0; });
    client.send(request.right(28));
    serveUntilHeld(1);

    EXPECT_THAT(heldPaths(), ElementsAre("/pieces"));
    close(last);
}

TEST_F(BwaFcgiListenerOutOfDescriptors, StopsAtOnce)
{
    send("/served");
    serveUntilHeld(1);
    takeAllDescriptorsButOne();
    send("/waiting");
    const Watchdog watchdog(20);

    EXPECT_LT(millisecondsOf([this] { destroyListener(); }), 1000);
}
