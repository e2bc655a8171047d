// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BwaStringStreaming.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpPlainTextHeader.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "testing/BwaTestRequest.h"

#include <QCoreApplication>
#include <QTimer>

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

class Greeting : public BwaStandardFcgiRequestProcessor
{
public:
    Greeting()
        : BwaStandardFcgiRequestProcessor(nullptr)
    {
    }

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        request->err() << "asked";
        request->out() << BwaHttpPlainTextHeader() << "Hello";
        delete request;
    }
};

// Answers from the event loop, as one that waits for something does.
class Patient : public BwaStandardFcgiRequestProcessor
{
public:
    Patient()
        : BwaStandardFcgiRequestProcessor(nullptr)
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] { answer(); });
        m_timer.setSingleShot(true);
    }

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        m_held = request; // owned until it is answered
        m_timer.start(0);
    }

private:
    void answer()
    {
        m_held->out() << BwaHttpPlainTextHeader() << "at last";
        delete m_held;
    }

    QTimer m_timer;
    BwaFcgiRequest* m_held = nullptr; // owned
};

} // namespace

//! [reply]
TEST(HowToTest, GivenARequestBringsTheReply)
{
    Greeting greeting;

    const BwaTestReply reply = BwaTestRequest("GET", "/").sendTo(greeting);

    EXPECT_EQ(reply.statusCode, 200);
    EXPECT_EQ(reply.header("content-type"), "text/plain");
    EXPECT_EQ(reply.body, "Hello");
    EXPECT_EQ(reply.errorText, "asked"); // what the web server would have logged
}
//! [reply]

//! [late]
TEST(HowToTest, GivenALateReplyWaitsForIt)
{
    int argumentCount = 0;
    QCoreApplication application(argumentCount, nullptr);
    Patient patient;
    BwaTestRequest request("GET", "/");
    request.setTimeout(5000); // milliseconds

    EXPECT_EQ(request.sendTo(patient).body, "at last");
}
//! [late]

//! [function]
TEST(HowToTest, GivenAFunctionHandsItTheRequest)
{
    BwaTestRequest request("GET", "/a%20b?c=d");
    request.setVariable("REMOTE_ADDR", "192.0.2.1");

    request.sendTo([](BwaFcgiRequest* received) {
        const BwaCgiEnvironment& environment = received->cgiRequest()->environment();
        EXPECT_EQ(environment.pathInfo(), QLatin1String("/a b"));
        EXPECT_EQ(environment.remoteAddr(), QLatin1String("192.0.2.1"));
        delete received;
    });
}
//! [function]
