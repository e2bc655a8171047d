// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiListenerThread.h"

#include "support/ListenerFixture.h"
#include "support/QtPrinters.h"

#include <QFile>
#include <QMetaMethod>
#include <QMutex>
#include <QThread>

#include <fcgiapp.h>
#include <gmock/gmock.h>

#include <atomic>
#include <stdexcept>
#include <type_traits>

#include <sys/socket.h>

namespace {

using testing::ElementsAre;

// A worker on a thread of the test.
class BwaFcgiListenerThreadWorker : public testing::Test
{
public:
    BwaFcgiListenerThreadWorker()
    {
        FCGX_Init();
        worker.moveToThread(&thread);
        connectReceiver();
        QObject::connect(&worker, &BwaFcgiListenerThread::listeningError, &m_here,
                         [this] { ++listeningErrors; });
        QObject::connect(&thread, &QThread::finished, [this] { m_hasEnded = true; });
        thread.start();
    }

    ~BwaFcgiListenerThreadWorker() override { stop(); }

protected:
    // ThreadSanitizer does not see how Qt hands a request over, but sees the counter.
    void connectReceiver()
    {
        QObject::connect(&worker, &BwaFcgiListenerThread::newRequest, [this] { ++m_accepted; });
        QObject::connect(&worker, &BwaFcgiListenerThread::newRequest, &m_here,
                         [this](FCGX_Request* request) {
                             requests.append(request);
                             EXPECT_GE(m_accepted, requests.size());
                         });
    }

    void listen(const QByteArray& address)
    {
        QMetaObject::invokeMethod(&worker, "listen", Qt::QueuedConnection,
                                  Q_ARG(QString, QString::fromLatin1(address)));
    }

    void stop()
    {
        const Watchdog watchdog(20);
        thread.quit();
        do {
            worker.stopListening();
        } while (!thread.wait(20));
        EXPECT_TRUE(m_hasEnded); // ThreadSanitizer does not see the wait, but this
        QCoreApplication::processEvents();
    }

    // Waits for one more request and finishes it.
    QByteArray nextPathInfo()
    {
        runEventLoopUntil([this] { return !requests.isEmpty(); });
        FCGX_Request* request = requests.takeFirst();
        QByteArray pathInfo(FCGX_GetParam("PATH_INFO", request->envp));
        FCGX_Finish_r(request);
        delete request;
        return pathInfo;
    }

    void send(const QByteArray& pathInfo)
    {
        m_clients.push_back(std::make_unique<FcgiClient>(path()));
        m_clients.back()->sendRequest(apiRequest(pathInfo));
        m_clients.back()->shutDownSending();
    }

    const FcgiClient& lastClient() const { return *m_clients.back(); }

    QByteArray path() const { return m_folder.path().toLatin1() + "/socket"; }

    BwaFcgiListenerThread worker;
    QThread thread;
    QList<FCGX_Request*> requests;
    int listeningErrors = 0;

private:
    Application m_application;
    QTemporaryDir m_folder;
    std::vector<std::unique_ptr<FcgiClient>> m_clients;
    QObject m_here;
    std::atomic<int> m_accepted = 0;
    std::atomic<bool> m_hasEnded = false;
};

} // namespace

TEST(BwaFcgiListenerThreadMetaObject, DeclaresSignalsAndSlotsInOrder)
{
    const QMetaObject& metaObject = BwaFcgiListenerThread::staticMetaObject;
    QList<QByteArray> signatures;
    for (int index = metaObject.methodOffset(); index < metaObject.methodCount(); ++index) {
        signatures.append(metaObject.method(index).methodSignature());
    }

    // To Qt, quint16 is ushort.
    EXPECT_THAT(signatures,
                ElementsAre("newRequest(FCGX_Request*)", "listeningError()", "listen(ushort)",
                            "listen()", "listen(QString)"));
}

TEST(BwaFcgiListenerThreadMetaObject, IsNoThreadItself)
{
    EXPECT_FALSE((std::is_base_of_v<QThread, BwaFcgiListenerThread>));
}

TEST_F(BwaFcgiListenerThreadWorker, EmitsEachAcceptedRequest)
{
    listen(path());
    send("/first");
    send("/second");

    EXPECT_EQ(nextPathInfo(), QByteArray("/first"));
    EXPECT_EQ(nextPathInfo(), QByteArray("/second"));
    EXPECT_EQ(listeningErrors, 0);
}

TEST_F(BwaFcgiListenerThreadWorker, EmitsADifferentRequestEachTime)
{
    listen(path());
    send("/first");
    send("/second");

    runEventLoopUntil([this] { return requests.size() == 2; });

    EXPECT_NE(requests.at(0), requests.at(1));
    nextPathInfo();
    nextPathInfo();
}

TEST_F(BwaFcgiListenerThreadWorker, WhenAReceiverThrowsDropsTheRequestAndGoesOn)
{
    int thrown = 0;
    worker.disconnect(SIGNAL(newRequest(FCGX_Request*)));
    QObject::connect(
        &worker, &BwaFcgiListenerThread::newRequest, &worker,
        [&thrown](FCGX_Request*) {
            if (++thrown == 1) {
                throw std::runtime_error("out of paper");
            }
        },
        Qt::DirectConnection);
    connectReceiver();
    listen(path());

    send("/first");
    send("/second");

    EXPECT_EQ(nextPathInfo(), QByteArray("/second"));
    EXPECT_TRUE(requests.isEmpty());
    EXPECT_EQ(listeningErrors, 0);
}

// epoll reports an arrival once only.
TEST_F(BwaFcgiListenerThreadWorker, WhenAReceiverThrowsTakesTheRequestsThatCameWithIt)
{
    QMutex mutex;
    worker.disconnect(SIGNAL(newRequest(FCGX_Request*)));
    QObject::connect(
        &worker, &BwaFcgiListenerThread::newRequest, &worker,
        [&mutex](FCGX_Request* request) {
            const QMutexLocker locker(&mutex);
            if (qstrcmp(FCGX_GetParam("PATH_INFO", request->envp), "/throw") == 0) {
                throw std::runtime_error("out of paper");
            }
        },
        Qt::DirectConnection);
    connectReceiver();
    listen(path());
    FcgiClient first(path());
    FcgiClient second(path());
    waitUntil([] { return connectedSockets() == 4; });

    mutex.lock();
    send("/before");
    waitUntil([this] { return unreadBytes(lastClient()) == 0; });
    first.sendRequest(apiRequest("/throw"));
    second.sendRequest(apiRequest("/with-it"));
    second.shutDownSending();
    mutex.unlock();

    EXPECT_EQ(nextPathInfo(), QByteArray("/before"));
    EXPECT_EQ(nextPathInfo(), QByteArray("/with-it"));
}

// Run with ThreadSanitizer only, which must report it: a check that cannot fail shows nothing.
TEST_F(BwaFcgiListenerThreadWorker, DISABLED_RacesOnPurpose)
{
    QString accepted;
    QObject::connect(&worker, &BwaFcgiListenerThread::newRequest,
                     [&accepted] { accepted = QStringLiteral("yes"); });
    listen(path());

    send("/first");
    runEventLoopUntil([&accepted] { return !accepted.isEmpty(); });

    EXPECT_EQ(nextPathInfo(), QByteArray("/first"));
}

TEST_F(BwaFcgiListenerThreadWorker, WhenStoppedEndsWithoutAnError)
{
    listen(path());
    send("/x");
    nextPathInfo();

    stop();

    EXPECT_TRUE(thread.isFinished());
    EXPECT_EQ(listeningErrors, 0);
    EXPECT_TRUE(requests.isEmpty());
}

TEST_F(BwaFcgiListenerThreadWorker, WhenTheSocketFailsEmitsAnError)
{
    listen("/proc/missing/socket");
    runEventLoopUntil([this] { return listeningErrors > 0; });

    EXPECT_EQ(listeningErrors, 1);
}

TEST_F(BwaFcgiListenerThreadWorker, AfterAnErrorListensAgain)
{
    listen("/proc/missing/socket");
    listen(path());
    send("/x");

    EXPECT_EQ(nextPathInfo(), QByteArray("/x"));
    EXPECT_EQ(listeningErrors, 1);
}

TEST_F(BwaFcgiListenerThreadWorker, WhenTheListeningSocketEndsByItselfEmitsAnError)
{
    listen(path());
    send("/x");
    nextPathInfo();

    shutdown(listeningSocket(), SHUT_RD);
    runEventLoopUntil([this] { return listeningErrors > 0; });

    EXPECT_EQ(listeningErrors, 1);
}

TEST_F(BwaFcgiListenerThreadWorker, WhenListeningAlreadyIgnoresAnotherListen)
{
    listen(path());
    send("/x");
    nextPathInfo();
    const QByteArray other = path() + "-other";

    worker.listen(QString::fromLatin1(other)); // returns at once, in this thread

    EXPECT_FALSE(QFile::exists(QString::fromLatin1(other)));
    send("/y");
    EXPECT_EQ(nextPathInfo(), QByteArray("/y"));
}

TEST_F(BwaFcgiListenerThreadWorker, WhenIdleStopListeningDoesNothing)
{
    worker.stopListening();

    listen(path());
    send("/x");
    EXPECT_EQ(nextPathInfo(), QByteArray("/x"));
    EXPECT_EQ(listeningErrors, 0);
}

TEST_F(BwaFcgiListenerThreadWorker, WhenStoppedForgetsTheRequestToStop)
{
    listen(path());
    send("/x");
    nextPathInfo();
    worker.stopListening();

    listen(path()); // in vain: libfcgi has been shut down
    runEventLoopUntil([this] { return listeningErrors > 0; });

    EXPECT_EQ(listeningErrors, 1);
}

TEST_F(BwaFcgiListenerThreadWorker, WhenStoppedClosesItsSocket)
{
    listen(path());
    send("/x");
    nextPathInfo();
    EXPECT_GE(listeningSocket(), 0);

    stop();

    EXPECT_EQ(listeningSocket(), -1);
}
