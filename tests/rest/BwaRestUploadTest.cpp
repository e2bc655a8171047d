// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestUpload.h"

#include "rest/BwaRestProblem.h"
#include "rest/BwaRestServer.h"
#include "rest/BwaRestService.h"
#include "rest/ResidentMemory.h"
#include "support/Application.h"
#include "support/FcgiClient.h"
#include "support/Skips.h"
#include "testing/BwaTestRequest.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <map>
#include <optional>
#include <stdexcept>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

using testing::HasSubstr;

namespace {

const QByteArray formType = "multipart/form-data; boundary=b";

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

/** Each part as "name|file name|content type|value or content of the file". */
QByteArray described(const QList<BwaRestPart>& parts)
{
    QByteArray text;
    for (const BwaRestPart& part : parts) {
        const QByteArray content = part.path.isNull() ? part.value : contentOf(part.path);
        EXPECT_EQ(part.size, content.size());
        text += part.name.toUtf8() + '|' + part.fileName.toUtf8() + '|' +
            part.contentType.toUtf8() + '|' + content + '\n';
    }
    return text;
}

class BwaRestUploadTest : public testing::Test
{
protected:
    BwaRestUploadTest()
    {
        upload.toFolder(folder.path())
            .done([this](const BwaRestCall&, const QList<BwaRestPart>& parts) {
                ++doneCalls;
                return whenDone ? whenDone(parts)
                                : BwaRestReply::bytes(described(parts), "text/plain");
            });
        api->post("/upload",
                  [this](const BwaRestCall& call) { return call.upload(upload, deadline); });
        api->get("/other", [](const BwaRestCall&) { return QVariantMap(); });
    }

    // However it ends, nothing is left behind.
    BwaTestReply send(const BwaTestRequest& request)
    {
        const BwaTestReply reply = request.sendTo(*api);
        EXPECT_EQ(files(), QStringList());
        return reply;
    }

    BwaTestReply sendForm(const QByteArray& body, const QByteArray& type = formType)
    {
        BwaTestRequest request("POST", "/upload");
        request.setBody(type, body);
        return send(request);
    }

    QStringList files() const { return QDir(folder.path()).entryList(QDir::Files); }

    Application application;
    QTemporaryDir folder;
    BwaRestUpload upload{200000, 3};
    int deadline = 10000; // milliseconds
    int doneCalls = 0;
    std::function<BwaRestReply(const QList<BwaRestPart>&)> whenDone;
    std::unique_ptr<BwaRestService> api = std::make_unique<BwaRestService>();
};

QByteArray fileForm(const QByteArray& content)
{
    return "--b\r\nContent-Disposition: form-data; name=\"f\"; filename=\"a\"\r\n\r\n" + content +
        "\r\n--b--\r\n";
}

// How long another request takes.
qint64 millisecondsOfAnother(const QByteArray& path)
{
    QElapsedTimer timer;
    timer.start();
    FcgiClient client(path);
    client.sendRequest(
        {{"REQUEST_METHOD", "GET"}, {"SCRIPT_NAME", "/api"}, {"PATH_INFO", "/other"}});
    EXPECT_EQ(client.readReply().out, "Content-Type: application/json\nContent-Length: 2\n\n{}");
    return timer.elapsed();
}

struct Refusal {
    const char* name;
    QByteArray body;
    int status;
    const char* detail;
    QByteArray type = formType;
};

void PrintTo(const Refusal& refusal, std::ostream* out)
{
    *out << refusal.name;
}

class BwaRestUploadRefusal
    : public BwaRestUploadTest
    , public testing::WithParamInterface<Refusal>
{
};

} // namespace

TEST_F(BwaRestUploadTest, GivenAFormGivesItsParts)
{
    BwaTestRequest request("POST", "/upload");
    request.addField("title", "a b");
    request.addFile("image", "a+\xc3\xa4 \".png", "image/png", QByteArray("\0\r\n--b", 6));
    request.addFile("image", "b", "", "");

    EXPECT_EQ(send(request).body,
              QByteArray("title|||a b\n"
                         "image|a+\xc3\xa4 \".png|image/png|") +
                  QByteArray("\0\r\n--b\n", 7) + "image|b||\n");
}

TEST_F(BwaRestUploadTest, GivenAnotherBodyGivesItAsOnePart)
{
    const QByteArray content(150000, 'x');

    EXPECT_EQ(sendForm(content, "image/png").body, "||image/png|" + content + '\n');
}

TEST_F(BwaRestUploadTest, GivenNoBodyGivesAnEmptyPart)
{
    EXPECT_EQ(send(BwaTestRequest("POST", "/upload")).body, "|||\n");
}

TEST_F(BwaRestUploadTest, WithoutDoneIsA204)
{
    upload = BwaRestUpload(10);

    EXPECT_EQ(sendForm("a", "text/plain").statusCode, 204);
}

TEST_F(BwaRestUploadTest, GivenHeadersInLowerCaseAndNoLastLineEndTakesThem)
{
    EXPECT_EQ(
        sendForm("first\r\n--b\r\ncontent-disposition: form-data; name=a\r\n\r\n1\r\n--b--").body,
        "a|||1\n");
}

TEST_F(BwaRestUploadTest, GivenTextBehindTheLastDelimiterIgnoresIt)
{
    EXPECT_EQ(sendForm(fileForm("1") + "--b\r\n" + QByteArray(100000, 'x')).body, "f|a||1\n");
}

// The pieces end within and around the delimiter.
TEST_F(BwaRestUploadTest, GivenContentOfAnyLengthGivesItWhole)
{
    for (int size = 65536 - 120; size < 65536; ++size) {
        const QByteArray content(size, '\r');

        ASSERT_EQ(sendForm(fileForm(content)).body, "f|a||" + content + '\n') << size;
    }
}

TEST_F(BwaRestUploadTest, WhenCutAtAnyByteIsA400)
{
    const QByteArray form = fileForm("1");
    for (int size = 0; size < form.size(); ++size) {
        BwaTestRequest request("POST", "/upload");
        request.setBody(formType, form.left(size));
        request.setHeader("Content-Length", QByteArray::number(form.size()));

        ASSERT_EQ(send(request).statusCode, 400) << size;
    }
    EXPECT_EQ(doneCalls, 0);
}

TEST_F(BwaRestUploadTest, WhenAnnouncedShorterIsA400)
{
    const QByteArray form = fileForm("1");
    for (int size = 0; size < form.size() - 2; ++size) {
        ASSERT_EQ(sendForm(form.left(size)).statusCode, 400) << size;
    }
    EXPECT_EQ(doneCalls, 0);
}

TEST_F(BwaRestUploadTest, GivenExactlyTheLimitTakesIt)
{
    EXPECT_EQ(sendForm(QByteArray(200000, 'x'), "text/plain").statusCode, 200);
    EXPECT_EQ(sendForm(QByteArray(200001, 'x'), "text/plain").body,
              R"({"detail":"A body may have 200000 bytes here","limit":200000,"status":413,)"
              R"("title":"Payload Too Large"})");
}

TEST_F(BwaRestUploadTest, GivenALimitOfTheGroupDoesNotHeedIt)
{
    api->limit(10);

    EXPECT_EQ(sendForm("12345678901", "text/plain").statusCode, 200);
}

TEST_F(BwaRestUploadTest, GivenAnUnfitLengthRefusesIt)
{
    for (const auto& entry : std::map<QByteArray, int>{
             {"5368709120", 413}, {"99999999999999999999", 413}, {"-1", 400}, {"1e3", 400}}) {
        BwaTestRequest request("POST", "/upload");
        request.setBody("text/plain", "a");
        request.setHeader("Content-Length", entry.first);
        EXPECT_EQ(send(request).statusCode, entry.second) << entry.first.constData();
    }
}

TEST_F(BwaRestUploadTest, GivenChunksWithoutALengthIsA411)
{
    BwaTestRequest request("POST", "/upload");
    request.setHeader("Transfer-Encoding", "chunked");

    EXPECT_EQ(send(request).statusCode, 411);
}

TEST_P(BwaRestUploadRefusal, TellsWhy)
{
    const BwaTestReply reply = sendForm(GetParam().body, GetParam().type);

    EXPECT_EQ(reply.statusCode, GetParam().status);
    EXPECT_THAT(reply.body.toStdString(), HasSubstr(GetParam().detail));
    EXPECT_EQ(doneCalls, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BwaRestUploadRefusal,
    testing::Values(
        Refusal{"NoBoundary", fileForm("1"), 400, "no valid boundary", "multipart/form-data"},
        Refusal{"LongBoundary", "", 400, "no valid boundary",
                "multipart/form-data; boundary=" + QByteArray(71, 'b')},
        Refusal{"NoDisposition", "--b\r\nA: b\r\n\r\n1\r\n--b--\r\n", 400, "has no name"},
        Refusal{"NoName", "--b\r\nContent-Disposition: form-data\r\n\r\n1\r\n--b--\r\n", 400,
                "has no name"},
        Refusal{"NoFormData", "--b\r\nContent-Disposition: a; name=b\r\n\r\n1\r\n--b--\r\n", 400,
                "has no name"},
        Refusal{"NoUtf8",
                "--b\r\nContent-Disposition: form-data; name=\"\xff\"\r\n\r\n1\r\n--b--\r\n", 400,
                "no UTF-8"},
        Refusal{"LongHeader", "--b\r\n" + QByteArray(9000, 'a') + "\r\n\r\n1\r\n--b--\r\n", 400,
                "too long"},
        Refusal{"HeaderWithoutEnd", "--b\r\n" + QByteArray(100000, 'a'), 400, "too long"},
        Refusal{"FourParts", fileForm("1").chopped(7).repeated(4) + "--b--\r\n", 413, "3 parts"},
        Refusal{"LongField",
                "--b\r\nContent-Disposition: form-data; name=a\r\n\r\n" + QByteArray(65537, 'x') +
                    "\r\n--b--\r\n",
                413, "65536 bytes"}),
    [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_F(BwaRestUploadTest, GivesFilesPieceByPiece)
{
    QByteArray content;
    int pieces = 0;
    upload.data([&](const BwaRestPart& part, const QByteArray& piece) {
        content += piece;
        EXPECT_EQ(part.size, content.size());
        ++pieces;
    });

    sendForm(fileForm(QByteArray(150000, 'x')));

    EXPECT_EQ(content, QByteArray(150000, 'x'));
    EXPECT_EQ(pieces, 3);
}

TEST_F(BwaRestUploadTest, WhenDoneRenamesAFileKeepsIt)
{
    QTemporaryDir target;
    const QString kept = target.path() + QStringLiteral("/kept");
    whenDone = [&](const QList<BwaRestPart>& parts) {
        EXPECT_TRUE(QFile::rename(parts.first().path, kept));
        return BwaRestReply::empty(201);
    };

    EXPECT_EQ(sendForm(fileForm("1")).statusCode, 201);
    EXPECT_EQ(contentOf(kept), "1");
}

TEST_F(BwaRestUploadTest, WhenDoneThrowsIsItsReply)
{
    whenDone = [](const QList<BwaRestPart>&) -> BwaRestReply { throw BwaRestProblem(409); };
    EXPECT_EQ(sendForm(fileForm("1")).statusCode, 409);

    whenDone = [](const QList<BwaRestPart>&) -> BwaRestReply {
        throw std::runtime_error("secret");
    };
    const BwaTestReply reply = sendForm(fileForm("1"));
    EXPECT_EQ(reply.body, R"({"status":500,"title":"Internal Server Error"})");
    EXPECT_THAT(reply.errorText.toStdString(), HasSubstr("secret"));
}

TEST_F(BwaRestUploadTest, WhenAPieceThrowsIsItsReply)
{
    upload.data([](const BwaRestPart&, const QByteArray&) { throw BwaRestProblem(415); });

    EXPECT_EQ(sendForm(fileForm("1")).statusCode, 415);
    EXPECT_EQ(doneCalls, 0);
}

TEST_F(BwaRestUploadTest, WhenDoneAnswersLaterSendsThat)
{
    upload.done([](const BwaRestCall& call, const QList<BwaRestPart>&) {
        return call.onPool(
            [](const BwaRestCancel&) { return BwaRestReply::bytes("later", "text/plain"); });
    });

    EXPECT_EQ(sendForm(fileForm("1")).body, "later");
}

TEST_F(BwaRestUploadTest, WhenTheFolderIsMissingIsALogged500)
{
    upload.toFolder(QStringLiteral("/missing"));

    const BwaTestReply reply = sendForm(fileForm("1"));

    EXPECT_EQ(reply.statusCode, 500);
    EXPECT_THAT(reply.errorText.toStdString(), HasSubstr("/missing"));
}

TEST_F(BwaRestUploadTest, WhenTheDiskIsFullIsALogged500)
{
    rlimit before = {};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit limit = {1000, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &limit);

    const BwaTestReply small = sendForm(fileForm(QByteArray(1001, 'x')));
    const BwaTestReply large = sendForm(fileForm(QByteArray(150000, 'x')));
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);

    for (const BwaTestReply& reply : {small, large}) {
        EXPECT_EQ(reply.statusCode, 500);
        EXPECT_THAT(reply.errorText.toStdString(), HasSubstr("cannot be written"));
    }
    EXPECT_EQ(doneCalls, 0);
}

TEST_F(BwaRestUploadTest, WhenTheDeadlineIsOverIsA503)
{
    deadline = 0;
    BwaTestRequest request("POST", "/upload");
    request.setBody("text/plain", QByteArray(200000, 'x'));
    upload.data([](const BwaRestPart&, const QByteArray&) {});

    EXPECT_EQ(send(request).statusCode, 503);
    EXPECT_EQ(doneCalls, 0);
}

TEST_F(BwaRestUploadTest, WhileItComesServesOthers)
{
    int answered = 0;
    whenDone = [](const QList<BwaRestPart>&) { return BwaRestReply::empty(); };
    upload.data([&](const BwaRestPart&, const QByteArray&) {
        answered += BwaTestRequest("GET", "/other").sendTo(*api).statusCode == 200 ? 1 : 0;
    });
    BwaTestRequest request("POST", "/upload");
    request.setBody("text/plain", QByteArray(200000, 'x'));

    BwaTestStream stream = request.open(*api);

    EXPECT_EQ(stream.waitForEnd(), "Status: 204 No Content\n\n");
    EXPECT_GE(answered, 4);
    EXPECT_EQ(files(), QStringList());
}

TEST_F(BwaRestUploadTest, WhenTheClientGoesLeavesNothing)
{
    bool isGone = false;
    api->post("/cut", [&](const BwaRestCall& call) {
        BwaRestReply reply = call.upload(upload);
        call.later().onGone([&] { isGone = true; });
        return reply;
    });
    BwaTestRequest request("POST", "/cut");
    request.setBody("text/plain", "a");
    request.setHeader("Content-Length", "2");
    std::optional<BwaTestStream> stream = request.open(*api);
    runEventLoopUntil([&] { return isGone || !files().isEmpty(); });

    stream->disconnect();
    runEventLoopUntil([&] { return files().isEmpty(); });

    EXPECT_EQ(doneCalls, 0);
}

TEST_F(BwaRestUploadTest, Given300MBTakesLittleMemoryAndServesOthersSoon)
{
    if (underSanitizer() || underEmulator()) {
        GTEST_SKIP() << "the sanitizer or the emulator takes memory of its own";
    }
    const int pieces = 4800; // of 65,528 bytes
    const qint64 size = qint64(pieces) * 65528;
    qint64 atFirst = 0;
    qint64 most = 0;
    api->post("/large", [&](const BwaRestCall& call) {
        atFirst = residentBytes();
        return call.upload(BwaRestUpload(size).data([&](const BwaRestPart&, const QByteArray&) {
            most = std::max(most, residentBytes());
        }));
    });
    BwaRestServer server({{QString::fromLatin1("/api"), api.get()}});
    const QByteArray path = folder.path().toLocal8Bit() + "/socket";
    qint64 slowest = 0;
    std::thread client([&] {
        FcgiClient large(path);
        const QByteArray header =
            FcgiClient::requestBytes({{"REQUEST_METHOD", "POST"},
                                      {"SCRIPT_NAME", "/api"},
                                      {"PATH_INFO", "/large"},
                                      {"CONTENT_LENGTH", QByteArray::number(size)}});
        large.send(header.chopped(8)); // without the end of the body
        const QByteArray record = FcgiClient::record(5, QByteArray(65528, 'x'));
        for (int piece = 0; piece < pieces; ++piece) {
            large.send(record);
            if (piece % 480 == 0) {
                slowest = std::max(slowest, millisecondsOfAnother(path));
            }
        }
        large.send(header.right(8));
        EXPECT_EQ(large.readReply().out, "Status: 204 No Content\n\n");
        ::kill(::getpid(), SIGTERM);
    });

    EXPECT_EQ(server.run(QString::fromLocal8Bit(path)), 0);
    client.join();

    RecordProperty("bytes", QByteArray::number(most - atFirst).constData());
    RecordProperty("milliseconds", QByteArray::number(slowest).constData());
    EXPECT_LT(most - atFirst, 16 * 1024 * 1024);
    EXPECT_LT(slowest, 500); // a bound that a busy machine keeps; mostly it is 1
}

TEST_F(BwaRestUploadTest, WhenTheServiceGoesLeavesNothing)
{
    upload.data([this](const BwaRestPart&, const QByteArray&) { api->endCalls(); });
    BwaTestRequest request("POST", "/upload");
    request.setBody("text/plain", "ab");

    EXPECT_EQ(send(request).statusCode, 503);
    EXPECT_EQ(doneCalls, 0);
}
