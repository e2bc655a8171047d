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

//! [query]
// /search?q=tea&tag=green&tag=loose
void search(BwaFcgiRequest* request)
{
    const QMultiHash<QString, QString> variables = request->cgiRequest()->queryVariables();
    const QString wanted = QString::fromUtf8(variables.value(QStringLiteral("q")).toLatin1());
    const QStringList tags = variables.values(QStringLiteral("tag")); // the last one sent first
    request->out() << BwaHttpPlainTextHeader() << wanted << ' ' << QString::number(tags.size());
}
//! [query]

//! [form]
void greet(BwaFcgiRequest* request)
{
    if (!request->cgiRequest()->processBodyContent()) {
        request->sendHttpError(BwaFcgiRequest::BadRequest); // the body ended early
        return;
    }
    const QMultiHash<QString, QString> fields = request->cgiRequest()->formVariables();
    request->out() << BwaHttpPlainTextHeader() << "Hello, " << fields.value(QStringLiteral("name"));
}
//! [form]

//! [file]
void takePhoto(BwaFcgiRequest* request)
{
    BwaRequestLimits limits;
    limits.maxBodySize = 1024 * 1024; // bytes
    limits.maxParts = 10;
    request->cgiRequest()->setRequestLimits(limits);
    if (!request->cgiRequest()->processBodyContent()) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
        return;
    }
    const BwaCgiFile photo = request->cgiRequest()->files().value(QStringLiteral("photo"));
    if (photo.data().isEmpty()) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
        return;
    }
    request->out() << BwaHttpPlainTextHeader() << photo.contentType() << ' '
                   << QString::number(photo.data().size());
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
    EXPECT_EQ(replyTo(BwaTestRequest("GET", "/?q=tea&tag=green&tag=loose"), search).body, "tea 2");
}

TEST(HowToReadForms, GivenAFormReadsItsFields)
{
    BwaTestRequest request("POST", "/");
    request.setForm({{"name", "Ann Lee"}});

    EXPECT_EQ(replyTo(request, greet).body, "Hello, Ann Lee");
}

TEST(HowToReadForms, GivenABodyThatEndsEarlyIsABadRequest)
{
    BwaTestRequest request("POST", "/");
    request.setForm({{"name", "Ann Lee"}});
    request.setVariable("CONTENT_LENGTH", "100");

    EXPECT_EQ(replyTo(request, greet).statusCode, 400);
}

TEST(HowToReadForms, GivenAFileReadsIt)
{
    BwaTestRequest request("POST", "/");
    request.addFile("photo", "tea.png", "image/png", "12345");

    EXPECT_EQ(replyTo(request, takePhoto).body, "image/png 5");
}

TEST(HowToReadForms, GivenNoFileOrTooMuchIsABadRequest)
{
    BwaTestRequest empty("POST", "/");
    empty.addField("photo", "no file");
    BwaTestRequest large("POST", "/");
    large.addFile("photo", "tea.png", "image/png", QByteArray(1024 * 1024, 'x'));

    EXPECT_EQ(replyTo(empty, takePhoto).statusCode, 400);
    EXPECT_EQ(replyTo(large, takePhoto).statusCode, 400);
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
