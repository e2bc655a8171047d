// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BwaStringStreaming.h"
#include "cgi/BwaCgiMultipartFormDataReader.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpPlainTextHeader.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "testing/BwaTestRequest.h"

#include <QCryptographicHash>

#include <gtest/gtest.h>

namespace {

//! [text]
// Variables hold one character for each byte that was sent: this reads the bytes as UTF-8.
QString textOf(const QString& variable)
{
    return QString::fromUtf8(variable.toLatin1());
}

void sendText(BwaFcgiRequest* request, const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    request->out() << BwaHttpPlainTextHeader(QStringLiteral("utf-8"));
    request->out().write(bytes.constData(), bytes.size());
}
//! [text]

//! [query]
// /search?q=tea&tag=green&tag=loose
void search(BwaFcgiRequest* request)
{
    const QMultiHash<QString, QString> variables = request->cgiRequest()->queryVariables();
    const QString wanted = textOf(variables.value(QStringLiteral("q")));
    const QStringList tags = variables.values(QStringLiteral("tag")); // the last one sent first
    sendText(request, wanted + QLatin1Char(' ') + QString::number(tags.size()));
}
//! [query]

//! [refuse]
// Answers a body that processBodyContent() has refused, and logs why.
void refuseBody(BwaFcgiRequest* request)
{
    using Failure = BwaCgiRequest::BodyFailure;
    switch (request->cgiRequest()->bodyFailure()) {
    case Failure::TooLarge:
    case Failure::TooManyFormFields:
    case Failure::TooManyParts:
        request->err() << "body refused: beyond a limit";
        request->sendHttpError(BwaFcgiRequest::PayloadTooLarge);
        break;
    case Failure::NotClosed:
        request->err() << "body refused: no closing boundary with a line end";
        request->sendHttpError(BwaFcgiRequest::BadRequest);
        break;
    case Failure::OutOfMemory:
        request->err() << "body refused: no memory left";
        request->sendHttpError(BwaFcgiRequest::ServiceUnavailable);
        break;
    default:
        request->err() << "body refused: it ended early";
        request->sendHttpError(BwaFcgiRequest::BadRequest);
    }
}
//! [refuse]

//! [form]
void greet(BwaFcgiRequest* request)
{
    if (!request->cgiRequest()->processBodyContent()) {
        refuseBody(request);
        return;
    }
    const QMultiHash<QString, QString> fields = request->cgiRequest()->formVariables();
    const QString name = textOf(fields.value(QStringLiteral("name")));
    if (name.isEmpty()) {
        request->sendHttpError(BwaFcgiRequest::BadRequest); // true does not mean that it was sent
        return;
    }
    sendText(request, QStringLiteral("Hello, ") + name);
}
//! [form]

//! [file]
void takePhoto(BwaFcgiRequest* request)
{
    BwaRequestLimits limits;
    limits.maxBodySize = 1024 * 1024; // bytes
    limits.maxFormFields = 10;
    limits.maxParts = 10; // fields and files
    request->cgiRequest()->setRequestLimits(limits);
    if (!request->cgiRequest()->processBodyContent()) {
        refuseBody(request);
        return;
    }
    const BwaCgiFile photo = request->cgiRequest()->files().value(QStringLiteral("photo"));
    if (photo.data().isEmpty()) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
        return;
    }
    sendText(request, photo.fileName() + QLatin1Char(' ') + QString::number(photo.data().size()));
}
//! [file]

//! [stream]
// Takes an upload of any size in pieces of 64 KiB, instead of processBodyContent().
void hashUpload(BwaFcgiRequest* request)
{
    BwaCgiMultipartFormDataReader reader(request->cgiRequest());
    QCryptographicHash hash(QCryptographicHash::Sha256);
    QString name;
    QString fileName;
    QString contentType;
    while (reader.nextPart(name, fileName, contentType)) {
        while (!reader.isAtEndOfPart() && !reader.failed()) {
            hash.addData(reader.readFromPart(64 * 1024));
        }
    }
    if (reader.failed()) {
        request->sendHttpError(BwaFcgiRequest::BadRequest); // the body was not complete
        return;
    }
    request->out() << BwaHttpPlainTextHeader() << hash.result().toHex().constData();
}
//! [stream]

BwaTestReply replyTo(const BwaTestRequest& request, void (*answer)(BwaFcgiRequest*))
{
    return request.sendTo([answer](BwaFcgiRequest* received) {
        answer(received);
        delete received;
    });
}

QByteArray uploadOf(const QByteArray& content)
{
    return "--b\r\n"
           "Content-Disposition: form-data; name=file; filename=x.bin\r\n"
           "\r\n" +
        content + "\r\n--b--\r\n";
}

BwaTestReply replyToUpload(const QByteArray& body)
{
    BwaTestRequest request("POST", "/");
    request.setBody("multipart/form-data; boundary=b", body);
    return replyTo(request, hashUpload);
}

} // namespace

TEST(HowToReadForms, GivenAQueryReadsItsVariables)
{
    const BwaTestReply reply =
        replyTo(BwaTestRequest("GET", "/?q=th%C3%A9+%E2%82%AC&tag=green&tag=loose"), search);

    EXPECT_EQ(reply.header("Content-Type"), "text/plain; charset=utf-8");
    EXPECT_EQ(reply.body, "th\xc3\xa9 \xe2\x82\xac 2");
}

TEST(HowToReadForms, GivenAFormReadsItsFields)
{
    BwaTestRequest request("POST", "/");
    request.setForm({{"name", "Andr\xc3\xa9"}});

    EXPECT_EQ(replyTo(request, greet).body, "Hello, Andr\xc3\xa9");
}

TEST(HowToReadForms, GivenAFormWithoutItsFieldIsABadRequest)
{
    BwaTestRequest request("POST", "/");
    request.setForm({{"nickname", "Ann"}});

    EXPECT_EQ(replyTo(request, greet).statusCode, 400);
}

TEST(HowToReadForms, GivenABodyThatEndsEarlyIsABadRequest)
{
    BwaTestRequest request("POST", "/");
    request.setForm({{"name", "Ann Lee"}});
    request.setVariable("CONTENT_LENGTH", "100");

    const BwaTestReply reply = replyTo(request, greet);

    EXPECT_EQ(reply.statusCode, 400);
    EXPECT_EQ(reply.errorText, "body refused: it ended early");
}

TEST(HowToReadForms, GivenNoLineEndBehindTheLastBoundaryIsABadRequest)
{
    BwaTestRequest request("POST", "/");
    request.setBody("multipart/form-data; boundary=b",
                    "--b\r\nContent-Disposition: form-data; name=name\r\n\r\nAnn\r\n--b--");

    const BwaTestReply reply = replyTo(request, greet);

    EXPECT_EQ(reply.statusCode, 400);
    EXPECT_EQ(reply.errorText, "body refused: no closing boundary with a line end");
}

TEST(HowToReadForms, GivenAFileReadsIt)
{
    BwaTestRequest request("POST", "/");
    request.addFile("photo", "tea.png", "image/png", "12345");

    EXPECT_EQ(replyTo(request, takePhoto).body, "tea.png 5");
}

TEST(HowToReadForms, GivenNoFileIsABadRequest)
{
    BwaTestRequest request("POST", "/");
    request.addField("photo", "no file");

    EXPECT_EQ(replyTo(request, takePhoto).statusCode, 400);
}

TEST(HowToReadForms, GivenMoreThanTheLimitsAllowIsTooLarge)
{
    BwaTestRequest large("POST", "/");
    large.addFile("photo", "tea.png", "image/png", QByteArray(1024 * 1024, 'x'));
    BwaTestRequest many("POST", "/");
    for (int i = 0; i < 11; ++i) {
        many.addFile("photo", "tea.png", "image/png", "12345");
    }

    for (const BwaTestRequest* request : {&large, &many}) {
        const BwaTestReply reply = replyTo(*request, takePhoto);

        EXPECT_EQ(reply.statusCode, 413);
        EXPECT_EQ(reply.errorText, "body refused: beyond a limit");
    }
}

TEST(HowToReadForms, GivenALargeUploadReadsItInPieces)
{
    const QByteArray content(1000 * 1000, 'x');
    BwaTestRequest request("POST", "/");
    request.addFile("file", "x.bin", "application/octet-stream", content);

    EXPECT_EQ(replyTo(request, hashUpload).body,
              QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex());
}

// Within the header of the part, its content, the last delimiter; and without the line end behind
// it.
TEST(HowToReadForms, GivenAnUploadThatIsCutAnywhereIsABadRequest)
{
    const QByteArray body = uploadOf("more content than a delimiter has");
    for (int size = 1; size < body.size(); ++size) {
        EXPECT_EQ(replyToUpload(body.left(size)).statusCode, 400) << size << " bytes of it";
    }
}

TEST(HowToReadForms, GivenHalfOfALargeUploadIsABadRequest)
{
    const QByteArray body = uploadOf(QByteArray(1000 * 1000, 'x'));

    EXPECT_EQ(replyToUpload(body.left(body.size() / 2)).statusCode, 400);
}
