// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "ListenerFixture.h"
#include "cgi/BwaCgiRequest.h"
#include "support/QtPrinters.h"

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
    void startWithDescriptors(rlim_t most)
    {
        {
            const FewDescriptors few(most);
            listener();
        }
        start();
    }

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

TEST_F(BwaFcgiListenerOpenRequests, TakeHalfOfTheDescriptorsAtMost)
{
    startWithDescriptors(7);
    for (const char* pathInfo : {"/a", "/b", "/c", "/d", "/e"}) {
        send(pathInfo);
    }

    serveUntilHeld(3);
    serveForAMoment();

    EXPECT_THAT(heldPaths(), ElementsAre("/a", "/b", "/c"));
}

TEST_F(BwaFcgiListenerOpenRequests, WhenOneIsFinishedMakeRoomForTheNext)
{
    startWithDescriptors(4);
    for (const char* pathInfo : {"/a", "/b", "/c", "/d"}) {
        send(pathInfo);
    }
    serveUntilHeld(2);

    deleteFirstHeld();
    serveUntilHeld(2);
    serveForAMoment();

    EXPECT_THAT(heldPaths(), ElementsAre("/b", "/c"));
}

TEST_F(BwaFcgiListenerOpenRequests, GivenHardlyAnyDescriptorsAreServedOneByOne)
{
    startWithDescriptors(0);

    for (const char* pathInfo : {"/a", "/b", "/c"}) {
        send(pathInfo);
        serveUntilHeld(1);
        EXPECT_THAT(heldPaths(), ElementsAre(pathInfo));
        deleteFirstHeld();
    }
}

TEST_F(BwaFcgiListenerOpenRequests, WhenTheirServiceThrowsMakeRoomForTheNext)
{
    serve("/throwing", [](BwaFcgiRequest* request) {
        keep(request);
        throw std::runtime_error("out of paper");
    });
    startWithDescriptors(2);

    send("/a", "/throwing");
    send("/b", "/throwing");
    send("/c");

    serveUntilHeld(1);
    EXPECT_THAT(heldPaths(), ElementsAre("/c"));
}

TEST_F(BwaFcgiListenerOpenRequests, WhenNoServiceWasFoundMakeRoomForTheNext)
{
    startWithDescriptors(2);

    send("/a", "/other");
    send("/b", "/other");
    send("/c");

    serveUntilHeld(1);
    EXPECT_THAT(heldPaths(), ElementsAre("/c"));
}

TEST_F(BwaFcgiListenerOpenRequests, WhenTheyWereCutShortMakeRoomForTheNext)
{
    startWithDescriptors(2);
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
    startWithDescriptors(2);
    send("/a");
    send("/b");
    serveUntilHeld(1);
    serveForAMoment();

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

// While accepting waits for a connection it has a descriptor already. So one request is half read,
// and another one waits, when the descriptors run out.
class BwaFcgiListenerOutOfDescriptors : public BwaFcgiListenerOpenRequests
{
public:
    BwaFcgiListenerOutOfDescriptors()
    {
        const QByteArray request = FcgiClient::requestBytes({{"SCRIPT_NAME", "/api"}});
        start();
        m_halfRead = std::make_unique<FcgiClient>(path());
        m_halfRead->send(request.left(10));
        waitUntil([] { return connectedSockets() == 2; });
        send("/waiting");
        m_few = std::make_unique<FewDescriptors>(static_cast<rlim_t>(openDescriptors()) + 10);
        m_taken = allDescriptors();
        m_halfRead->send(request.mid(10));
        m_halfRead->shutDownSending();
        serveUntilHeld(1);
        serveForAMoment();
    }

    ~BwaFcgiListenerOutOfDescriptors() override { giveDescriptorsBack(); }

protected:
    void giveDescriptorsBack()
    {
        for (const int descriptor : m_taken) {
            close(descriptor);
        }
        m_taken.clear();
        m_few.reset();
    }

private:
    std::unique_ptr<FcgiClient> m_halfRead;
    std::unique_ptr<FewDescriptors> m_few;
    std::vector<int> m_taken;
};

TEST_F(BwaFcgiListenerOutOfDescriptors, AcceptsOnceThereAreSome)
{
    EXPECT_THAT(heldPaths(), ElementsAre(""));

    giveDescriptorsBack();
    serveUntilHeld(2);

    EXPECT_THAT(heldPaths(), ElementsAre("", "/waiting"));
    EXPECT_EQ(listeningErrors, 0);
}

TEST_F(BwaFcgiListenerOutOfDescriptors, StopsAtOnce)
{
    const Watchdog watchdog(20);

    EXPECT_LT(millisecondsOf([this] { destroyListener(); }), 1000);
}
