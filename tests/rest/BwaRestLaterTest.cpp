// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestLater.h"

#include "rest/BwaRestProblem.h"
#include "rest/RestReplies.h"
#include "support/Application.h"

#include <QThread>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <thread>

using testing::HasSubstr;

namespace {

BwaRestReply textReply(const char* text)
{
    return BwaRestReply::bytes(text, "text/plain");
}

/** Its handler keeps the handle of the last call, and then does what it is told. */
class BwaRestLaterTest : public testing::Test
{
protected:
    BwaRestLaterTest()
    {
        service->get("", [this](const BwaRestCall& call) {
            later = call.later(deadline);
            return whenCalled ? whenCalled() : BwaRestReply(*later);
        });
    }

    BwaTestReply send(const QByteArray& method = "GET")
    {
        return BwaTestRequest(method).sendTo(*service);
    }

    // Once the handler has returned, from the event loop.
    template <class Action>
    void afterwards(const Action& action)
    {
        QTimer::singleShot(0, &context, action);
    }

    Application application;
    QObject context; // of what is done afterwards
    std::unique_ptr<BwaRestService> service = std::make_unique<BwaRestService>();
    std::optional<BwaRestLater> later;
    std::function<BwaRestReply()> whenCalled;
    int deadline = 30000; // milliseconds
};

} // namespace

TEST_F(BwaRestLaterTest, GivenReplySendsIt)
{
    afterwards([this] { EXPECT_TRUE(later->reply(textReply("a"))); });

    EXPECT_EQ(send().raw, "Content-Type: text/plain\nContent-Length: 1\n\na");
}

TEST_F(BwaRestLaterTest, GivenHeadLosesTheBody)
{
    afterwards([this] { later->reply(textReply("a")); });

    EXPECT_EQ(send("HEAD").raw, "Content-Type: text/plain\nContent-Length: 1\n\n");
}

TEST_F(BwaRestLaterTest, GivenReplyBeforeTheHandlerReturnsSendsIt)
{
    whenCalled = [this] {
        EXPECT_TRUE(later->reply(textReply("a")));
        return BwaRestReply(*later);
    };

    EXPECT_EQ(send().body, "a");
}

TEST_F(BwaRestLaterTest, GivenReplyWithinALoopOfTheHandlerSendsIt)
{
    whenCalled = [this] {
        later->reply(textReply("a"));
        QCoreApplication::processEvents();
        return BwaRestReply(*later);
    };

    EXPECT_EQ(send().body, "a");
}

TEST_F(BwaRestLaterTest, WhenAllCallsEndBeforeTheHandlerReturnsIs503)
{
    whenCalled = [this] {
        service->endCalls();
        return BwaRestReply(*later);
    };

    EXPECT_EQ(send().statusCode, 503);
}

TEST_F(BwaRestLaterTest, GivenTwoRepliesSendsTheFirst)
{
    afterwards([this] {
        EXPECT_TRUE(later->isOpen());
        EXPECT_TRUE(later->reply(textReply("a")));
        EXPECT_FALSE(later->isOpen());
        EXPECT_FALSE(later->reply(textReply("b")));
    });

    EXPECT_EQ(send().body, "a");
}

TEST_F(BwaRestLaterTest, GivenRepliesOfTwoThreadsSendsOne)
{
    for (int round = 0; round < 50; ++round) {
        std::optional<std::thread> threads[2];
        std::atomic<int> accepted{0};
        whenCalled = [&] {
            for (std::optional<std::thread>& thread : threads) {
                thread.emplace([&accepted, handle = *later] {
                    accepted += handle.reply(textReply("a")) ? 1 : 0;
                });
            }
            return BwaRestReply(*later);
        };

        const BwaTestReply reply = send();
        threads[0]->join();
        threads[1]->join();

        EXPECT_EQ(reply.body, "a");
        EXPECT_EQ(accepted, 1);
    }
}

TEST_F(BwaRestLaterTest, WhenTheLastHandleGoesIsALogged500)
{
    afterwards([this] { later.reset(); });

    const BwaTestReply reply = send();

    EXPECT_EQ(reply.body, R"({"status":500,"title":"Internal Server Error"})");
    EXPECT_EQ(reply.errorText, "Error in REST call GET \"/\": Nobody is left to answer the call");
}

TEST_F(BwaRestLaterTest, WhenTheLastHandleGoesInAnotherThreadIsALogged500)
{
    std::optional<std::thread> thread;
    whenCalled = [&] {
        BwaRestReply reply = *later;
        thread.emplace([handle = *std::exchange(later, std::nullopt)] {});
        return reply;
    };

    const BwaTestReply reply = send();
    thread->join();

    EXPECT_EQ(reply.statusCode, 500);
    EXPECT_THAT(reply.errorText.toStdString(), HasSubstr("Nobody is left"));
}

TEST_F(BwaRestLaterTest, WhenTheHandlerThrowsAnswersAndClosesTheHandle)
{
    int gone = 0;
    whenCalled = [&]() -> BwaRestReply {
        later->onGone([&gone] { ++gone; });
        throw std::runtime_error("broken");
    };

    const BwaTestReply reply = send();

    EXPECT_EQ(reply.statusCode, 500);
    EXPECT_EQ(reply.errorText, "Error in REST call GET \"/\": broken");
    EXPECT_FALSE(later->isOpen());
    EXPECT_FALSE(later->reply(textReply("a")));
    EXPECT_EQ(gone, 1);
}

TEST_F(BwaRestLaterTest, WhenTheHandlerRepliesItselfClosesTheHandle)
{
    whenCalled = [] { return textReply("a"); };

    EXPECT_EQ(send().body, "a");
    EXPECT_FALSE(later->isOpen());
}

TEST_F(BwaRestLaterTest, WhenTheDeadlinePassesIs503AndClosesTheHandle)
{
    deadline = 1;
    int gone = 0;
    whenCalled = [&] {
        later->onGone([&gone] { ++gone; });
        return BwaRestReply(*later);
    };

    const BwaTestReply reply = send();

    EXPECT_EQ(reply.body,
              R"({"detail":"The reply has taken too long","status":503,)"
              R"("title":"Service Unavailable"})");
    EXPECT_FALSE(later->isOpen());
    EXPECT_FALSE(later->reply(textReply("a")));
    EXPECT_EQ(gone, 1);
}

TEST_F(BwaRestLaterTest, WhenReplyComesBeforeTheDeadlineIsNotAnsweredAgain)
{
    deadline = 0;
    whenCalled = [this] {
        later->reply(textReply("a"));
        return BwaRestReply(*later);
    };

    EXPECT_EQ(send().body, "a");
    QCoreApplication::processEvents();
}

TEST_F(BwaRestLaterTest, WhenRepliedForgetsTheFunctionsOfItsEnd)
{
    const auto owned = std::make_shared<int>(0);
    afterwards([&] {
        later->onGone([owned] { ++*owned; });
        later->reply(textReply("a"));
        EXPECT_EQ(owned.use_count(), 1);
    });

    send();

    later->onGone([owned] { ++*owned; });
    EXPECT_EQ(owned.use_count(), 1);
    EXPECT_EQ(*owned, 0);
}

TEST_F(BwaRestLaterTest, WhenAlreadyGoneCallsTheFunctionSoon)
{
    whenCalled = [] { return textReply("a"); };
    send();
    int gone = 0;

    later->onGone([&gone] { ++gone; });
    EXPECT_EQ(gone, 0);
    QCoreApplication::processEvents();

    EXPECT_EQ(gone, 1);
}

TEST_F(BwaRestLaterTest, GivenAFunctionThatHoldsTheHandleStillEnds)
{
    deadline = 1;
    whenCalled = [this] {
        const BwaRestLater handle = *std::exchange(later, std::nullopt);
        handle.onGone([handle] { EXPECT_FALSE(handle.isOpen()); });
        return BwaRestReply(handle);
    };

    EXPECT_EQ(send().statusCode, 503);
}

TEST_F(BwaRestLaterTest, WhenTheServiceGoesIs503AndClosesTheHandle)
{
    int gone = 0;
    afterwards([&] {
        later->onGone([&gone] { ++gone; });
        service.reset();
    });

    const BwaTestReply reply = send();

    EXPECT_EQ(reply.body,
              R"({"detail":"The service stops","status":503,"title":"Service Unavailable"})");
    EXPECT_FALSE(later->reply(textReply("a")));
    EXPECT_EQ(gone, 1);
    later->onGone([&gone] { ++gone; });
    QCoreApplication::processEvents();
    EXPECT_EQ(gone, 1);
}

TEST_F(BwaRestLaterTest, WhenTheServiceGoesRightAfterAReplySendsThat)
{
    afterwards([this] {
        later->reply(textReply("a"));
        service.reset();
    });

    EXPECT_EQ(send().body, "a");
}

TEST_F(BwaRestLaterTest, WhenTheListenerHasGoneStillTakesTheReply)
{
    BwaTestRequest request("GET");
    request.setTimeout(1);

    EXPECT_THROW(request.sendTo(*service), std::runtime_error);

    EXPECT_TRUE(later->reply(textReply("a")));
    QCoreApplication::processEvents();
}

TEST_F(BwaRestLaterTest, GivenTheHandleOfAnotherCallIsALogged500)
{
    std::optional<BwaRestLater> first;
    whenCalled = [&] {
        if (!first) {
            first = *later;
        }
        return BwaRestReply(*first);
    };
    BwaTestReply second;
    afterwards([&] {
        second = send();
        first->reply(textReply("a"));
    });

    EXPECT_EQ(send().body, "a");
    EXPECT_EQ(second.statusCode, 500);
    EXPECT_EQ(second.errorText, "Error in REST call GET \"/\": The reply is that of another call");
}

TEST_F(BwaRestLaterTest, GivenAHandleAsItsReplyIsALogged500)
{
    afterwards([this] { later->reply(BwaRestReply(*later)); });

    const BwaTestReply reply = send();

    EXPECT_EQ(reply.statusCode, 500);
    EXPECT_EQ(reply.errorText, "Error in REST call GET \"/\": The reply is that of another call");
}

TEST_F(BwaRestLaterTest, AnswersManyCallsInAnyOrder)
{
    std::vector<BwaRestLater> handles;
    service->get("/many", [&handles](const BwaRestCall& call) {
        handles.push_back(call.later());
        return BwaRestReply(handles.back());
    });
    QByteArray order;
    std::function<void(int)> next = [&](int calls) {
        afterwards([&, calls] {
            if (calls > 0) {
                next(calls - 1);
                order += BwaTestRequest("GET", "/many").sendTo(*service).body;
                return;
            }
            handles[1].reply(textReply("1"));
            handles[2].reply(textReply("2"));
            handles[0].reply(textReply("0"));
        });
    };
    next(3);
    runEventLoopUntil([&] { return order.size() >= 3; });

    EXPECT_EQ(order, "210"); // the inner requests return first
}
