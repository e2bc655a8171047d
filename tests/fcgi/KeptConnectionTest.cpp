// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// What a web server may send on a connection that it keeps, beside one whole request after another.

#include "BwaStringStreaming.h"
#include "support/ListenerFixture.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <sys/socket.h>

namespace {

const int abortRequest = 2;
const int getValues = 9;

QByteArray keptRequest(const QByteArray& pathInfo, const QByteArray& body = QByteArray())
{
    return FcgiClient::requestBytes(apiRequest(pathInfo), body, true);
}

class BwaFcgiListenerKeptConnection : public ListenerFixture
{
protected:
    void SetUp() override
    {
        serve("/api",
              [this](BwaFcgiRequest* request) { hold ? hold(request) : answerPathInfo(request); });
        start();
        client = std::make_unique<FcgiClient>(path());
    }

    void expectServed(const QByteArray& pathInfo)
    {
        client->send(keptRequest(pathInfo));
        EXPECT_EQ(replyTo(*client).out, pathInfo);
    }

    std::unique_ptr<FcgiClient> client;
    std::function<void(BwaFcgiRequest*)> hold; // instead of an answer, unless empty
};

} // namespace

TEST_F(BwaFcgiListenerKeptConnection, ServesManyRequestsWithTheSameDescriptors)
{
    expectServed("/first");
    const int before = openDescriptors();

    for (int number = 0; number < 500; ++number) {
        expectServed("/" + QByteArray::number(number));
    }

    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(BwaFcgiListenerKeptConnection, GivenTwoRequestsAtOnceServesBoth)
{
    client->send(keptRequest("/first") + keptRequest("/second"));

    EXPECT_EQ(replyTo(*client).out, QByteArray("/first"));
    EXPECT_EQ(replyTo(*client).out, QByteArray("/second"));
}

TEST_F(BwaFcgiListenerKeptConnection, WhenTheBodyHasComeAndIsUnreadServesTheNextRequest)
{
    for (const int size : {10, 8000, 9000, 50000}) {
        client->send(keptRequest("/unread", QByteArray(size, 'x')));
        EXPECT_EQ(replyTo(*client).out, QByteArray("/unread"));

        expectServed("/next");
    }
}

// Where the next request would begin is not known.
TEST_F(BwaFcgiListenerKeptConnection, WhenTheBodyHasNotComeIsClosed)
{
    const QByteArray request = keptRequest("/unread", QByteArray(10000, 'x'));
    client->send(request.left(5000));

    EXPECT_EQ(replyTo(*client).out, QByteArray("/unread"));
    client->send(request.mid(5000));

    EXPECT_LT(millisecondsOf([this] { EXPECT_TRUE(client->isClosedByPeer()); }), 2000);
}

TEST_F(BwaFcgiListenerKeptConnection, GivenAnAbortBetweenRequestsServesTheNextOne)
{
    expectServed("/first");

    client->send(recordOf(1, abortRequest, QByteArray()));

    expectServed("/second");
    client->send(recordOf(1, abortRequest, QByteArray(), 200) + keptRequest("/third"));
    EXPECT_EQ(replyTo(*client).out, QByteArray("/third"));
}

TEST_F(BwaFcgiListenerKeptConnection, GivenASplitAbortBetweenRequestsServesTheNextOne)
{
    expectServed("/first");
    const QByteArray records = recordOf(1, abortRequest, QByteArray(), 5) + keptRequest("/second");

    for (int sent = 0; sent < 30; ++sent) {
        client->send(records.mid(sent, 1));
        replyTo(apiRequest("/other")); // came after that byte
    }
    client->send(records.mid(30));

    EXPECT_EQ(replyTo(*client).out, QByteArray("/second"));
}

TEST_F(BwaFcgiListenerKeptConnection, TellsTheValuesThatAreAskedFor)
{
    listener().setMostWaiting(1234);
    const QByteArray answer = recordOf(0, 10,
                                       QByteArray("\x0e\x04"
                                                  "FCGI_MAX_CONNS1234"
                                                  "\x0d\x04"
                                                  "FCGI_MAX_REQS1234"
                                                  "\x0f\x01"
                                                  "FCGI_MPXS_CONNS0"));

    client->send(recordOf(0, getValues,
                          QByteArray("\x0f\0FCGI_MPXS_CONNS"
                                     "\x04\0NONE"
                                     "\x0e\0FCGI_MAX_CONNS"
                                     "\x0d\0FCGI_MAX_REQS",
                                     17 + 6 + 16 + 15)));

    EXPECT_EQ(receivedBytes(*client, static_cast<int>(answer.size())), answer);
    expectServed("/next");
}

TEST_F(BwaFcgiListenerKeptConnection, GivenValuesAreAskedForInFrontOfARequestAnswersBoth)
{
    const QByteArray answer = recordOf(0, 10,
                                       QByteArray("\x0f\x01"
                                                  "FCGI_MPXS_CONNS0"));

    client->send(recordOf(0, getValues, QByteArray("\x0f\0FCGI_MPXS_CONNS", 17)) +
                 keptRequest("/next"));

    EXPECT_EQ(receivedBytes(*client, static_cast<int>(answer.size())), answer);
    EXPECT_EQ(replyTo(*client).out, QByteArray("/next"));
}

TEST_F(BwaFcgiListenerKeptConnection, GivenAnUnknownManagementRecordSaysSo)
{
    for (const int type : {12, 200}) {
        const QByteArray answer = recordOf(0, 11, static_cast<char>(type) + QByteArray(7, '\0'));

        client->send(recordOf(0, type, "what", 3));

        EXPECT_EQ(receivedBytes(*client, static_cast<int>(answer.size())), answer);
    }
    expectServed("/next");
}

TEST_F(BwaFcgiListenerKeptConnection, GivenAnotherVersionIsClosed)
{
    expectServed("/first");
    QByteArray request = keptRequest("/second");
    request[0] = '\2';

    client->send(request);

    EXPECT_TRUE(client->isClosedByPeer());
}

TEST_F(BwaFcgiListenerKeptConnection, GivenAnotherVersionWithinTheHeaderIsClosed)
{
    QByteArray request = keptRequest("/first");
    request[16] = '\2';

    client->send(request);

    EXPECT_TRUE(client->isClosedByPeer());
}

TEST_F(BwaFcgiListenerKeptConnection, GivenALargeRecordInFrontOfARequestIsClosed)
{
    client->send(recordOf(0, getValues, QByteArray(8192, 'x')));

    EXPECT_TRUE(client->isClosedByPeer());
}

TEST_F(BwaFcgiListenerKeptConnection, WhenAnsweredLaterServesTheNextRequest)
{
    BwaFcgiRequest* held = nullptr;
    hold = [&](BwaFcgiRequest* request) { held = request; };
    client->send(keptRequest("/later"));
    runEventLoopUntil([&] { return held != nullptr; });

    hold = nullptr;
    answerPathInfo(held);

    EXPECT_EQ(client->readReply().out, QByteArray("/later"));
    expectServed("/next");
}

// Headers

namespace {

class BwaFcgiListenerHeader : public ListenerFixture
{
protected:
    // A service that answers with the value of a variable.
    void startService(const char* variable)
    {
        serve("/api", [variable](BwaFcgiRequest* request) {
            request->out() << request->input()->getenv(QString::fromLatin1(variable));
            delete request;
        });
        start();
    }

    // Sends until the other end has closed the connection, or all.
    static int sentBytes(const FcgiClient& client, const QByteArray& bytes)
    {
        int sent = 0;
        ssize_t size = 1;
        while (size > 0 && sent < bytes.size()) {
            size = ::send(client.descriptor(), bytes.constData() + sent,
                          static_cast<std::size_t>(bytes.size() - sent), MSG_NOSIGNAL);
            sent += static_cast<int>(std::max<ssize_t>(size, 0));
        }
        return sent;
    }
};

} // namespace

TEST_F(BwaFcgiListenerHeader, Of300KilobytesIsServed)
{
    const QByteArray value(300 * 1024, 'v');
    startService("LARGE");
    FcgiReply reply;

    serveWhile([&] {
        FcgiClient client(path());
        client.sendRequest({{"SCRIPT_NAME", "/api"}, {"LARGE", value}}, "body");
        reply = client.readReply();
    });

    EXPECT_EQ(reply.out, value);
}

TEST_F(BwaFcgiListenerHeader, OfMoreThan4MegabytesIsRefused)
{
    startService("A");
    FcgiClient client(path());
    const QByteArray request =
        FcgiClient::requestBytes({{"LARGE", QByteArray(8 * 1024 * 1024, 'v')}});

    EXPECT_LT(sentBytes(client, request), 5 * 1024 * 1024);
    EXPECT_TRUE(client.isClosedByPeer());
    EXPECT_EQ(replyTo({{"SCRIPT_NAME", "/api"}, {"A", "next"}}).out, QByteArray("next"));
}

TEST_F(BwaFcgiListenerHeader, Of20000ParametersIsServed)
{
    FcgiParameters parameters = apiRequest();
    for (int number = 0; number < 20000; ++number) {
        const QByteArray text = QByteArray::number(number);
        parameters.append({"N" + text, "value " + text});
    }
    startService("N19999");

    EXPECT_EQ(replyTo(parameters).out, QByteArray("value 19999"));
}

TEST_F(BwaFcgiListenerHeader, CutAnywhereGivesItsDescriptorBack)
{
    startService("A");
    const FcgiParameters parameters = {{"SCRIPT_NAME", "/api"}, {"A", "value"}};
    replyTo(parameters);
    const int before = openDescriptors();
    const QByteArray request = FcgiClient::requestBytes(parameters);

    for (int end = 0; end < request.size() - 8; ++end) { // the last record is input
        FcgiClient(path()).send(request.left(end));
    }

    waitUntil([&] { return openDescriptors() <= before; });
    EXPECT_EQ(replyTo(parameters).out, QByteArray("value"));
}
