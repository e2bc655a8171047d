// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The examples in the comments of headers. The build copies each into a file that is included here.

#include "cgi/BwaCgiMultipartFormDataReader.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiListener.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpPlainTextHeader.h"
#include "json/BwaJson.h"
#include "json/BwaJsonUtilities.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "services/BwaStandardFcgiService.h"
#include "sessions/BwaSessionTokenFcgiSessionIdentifier.h"
#include "sessions/BwaWebSession.h"
#include "sessions/BwaWebSessionManager.h"
#include "support/ListenerFixture.h"
#include "support/QtPrinters.h"
#include "testing/BwaTestRequest.h"

#include <QCoreApplication>
#include <QMap>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

#include "in-headers/BwaStandardFcgiRequestProcessor.inc"

// Answers requests that have a session.
struct NotesProcessor : BwaStandardFcgiRequestProcessor {
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;
    void processGetMethod(BwaFcgiRequest* request) override
    {
        if (authenticateRequest(request)) {
            request->out() << BwaHttpPlainTextHeader() << "your notes";
        }
        delete request;
    }
};

QMap<QString, QByteArray> storedBy(const BwaTestRequest& upload, int* statusCode)
{
    QMap<QString, QByteArray> stored;
    const auto store = [&stored](const QString& name, const QByteArray& content) {
        stored.insert(name, content);
    };
    const auto process = [&store](BwaFcgiRequest* request) {
#include "in-headers/BwaCgiMultipartFormDataReader.inc"
        delete request;
    };
    *statusCode = upload.sendTo(process).statusCode;
    return stored;
}

} // namespace

// Only one test of this program may have a listener: a process listens once.
TEST(FcgiListenerExample, ServesTheScript)
{
    const Application application;
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("socket"));
    BwaStandardFcgiService service(new Greeting(nullptr));
    FcgiReply reply;
#include "in-headers/BwaFcgiListener.inc"

    serveWhile([&] {
        FcgiClient client(path.toLatin1());
        client.sendRequest({{"SCRIPT_NAME", "/api"}, {"REQUEST_METHOD", "GET"}});
        client.shutDownSending();
        reply = client.readReply();
    });

    EXPECT_EQ(reply.out, "Content-Type: text/plain\n\nHello");
}

TEST(StandardFcgiRequestProcessorExample, AnswersGetOnly)
{
    Greeting greeting(nullptr);

    EXPECT_EQ(BwaTestRequest("GET", "/").sendTo(greeting).body, "Hello");
    EXPECT_EQ(BwaTestRequest("POST", "/").sendTo(greeting).statusCode, 405);
}

TEST(WebSessionManagerExample, AuthenticatesTheUserWhoHasLoggedIn)
{
    const Application application; // for the timers of sessions
    const QString user = QStringLiteral("ann");
#include "in-headers/BwaWebSessionManager.inc"
    BwaTestRequest request("GET", "/");
    const int refused = request.sendTo(service).statusCode;

    request.setHeader("Authorization",
                      "SESSION-TOKEN " + session->sessionId().toByteArray() + ':' +
                          session->token().toByteArray());

    EXPECT_EQ(refused, 401);
    EXPECT_EQ(request.sendTo(service).body, "your notes");
}

TEST(JsonUtilitiesExample, TakesTheDefaultForAMissingPriority)
{
    const QVariantMap body = BwaJson::parse(R"({"title":"Paint the shed"})").toMap();
#include "in-headers/BwaJsonUtilities.inc"

    EXPECT_TRUE(isTask);
    EXPECT_EQ(title, QStringLiteral("Paint the shed"));
    EXPECT_EQ(priority, 3);
}

TEST(CgiMultipartFormDataReaderExample, StoresEachPart)
{
    BwaTestRequest upload("POST", "/");
    upload.addField("a", "one");
    upload.addFile("b", "b.txt", "text/plain", "two");
    int statusCode = 0;

    const QMap<QString, QByteArray> stored = storedBy(upload, &statusCode);

    EXPECT_EQ(stored.value(QStringLiteral("a")), "one");
    EXPECT_EQ(stored.value(QStringLiteral("b")), "two");
}

TEST(CgiMultipartFormDataReaderExample, WhenTheBodyIsNotCompleteAnswers400)
{
    BwaTestRequest upload("POST", "/");
    upload.setBody("multipart/form-data; boundary=b", "--b\r\n");
    int statusCode = 0;

    storedBy(upload, &statusCode);

    EXPECT_EQ(statusCode, 400);
}
