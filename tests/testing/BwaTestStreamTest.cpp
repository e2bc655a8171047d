// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "testing/BwaTestStream.h"

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "services/BwaAbstractFcgiService.h"
#include "support/Application.h"
#include "testing/BwaTestRequest.h"

#include <QTimer>

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

namespace {

/** Writes a head and keeps the request. */
class HeldService : public BwaAbstractFcgiService
{
public:
    ~HeldService() override { delete held; }

    void processRequest(BwaFcgiRequest* request) override
    {
        held = request;
        held->onGone([this] {
            delete std::exchange(held, nullptr);
            QCoreApplication::exit();
        });
        held->out() << "Content-Type: text/plain\n\n";
    }

    void write(const char* text) { held->out() << text << std::flush; }
    void end() { delete std::exchange(held, nullptr); }

    BwaFcgiRequest* held = nullptr; // owned
};

class BwaTestStreamTest : public testing::Test
{
protected:
    // A stream whose head has come.
    BwaTestStream open(const BwaTestRequest& request = BwaTestRequest("GET"))
    {
        BwaTestStream stream = request.open(service);
        EXPECT_EQ(stream.waitFor("\n\n"), "Content-Type: text/plain\n\n");
        return stream;
    }

    Application application;
    HeldService service;
};

} // namespace

TEST_F(BwaTestStreamTest, GivenATextWaitsUntilItHasCome)
{
    BwaTestStream stream = open();

    QTimer::singleShot(0, &service, [this] { service.write("a"); });
    QTimer::singleShot(5, &service, [this] { service.write("bcd"); });

    EXPECT_EQ(stream.waitFor("bc"), "abc");
    EXPECT_EQ(stream.waitFor("d"), "d");
}

TEST_F(BwaTestStreamTest, WhenTheTextDoesNotComeThrows)
{
    BwaTestStream stream = open();

    EXPECT_THROW(stream.waitFor("a", 10), std::runtime_error);
    EXPECT_THROW(stream.waitForEnd(10), std::runtime_error);
}

TEST_F(BwaTestStreamTest, WhenTheReplyEndsGivesTheRestAndThenThrows)
{
    BwaTestStream stream = open();
    service.write("ab");

    service.end();

    EXPECT_EQ(stream.waitFor("a"), "a");
    EXPECT_EQ(stream.waitForEnd(), "b");
    EXPECT_THROW(stream.waitFor("c"), std::runtime_error);
}

TEST_F(BwaTestStreamTest, WhenReadingStopsTheServiceCannotWrite)
{
    BwaTestStream stream = open();
    const QByteArray piece(8192, 'x');

    stream.stopReading();
    int pieces = 0;
    while (service.held->canWrite()) {
        service.write(piece.constData());
        QCoreApplication::processEvents();
        ASSERT_LT(++pieces, 1000);
    }

    stream.waitFor(piece.repeated(pieces));
    EXPECT_TRUE(service.held->canWrite());
}

TEST_F(BwaTestStreamTest, WhenTheClientGoesTheServiceIsTold)
{
    BwaTestStream stream = open();

    stream.disconnect();
    QCoreApplication::exec();

    EXPECT_EQ(service.held, nullptr);
    EXPECT_EQ(stream.waitForEnd(), "");
}

TEST_F(BwaTestStreamTest, GivenScriptNameAndBodySendsThem)
{
    BwaTestRequest request("POST", "/a");
    request.setVariable("SCRIPT_NAME", "/api");
    request.setBody("text/plain", QByteArray(60000, 'x'));

    BwaTestStream stream = open(request);

    EXPECT_EQ(service.held->fullPath(), QString::fromLatin1("/api/a"));
    EXPECT_EQ(service.held->cgiRequest()->readFromBody(60000), QByteArray(60000, 'x'));
}
