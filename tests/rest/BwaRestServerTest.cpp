// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Each test needs a process of its own, which CTest gives it: the end of a listener is the end of
// the FastCGI library.

#include "rest/BwaRestServer.h"

#include "fcgi/BwaFcgiListener.h"
#include "rest/BwaRestProblem.h"
#include "rest/BwaRestService.h"
#include "support/Application.h"
#include "support/FcgiClient.h"
#include "support/Skips.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <future>
#include <thread>
#include <vector>

#include <unistd.h>

using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

FcgiParameters parameters(const QByteArray& path)
{
    return {{"REQUEST_METHOD", "GET"}, {"SCRIPT_NAME", "/api"}, {"PATH_INFO", path}};
}

void stop(int signal = SIGTERM)
{
    ::kill(::getpid(), signal);
}

class BwaRestServerTest : public testing::Test
{
protected:
    BwaRestServerTest()
    {
        api.get("/{name}", [](const BwaRestCall& call) {
            return BwaRestReply::bytes(call.text("name").toUtf8(), "text/plain");
        });
        api.get("/held", [this](const BwaRestCall& call) {
            handles.push_back(call.later());
            whenHeld();
            return BwaRestReply(handles.back());
        });
    }

    // What run() returns while @a client does something in another thread.
    int run(BwaRestServer& server, const std::function<void(FcgiClient&)>& client)
    {
        std::thread thread([&] {
            FcgiClient connection(path());
            client(connection);
        });
        const int result = server.run(QString::fromLocal8Bit(path()));
        thread.join();
        return result;
    }

    QByteArray path() const { return folder.path().toLocal8Bit() + "/socket"; }

    Application application;
    QTemporaryDir folder;
    BwaRestService api;
    std::vector<BwaRestLater> handles;
    std::function<void()> whenHeld = [] { stop(); };
    BwaRestServer server{{{QString::fromLatin1("/api"), &api}}};
};

} // namespace

TEST_F(BwaRestServerTest, ServesUntilItIsTerminated)
{
    const int result = run(server, [](FcgiClient& client) {
        client.sendRequest(parameters("/a"));
        EXPECT_EQ(client.readReply().out,
                  "Content-Type: text/plain\n"
                  "Content-Length: 1\n\na");
        stop();
    });

    EXPECT_EQ(result, 0);
}

TEST_F(BwaRestServerTest, PreparesTheListenerBeforeItListens)
{
    QList<int> statuses;
    server.prepare([&statuses](BwaFcgiListener& listener) {
        QObject::connect(&listener, &BwaFcgiListener::requestCompleted, &listener,
                         [&statuses](const QString&, int status) { statuses.append(status); });
    });

    run(server, [](FcgiClient& client) {
        client.sendRequest(parameters("/a/b"));
        client.readReply();
        stop();
    });

    EXPECT_EQ(statuses, QList<int>{404});
}

TEST_F(BwaRestServerTest, GivenInterruptStops)
{
    EXPECT_EQ(run(server, [](FcgiClient&) { stop(SIGINT); }), 0);
}

TEST_F(BwaRestServerTest, WhenRunHasReturnedLeavesTheSignalsAsTheyWere)
{
    struct sigaction before = {};
    struct sigaction after = {};
    ::sigaction(SIGTERM, nullptr, &before);

    run(server, [](FcgiClient&) { stop(); });

    ::sigaction(SIGTERM, nullptr, &after);
    EXPECT_EQ(after.sa_handler, before.sa_handler);
}

TEST_F(BwaRestServerTest, WhenItCannotListenSaysSo)
{
    testing::internal::CaptureStderr();

    const int result = server.run(folder.path() + QString::fromLatin1("/missing/socket"));

    EXPECT_EQ(result, 1);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("/missing/socket"));
}

TEST_F(BwaRestServerTest, WhenStoppingAnswersWhatIsOpen)
{
    QObject::connect(&api, &BwaRestService::stopping, &api,
                     [this] { EXPECT_TRUE(handles.front().reply(BwaRestReply::empty(202))); });

    const int result = run(server, [](FcgiClient& client) {
        client.sendRequest(parameters("/held"));
        EXPECT_EQ(client.readReply().out, "Status: 202 Accepted\n\n");
    });

    EXPECT_EQ(result, 0);
}

TEST_F(BwaRestServerTest, WhenTheTimeToStopIsOverAnswersWith503)
{
    server.stopWithin(1);

    const int result = run(server, [](FcgiClient& client) {
        client.sendRequest(parameters("/held"));
        EXPECT_THAT(client.readReply().out.toStdString(),
                    HasSubstr(R"({"detail":"The service stops","status":503,)"));
    });

    EXPECT_EQ(result, 0);
    EXPECT_FALSE(handles.front().isOpen());
}

TEST_F(BwaRestServerTest, WhenTheClientGoesClosesTheHandle)
{
    std::promise<void> held;
    bool isGone = false;
    whenHeld = [&] {
        handles.back().onGone([&isGone] {
            isGone = true;
            stop();
        });
        held.set_value();
    };

    const int result = run(server, [&held](FcgiClient& client) {
        client.sendRequest(parameters("/held"));
        held.get_future().wait();
        client.abort();
    });

    EXPECT_EQ(result, 0);
    EXPECT_TRUE(isGone);
    EXPECT_FALSE(handles.front().reply(BwaRestReply::empty()));
}

TEST_F(BwaRestServerTest, WhenTheClientGoesFinishesTheWorkOnThePool)
{
    std::promise<void> started;
    std::promise<void> gone;
    bool isFinished = false;
    api.get("/work", [&](const BwaRestCall& call) {
        call.later().onGone([&gone] { gone.set_value(); });
        return call.onPoolThen(
            [&](const BwaRestCancel& cancel) {
                started.set_value();
                gone.get_future().wait();
                return cancel.isRequested();
            },
            [&](bool isCancelled) {
                isFinished = isCancelled;
                stop();
                return BwaRestReply::empty();
            });
    });

    const int result = run(server, [&started](FcgiClient& client) {
        client.sendRequest(parameters("/work"));
        started.get_future().wait();
        client.abort();
    });

    EXPECT_EQ(result, 0);
    EXPECT_TRUE(isFinished);
}

TEST_F(BwaRestServerTest, AnswersManyCallsFromThePoolAtOnce)
{
    if (underThreadSanitizer()) {
        GTEST_SKIP() << "it does not see the lock under which Qt's pool hands queued work over";
    }
    api.get("/jobs/{n:int}", [](const BwaRestCall& call) {
        return call.onPool([n = call.number("n")](const BwaRestCancel&) {
            return BwaRestReply::bytes(QByteArray::number(n), "text/plain");
        });
    });

    const int result = run(server, [this](FcgiClient&) {
        std::vector<std::unique_ptr<FcgiClient>> clients;
        for (int n = 0; n < 30; ++n) {
            clients.push_back(std::make_unique<FcgiClient>(path()));
            clients.back()->sendRequest(parameters("/jobs/" + QByteArray::number(n)));
        }
        for (int n = 0; n < 30; ++n) {
            const QByteArray out = clients[static_cast<std::size_t>(n)]->readReply().out;
            EXPECT_TRUE(out.endsWith("\n\n" + QByteArray::number(n))) << n;
        }
        stop();
    });

    EXPECT_EQ(result, 0);
}

TEST_F(BwaRestServerTest, GivenAccessLogWritesALineForEachReply)
{
    testing::internal::CaptureStdout();

    run(server.accessLog(), [](FcgiClient& client) {
        client.sendRequest(parameters("/a\nb\xc3\xa4"));
        client.readReply();
        stop();
    });

    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                MatchesRegex("[0-9-]+T[0-9:.]+Z 200 [0-9]+ B [0-9]+ ms /api/a[?]b\xc3\xa4\n"));
}
