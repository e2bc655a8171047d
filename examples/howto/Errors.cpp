// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BwaStringStreaming.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttp204StatusHeader.h"
#include "http/BwaHttpStatusContentHeader.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "testing/BwaTestRequest.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

class Failing : public BwaStandardFcgiRequestProcessor
{
public:
    Failing()
        : BwaStandardFcgiRequestProcessor(nullptr)
    {
    }

protected:
    //! [standard]
    void processGetMethod(BwaFcgiRequest* request) override
    {
        request->err() << "the database is away"; // for the web server's log, without a line end
        request->sendHttpError(BwaFcgiRequest::ServiceUnavailable);
        delete request;
    }
    //! [standard]

    //! [own]
    void processPostMethod(BwaFcgiRequest* request) override
    {
        request->out() << BwaHttpStatusContentHeader(422, QStringLiteral("Unprocessable Entity"),
                                                     QStringLiteral("application/json"))
                       << "{\"error\":\"quantity must be positive\"}\n";
        delete request;
    }
    //! [own]

    //! [throw]
    void processPutMethod(BwaFcgiRequest* request) override
    {
        store(request->cgiRequest()->queryVariables()); // before anything is written on out()
        request->out() << BwaHttp204StatusHeader();
        delete request;
    }

    static void store(const QMultiHash<QString, QString>& values)
    {
        if (values.contains(QStringLiteral("full"))) {
            throw std::runtime_error("no space left");
        }
    }
    //! [throw]

    //! [method]
    void processOtherMethod(BwaFcgiRequest* request, const QString& method) override
    {
        if (method == QLatin1String("HEAD")) {
            request->out() << BwaHttpContentHeader(QStringLiteral("application/json"));
            delete request;
        } else {
            processNotAllowedMethod(request); // answers 405 and deletes the request
        }
    }
    //! [method]
};

BwaTestReply replyTo(const char* method, const char* target = "/")
{
    Failing failing;
    return BwaTestRequest(method, target).sendTo(failing);
}

} // namespace

TEST(HowToFail, GivenAStandardErrorSendsItsPage)
{
    const BwaTestReply reply = replyTo("GET");

    EXPECT_EQ(reply.statusCode, 503);
    EXPECT_EQ(reply.reasonPhrase, "Service Unavailable");
    EXPECT_EQ(reply.errorText, "the database is away");
}

TEST(HowToFail, GivenAnErrorOfItsOwnSendsItsBody)
{
    const BwaTestReply reply = replyTo("POST");

    EXPECT_EQ(reply.statusCode, 422);
    EXPECT_EQ(reply.body, "{\"error\":\"quantity must be positive\"}\n");
}

TEST(HowToFail, WhenAHookThrowsAnswers500AndLogsIt)
{
    const BwaTestReply reply = replyTo("PUT", "/?full=1");

    EXPECT_EQ(reply.statusCode, 500);
    EXPECT_TRUE(reply.errorText.contains("no space left"));
}

TEST(HowToFail, WhenNothingFailsAnswers204)
{
    EXPECT_EQ(replyTo("PUT").statusCode, 204);
}

TEST(HowToFail, GivenAnotherMethodDecidesItself)
{
    EXPECT_EQ(replyTo("HEAD").statusCode, 200);
    EXPECT_EQ(replyTo("PATCH").statusCode, 405);
}
