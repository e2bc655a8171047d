// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The signal BwaFcgiListener::requestCompleted().

#include "BwaStringStreaming.h"
#include "support/ErrorPage.h"
#include "support/ListenerFixture.h"
#include "support/MessageRecorder.h"
#include "support/QtPrinters.h"

#include <QElapsedTimer>

#include <gmock/gmock.h>

#include <ostream>
#include <stdexcept>
#include <utility>

namespace {

using testing::ElementsAre;

struct Completion {
    QString path;
    int status;
    qint64 bytes;

    bool operator==(const Completion& other) const
    {
        return path == other.path && status == other.status && bytes == other.bytes;
    }
};

void PrintTo(const Completion& completion, std::ostream* stream)
{
    *stream << completion.path.toStdString() << ' ' << completion.status << ' ' << completion.bytes;
}

class BwaFcgiListenerCompletion : public ListenerFixture
{
protected:
    void startWith(const FunctionService::Answer& answer)
    {
        serve("/api", answer);
        QObject::connect(&listener(), &BwaFcgiListener::requestCompleted,
                         [this](const QString& path, int status, qint64 bytes, qint64 time) {
                             completions.append({path, status, bytes});
                             milliseconds = time;
                         });
        start();
    }

    QList<Completion> completions;
    qint64 milliseconds = -1; // of the last
};

struct Header {
    const char* name;
    const char* text;
    int status;
};

class BwaFcgiListenerCompletionStatus
    : public BwaFcgiListenerCompletion
    , public testing::WithParamInterface<Header>
{
};

} // namespace

TEST_P(BwaFcgiListenerCompletionStatus, IsThatOfTheHeader)
{
    const QByteArray text(GetParam().text);
    startWith([&](BwaFcgiRequest* request) {
        request->out() << text.constData();
        delete request;
    });

    replyTo(apiRequest("/users/3"));

    EXPECT_THAT(
        completions,
        ElementsAre(Completion{QStringLiteral("/api/users/3"), GetParam().status, text.size()}));
    EXPECT_GE(milliseconds, 0);
}

TEST_P(BwaFcgiListenerCompletionStatus, WhenWrittenByteByByteIsTheSame)
{
    const QByteArray text(GetParam().text);
    startWith([&](BwaFcgiRequest* request) {
        for (const char byte : text) {
            request->out() << byte << std::flush;
        }
        delete request;
    });

    replyTo(apiRequest());

    EXPECT_THAT(completions,
                ElementsAre(Completion{QStringLiteral("/api"), GetParam().status, text.size()}));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BwaFcgiListenerCompletionStatus,
    testing::Values(
        Header{"StatusLine", "Status: 201 Created\nContent-Type: text/plain\n\nbody", 201},
        Header{"StatusLineBehindOthers", "A: b\r\nStatus: 503 Busy\r\n\r\n", 503},
        Header{"StatusLineInCapitals", "STATUS:404\n\n", 404},
        Header{"HttpLine", "HTTP/1.1 418 I'm a teapot\nA: b\n\nbody", 418},
        Header{"HttpLineOfVersion2", "HTTP/2 204 No Content\n\n", 204},
        Header{"LocationOnly", "Location: /login\n\n", 302},
        Header{"LocationBehindAStatus", "Status: 301 Moved\nLocation: /login\n\n", 301},
        Header{"StatusBehindALocation", "Location: /login\nStatus: 303 See Other\n\n", 303},
        Header{"LongLine", "Location: /a/path/that/is/longer/than/what/is/looked/at\n\n", 302},
        Header{"None", "Content-Type: text/plain\n\nStatus: 500 is text here\n", 200},
        Header{"OnlyText", "no line end", 200}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(BwaFcgiListenerCompletion, OfARequestThatIsAnsweredLaterComesThen)
{
    BwaFcgiRequest* held = nullptr;
    startWith([&](BwaFcgiRequest* request) { held = request; });
    FcgiClient client(path());
    client.sendRequest(apiRequest("/later"));
    runEventLoopUntil([&] { return held != nullptr; });
    QElapsedTimer timer;
    timer.start();
    runEventLoopUntil([&] { return timer.elapsed() >= 50; });
    EXPECT_TRUE(completions.isEmpty());

    answerPathInfo(std::exchange(held, nullptr));

    EXPECT_THAT(completions, ElementsAre(Completion{QStringLiteral("/api/later"), 200, 6}));
    EXPECT_GE(milliseconds, 49);
}

TEST_F(BwaFcgiListenerCompletion, OfAnUnknownScriptIsNotFound)
{
    startWith(answerPathInfo);

    replyTo({{"SCRIPT_NAME", "/other"}, {"PATH_INFO", "/x"}});

    EXPECT_THAT(completions,
                ElementsAre(Completion{QStringLiteral("/other/x"), 404,
                                       errorPage(404, "Not Found").size()}));
}

TEST_F(BwaFcgiListenerCompletion, OfOneThatThrewIsThatOfItsReply)
{
    const MessageRecorder messages;
    startWith([](BwaFcgiRequest* request) {
        keep(request);
        request->out() << "Status: 202 Accepted\n\n";
        throw std::runtime_error("out of paper");
    });

    replyTo(apiRequest("/x"));

    EXPECT_THAT(completions, ElementsAre(Completion{QStringLiteral("/api/x"), 202, 22}));
}

TEST_F(BwaFcgiListenerCompletion, OfOneThatWasDeletedWithoutAReplyHasNoBytes)
{
    startWith([](BwaFcgiRequest* request) { delete request; });

    replyTo(apiRequest("/x"));

    EXPECT_THAT(completions, ElementsAre(Completion{QStringLiteral("/api/x"), 200, 0}));
}

TEST_F(BwaFcgiListenerCompletion, OfALongReplyHasAllItsBytes)
{
    startWith([](BwaFcgiRequest* request) {
        request->out() << "Status: 200 OK\n\n" << QString(1000000, QLatin1Char('x'));
        delete request;
    });

    serveWhile([this] {
        FcgiClient client(path());
        client.sendRequest(apiRequest());
        EXPECT_EQ(client.readReply().out.size(), 1000016);
    });

    EXPECT_THAT(completions, ElementsAre(Completion{QStringLiteral("/api"), 200, 1000016}));
}

TEST_F(BwaFcgiListenerCompletion, ComesForEachRequestOfAKeptConnection)
{
    startWith(answerPathInfo);
    FcgiClient client(path());

    for (const char* const pathInfo : {"/a", "/bc"}) {
        client.send(FcgiClient::requestBytes(apiRequest(pathInfo), QByteArray(), true));
        replyTo(client);
    }

    EXPECT_THAT(completions,
                ElementsAre(Completion{QStringLiteral("/api/a"), 200, 2},
                            Completion{QStringLiteral("/api/bc"), 200, 3}));
}
