// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestProblem.h"
#include "rest/RestReplies.h"
#include "support/Application.h"
#include "support/Skips.h"

#include <QThread>
#include <QThreadPool>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <limits>
#include <stdexcept>

using testing::HasSubstr;

namespace {

// A request that is sent within another one's waiting comes from a timer, not from a posted event:
// Qt with GLib may sleep through other threads' events in a loop within a posted event.
const int soon = 1; // milliseconds

BwaRestReply textReply(const QByteArray& text)
{
    return BwaRestReply::bytes(text, "text/plain");
}

void waitFor(const BwaRestCancel& cancel)
{
    while (!cancel.isRequested()) {
        QThread::yieldCurrentThread();
    }
}

class BwaRestPoolTest : public testing::Test
{
protected:
    BwaRestPoolTest() { service->setPool(&pool, 0); }
    ~BwaRestPoolTest() override { pool.waitForDone(); }

    BwaTestReply send(const QByteArray& path = "/")
    {
        return BwaTestRequest("POST", path).sendTo(*service);
    }

    // Has the handler at "/" do this on the pool.
    void work(const std::function<BwaRestReply(const BwaRestCancel&)>& work, int deadline = 30000)
    {
        service->post(
            "", [work, deadline](const BwaRestCall& call) { return call.onPool(work, deadline); });
    }

    Application application;
    QThreadPool pool;
    std::unique_ptr<BwaRestService> service = std::make_unique<BwaRestService>();
};

} // namespace

TEST_F(BwaRestPoolTest, RepliesFromAnotherThread)
{
    QThread* worker = nullptr;
    work([&worker](const BwaRestCancel& cancel) {
        worker = QThread::currentThread();
        EXPECT_FALSE(cancel.isRequested());
        return textReply("a");
    });

    EXPECT_EQ(send().body, "a");
    EXPECT_TRUE(worker && worker != QThread::currentThread());
}

TEST_F(BwaRestPoolTest, WhenWorkThrowsIsALogged500)
{
    work([](const BwaRestCancel&) -> BwaRestReply { throw std::runtime_error("broken"); });

    const BwaTestReply reply = send();

    EXPECT_EQ(reply.body, R"({"status":500,"title":"Internal Server Error"})");
    EXPECT_EQ(reply.errorText, "Error in REST call POST \"/\": broken");
}

TEST_F(BwaRestPoolTest, WhenWorkThrowsAProblemSendsIt)
{
    work([](const BwaRestCancel&) -> BwaRestReply { throw BwaRestProblem(409); });

    const BwaTestReply reply = send();

    EXPECT_EQ(reply.statusCode, 409);
    EXPECT_EQ(reply.errorText, "");
}

TEST_F(BwaRestPoolTest, FinishesInTheThreadOfTheListener)
{
    QThread* finisher = nullptr;
    service->post("", [&finisher](const BwaRestCall& call) {
        return call.onPoolThen([](const BwaRestCancel&) { return std::make_unique<int>(7); },
                               [&finisher](std::unique_ptr<int> result) {
                                   finisher = QThread::currentThread();
                                   return textReply(QByteArray::number(*result));
                               });
    });

    EXPECT_EQ(send().body, "7");
    EXPECT_EQ(finisher, QThread::currentThread());
}

TEST_F(BwaRestPoolTest, WhenFinishThrowsIsALogged500)
{
    service->post("", [](const BwaRestCall& call) {
        return call.onPoolThen([](const BwaRestCancel&) { return 7; },
                               [](int) -> BwaRestReply { throw std::runtime_error("broken"); });
    });

    const BwaTestReply reply = send();

    EXPECT_EQ(reply.statusCode, 500);
    EXPECT_EQ(reply.errorText, "Error in REST call POST \"/\": broken");
}

TEST_F(BwaRestPoolTest, WhenWorkBeforeFinishThrowsDoesNotFinish)
{
    service->post("", [](const BwaRestCall& call) {
        return call.onPoolThen([](const BwaRestCancel&) -> int { throw BwaRestProblem(409); },
                               [](int) { return textReply("finished"); });
    });

    EXPECT_EQ(send().statusCode, 409);
}

TEST_F(BwaRestPoolTest, WhenTheDeadlinePassesAsksToCancelAndFinishesAllTheSame)
{
    std::promise<void> finished;
    service->post("", [&finished](const BwaRestCall& call) {
        return call.onPoolThen(
            [](const BwaRestCancel& cancel) {
                waitFor(cancel);
                return 7;
            },
            [&finished](int result) {
                EXPECT_EQ(result, 7);
                finished.set_value();
                return textReply("nobody reads it");
            },
            1);
    });

    EXPECT_EQ(send().statusCode, 503);

    pool.waitForDone();
    QCoreApplication::processEvents();
    EXPECT_EQ(finished.get_future().wait_for(std::chrono::seconds(0)), std::future_status::ready);
}

TEST_F(BwaRestPoolTest, WhenTheServiceGoesAsksToCancel)
{
    std::promise<void> started;
    work([&started](const BwaRestCancel& cancel) {
        started.set_value();
        waitFor(cancel);
        return textReply("a");
    });
    QTimer::singleShot(soon, QCoreApplication::instance(), [this, &started] {
        started.get_future().wait();
        service.reset();
    });

    EXPECT_EQ(send().statusCode, 503);
    EXPECT_TRUE(pool.waitForDone(10000));
}

TEST_F(BwaRestPoolTest, GivenTheLargestNumberOfWaitingCallsTakesThem)
{
    service->setPool(&pool, std::numeric_limits<int>::max());
    work([](const BwaRestCancel&) { return textReply("a"); });

    EXPECT_EQ(send().body, "a");
}

TEST_F(BwaRestPoolTest, WhenTooMuchWaitsIs503WithRetryAfter)
{
    if (underThreadSanitizer()) {
        GTEST_SKIP() << "it does not see the lock under which Qt's pool hands queued work over";
    }
    pool.setMaxThreadCount(1);
    service->setPool(&pool, 1);
    std::promise<void> go;
    const std::shared_future<void> gone = go.get_future().share();
    work([gone](const BwaRestCancel&) {
        gone.wait();
        return textReply("a");
    });
    BwaTestReply second;
    BwaTestReply third;
    QTimer::singleShot(soon, QCoreApplication::instance(), [&] {
        QTimer::singleShot(soon, QCoreApplication::instance(), [&] {
            third = send();
            go.set_value();
        });
        second = send();
    });

    EXPECT_EQ(send().body, "a");
    EXPECT_EQ(second.body, "a");
    EXPECT_EQ(third.statusCode, 503);
    EXPECT_EQ(third.header("Retry-After"), "1");
    EXPECT_EQ(send().body, "a");
}

TEST_F(BwaRestPoolTest, WhenThePoolIsClearedIsALogged500)
{
    pool.setMaxThreadCount(1);
    service->setPool(&pool, 1);
    std::promise<void> go;
    const std::shared_future<void> gone = go.get_future().share();
    service->post("/first", [gone](const BwaRestCall& call) {
        return call.onPool([gone](const BwaRestCancel&) {
            gone.wait();
            return textReply("a");
        });
    });
    work([](const BwaRestCancel&) { return textReply("b"); });
    BwaTestReply second;
    QTimer::singleShot(soon, QCoreApplication::instance(), [&] {
        QTimer::singleShot(soon, QCoreApplication::instance(), [&] {
            pool.clear();
            go.set_value();
        });
        second = send();
    });

    EXPECT_EQ(send("/first").body, "a");
    EXPECT_EQ(second.statusCode, 500);
    EXPECT_THAT(second.errorText.toStdString(), HasSubstr("Nobody is left to answer the call"));
}
