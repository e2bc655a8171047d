// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Gateway.h"

#include "json/BwaJson.h"
#include "testing/BwaTestRequest.h"

#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

namespace {

constexpr int patience = 10000; // milliseconds

const char* const pump = R"({"name":"pump","bus":1,"address":7})";

class GatewayTest : public testing::Test
{
protected:
    // One hash for both: each takes its time.
    static void SetUpTestSuite() { hash = Accounts::hash("tea and biscuits"); }

    GatewayTest()
    {
        QFile accounts(folder.filePath("accounts"));
        accounts.open(QFile::WriteOnly);
        accounts.write("olga " + hash + " operator\n\nvera " + hash + "\nbroken\n");
    }

    Gateway& gateway()
    {
        if (!m_gateway) {
            settings.accounts = folder.filePath("accounts");
            settings.folder = folder.filePath("firmware");
            m_gateway = std::make_unique<Gateway>(settings);
        }
        return *m_gateway;
    }

    BwaTestReply send(const BwaTestRequest& request) { return request.sendTo(gateway().service()); }

    BwaTestReply login(const QByteArray& user, const QByteArray& password = "tea and biscuits")
    {
        BwaTestRequest request("POST", "/session");
        request.setBody("application/json",
                        R"({"user":")" + user + R"(","password":")" + password + R"("})");
        return send(request);
    }

    // A request with the token of that user.
    BwaTestRequest as(const QByteArray& user, const QByteArray& method, const QByteArray& target,
                      const QByteArray& json = QByteArray())
    {
        if (!m_tokens.contains(user)) {
            const QVariantMap reply = BwaJson::parse(login(user).body).toMap();
            m_tokens[user] = "SESSION-TOKEN " + reply["session"].toString().toLatin1() + ':' +
                reply["token"].toString().toLatin1();
        }
        BwaTestRequest request(method, target);
        request.setHeader("Authorization", m_tokens[user]);
        if (!json.isNull()) {
            request.setBody("application/json", json);
        }
        return request;
    }

    BwaTestReply operate(const QByteArray& method, const QByteArray& target,
                         const QByteArray& json = QByteArray())
    {
        return send(as("olga", method, target, json));
    }

    BwaTestReply change(const QByteArray& tag, const QByteArray& json,
                        const QByteArray& method = "PATCH")
    {
        BwaTestRequest request = as("olga", method, "/devices/1", json);
        request.setHeader("If-Match", tag);
        return send(request);
    }

    BwaTestReply upload(const QByteArray& image, const QByteArray& target = "/upload")
    {
        BwaTestRequest request = as("olga", "POST", target);
        request.setBody("application/octet-stream", image);
        return send(request);
    }

    // The names of the devices that a query gives.
    std::string listed(const QByteArray& query)
    {
        const QVariantMap reply = BwaJson::parse(operate("GET", "/devices?" + query).body).toMap();
        QString text = reply["total"].toString() + " in all:";
        for (const QVariant& device : reply["devices"].toList()) {
            text += ' ' + device.toMap()["name"].toString();
        }
        return text.toStdString();
    }

    BwaTestStream open(const BwaTestRequest& request) { return request.open(gateway().service()); }

    // All of what uploads have left.
    QStringList images() const
    {
        return QDir(folder.filePath("firmware")).entryList(QDir::Files) +
            QDir(folder.filePath("firmware/incoming")).entryList(QDir::Files);
    }

    static QByteArray hash;
    int argc = 1;
    char name[5] = "test";
    char* argv[2] = {name, nullptr};
    QCoreApplication application = {argc, argv};
    QTemporaryDir folder;
    GatewaySettings settings;

private:
    QMap<QByteArray, QByteArray> m_tokens;
    std::unique_ptr<Gateway> m_gateway;
};

QByteArray GatewayTest::hash;

void expectProblem(const BwaTestReply& reply, int status)
{
    EXPECT_EQ(reply.statusCode, status) << reply.raw.left(300).toStdString();
    EXPECT_EQ(reply.header("Content-Type"), "application/problem+json");
}

// Until @a flag is set, or it takes too long.
bool await(const std::atomic<bool>& flag)
{
    QElapsedTimer timer;
    timer.start();
    while (!flag && timer.elapsed() < patience) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    }
    return flag;
}

} // namespace

TEST_F(GatewayTest, GivenAWrongPasswordOrNameRefusesBothAlike)
{
    for (const BwaTestReply& reply :
         {login("olga", "coffee"), login("nobody"), login("broken"), login("olga\\u0000")}) {
        expectProblem(reply, 403);
        EXPECT_TRUE(reply.body.contains("Name or password is wrong"));
        EXPECT_TRUE(reply.headerValues("Set-Cookie").isEmpty());
    }
}

TEST_F(GatewayTest, GivenTheCookiesOfALoginLetsTheBrowserIn)
{
    BwaTestRequest request("GET", "/devices");
    QList<QByteArray> pairs;
    for (const QByteArray& cookie : login("vera").headerValues("Set-Cookie")) {
        EXPECT_TRUE(cookie.contains("; Secure; HttpOnly")) << cookie.toStdString();
        pairs.append(cookie.left(cookie.indexOf(';')));
    }
    request.setHeader("Cookie", pairs.join("; "));

    EXPECT_EQ(send(request).body, R"({"devices":[],"total":0})");
}

TEST_F(GatewayTest, GivenTheTokenOfALoginLetsTheProgramIn)
{
    EXPECT_EQ(send(as("vera", "GET", "/devices")).statusCode, 200);
}

TEST_F(GatewayTest, GivenNoOrAnotherTokenIsA401)
{
    BwaTestRequest request("GET", "/devices");
    expectProblem(send(request), 401);
    for (const char* token : {"SESSION-TOKEN ", "SESSION-TOKEN a:b", "Bearer x",
                              "SESSION-TOKEN 00000000-0000-0000-0000-000000000000:"
                              "00000000-0000-0000-0000-000000000000"}) {
        request.setHeader("Authorization", token);
        expectProblem(send(request), 401);
    }
}

TEST_F(GatewayTest, WhenATokenIsRenewedTheNewOneIsGiven)
{
    const BwaTestReply reply = operate("PUT", "/session");

    EXPECT_EQ(reply.statusCode, 200);
    EXPECT_TRUE(reply.body.contains(R"("roles":["operator"])"));
}

TEST_F(GatewayTest, WhenLoggedOutTheTokenIsWorthless)
{
    EXPECT_EQ(operate("DELETE", "/session").statusCode, 204);

    expectProblem(operate("GET", "/devices"), 401);
}

TEST_F(GatewayTest, GivenAnotherRoleRefusesEachChange)
{
    operate("POST", "/devices", pump);

    expectProblem(send(as("vera", "POST", "/devices", pump)), 403);
    expectProblem(send(as("vera", "PATCH", "/devices/1", "{}")), 403);
    expectProblem(send(as("vera", "DELETE", "/devices/1")), 403);
    expectProblem(send(as("vera", "POST", "/buses/1/scan")), 403);
    expectProblem(send(as("vera", "POST", "/upload", "{}")), 403);
    expectProblem(send(as("vera", "DELETE", "/firmware/a")), 403);
    EXPECT_EQ(send(as("vera", "GET", "/devices/1")).statusCode, 200);
}

TEST_F(GatewayTest, GivenADeviceAddsIt)
{
    const BwaTestReply reply = operate("POST", "/devices", pump);

    EXPECT_EQ(reply.statusCode, 201);
    EXPECT_EQ(reply.header("Location"), "/devices/1");
    EXPECT_EQ(reply.body,
              R"({"address":7,"bus":1,"enabled":true,"id":1,"labels":[],"name":"pump",)"
              R"("note":null})");
    EXPECT_EQ(operate("GET", "/devices/1").body, reply.body);
}

TEST_F(GatewayTest, GivenANameThatIsTakenRefusesIt)
{
    operate("POST", "/devices", pump);
    const QByteArray tag =
        operate("POST", "/devices", R"({"name":"fan","bus":1,"address":8})").header("ETag");
    BwaTestRequest renaming = as("olga", "PATCH", "/devices/2", R"({"name":"pump"})");
    renaming.setHeader("If-Match", tag);

    expectProblem(operate("POST", "/devices", pump), 409);
    expectProblem(send(renaming), 409);
    EXPECT_EQ(operate("GET", "/devices/2").header("ETag"), tag);
}

TEST_F(GatewayTest, GivenAQueryListsWhatItAsksFor)
{
    operate("POST", "/devices", R"({"name":"Pump","bus":1,"address":1,"labels":["water"]})");
    operate("POST", "/devices", R"({"name":"fan","bus":1,"address":2,"enabled":false})");
    operate("POST", "/devices", R"({"name":"valve","bus":1,"address":3,"note":"at the PUMP"})");

    EXPECT_EQ(listed(""), "3 in all: Pump fan valve");
    EXPECT_EQ(listed("first=1&count=1"), "3 in all: fan");
    EXPECT_EQ(listed("first=9"), "3 in all:");
    EXPECT_EQ(listed("search=pump"), "2 in all: Pump valve");
    EXPECT_EQ(listed("enabled=false"), "1 in all: fan");
    EXPECT_EQ(listed("label=water&search=p"), "1 in all: Pump");
}

TEST_F(GatewayTest, GivenAWrongQueryRefusesIt)
{
    for (const char* query : {"count=0", "count=101", "count=1e1", "first=-1", "enabled=yes",
                              "sort=name", "count=1&count=2"}) {
        expectProblem(operate("GET", QByteArray("/devices?") + query), 422);
    }
}

TEST_F(GatewayTest, GivenThePresentTagChangesTheDevice)
{
    const QByteArray tag = operate("POST", "/devices", pump).header("ETag");

    const BwaTestReply changed = change(tag, R"({"note":"new","enabled":false})");

    EXPECT_EQ(changed.statusCode, 200);
    EXPECT_EQ(changed.body, operate("GET", "/devices/1").body);
    EXPECT_TRUE(changed.body.contains(R"("note":"new")"));
    EXPECT_NE(changed.header("ETag"), tag);
    EXPECT_EQ(change(changed.header("ETag"), QByteArray(), "DELETE").statusCode, 204);
    expectProblem(operate("GET", "/devices/1"), 404);
}

TEST_F(GatewayTest, GivenNoOrAnOldTagChangesNothing)
{
    const BwaTestReply added = operate("POST", "/devices", pump);

    expectProblem(operate("PATCH", "/devices/1", R"({"bus":2})"), 428);
    expectProblem(operate("DELETE", "/devices/1"), 428);
    expectProblem(change("\"old\"", R"({"bus":2})"), 412);
    expectProblem(change("\"old\"", QByteArray(), "DELETE"), 412);
    EXPECT_EQ(operate("GET", "/devices/1").body, added.body);
}

TEST_F(GatewayTest, GivenTheTagOfTheClientsCopySendsNoBody)
{
    BwaTestRequest request = as("olga", "GET", "/devices/1");
    request.setHeader("If-None-Match", "W/" + operate("POST", "/devices", pump).header("ETag"));

    const BwaTestReply reply = send(request);

    EXPECT_EQ(reply.statusCode, 304);
    EXPECT_EQ(reply.body, "");
}

TEST_F(GatewayTest, GivenHostileBodiesRefusesThemAndKeepsTheDevice)
{
    const BwaTestReply added = operate("POST", "/devices", pump);
    const QMap<QByteArray, int> expected = {
        {"", 400},
        {"{", 400},
        {"\xff", 400},
        {QByteArray("[").repeated(60000), 400},
        {"[]", 422},
        {"null", 422},
        {R"({"name":""})", 422},
        {R"({"name":1})", 422},
        {R"({"bus":8})", 422},
        {R"({"bus":1.5})", 422},
        {R"({"bus":"1"})", 422},
        {R"({"address":99999999999})", 422},
        {R"({"labels":[1]})", 422},
        {R"({"labels":["a","b","c","d","e","f","g","h","i"]})", 422},
        {R"({"owner":"me"})", 422},
        {R"({"bus":1,"bus":2})", 422},
        {'"' + QByteArray(64 * 1024, 'a') + '"', 413},
    };

    for (auto body = expected.begin(); body != expected.end(); ++body) {
        expectProblem(operate("POST", "/devices", body.key()), *body);
        expectProblem(change(added.header("ETag"), body.key()), *body);
    }
    EXPECT_EQ(operate("GET", "/devices/1").body, added.body);
    EXPECT_EQ(operate("GET", "/devices").body, "{\"devices\":[" + added.body + "],\"total\":1}");
}

TEST_F(GatewayTest, GivenPathsOfNobodyIsA404)
{
    for (const char* path : {"/devices/one", "/devices/99999999999999999999", "/devices/", "/other",
                             "/buses/8/scan", "/buses/-1/scan"}) {
        expectProblem(operate("POST", path, pump), 404);
    }
    expectProblem(operate("GET", "/devices/1"), 404);
    expectProblem(operate("POST", "/devices/1", pump), 405);
}

TEST_F(GatewayTest, GivenAPageOfAnotherSiteRefusesToWrite)
{
    BwaTestRequest request = as("olga", "POST", "/devices", pump);
    request.setHeader("Host", "gateway.example");
    request.setHeader("Origin", "https://evil.example");

    expectProblem(send(request), 403);
    request.setHeader("Origin", "https://gateway.example");
    EXPECT_EQ(send(request).statusCode, 201);
}

TEST_F(GatewayTest, GivenAPageThatIsAllowedReadsRepliesAndProblems)
{
    settings.origins.append("https://app.example");
    BwaTestRequest request = as("olga", "POST", "/devices", pump);
    request.setHeader("Host", "gateway.example");
    request.setHeader("Origin", "https://app.example");
    BwaTestRequest preflight("OPTIONS", "/devices/1");
    preflight.setHeader("Origin", "https://app.example");
    preflight.setHeader("Access-Control-Request-Method", "PATCH");

    const BwaTestReply added = send(request);
    const BwaTestReply refused = send(request);

    EXPECT_EQ(added.header("Access-Control-Expose-Headers"), "ETag, Location");
    EXPECT_EQ(refused.statusCode, 409);
    EXPECT_EQ(refused.header("Access-Control-Allow-Origin"), "https://app.example");
    EXPECT_EQ(send(preflight).header("Access-Control-Allow-Methods"),
              "GET, HEAD, PATCH, DELETE, OPTIONS");
}

TEST_F(GatewayTest, GivenAnImageKeepsItUnderItsDigest)
{
    const QByteArray image(200000, 'x');
    const QByteArray digest = QCryptographicHash::hash(image, QCryptographicHash::Sha256).toHex();

    const BwaTestReply reply = upload(image, "/upload?sha256=" + digest.toUpper());

    EXPECT_EQ(reply.statusCode, 201);
    EXPECT_EQ(reply.header("Location"), "/firmware/" + digest);
    EXPECT_EQ(reply.body, R"({"sha256":")" + digest + R"(","size":200000})");
    EXPECT_EQ(images(), QStringList(digest));
    EXPECT_EQ(upload(image).body, reply.body);
    EXPECT_EQ(operate("GET", "/firmware").body, R"({"digests":[")" + digest + R"("]})");
    EXPECT_EQ(operate("DELETE", "/firmware/" + digest).statusCode, 204);
    EXPECT_EQ(images(), QStringList());
}

TEST_F(GatewayTest, GivenAFormKeepsItsFile)
{
    BwaTestRequest request = as("olga", "POST", "/upload");
    request.addFile("image", "../../etc/passwd", "application/octet-stream", "content");

    EXPECT_EQ(send(request).statusCode, 201);
    EXPECT_EQ(images(),
              QStringList(QCryptographicHash::hash("content", QCryptographicHash::Sha256).toHex()));
}

TEST_F(GatewayTest, GivenWhatIsNoImageKeepsNothing)
{
    BwaTestRequest field = as("olga", "POST", "/upload");
    field.addField("image", "content");
    BwaTestRequest twoFiles = as("olga", "POST", "/upload");
    twoFiles.addFile("a", "a", "text/plain", "a");
    twoFiles.addFile("b", "b", "text/plain", "b");
    BwaTestRequest emptyForm = as("olga", "POST", "/upload");
    emptyForm.setBody("multipart/form-data; boundary=b", "--b--\r\n");
    BwaTestRequest cutOff = as("olga", "POST", "/upload");
    cutOff.setBody("application/octet-stream", "content");
    cutOff.setHeader("Content-Length", "300000");
    BwaTestRequest tooLarge = as("olga", "POST", "/upload");
    tooLarge.setHeader("Content-Length", "314572801");

    expectProblem(send(field), 422);
    expectProblem(send(twoFiles), 413);
    expectProblem(send(emptyForm), 422);
    expectProblem(send(cutOff), 400);
    expectProblem(send(tooLarge), 413);
    expectProblem(upload(""), 422);
    expectProblem(upload("content", "/upload?sha256=00"), 422);
    expectProblem(operate("DELETE", "/firmware/..%2Faccounts"), 404);
    EXPECT_EQ(images(), QStringList());
}

TEST_F(GatewayTest, GivenTooManyImagesRefusesOneMore)
{
    for (const char* image : {"1", "2", "3", "4", "5", "6", "7", "8"}) {
        EXPECT_EQ(upload(image).statusCode, 201);
    }

    expectProblem(upload("9"), 507);
    EXPECT_EQ(upload("8").statusCode, 201) << "it is there already";
    EXPECT_EQ(images().size(), 8);
}

TEST_F(GatewayTest, WhenTheFolderHasGoneTheClientLearnsNoPath)
{
    const QString path = folder.filePath("firmware");
    gateway();
    QDir(path).removeRecursively();

    const BwaTestReply reply = upload("content");

    EXPECT_EQ(reply.body, R"({"status":500,"title":"Internal Server Error"})");
    EXPECT_TRUE(reply.errorText.contains(path.toUtf8())) << reply.errorText.toStdString();
}

TEST_F(GatewayTest, WhenItStartsRemovesWhatHasComeOfUploads)
{
    QDir(folder.path()).mkpath("firmware/incoming");
    QFile(folder.filePath("firmware/incoming/upload-a")).open(QFile::WriteOnly);
    EXPECT_EQ(images().size(), 1);

    gateway();

    EXPECT_EQ(images(), QStringList());
}

TEST_F(GatewayTest, GivenTwentyStreamsTellsEachOfChangesAndProgress)
{
    std::vector<BwaTestStream> streams;
    streams.reserve(20);
    for (int stream = 0; stream < 20; ++stream) {
        streams.push_back(open(as("vera", "GET", "/events")));
        streams.back().waitFor("\n\n"); // the header block
    }

    operate("POST", "/devices", pump);
    upload(QByteArray(9 * 1024 * 1024, 'x'));

    for (BwaTestStream& stream : streams) {
        stream.waitFor("event: added\ndata: {\"id\":1,\"name\":\"pump\"}\n\n");
        stream.waitFor(
            "event: upload\ndata: {\"received\":4194304,\"upload\":1,\"user\":\"olga\"}");
        stream.waitFor("\"received\":8388608,");
        stream.waitFor("event: firmware\n");
    }
    Q_EMIT gateway().service().stopping(); // as BwaRestServer does
    for (BwaTestStream& stream : streams) {
        stream.waitForEnd();
    }
}

TEST_F(GatewayTest, GivenABusScansIt)
{
    EXPECT_EQ(operate("POST", "/buses/3/scan").body, R"({"addresses":[3,11],"bus":3})");
}

TEST_F(GatewayTest, WhenAScanThrowsTheClientLearnsNoSecret)
{
    settings.scan = [](qint64, const BwaRestCancel&) -> QVariantList {
        throw std::runtime_error("a secret of ours");
    };

    const BwaTestReply reply = operate("POST", "/buses/1/scan");

    EXPECT_EQ(reply.body, R"({"status":500,"title":"Internal Server Error"})");
    EXPECT_TRUE(reply.errorText.contains("a secret of ours"));
    EXPECT_EQ(operate("GET", "/devices").statusCode, 200);
}

TEST_F(GatewayTest, WhenAScanTakesTooLongIsA503AndStopsIt)
{
    std::atomic<bool> isCancelled(false);
    settings.scanTime = 1;
    settings.scan = [&isCancelled](qint64, const BwaRestCancel& cancel) {
        for (int turn = 0; turn < patience && !cancel.isRequested(); ++turn) {
            QThread::msleep(1);
        }
        isCancelled = cancel.isRequested();
        return QVariantList();
    };

    expectProblem(operate("POST", "/buses/1/scan"), 503);

    EXPECT_TRUE(await(isCancelled));
}

TEST_F(GatewayTest, WhenTheClientGoesStopsItsScan)
{
    std::atomic<bool> isStarted(false);
    std::atomic<bool> isCancelled(false);
    settings.scan = [&](qint64, const BwaRestCancel& cancel) {
        isStarted = true;
        for (int turn = 0; turn < patience && !cancel.isRequested(); ++turn) {
            QThread::msleep(1);
        }
        isCancelled = cancel.isRequested();
        return QVariantList();
    };
    BwaTestStream client = open(as("olga", "POST", "/buses/1/scan"));
    EXPECT_TRUE(await(isStarted));

    client.disconnect();

    EXPECT_TRUE(await(isCancelled));
}

TEST_F(GatewayTest, GivenMoreScansThanMayWaitRefusesTheNext)
{
    std::atomic<bool> isOver(false);
    settings.scan = [&isOver](qint64, const BwaRestCancel& cancel) {
        while (!isOver && !cancel.isRequested()) {
            QThread::msleep(1);
        }
        return QVariantList();
    };
    std::vector<BwaTestStream> waiting;
    waiting.reserve(20);
    for (int client = 0; client < 20; ++client) {
        waiting.push_back(open(as("olga", "POST", "/buses/1/scan")));
    }
    BwaTestStream refused = open(as("olga", "POST", "/buses/1/scan"));

    EXPECT_EQ(refused.waitFor("503"), "Status: 503");
    refused.waitFor("Retry-After: 1\n");

    isOver = true;
    for (BwaTestStream& client : waiting) {
        client.waitFor(R"({"addresses":[],"bus":1})");
    }
}

TEST_F(GatewayTest, GivenFilesThatCannotBeUsedSaysWhich)
{
    const auto failure = [](const GatewaySettings& broken) {
        try {
            Gateway gateway(broken);
        } catch (const std::runtime_error& error) {
            return std::string(error.what());
        }
        return std::string("none");
    };
    GatewaySettings broken;
    broken.accounts = folder.filePath("missing");
    EXPECT_EQ(failure(broken), "cannot read the accounts of " + broken.accounts.toStdString());
    broken.accounts = folder.filePath("accounts");
    broken.folder = folder.filePath("accounts/firmware");
    EXPECT_EQ(failure(broken), "cannot write to the folder " + broken.folder.toStdString());
}

TEST_F(GatewayTest, DescribesItself)
{
    const BwaTestReply reply = send(BwaTestRequest("GET", "/openapi.json"));

    EXPECT_EQ(reply.statusCode, 200);
    EXPECT_TRUE(reply.body.contains(R"("/devices/{id}":{"delete":)"));
    EXPECT_TRUE(reply.body.contains(R"("servers":[{"url":"/api"}])"));
}
