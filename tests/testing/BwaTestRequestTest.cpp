// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "testing/BwaTestRequest.h"

#include "BwaStringStreaming.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpJsonHeader.h"
#include "services/BwaDispatcherFcgiService.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "services/BwaStandardFcgiService.h"
#include "support/Application.h"
#include "support/ErrorPage.h"
#include "support/MessageRecorder.h"
#include "support/QtPrinters.h"

#include <QStringList>
#include <QTimer>

#include <gtest/gtest.h>

#include <csignal>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

/** Answers a GET with its path info and query string, a POST with its body. */
class EchoProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    EchoProcessor()
        : BwaStandardFcgiRequestProcessor(nullptr)
    {
    }

    void processGetMethod(BwaFcgiRequest* request) override
    {
        const BwaCgiEnvironment& environment = request->cgiRequest()->environment();
        request->out() << BwaHttpJsonHeader() << environment.pathInfo() << ' '
                       << environment.queryString();
        delete request;
    }

    void processPostMethod(BwaFcgiRequest* request) override
    {
        request->cgiRequest()->processBodyContent();
        const QByteArray body = request->cgiRequest()->body();
        (request->out() << BwaHttpJsonHeader()).write(body.constData(), body.size());
        delete request;
    }
};

/** Keeps the requests it gets, until the test deletes them. */
class HoldingService : public BwaAbstractFcgiService
{
public:
    void processRequest(BwaFcgiRequest* request) override { held.reset(request); }

    std::unique_ptr<BwaFcgiRequest> held;
};

/** What a handler sees of a CGI variable; null when it is not set. */
QString variableSeen(const BwaTestRequest& request, const char* name)
{
    QString value;
    request.sendTo([&](BwaFcgiRequest* received) {
        value = received->input()->getenv(QString::fromLatin1(name));
        delete received;
    });
    return value;
}

/** The form fields and files that a handler sees, one a line, in their alphabetical order. */
std::string formSeen(const BwaTestRequest& request)
{
    QStringList lines;
    request.sendTo([&](BwaFcgiRequest* received) {
        BwaCgiRequest* const cgiRequest = received->cgiRequest();
        EXPECT_TRUE(cgiRequest->processBodyContent());
        const QMultiHash<QString, QString> fields = cgiRequest->formVariables();
        for (auto field = fields.begin(); field != fields.end(); ++field) {
            lines.append(field.key() + QLatin1Char('=') + field.value());
        }
        const QHash<QString, BwaCgiFile> files = cgiRequest->files();
        for (auto file = files.begin(); file != files.end(); ++file) {
            lines.append(file.key() + QLatin1Char(':') + file->fileName() + QLatin1Char(':') +
                         file->contentType() + QLatin1Char(':') +
                         QString::fromLatin1(file->data()));
        }
        delete received;
    });
    lines.sort();
    return lines.join(QLatin1Char('\n')).toStdString();
}

std::string whatIsThrownBy(const std::function<void()>& action)
{
    try {
        action();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "nothing";
}

} // namespace

TEST(BwaTestRequest, BringsBackStatusHeadersBodyAndErrors)
{
    BwaTestRequest request("POST", "/notes?page=2");

    const BwaTestReply reply = request.sendTo([](BwaFcgiRequest* received) {
        received->out() << "Status: 201 Created\nLocation: /notes/1\n\ntext";
        received->err() << "an error";
        delete received;
    });

    EXPECT_EQ(reply.statusCode, 201);
    EXPECT_EQ(reply.header("Location"), "/notes/1");
    EXPECT_EQ(reply.body, "text");
    EXPECT_EQ(reply.errorText, "an error");
    EXPECT_EQ(reply.raw, "Status: 201 Created\nLocation: /notes/1\n\ntext");
}

TEST(BwaTestRequest, GoesThroughATree)
{
    BwaDispatcherFcgiService root;
    root.addService(QStringLiteral("echo"), new BwaStandardFcgiService(new EchoProcessor));

    EXPECT_EQ(BwaTestRequest("GET", "/echo?a=b").sendTo(root).body, "/echo a=b");
    EXPECT_EQ(BwaTestRequest("GET", "/other").sendTo(root).statusCode, 404);
}

TEST(BwaTestRequest, GoesToAProcessor)
{
    EchoProcessor processor;

    EXPECT_EQ(BwaTestRequest("GET", "/x").sendTo(processor).body, "/x ");
    EXPECT_EQ(BwaTestRequest("PUT", "/x").sendTo(processor).statusCode, 405);
}

TEST(BwaTestRequest, GoesToTheServiceOfItsScriptName)
{
    BwaStandardFcgiService service(new EchoProcessor);
    BwaTestRequest request("GET", "/x");
    request.setVariable("SCRIPT_NAME", "/api");

    const BwaTestReply reply = request.sendThrough({{QStringLiteral("/api"), &service}});

    EXPECT_EQ(reply.body, "/x ");
}

TEST(BwaTestRequest, GivenUnknownScriptNameIsRefusedAsByTheListener)
{
    BwaStandardFcgiService service(new EchoProcessor);
    BwaTestRequest request("GET", "/x");
    request.setVariable("SCRIPT_NAME", "/other");

    const BwaTestReply reply = request.sendThrough({{QStringLiteral("/api"), &service}});

    EXPECT_EQ(reply.raw, errorPage(404, "Not Found"));
    EXPECT_EQ(reply.errorText,
              "Error in the FastCGI listener: Cannot find a Web service to handle a request to "
              "script \"/other\" with path info \"/x\"");
}

TEST(BwaTestRequest, GivenAServiceIgnoresTheScriptName)
{
    BwaStandardFcgiService service(new EchoProcessor);
    BwaTestRequest request("GET", "/x");
    request.setVariable("SCRIPT_NAME", "/any");

    EXPECT_EQ(request.sendTo(service).body, "/x ");
}

TEST(BwaTestRequest, MayBeSentAgain)
{
    EchoProcessor processor;
    BwaTestRequest request("POST", "/");
    request.setBody("text/plain", "text");

    EXPECT_EQ(request.sendTo(processor).body, "text");
    EXPECT_EQ(request.sendTo(processor).body, "text");
}

TEST(BwaTestRequest, MayBeSentInSeveralThreads)
{
    const auto send = [] {
        EchoProcessor processor;
        QByteArray bodies;
        for (int i = 0; i < 100; ++i) {
            bodies += BwaTestRequest("GET", "/x").sendTo(processor).body;
        }
        return bodies;
    };

    auto other = std::async(std::launch::async, send);

    EXPECT_EQ(send(), QByteArray("/x ").repeated(100));
    EXPECT_EQ(other.get(), QByteArray("/x ").repeated(100));
}

TEST(BwaTestRequest, CarriesLargeBodiesBothWays)
{
    EchoProcessor processor;
    const QByteArray large = QByteArray("0123456789abcde\n").repeated(1 << 18); // 4 MiB
    BwaTestRequest request("POST", "/");
    request.setBody("application/octet-stream", large);

    const BwaTestReply reply = request.sendTo(processor);

    EXPECT_TRUE(reply.body == large) << reply.body.size() << " bytes";
}

TEST(BwaTestRequest, KeepsTheBytesOfReplyAndErrors)
{
    const QByteArray bytes("a\0b\xff\r\n", 6);

    const BwaTestReply reply = BwaTestRequest("GET").sendTo([&](BwaFcgiRequest* received) {
        received->out().write(bytes.constData(), bytes.size());
        received->err().write(bytes.constData(), bytes.size()).flush();
        received->out() << 'c' << std::flush << 'd';
        delete received;
    });

    EXPECT_EQ(reply.raw, bytes + "cd");
    EXPECT_EQ(reply.errorText, bytes);
}

TEST(BwaTestRequest, WhenNothingIsAnsweredHasStatus0)
{
    const BwaTestReply reply =
        BwaTestRequest("GET").sendTo([](BwaFcgiRequest* received) { delete received; });

    EXPECT_EQ(reply.statusCode, 0);
    EXPECT_EQ(reply.raw, "");
}

TEST(BwaTestRequest, WhenTheServiceThrowsEndsAsInTheListener)
{
    const MessageRecorder recorder;

    const BwaTestReply reply = BwaTestRequest("GET").sendTo([](BwaFcgiRequest* received) {
        const std::unique_ptr<BwaFcgiRequest> owner(received);
        received->out() << "half";
        throw std::runtime_error("no more");
    });

    EXPECT_EQ(reply.raw, "half");
    ASSERT_EQ(recorder.messages().size(), 1);
    EXPECT_EQ(recorder.messages().first().second,
              QStringLiteral("An exception occurs while processing a FastCGI request: no more"));
}

TEST(BwaTestRequestVariables, HaveTheValuesOfTheTarget)
{
    const BwaTestRequest request("DELETE", "/a%20b/%C3%A9?c=%20d?e");

    EXPECT_EQ(variableSeen(request, "REQUEST_METHOD"), QStringLiteral("DELETE"));
    EXPECT_EQ(variableSeen(request, "PATH_INFO"), QString::fromLatin1("/a b/\xc3\xa9"));
    EXPECT_EQ(variableSeen(request, "QUERY_STRING"), QStringLiteral("c=%20d?e"));
}

TEST(BwaTestRequestVariables, HaveTheirDefaults)
{
    const BwaTestRequest request("GET");

    EXPECT_EQ(variableSeen(request, "PATH_INFO"), QStringLiteral("/"));
    EXPECT_EQ(variableSeen(request, "QUERY_STRING"), QLatin1String(""));
    EXPECT_EQ(variableSeen(request, "SCRIPT_NAME"), QLatin1String(""));
    EXPECT_EQ(variableSeen(request, "SERVER_PROTOCOL"), QStringLiteral("HTTP/1.1"));
    EXPECT_EQ(variableSeen(request, "REMOTE_ADDR"), QStringLiteral("127.0.0.1"));
    EXPECT_TRUE(variableSeen(request, "CONTENT_TYPE").isNull());
    EXPECT_TRUE(variableSeen(request, "CONTENT_LENGTH").isNull());
}

TEST(BwaTestRequestVariables, CanBeSetAndTakenAway)
{
    BwaTestRequest request("GET");
    request.setVariable("HTTPS", "on");
    request.setVariable("REMOTE_USER", "");
    request.setVariable("REMOTE_ADDR", QByteArray());

    EXPECT_EQ(variableSeen(request, "HTTPS"), QStringLiteral("on"));
    EXPECT_EQ(variableSeen(request, "REMOTE_USER"), QLatin1String(""));
    EXPECT_TRUE(variableSeen(request, "REMOTE_ADDR").isNull());
}

TEST(BwaTestRequestVariables, BringTheHeaders)
{
    BwaTestRequest request("GET");
    request.setHeader("Cookie", "a=b");
    request.setHeader("X-Request-Id", "7");
    request.setHeader("content-type", "text/plain");

    EXPECT_EQ(variableSeen(request, "HTTP_COOKIE"), QStringLiteral("a=b"));
    EXPECT_EQ(variableSeen(request, "HTTP_X_REQUEST_ID"), QStringLiteral("7"));
    EXPECT_EQ(variableSeen(request, "CONTENT_TYPE"), QStringLiteral("text/plain"));
}

TEST(BwaTestRequestBody, MayBeShorterThanAnnounced)
{
    BwaTestRequest request("POST");
    request.setBody("text/plain", "text");
    request.setHeader("Content-Length", "9");

    bool isComplete = true;
    request.sendTo([&](BwaFcgiRequest* received) {
        isComplete = received->cgiRequest()->processBodyContent();
        delete received;
    });

    EXPECT_FALSE(isComplete);
}

TEST(BwaTestRequestBody, MayBeReadInPieces)
{
    BwaTestRequest request("POST");
    request.setBody("text/plain", "abcdef");

    QList<QByteArray> pieces;
    request.sendTo([&](BwaFcgiRequest* received) {
        for (const unsigned int size : {2U, 3U, 9U, 9U}) {
            pieces.append(received->input()->read(size));
        }
        delete received;
    });

    EXPECT_EQ(pieces, (QList<QByteArray>{"ab", "cde", "f", ""}));
}

TEST(BwaTestRequestForm, ArrivesAsItWasSet)
{
    BwaTestRequest request("POST");
    request.setForm({{"a", "b & c=d"}, {"e%", "f+\n"}, {"g", ""}});

    EXPECT_EQ(formSeen(request), "a=b & c=d\ne%=f+\n\ng=");
}

TEST(BwaTestRequestForm, GivenNoFieldsIsAnEmptyForm)
{
    BwaTestRequest request("POST");
    request.setForm({});

    EXPECT_EQ(formSeen(request), "");
    EXPECT_EQ(variableSeen(request, "CONTENT_TYPE"),
              QStringLiteral("application/x-www-form-urlencoded"));
}

TEST(BwaTestRequestUpload, BringsFieldsAndFiles)
{
    BwaTestRequest request("POST");
    request.addField("title", "two\r\nlines");
    request.addFile("first", "a.txt", "text/plain", "text");
    request.addFile("second", "b.bin", "image/png", QByteArray());

    EXPECT_EQ(formSeen(request),
              "first:a.txt:text/plain:text\nsecond:b.bin:image/png:\ntitle=two\r\nlines");
}

TEST(BwaTestRequestUpload, KeepsNamesWithQuotesAndLineEnds)
{
    BwaTestRequest request("POST");
    request.addFile("a", "say \"x\"\r\n.txt", "text/plain", "text");

    EXPECT_EQ(formSeen(request), "a:say \"x\"\r\n.txt:text/plain:text");
}

class HeldTestRequest : public testing::Test
{
    Application m_application;
};

TEST_F(HeldTestRequest, WhenDeletedByTheEventLoopIsAnswered)
{
    HoldingService service;
    QTimer::singleShot(0, &service, [&] {
        service.held->out() << "A: b\n\nlate";
        service.held.reset();
    });

    const BwaTestReply reply = BwaTestRequest("GET").sendTo(service);

    EXPECT_EQ(reply.body, "late");
}

TEST_F(HeldTestRequest, MayBeAnsweredByAnotherRequest)
{
    HoldingService service;
    QTimer::singleShot(0, &service, [&] {
        BwaTestRequest("POST").sendTo([&](BwaFcgiRequest* received) {
            service.held->out() << "A: b\n\nanswered by another";
            service.held.reset();
            delete received;
        });
    });

    EXPECT_EQ(BwaTestRequest("GET").sendTo(service).body, "answered by another");
}

TEST_F(HeldTestRequest, WhenNotDeletedInTimeSaysSo)
{
    HoldingService service;
    BwaTestRequest request("GET", "/x?y");
    request.setVariable("SCRIPT_NAME", "/api");
    request.setTimeout(1);

    EXPECT_EQ(whatIsThrownBy([&] { request.sendTo(service); }),
              "The request GET /api/x was not deleted within 1 ms");
    service.held->out() << "This may still be written.";
}

TEST(HeldTestRequestWithoutApplication, SaysSo)
{
    HoldingService service;

    EXPECT_EQ(whatIsThrownBy([&] { BwaTestRequest("GET", "/x").sendTo(service); }),
              "The request GET /x is held, and without a QCoreApplication nobody can answer it");
}

TEST(BwaTestRequestSignals, StayWithTheProgram)
{
    EchoProcessor processor;
    BwaTestRequest("GET").sendTo(processor);

    struct sigaction terminate = {};
    sigaction(SIGTERM, nullptr, &terminate);

    EXPECT_EQ(terminate.sa_handler, SIG_DFL);
}
