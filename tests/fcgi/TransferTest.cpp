// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Bodies and replies of any size and shape arrive as they were sent.

#include "BwaStringStreaming.h"
#include "support/ListenerFixture.h"
#include "support/QtPrinters.h"

#include <QCryptographicHash>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

#include <poll.h>

namespace {

const int abortRequest = 2;
const int standardInput = 5;
const unsigned int most = 100 * 1024 * 1024; // bytes; more than any body here

// Bytes that do not repeat soon.
QByteArray longText(int size)
{
    QByteArray text;
    text.reserve(size + 10);
    for (int number = 0; text.size() < size; ++number) {
        text += QByteArray::number(number) + '\n';
    }
    return text.left(size);
}

QByteArray digestOf(const QByteArray& bytes)
{
    return QByteArray::number(bytes.size()) + ' ' +
        QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex();
}

void answerBody(BwaFcgiRequest* request)
{
    const QByteArray body = request->input()->read(most);
    request->out().write(body.constData(), body.size());
    delete request;
}

class BwaFcgiListenerTransfer : public TransportFixture
{
protected:
    void startWith(const FunctionService::Answer& answer)
    {
        serve("/api", answer);
        startListening();
    }

    // The request's header, on a connection that is kept.
    static QByteArray header()
    {
        return FcgiClient::requestBytes(apiRequest(), QByteArray(), true).chopped(8);
    }

    FcgiReply replyToInput(const QByteArray& records)
    {
        FcgiReply reply;
        serveWhile([&] {
            const auto client = connectedClient();
            client->send(header() + records);
            reply = client->readReply();
        });
        return reply;
    }
};

// The body in records of 1 to 3 bytes, with padding, and records of another request between them.
QByteArray manyRecords(const QByteArray& body)
{
    QByteArray records;
    int size = 1;
    for (int position = 0; position < body.size(); position += size) {
        size = 1 + position % 3;
        records += recordOf(1, standardInput, body.mid(position, size), position % 256);
        if (position % 5 == 0) {
            records += recordOf(2, standardInput, QByteArray(position % 1000, 'f'), position % 7);
        }
    }
    return records + recordOf(1, standardInput, QByteArray(), 1);
}

} // namespace

TEST_P(BwaFcgiListenerTransfer, OfABodyInManySmallRecordsIsExact)
{
    const QByteArray body = longText(3000);
    startWith(answerBody);

    EXPECT_EQ(replyToInput(manyRecords(body)).out, body);
}

TEST_P(BwaFcgiListenerTransfer, OfAShortBodyWithForeignRecordsIsExact)
{
    const QByteArray end = recordOf(1, standardInput, QByteArray());
    startWith(answerBody);

    EXPECT_EQ(replyToInput(recordOf(2, standardInput, "foreign") +
                           recordOf(2, standardInput, QByteArray()) +
                           recordOf(1, standardInput, "body") + end)
                  .out,
              QByteArray("body"));
}

TEST_P(BwaFcgiListenerTransfer, WhenAForeignInputEndsFirstTheBodyIsExact)
{
    std::atomic<bool> isServing(false);
    startWith([&](BwaFcgiRequest* request) {
        isServing = true;
        answerBody(request);
    });

    serveWhile([&] {
        const auto client = connectedClient();
        client->send(header() + recordOf(2, standardInput, QByteArray()));
        waitUntil([&] { return isServing.load(); });
        client->send(recordOf(1, standardInput, "body") + recordOf(1, standardInput, QByteArray()));
        EXPECT_EQ(client->readReply().out, QByteArray("body"));
    });
}

TEST_P(BwaFcgiListenerTransfer, OfABodyOf5MegabytesIsExact)
{
    const QByteArray body = longText(5 * 1024 * 1024);
    startWith([](BwaFcgiRequest* request) {
        request->out() << digestOf(request->input()->read(most)).constData();
        delete request;
    });

    EXPECT_EQ(replyToInput(FcgiClient::requestBytes({}, body).mid(24)).out, digestOf(body));
}

// What has come is the service's; the connection cannot be kept.
TEST_P(BwaFcgiListenerTransfer, OfABodyThatIsAbortedEndsThere)
{
    startWith(answerBody);
    serveWhile([&] {
        const auto client = connectedClient();
        client->send(header() + recordOf(1, standardInput, "half") +
                     recordOf(1, abortRequest, QByteArray()));

        EXPECT_EQ(client->readReply().out, QByteArray("half"));
        EXPECT_TRUE(client->isClosedByPeer());
    });
    EXPECT_EQ(replyToInput(FcgiClient::requestBytes({}, "next").mid(24)).out, QByteArray("next"));
}

TEST_P(BwaFcgiListenerTransfer, OfABodyThatIsReadAsItComesIsExact)
{
    const QByteArray body = longText(4000);
    const QByteArray records = header() + manyRecords(body);
    BwaFcgiRequest* held = nullptr;
    startWith([&](BwaFcgiRequest* request) { held = request; });
    const auto client = connectedClient();
    QByteArray taken;
    int sent = 0;

    runEventLoopUntil([&] {
        client->send(records.mid(sent, 1001));
        sent += 1001;
        taken += held ? held->readAvailable(500) : QByteArray();
        return held && held->bodyIsOver();
    });

    EXPECT_EQ(taken, body);
    answerPathInfo(held);
    EXPECT_TRUE(client->readReply().ended);
}

TEST_P(BwaFcgiListenerTransfer, OfAReplyLargerThanTheSocketsIsExactForASlowReader)
{
    const QByteArray text = longText(5 * 1024 * 1024);
    startWith([&](BwaFcgiRequest* request) {
        for (int position = 0; position < text.size(); position += 50000) {
            request->out().write(text.constData() + position,
                                 std::min(50000, static_cast<int>(text.size()) - position));
        }
        delete request;
    });
    FcgiReply reply;

    serveWhile([&] {
        const auto client = connectedClient();
        client->sendRequest(apiRequest());
        poll(nullptr, 0, 100); // a slow reader
        reply = client->readReply();
    });

    EXPECT_EQ(digestOf(reply.out), digestOf(text));
    EXPECT_TRUE(reply.ended);
}

TEST_P(BwaFcgiListenerTransfer, OfALongMessageForTheLogIsExactForASlowReader)
{
    const QByteArray text = longText(100000).repeated(80);
    startWith([&](BwaFcgiRequest* request) {
        request->err().write(text.constData(), text.size());
        answerPathInfo(request);
    });
    FcgiReply reply;

    serveWhile([&] {
        const auto client = connectedClient();
        client->sendRequest(apiRequest("/x"));
        poll(nullptr, 0, 100); // a slow reader
        reply = client->readReply();
    });

    EXPECT_EQ(digestOf(reply.err), digestOf(text));
    EXPECT_EQ(reply.out, QByteArray("/x"));
    EXPECT_TRUE(reply.ended);
}

INSTANTIATE_TEST_SUITE_P(Transports, BwaFcgiListenerTransfer, testing::Bool(),
                         [](const auto& info) { return info.param ? "Tcp" : "Unix"; });
