// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BrokenBuffer.h"
#include "fcgi/BwaFcgiRequest.h"
#include "support/ErrorPage.h"
#include "support/FcgiExchange.h"
#include "support/QtPrinters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

namespace {

using Error = BwaFcgiRequest::StandardHttpError;
using testing::ElementsAre;

const char notFoundPage[] = "Status: 404 Not Found\n"
                            "\n"
                            "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01//EN\" "
                            "\"http://www.w3.org/TR/html4/strict.dtd\">\n"
                            "<html>\n"
                            "<head>\n"
                            "<title>404 - Not Found</title>\n"
                            "</head>\n"
                            "<body>\n"
                            "<h1>404 - Not Found</h1>\n"
                            "</body>\n"
                            "</html>";

const FcgiParameters someRequest = {{"SCRIPT_NAME", "/api.fcgi"}, {"PATH_INFO", "/users/3"}};

// The whole reply that sending the error makes.
template <typename... Arguments>
FcgiReply replyOf(const Arguments&... error)
{
    FcgiExchange exchange(someRequest);
    BwaFcgiRequest* request = exchange.takeRequest();
    request->sendHttpError(error...);
    delete request;
    return exchange.reply();
}

struct ErrorCase {
    Error error;
    int statusCode;
    const char* reasonPhrase;
};

class StandardHttpErrorParameters : public testing::TestWithParam<ErrorCase>
{
};

class StandardHttpErrorFallback : public testing::TestWithParam<int>
{
};

std::string codeOf(const testing::TestParamInfo<ErrorCase>& info)
{
    return std::to_string(info.param.statusCode);
}

} // namespace

TEST(StandardHttpError, IsUnscopedWithTheTypeInt)
{
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<Error>, int>));
    EXPECT_TRUE((std::is_convertible_v<Error, int>));
}

TEST_P(StandardHttpErrorParameters, AreTheCodeAndThePhrase)
{
    const QPair<unsigned short, QString> parameters =
        BwaFcgiRequest::standardHttpErrorParameters(GetParam().error);

    EXPECT_EQ(static_cast<int>(GetParam().error), GetParam().statusCode);
    EXPECT_EQ(parameters.first, GetParam().statusCode);
    EXPECT_EQ(parameters.second, QString::fromLatin1(GetParam().reasonPhrase));
}

INSTANTIATE_TEST_SUITE_P(
    FourHundreds, StandardHttpErrorParameters,
    testing::Values(ErrorCase{BwaFcgiRequest::BadRequest, 400, "Bad Request"},
                    ErrorCase{BwaFcgiRequest::Unauthorized, 401, "Unauthorized"},
                    ErrorCase{BwaFcgiRequest::PaymentRequired, 402, "Payment Required"},
                    ErrorCase{BwaFcgiRequest::Forbidden, 403, "Forbidden"},
                    ErrorCase{BwaFcgiRequest::NotFound, 404, "Not Found"},
                    ErrorCase{BwaFcgiRequest::MethodNotAllowed, 405, "Method Not Allowed"},
                    ErrorCase{BwaFcgiRequest::NotAcceptable, 406, "Not Acceptable"},
                    ErrorCase{BwaFcgiRequest::ProxyAuthenticationRequired, 407,
                              "Proxy Authentication Required"},
                    ErrorCase{BwaFcgiRequest::RequestTimeout, 408, "Request Timeout"},
                    ErrorCase{BwaFcgiRequest::Conflict, 409, "Conflict"},
                    ErrorCase{BwaFcgiRequest::Gone, 410, "Gone"},
                    ErrorCase{BwaFcgiRequest::LengthRequired, 411, "Length Required"},
                    ErrorCase{BwaFcgiRequest::PreconditionFailed, 412, "Precondition Failed"},
                    ErrorCase{BwaFcgiRequest::PayloadTooLarge, 413, "Payload Too Large"},
                    ErrorCase{BwaFcgiRequest::UriTooLong, 414, "URI Too Long"},
                    ErrorCase{BwaFcgiRequest::UnsupportedMediaType, 415, "Unsupported Media Type"},
                    ErrorCase{BwaFcgiRequest::RequestedRangeNotSatisfiable, 416,
                              "Requested Range Not Satisfiable"},
                    ErrorCase{BwaFcgiRequest::ExpectationFailed, 417, "Expectation Failed"},
                    ErrorCase{BwaFcgiRequest::ImATeapot, 418, "I'm a teapot"},
                    ErrorCase{BwaFcgiRequest::MisdirectedRequest, 421, "Misdirected Request"},
                    ErrorCase{BwaFcgiRequest::UnprocessableEntity, 422, "Unprocessable Entity"},
                    ErrorCase{BwaFcgiRequest::Locked, 423, "Locked"},
                    ErrorCase{BwaFcgiRequest::MethodFailure, 424, "Method Failure"},
                    ErrorCase{BwaFcgiRequest::UpgradeRequired, 426, "Upgrade Required"},
                    ErrorCase{BwaFcgiRequest::PreconditionRequired, 428, "Precondition Required"},
                    ErrorCase{BwaFcgiRequest::TooManyRequests, 429, "Too Many Requests"},
                    ErrorCase{BwaFcgiRequest::RequestHeaderFieldsTooLarge, 431,
                              "Request Header Fields Too Large"},
                    ErrorCase{BwaFcgiRequest::UnavailableForLegalReasons, 451,
                              "Unavailable For Legal Reasons"}),
    codeOf);

INSTANTIATE_TEST_SUITE_P(
    FiveHundreds, StandardHttpErrorParameters,
    testing::Values(
        ErrorCase{BwaFcgiRequest::InternalServerError, 500, "Internal Server Error"},
        ErrorCase{BwaFcgiRequest::NotImplemented, 501, "Not Implemented"},
        ErrorCase{BwaFcgiRequest::BadGateway, 502, "Bad Gateway"},
        ErrorCase{BwaFcgiRequest::ServiceUnavailable, 503, "Service Unavailable"},
        ErrorCase{BwaFcgiRequest::GatewayTimeout, 504, "Gateway Timeout"},
        ErrorCase{BwaFcgiRequest::HttpVersionNotSupported, 505, "HTTP Version Not Supported"},
        ErrorCase{BwaFcgiRequest::VariantAlsoNegotiates, 506, "Variant Also Negotiates"},
        ErrorCase{BwaFcgiRequest::InsufficientStorage, 507, "Insufficient Storage"},
        ErrorCase{BwaFcgiRequest::LoopDetected, 508, "Loop Detected"},
        ErrorCase{BwaFcgiRequest::NotExtended, 510, "Not Extended"},
        ErrorCase{BwaFcgiRequest::NetworkAuthenticationRequired, 511,
                  "Network Authentication Required"}),
    codeOf);

TEST_P(StandardHttpErrorFallback, IsInternalServerError)
{
    const QPair<unsigned short, QString> parameters =
        BwaFcgiRequest::standardHttpErrorParameters(static_cast<Error>(GetParam()));

    EXPECT_EQ(parameters.first, 500);
    EXPECT_EQ(parameters.second, QStringLiteral("Internal Server Error"));
}

INSTANTIATE_TEST_SUITE_P(Gaps, StandardHttpErrorFallback,
                         testing::Values(419, 420, 425, 427, 430, 432, 450, 452, 499, 509));
INSTANTIATE_TEST_SUITE_P(Outside, StandardHttpErrorFallback,
                         testing::Values(-1, 0, 200, 299, 399, 512, 600, 65536 + 404));

TEST(SendHttpError, WritesTheWholePage)
{
    const FcgiReply reply = replyOf(404, QStringLiteral("Not Found"));

    EXPECT_EQ(reply.out, QByteArray(notFoundPage));
    EXPECT_EQ(reply.err, QByteArray());
}

TEST(SendHttpError, FlushesAfterEachLine)
{
    FcgiExchange exchange(someRequest);
    const std::unique_ptr<BwaFcgiRequest> request(exchange.takeRequest());
    BrokenBuffer buffer(request->out());

    request->sendHttpError(404, QStringLiteral("Not Found"));

    EXPECT_THAT(buffer.flushed,
                ElementsAre("Status: 404 Not Found\n", "\n",
                            "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01//EN\" "
                            "\"http://www.w3.org/TR/html4/strict.dtd\">\n",
                            "<html>\n", "<head>\n", "<title>404 - Not Found</title>\n", "</head>\n",
                            "<body>\n", "<h1>404 - Not Found</h1>\n", "</body>\n"));
    EXPECT_EQ(buffer.written, notFoundPage);
}

TEST(SendHttpError, GivenMemberWritesItsCodeAndPhrase)
{
    EXPECT_EQ(replyOf(BwaFcgiRequest::NotFound).out, QByteArray(notFoundPage));
    EXPECT_EQ(replyOf(BwaFcgiRequest::ImATeapot).out, errorPage(418, "I'm a teapot"));
}

TEST(SendHttpError, GivenNoMemberWritesInternalServerError)
{
    EXPECT_EQ(replyOf(static_cast<Error>(509)).out, errorPage(500, "Internal Server Error"));
}

TEST(SendHttpError, GivenCodeOutsideTheTableWritesItAsItStands)
{
    EXPECT_EQ(replyOf(299, QStringLiteral("Odd")).out, errorPage(299, "Odd"));
}

TEST(SendHttpError, GivenMarkersAndMarkupInThePhraseWritesThemAsTheyStand)
{
    EXPECT_EQ(replyOf(299, QStringLiteral("%1 & <b>%2")).out, errorPage(299, "%1 & <b>%2"));
}

TEST(SendHttpError, GivenEmptyPhraseKeepsTheBlanks)
{
    EXPECT_EQ(replyOf(404, QString()).out, errorPage(404, ""));
}

TEST(SendHttpError, LeavesTheRequestToTheCaller)
{
    FcgiExchange exchange(someRequest);
    BwaFcgiRequest* request = exchange.takeRequest();

    request->sendHttpError(BwaFcgiRequest::NotFound);

    request->out() << "<!-- more -->";
    EXPECT_EQ(request->fullPath(), QStringLiteral("/api.fcgi/users/3"));
    delete request;
    EXPECT_EQ(exchange.reply().out, QByteArray(notFoundPage) + "<!-- more -->");
}

TEST(SendHttpError, WhenThePeerHasGoneReturns)
{
    FcgiExchange exchange(someRequest);
    const std::unique_ptr<BwaFcgiRequest> request(exchange.takeRequest());
    exchange.client().abort();

    request->sendHttpError(BwaFcgiRequest::NotFound);

    request->out() << std::flush;
    EXPECT_TRUE(request->out().bad());
}

TEST(SendHttpErrorFailure, IsLogged)
{
    FcgiExchange exchange(someRequest);
    BwaFcgiRequest* request = exchange.takeRequest();
    BrokenBuffer buffer(request->out(), 1, "the line is cut");

    request->sendHttpError(404, QStringLiteral("Not Found"));
    delete request;

    EXPECT_EQ(exchange.reply().err,
              QByteArray("Error while sending HTTP error 404 (Not Found) for request to script "
                         "\"/api.fcgi\" with path info \"/users/3\": the line is cut"));
}

TEST(SendHttpErrorFailure, AbandonsTheRestOfThePage)
{
    FcgiExchange exchange(someRequest);
    const std::unique_ptr<BwaFcgiRequest> request(exchange.takeRequest());
    BrokenBuffer buffer(request->out(), 4, "the line is cut");
    buffer.repairWhenReported();

    request->sendHttpError(404, QStringLiteral("Not Found"));

    EXPECT_EQ(buffer.written,
              "Status: 404 Not Found\n\n<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01//EN\" "
              "\"http://www.w3.org/TR/html4/strict.dtd\">\n<html>\n");
}

TEST(SendHttpErrorFailure, GivenMarkersInEveryTextWritesThemAsTheyStand)
{
    FcgiExchange exchange({{"SCRIPT_NAME", "/%1%2%4"}, {"PATH_INFO", "/%5/%2/%1"}});
    BwaFcgiRequest* request = exchange.takeRequest();
    BrokenBuffer buffer(request->out(), 1, "%1 %3");

    request->sendHttpError(299, QStringLiteral("Odd %3 %5"));
    delete request;

    EXPECT_EQ(exchange.reply().err,
              QByteArray("Error while sending HTTP error 299 (Odd %3 %5) for request to script "
                         "\"/%1%2%4\" with path info \"/%5/%2/%1\": %1 %3"));
}

TEST(SendHttpErrorFailure, WritesTheBytesOfTheExceptionAsTheyAre)
{
    FcgiExchange exchange({{"SCRIPT_NAME", "/caf\xe9"}, {"PATH_INFO", "/\xff"}});
    BwaFcgiRequest* request = exchange.takeRequest();
    BrokenBuffer buffer(request->out(), 1, "\x80 caf\xc3\xa9 \xff");

    request->sendHttpError(BwaFcgiRequest::Gone);
    delete request;

    EXPECT_EQ(exchange.reply().err,
              QByteArray("Error while sending HTTP error 410 (Gone) for request to script "
                         "\"/caf\xe9\" with path info \"/\xff\": \x80 caf\xc3\xa9 \xff"));
}
