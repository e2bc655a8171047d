// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiListener.h"

#include "BwaStringStreaming.h"
#include "cgi/BwaCgiRequest.h"
#include "support/ErrorPage.h"
#include "support/ListenerFixture.h"
#include "support/MessageRecorder.h"
#include "support/QtPrinters.h"
#include "support/Skips.h"

#include <QFile>
#include <QMetaMethod>
#include <QPointer>
#include <QThread>

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class BwaFcgiListenerServing : public ListenerFixture
{
};

struct UnknownScript {
    const char* name;
    const char* scriptName;
    const char* pathInfo;
};

class BwaFcgiListenerUnknownScript
    : public ListenerFixture
    , public testing::WithParamInterface<UnknownScript>
{
};

QList<QByteArray> signaturesOf(const QMetaObject& metaObject)
{
    QList<QByteArray> signatures;
    for (int index = metaObject.methodOffset(); index < metaObject.methodCount(); ++index) {
        signatures.append(metaObject.method(index).methodSignature());
    }
    return signatures;
}

} // namespace

// To Qt, quint16 is ushort.
TEST(BwaFcgiListenerMetaObject, DeclaresSignalsAndSlotsInOrder)
{
    EXPECT_THAT(signaturesOf(BwaFcgiListener::staticMetaObject),
                ElementsAre("startListening(ushort)", "startListening()", "startListening(QString)",
                            "listeningError()", "drained()",
                            "requestCompleted(QString,int,qlonglong,qlonglong)", "listen(ushort)",
                            "listen()", "listen(QString)", "newRequest(FCGX_Request*)",
                            "tellGone()", "endDrained()"));
}

TEST_F(BwaFcgiListenerServing, HandsARequestToTheServiceOfItsScript)
{
    serve("/other", [](BwaFcgiRequest* request) { delete request; });
    serve("/api", answerPathInfo);
    start();

    const FcgiReply reply = replyTo(apiRequest("/users/3"));

    EXPECT_EQ(reply.out, QByteArray("/users/3"));
    EXPECT_EQ(reply.err, QByteArray());
    EXPECT_TRUE(reply.ended);
    EXPECT_EQ(reply.protocolStatus, 0);
}

TEST_F(BwaFcgiListenerServing, GivenNoScriptNameFindsTheServiceOfTheEmptyName)
{
    serve("", answerPathInfo);
    start();

    EXPECT_EQ(replyTo({{"PATH_INFO", "/x"}, {"A", "b"}}).out, QByteArray("/x"));
}

TEST_F(BwaFcgiListenerServing, GivesTheServiceTheBody)
{
    serve("/api", [](BwaFcgiRequest* request) {
        request->cgiRequest()->processBodyContent();
        request->out() << request->cgiRequest()->body().constData();
        delete request;
    });
    start();

    const FcgiReply reply = replyTo(
        {{"SCRIPT_NAME", "/api"}, {"CONTENT_TYPE", "text/plain"}, {"CONTENT_LENGTH", "4"}}, "body");

    EXPECT_EQ(reply.out, QByteArray("body"));
}

TEST_F(BwaFcgiListenerServing, GivenLimitsDoesNotTakeABodyBeyondThem)
{
    serve("/api", [](BwaFcgiRequest* request) {
        const bool isTaken = request->cgiRequest()->processBodyContent();
        request->out() << (isTaken ? "taken" : "refused");
        delete request;
    });
    BwaRequestLimits limits;
    limits.maxFormFields = 2;
    listener().setRequestLimits(limits);
    start();

    EXPECT_EQ(replyTo({{"SCRIPT_NAME", "/api"}, {"CONTENT_LENGTH", "3"}}, "a&b").out,
              QByteArray("taken"));
    EXPECT_EQ(replyTo({{"SCRIPT_NAME", "/api"}, {"CONTENT_LENGTH", "5"}}, "a&b&c").out,
              QByteArray("refused"));
}

TEST_F(BwaFcgiListenerServing, AnswersInTheOrderOfAcceptance)
{
    QByteArray order;
    serve("/api", [&](BwaFcgiRequest* request) {
        order += request->cgiRequest()->environment().pathInfo().toLatin1();
        answerPathInfo(request);
    });
    start();
    std::vector<std::unique_ptr<FcgiClient>> clients;

    for (int number = 0; number < 20; ++number) {
        clients.push_back(std::make_unique<FcgiClient>(path()));
        clients.back()->sendRequest(apiRequest(QByteArray(1, static_cast<char>('a' + number))));
        clients.back()->shutDownSending();
    }

    for (int number = 0; number < 20; ++number) {
        EXPECT_EQ(replyTo(*clients[static_cast<size_t>(number)]).out,
                  QByteArray(1, static_cast<char>('a' + number)));
    }
    EXPECT_EQ(order, QByteArray("abcdefghijklmnopqrst"));
}

TEST_F(BwaFcgiListenerServing, RunsServicesInItsOwnThread)
{
    QThread* thread = nullptr;
    serve("/api", [&](BwaFcgiRequest* request) {
        thread = QThread::currentThread();
        delete request;
    });
    start();

    replyTo(apiRequest());

    EXPECT_EQ(thread, QThread::currentThread());
}

TEST_F(BwaFcgiListenerServing, WhileAServiceRunsAcceptsTheNextConnection)
{
    std::unique_ptr<FcgiClient> second;
    serve("/first", [&](BwaFcgiRequest* request) {
        const int before = connectedSockets();
        second = std::make_unique<FcgiClient>(path());
        waitUntil([&] { return connectedSockets() == before + 2; });
        answerPathInfo(request);
    });
    serve("/api", answerPathInfo);
    start();

    EXPECT_EQ(replyTo({{"SCRIPT_NAME", "/first"}, {"PATH_INFO", "/x"}}).out, QByteArray("/x"));
    second->sendRequest(apiRequest("/y"));
    second->shutDownSending();
    EXPECT_EQ(replyTo(*second).out, QByteArray("/y"));
}

TEST_F(BwaFcgiListenerServing, WhenARequestIsDeletedWithoutAReplySaysSoInTheLog)
{
    serve("/api", [](BwaFcgiRequest* request) { delete request; });
    start();

    const FcgiReply reply = replyTo(apiRequest("/x"));

    EXPECT_EQ(reply.out, QByteArray());
    EXPECT_EQ(reply.err,
              QByteArray("Error in the FastCGI listener: A request to script \"/api\" with path "
                         "info \"/x\" was deleted without a reply"));
}

TEST_F(BwaFcgiListenerServing, WhenTheServiceAnswersLaterTouchesTheRequestNoMore)
{
    BwaFcgiRequest* kept = nullptr;
    serve("/api", [&](BwaFcgiRequest* request) { kept = request; });
    start();
    FcgiClient client(path());
    client.sendRequest(apiRequest("/later"));
    client.shutDownSending();

    runEventLoopUntil([&] { return kept != nullptr; });
    answerPathInfo(kept);

    EXPECT_EQ(replyTo(client).out, QByteArray("/later"));
}

TEST_F(BwaFcgiListenerServing, WhenListeningAlreadyIgnoresOtherAddresses)
{
    const QByteArray other = folder().toLatin1() + "/other";
    serve("/api", answerPathInfo);
    start();

    listener().listen(QString::fromLatin1(other));
    listener().listen(9000);
    listener().listen();

    EXPECT_EQ(replyTo(apiRequest("/x")).out, QByteArray("/x"));
    EXPECT_FALSE(QFile::exists(QString::fromLatin1(other)));
    EXPECT_EQ(listeningErrors, 0);
}

TEST_F(BwaFcgiListenerServing, NamesItsThread)
{
    serve("/api", answerPathInfo);
    EXPECT_THAT(threadNames(), Not(Contains("BwaFcgiListener")));

    start();
    replyTo(apiRequest());

    // The system keeps 15 characters of "BwaFcgiListener's thread".
    EXPECT_THAT(threadNames(), Contains("BwaFcgiListener"));
}

TEST_F(BwaFcgiListenerServing, WhenDestroyedLeavesTheServicesAlone)
{
    const QPointer<FunctionService> service(serve("/api", answerPathInfo));
    start();
    replyTo(apiRequest());

    destroyListener();

    EXPECT_FALSE(service.isNull());
}

TEST_F(BwaFcgiListenerServing, WhenTheFrontServerKeepsConnectionsServesOneRequestAfterTheOther)
{
    serve("/api", answerPathInfo);
    start();
    FcgiClient client(path());

    for (const char* pathInfo : {"/first", "/second", "/third"}) {
        client.send(FcgiClient::requestBytes(apiRequest(pathInfo), QByteArray(), true));

        EXPECT_EQ(replyTo(client).out, QByteArray(pathInfo));
    }
    client.sendRequest(apiRequest("/last"));
    EXPECT_EQ(replyTo(client).out, QByteArray("/last"));
    EXPECT_TRUE(client.isClosedByPeer());
}

// What has not been read makes closing a connection by TCP a reset, and what waits to be sent is
// lost.
TEST_F(BwaFcgiListenerServing, WhenTheBodyOfAKeptConnectionIsUnreadALongReplyArrivesWhole)
{
    const QByteArray text(400000, 'x');
    bool finished = false;
    serve("/api", [&](BwaFcgiRequest* request) {
        request->out().write(text.constData(), text.size());
        delete request;
        finished = true;
    });
    const auto client = FcgiClient::onPort(startOnPort());
    client->send(FcgiClient::requestBytes(apiRequest(), QByteArray(60000, 'x'), true));
    runEventLoopUntil([&] { return finished; });

    const FcgiReply reply = client->readReply();

    EXPECT_EQ(reply.out.size(), text.size());
    EXPECT_TRUE(reply.ended);
}

TEST_F(BwaFcgiListenerServing, HandsTheSocketToNoProgramThatIsStarted)
{
    serve("/api", answerPathInfo);
    start();
    replyTo(apiRequest());

    EXPECT_EQ(fcntl(listeningSocket(), F_GETFD), FD_CLOEXEC);
}

TEST_F(BwaFcgiListenerServing, WhenTheClientGoesBeforeTheReplyServesTheNextOne)
{
    serve("/api", [](BwaFcgiRequest* request) {
        for (int line = 0; line < 100; ++line) {
            request->out() << "a long reply" << std::endl;
        }
        answerPathInfo(request);
    });
    start();
    FcgiClient client(path());
    client.sendRequest(apiRequest("/gone"), QByteArray(5000, 'x'));
    client.abort();

    const FcgiReply reply = replyTo(apiRequest("/next"));

    EXPECT_TRUE(reply.out.endsWith("a long reply\n/next"));
}

// Unknown scripts

TEST_P(BwaFcgiListenerUnknownScript, IsLoggedAndAnsweredWithNotFound)
{
    serve("/api", answerPathInfo);
    start();
    FcgiClient client(path());
    client.sendRequest(
        {{"SCRIPT_NAME", GetParam().scriptName}, {"PATH_INFO", GetParam().pathInfo}});
    client.shutDownSending();

    const FcgiReply reply = replyTo(client);

    EXPECT_EQ(reply.err,
              QByteArray("Error in the FastCGI listener: Cannot find a Web service to handle a "
                         "request to script \"") +
                  GetParam().scriptName + "\" with path info \"" + GetParam().pathInfo + "\"");
    EXPECT_EQ(reply.out, errorPage(404, "Not Found"));
    EXPECT_TRUE(reply.ended);
    EXPECT_EQ(reply.protocolStatus, 0);
    EXPECT_TRUE(client.isClosedByPeer());
}

INSTANTIATE_TEST_SUITE_P(Cases, BwaFcgiListenerUnknownScript,
                         testing::Values(UnknownScript{"Other", "/other", "/users/3"},
                                         UnknownScript{"OtherCase", "/API", "/users/3"},
                                         UnknownScript{"Prefix", "/ap", "i"},
                                         UnknownScript{"Longer", "/api/", ""},
                                         UnknownScript{"Empty", "", "/api"},
                                         UnknownScript{"Markers", "/%2%1", "/%1%2%3"},
                                         UnknownScript{"Latin1", "/caf\xe9", "/\xff"}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(BwaFcgiListenerServing, GivenNoServicesAtAllAnswersNotFound)
{
    start();

    EXPECT_EQ(replyTo(apiRequest()).out, errorPage(404, "Not Found"));
}

// Exceptions

namespace {

class BwaFcgiListenerException : public ListenerFixture
{
protected:
    // Serves a request with a service that throws that text, without and after deleting it.
    FcgiReply replyOfServiceThatLeaves(const std::string& what)
    {
        serve("/api", [what](BwaFcgiRequest* request) {
            keep(request);
            request->out() << "so far";
            throw std::runtime_error(what);
        });
        start();
        return replyTo(apiRequest());
    }

    FcgiReply replyOfServiceThatDeletes(const std::string& what)
    {
        serve("/api", [what](BwaFcgiRequest* request) {
            request->out() << "all";
            delete request;
            throw std::runtime_error(what);
        });
        start();
        return replyTo(apiRequest());
    }

    const MessageRecorder messages;
};

} // namespace

TEST_F(BwaFcgiListenerException, IsLoggedAndFinishesTheRequest)
{
    const FcgiReply reply = replyOfServiceThatLeaves("out of paper");

    EXPECT_THAT(messages.debugTexts(),
                ElementsAre("An exception occurs while processing a FastCGI request: "
                            "out of paper"));
    EXPECT_EQ(reply.out, QByteArray("so far"));
    EXPECT_EQ(reply.err, QByteArray());
    EXPECT_TRUE(reply.ended);
}

TEST_F(BwaFcgiListenerException, GivenRequestWasDeletedIsLoggedOnly)
{
    const FcgiReply reply = replyOfServiceThatDeletes("out of paper");

    EXPECT_THAT(messages.debugTexts(),
                ElementsAre("An exception occurs while processing a FastCGI request: "
                            "out of paper"));
    EXPECT_EQ(reply.out, QByteArray("all"));
    EXPECT_TRUE(reply.ended);
}

TEST_F(BwaFcgiListenerException, GivenRequestWasDeletedServesTheNextOne)
{
    replyOfServiceThatDeletes("out of paper");

    EXPECT_EQ(replyTo(apiRequest()).out, QByteArray("all"));
}

TEST_F(BwaFcgiListenerException, ServesTheNextRequest)
{
    replyOfServiceThatLeaves("out of paper");

    EXPECT_EQ(replyTo(apiRequest()).out, QByteArray("so far"));
    EXPECT_EQ(messages.debugTexts().size(), 2);
}

TEST_F(BwaFcgiListenerException, LogsMarkersAndLatin1TextAsTheyStand)
{
    replyOfServiceThatDeletes("100 %s %1 caf\xe9");

    EXPECT_THAT(messages.debugTexts(),
                ElementsAre("An exception occurs while processing a FastCGI request: "
                            "100 %s %1 caf\xe9"));
}

TEST_F(BwaFcgiListenerException, WhenTheFrontServerKeepsConnectionsServesTheNextOnIt)
{
    bool isFirst = true;
    serve("/api", [&](BwaFcgiRequest* request) {
        if (std::exchange(isFirst, false)) {
            keep(request);
            throw std::runtime_error("out of paper");
        }
        answerPathInfo(request);
    });
    start();
    FcgiClient client(path());
    client.send(FcgiClient::requestBytes(apiRequest(), QByteArray(), true));
    EXPECT_TRUE(replyTo(client).ended);

    client.send(FcgiClient::requestBytes(apiRequest("/next"), QByteArray(), true));

    EXPECT_EQ(replyTo(client).out, QByteArray("/next"));
}

TEST_F(BwaFcgiListenerException, LeavesAKeptRequestReadable)
{
    BwaFcgiRequest* kept = nullptr;
    serve("/api", [&](BwaFcgiRequest* request) {
        kept = request;
        throw std::runtime_error("out of paper");
    });
    start();
    replyTo(apiRequest("/x"), "body");

    EXPECT_EQ(kept->fullPath(), QStringLiteral("/api/x"));
    EXPECT_EQ(kept->cgiRequest()->environment().pathInfo(), QStringLiteral("/x"));
    EXPECT_EQ(kept->input()->read(4), QByteArray());
    EXPECT_EQ(kept->readAvailable(4), QByteArray());
    EXPECT_TRUE(kept->bodyIsOver());
    EXPECT_TRUE(kept->isGone());
    EXPECT_FALSE(kept->canWrite());
    EXPECT_EQ(kept->connection(), -1);
    EXPECT_EQ(kept->fcgxRequest(), nullptr);
    delete kept;
}

// Lingering close

TEST_F(BwaFcgiListenerServing, WhenAllInputHasBeenReadClosesTheConnectionAtOnce)
{
    serve("/api", [](BwaFcgiRequest* request) {
        request->cgiRequest()->processBodyContent();
        delete request;
    });
    start();
    FcgiClient client(path());
    client.sendRequest(apiRequest(), "body");

    EXPECT_TRUE(replyTo(client).ended);
    EXPECT_LT(millisecondsOf([&] { EXPECT_TRUE(client.isClosedByPeer()); }), 150);
}

// The end of the body does not come.
TEST_F(BwaFcgiListenerServing, WhenInputIsMissingWaitsForItNoLongerThanAMoment)
{
    if (underEmulator()) {
        GTEST_SKIP() << "it measures time";
    }
    qint64 milliseconds = -1;
    serve("/api",
          [&](BwaFcgiRequest* request) { milliseconds = millisecondsOf([&] { delete request; }); });
    start();
    FcgiClient client(path());
    client.send(FcgiClient::requestBytes(apiRequest()).chopped(8));

    EXPECT_TRUE(replyTo(client).ended);
    EXPECT_LT(milliseconds, 100); // the service does not wait
    const qint64 closing = millisecondsOf([&] { EXPECT_TRUE(client.isClosedByPeer()); });
    EXPECT_LT(closing, 5000); // 1000 are meant
}

TEST_F(BwaFcgiListenerServing, WhenAClientGoesOnSendingWaitsForItNoLongerThanAMoment)
{
    if (underEmulator()) {
        GTEST_SKIP() << "it measures time";
    }
    serve("/api", [](BwaFcgiRequest* request) { delete request; });
    start();
    FcgiClient client(path());
    client.send(FcgiClient::requestBytes(apiRequest()).chopped(8));
    EXPECT_TRUE(replyTo(client).ended);

    const qint64 milliseconds = millisecondsOf([&] { // until the connection is closed
        waitUntil([&] { return ::send(client.descriptor(), "x", 1, MSG_NOSIGNAL) < 0; });
    });

    EXPECT_LT(milliseconds, 5000); // 1000 are meant
}

TEST_F(BwaFcgiListenerServing, LeavesTheEnvironmentAsItWas)
{
    unsetenv("LIBFCGI_OS_CLOSE_POLL_TIMEOUT");
    serve("/api", answerPathInfo);

    start();

    EXPECT_EQ(getenv("LIBFCGI_OS_CLOSE_POLL_TIMEOUT"), nullptr);
}

// libfcgi would write its answer to this record beyond the end of a buffer.
TEST_F(BwaFcgiListenerServing, GivenAManagementRecordWithinAHeaderClosesTheConnection)
{
    serve("/api", answerPathInfo);
    start();
    QByteArray question;
    for (int count = 0; count < 5; ++count) {
        question += QByteArray("\x0f\0FCGI_MPXS_CONNS", 17);
    }
    QByteArray getValues = FcgiClient::record(9, question);
    getValues[3] = 0; // the request id
    QByteArray request = FcgiClient::requestBytes(apiRequest("/hostile"));
    FcgiClient hostile(path());

    hostile.send(request.insert(16, getValues));

    EXPECT_TRUE(hostile.isClosedByPeer());
    EXPECT_EQ(replyTo(apiRequest("/next")).out, QByteArray("/next"));
}

// libfcgi would end the process when it cannot allocate them.
TEST_F(BwaFcgiListenerServing, GivenAParameterOfFourGigabytesClosesTheConnection)
{
    serve("/api", answerPathInfo);
    start();
    QByteArray request = FcgiClient::requestBytes(apiRequest("/hostile"));
    FcgiClient hostile(path());

    hostile.send(request.insert(
        16, FcgiClient::record(4, QByteArray("\xff\xff\xff\xfe\xff\xff\xff\xfe", 8))));

    EXPECT_TRUE(hostile.isClosedByPeer());
    EXPECT_EQ(replyTo(apiRequest("/next")).out, QByteArray("/next"));
}

TEST_F(BwaFcgiListenerServing, GivenParametersThatWereCutShortDoesNotActOnThem)
{
    QList<QString> methods;
    serve("/api", [&](BwaFcgiRequest* request) {
        methods.append(request->cgiRequest()->environment().requestMethod());
        delete request;
    });
    start();
    const QByteArray beginning = FcgiClient::requestBytes({}).left(16);
    FcgiClient cutShort(path());
    cutShort.send(beginning +
                  FcgiClient::record(4,
                                     QByteArray("\x0b\x04SCRIPT_NAME/api", 17) +
                                         QByteArray("\x0e\x06REQUEST_METHODDELETE", 22)));
    cutShort.shutDownSending();

    EXPECT_TRUE(replyTo({{"SCRIPT_NAME", "/api"}, {"REQUEST_METHOD", "GET"}}).ended);

    EXPECT_THAT(methods, testing::ElementsAre(QStringLiteral("GET")));
}

// Signals of the process

namespace {

void ignoreSignal(int)
{
}

struct Disposition {
    const char* name;
    int signal;
    void (*handler)(int);
};

class BwaFcgiListenerSignalDisposition
    : public ListenerFixture
    , public testing::WithParamInterface<Disposition>
{
};

} // namespace

TEST_P(BwaFcgiListenerSignalDisposition, StaysAsItWas)
{
    struct sigaction before = {};
    before.sa_handler = GetParam().handler;
    before.sa_flags = SA_RESTART;
    sigaction(GetParam().signal, &before, nullptr);
    serve("/api", answerPathInfo);

    start();
    replyTo(apiRequest());

    struct sigaction after = {};
    sigaction(GetParam().signal, nullptr, &after);
    EXPECT_EQ(after.sa_handler, GetParam().handler);
    EXPECT_EQ(after.sa_flags & SA_RESTART, SA_RESTART);
}

INSTANTIATE_TEST_SUITE_P(Cases, BwaFcgiListenerSignalDisposition,
                         testing::Values(Disposition{"TermDefault", SIGTERM, SIG_DFL},
                                         Disposition{"TermIgnored", SIGTERM, SIG_IGN},
                                         Disposition{"TermHandled", SIGTERM, ignoreSignal},
                                         Disposition{"User1Default", SIGUSR1, SIG_DFL},
                                         Disposition{"User1Ignored", SIGUSR1, SIG_IGN},
                                         Disposition{"User1Handled", SIGUSR1, ignoreSignal}),
                         [](const auto& info) { return std::string(info.param.name); });
