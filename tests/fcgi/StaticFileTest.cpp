// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BrokenBuffer.h"
#include "fcgi/BwaFcgiRequest.h"
#include "support/FcgiExchange.h"
#include "support/QtPrinters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace {

const FcgiParameters someRequest = {{"SCRIPT_NAME", "/api.fcgi"}, {"PATH_INFO", "/users/3"}};

BwaHttpCookie cookie(const char* name, const char* value)
{
    return {QString::fromLatin1(name), QString::fromLatin1(value)};
}

// The whole reply that sending the file makes.
FcgiReply replyOf(const char* filePath, const char* contentType,
                  const QList<BwaHttpCookie>& cookies = QList<BwaHttpCookie>())
{
    FcgiExchange exchange(someRequest);
    BwaFcgiRequest* request = exchange.takeRequest();
    request->sendStaticFile(QString::fromLatin1(filePath), QString::fromLatin1(contentType),
                            cookies);
    delete request;
    return exchange.reply();
}

void sendLogo(BwaFcgiRequest* request)
{
    request->sendStaticFile(QStringLiteral("/srv/logo.png"), QStringLiteral("image/png"),
                            QList<BwaHttpCookie>());
}

} // namespace

TEST(SendStaticFile, GivenNoCookiesWritesTheHeaderAlone)
{
    const FcgiReply reply = replyOf("/srv/logo.png", "image/png");

    EXPECT_EQ(
        reply.out,
        QByteArray("HTTP/1.1 200 OK\nContent-Type: image/png\nX-Sendfile: /srv/logo.png\n\n"));
    EXPECT_EQ(reply.err, QByteArray());
}

TEST(SendStaticFile, WritesTheCookiesInTheirOrderBehindTheLines)
{
    const FcgiReply reply = replyOf("/srv/f", "text/plain", {cookie("b", "1"), cookie("a", "2")});

    EXPECT_EQ(reply.out,
              QByteArray("HTTP/1.1 200 OK\nContent-Type: text/plain\nX-Sendfile: /srv/f\n"
                         "Set-Cookie:b=1\nSet-Cookie:a=2\n\n"));
}

TEST(SendStaticFile, FlushesAfterEachLine)
{
    FcgiExchange exchange(someRequest);
    const std::unique_ptr<BwaFcgiRequest> request(exchange.takeRequest());
    BrokenBuffer buffer(request->out());

    request->sendStaticFile(QStringLiteral("/srv/f"), QStringLiteral("text/plain"),
                            {cookie("a", "1")});

    EXPECT_THAT(buffer.flushed,
                testing::ElementsAre("HTTP/1.1 200 OK\n", "Content-Type: text/plain\n",
                                     "X-Sendfile: /srv/f\n", "Set-Cookie:a=1\n", "\n"));
}

TEST(SendStaticFile, WritesPathAndTypeAsTheyStand)
{
    const FcgiReply reply = replyOf("", "%1; charset=caf\xe9");

    EXPECT_EQ(reply.out,
              QByteArray("HTTP/1.1 200 OK\nContent-Type: %1; charset=caf\xe9\nX-Sendfile: \n\n"));
}

TEST(SendStaticFile, LeavesTheRequestToTheCaller)
{
    FcgiExchange exchange(someRequest);
    const std::unique_ptr<BwaFcgiRequest> request(exchange.takeRequest());

    sendLogo(request.get());

    EXPECT_TRUE(request->out().good());
    EXPECT_EQ(request->fullPath(), QStringLiteral("/api.fcgi/users/3"));
}

TEST(SendStaticFileFailure, IsLogged)
{
    FcgiExchange exchange(someRequest);
    BwaFcgiRequest* request = exchange.takeRequest();
    BrokenBuffer buffer(request->out(), 1, "the line is cut");
    buffer.repairWhenReported();

    sendLogo(request);
    delete request;

    EXPECT_EQ(exchange.reply().err,
              QByteArray("Error while sending static file \"/srv/logo.png\" for request to script "
                         "\"/api.fcgi\" with path info \"/users/3\": the line is cut"));
}

TEST(SendStaticFileFailure, IsAnsweredWithInternalServerErrorBehindWhatWasWritten)
{
    FcgiExchange exchange(someRequest);
    const std::unique_ptr<BwaFcgiRequest> request(exchange.takeRequest());
    BrokenBuffer buffer(request->out(), 2, "the line is cut");
    buffer.repairWhenReported();

    sendLogo(request.get());

    EXPECT_EQ(buffer.written,
              "HTTP/1.1 200 OK\n"
              "Content-Type: image/png\n"
              "Status: 500 Internal Server Error\n"
              "\n"
              "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01//EN\" "
              "\"http://www.w3.org/TR/html4/strict.dtd\">\n"
              "<html>\n"
              "<head>\n"
              "<title>500 - Internal Server Error</title>\n"
              "</head>\n"
              "<body>\n"
              "<h1>500 - Internal Server Error</h1>\n"
              "</body>\n"
              "</html>");
}

TEST(SendStaticFileFailure, WhenTheStreamStaysBrokenLogsTheFailureOfTheErrorPageToo)
{
    FcgiExchange exchange(someRequest);
    BwaFcgiRequest* request = exchange.takeRequest();
    BrokenBuffer buffer(request->out(), 1, "the line is cut");

    sendLogo(request);
    delete request;

    EXPECT_THAT(exchange.reply().err.toStdString(),
                testing::StartsWith(
                    "Error while sending static file \"/srv/logo.png\" for request to script "
                    "\"/api.fcgi\" with path info \"/users/3\": the line is cut"
                    "Error while sending HTTP error 500 (Internal Server Error) for request to "
                    "script \"/api.fcgi\" with path info \"/users/3\": "));
}

TEST(SendStaticFileFailure, GivenMarkersInEveryTextWritesThemAsTheyStand)
{
    FcgiExchange exchange({{"SCRIPT_NAME", "/%1%2%4"}, {"PATH_INFO", "/%4/%2"}});
    BwaFcgiRequest* request = exchange.takeRequest();
    BrokenBuffer buffer(request->out(), 1, "%1 caf\xe9");
    buffer.repairWhenReported();

    request->sendStaticFile(QStringLiteral("/srv/%2%3"), QStringLiteral("image/png"),
                            QList<BwaHttpCookie>());
    delete request;

    EXPECT_EQ(exchange.reply().err,
              QByteArray("Error while sending static file \"/srv/%2%3\" for request to script "
                         "\"/%1%2%4\" with path info \"/%4/%2\": %1 caf\xe9"));
}
