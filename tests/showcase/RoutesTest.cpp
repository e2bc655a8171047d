// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Routes.h"

#include "ShowcaseFixture.h"

#include <QFile>

#include <stdexcept>

namespace {

class RoutesTest : public ShowcaseFixture
{
};

} // namespace

TEST_F(RoutesTest, EchoShowsNoCookiesThatMayBeHidden)
{
    BwaTestRequest request("GET", "/echo?a=1&b=%C3%A4&a=2");
    request.setHeader("Cookie", "SESSION-TOKEN=secret; theme=d\xc3\xa4rk");

    EXPECT_EQ(send(request).body,
              R"({"cookies":[{"name":"theme","value":"därk"}],"query":{"a":["1","2"],"b":["ä"]}})");
}

TEST_F(RoutesTest, EchoAndFormsThatAreNoUtf8AreRefused)
{
    BwaTestRequest form("POST", "/form");
    form.setForm({{"a", "\xff"}});

    EXPECT_EQ(statusOf("GET", "/echo?a=%FF"), 400);
    EXPECT_EQ(statusOf(form), 400);
}

TEST_F(RoutesTest, FormsWithManyFieldsAreShownInTime)
{
    BwaTestRequest form("POST", "/form");
    form.setBody("application/x-www-form-urlencoded", QByteArray("a&").repeated(32000));

    EXPECT_EQ(send(form).body, R"({"a":[)" + QByteArray(R"("",)").repeated(31999) + R"(""]})");
}

TEST_F(RoutesTest, ClientShowsWhatTheWebServerSays)
{
    BwaTestRequest request("GET", "/client");
    request.setVariable("HTTPS", "on");
    request.setVariable("REMOTE_ADDR", "2001:db8::1");

    EXPECT_EQ(send(request).body, R"({"address":"2001:db8::1","https":true})");
}

TEST_F(RoutesTest, UploadsMeasureEachFileAlsoThoseOfOneName)
{
    BwaTestRequest request("POST", "/upload");
    request.addFile("a", "1.txt", "text/plain", "one");
    request.addFile("a", "empty.txt", "text/plain", "");
    request.addFile("a", "2.txt", "text/plain", "one");
    request.addField("note", "fresh");

    const QByteArray one = "7692c3ad3540bb803c020b3aee66cd8887123234ea0c6e7143c0add73ff431ed";
    const QByteArray none = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
    const auto file = [](const QByteArray& name, const QByteArray& digest, int size) {
        return R"({"field":"a","name":")" + name + R"(","sha256":")" + digest + R"(","size":)" +
            QByteArray::number(size) + R"(,"type":"text/plain"})";
    };
    EXPECT_EQ(send(request).body,
              R"({"fields":[{"name":"note","value":"fresh"}],"files":[)" + file("1.txt", one, 3) +
                  ',' + file("empty.txt", none, 0) + ',' + file("2.txt", one, 3) + "]}");
}

TEST_F(RoutesTest, UploadsThatAreNoFormsAreRefused)
{
    BwaTestRequest request("POST", "/upload");
    request.setBody("application/octet-stream", "one");

    EXPECT_EQ(statusOf(request), 415);
}

TEST_F(RoutesTest, OrdersOfInfiniteWorthHaveNoTotal)
{
    EXPECT_EQ(send("POST", "/order", R"({"article":"tea","quantity":1000,"price":1e308})").body,
              R"({"article":"tea","gift":false,"total":null})");
}

TEST_F(RoutesTest, FilesAreNamedForTheWebServer)
{
    EXPECT_EQ(send("GET", "/file").header("X-Sendfile"), "/srv/app/files/welcome.txt");
    EXPECT_EQ(send("GET", "/download").header("X-Accel-Redirect"), "/files/welcome.txt");
}

TEST_F(RoutesTest, PagesEscapeWhatTheClientSent)
{
    const BwaTestReply reply = send("GET", "/page?name=%3Cb%3EJos%C3%A9");

    EXPECT_TRUE(reply.body.contains("<h1>Hello, &lt;b&gt;José</h1>")) << reply.body.constData();
    EXPECT_TRUE(reply.header("Content-Security-Policy").startsWith("default-src 'none';"));
}

TEST_F(RoutesTest, WithoutARendererThePageOfTheApiHasALink)
{
    EXPECT_TRUE(send("GET", "/docs").body.contains("<a href=\"openapi.json\">"));
    EXPECT_EQ(statusOf("GET", "/docs/swagger-ui.css"), 404);
}

TEST_F(RoutesTest, GivenARendererItsFilesAreServedAndNoOthers)
{
    for (const char* name : {"swagger-ui.css", "swagger-ui-bundle.js", "secret"}) {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        file.write(name);
    }
    settings.renderer = folder.path();
    start();

    EXPECT_EQ(send("GET", "/docs/swagger-ui-bundle.js").body, "swagger-ui-bundle.js");
    EXPECT_EQ(statusOf("GET", "/docs/secret"), 404);
    EXPECT_EQ(statusOf("GET", "/docs/%2E%2E"), 404);
}

TEST_F(RoutesTest, GivenARendererThatIsMissingSaysSo)
{
    settings.renderer = folder.filePath("missing");

    EXPECT_THROW(start(), std::runtime_error);
}

TEST_F(RoutesTest, FailuresTellTheLogAndNotTheClient)
{
    const BwaTestReply reply = send("GET", "/failure");

    EXPECT_EQ(reply.body, R"({"status":500,"title":"Internal Server Error"})");
    EXPECT_TRUE(reply.errorText.contains("the machine is out of tea"));
}

TEST_F(RoutesTest, WithoutDiagnosticsThereAreNone)
{
    settings.hasDiagnostics = false;
    start();

    EXPECT_EQ(statusOf("GET", "/failure"), 404);
    EXPECT_EQ(statusOf("GET", "/statistics"), 404);
}

TEST_F(RoutesTest, AreAllDescribed)
{
    const QVariantMap document = BwaJson::parse(send("GET", "/openapi.json").body).toMap();

    const QVariantMap paths = document.value("paths").toMap();
    for (const char* path : {"/session", "/notes", "/notes/{id}", "/order", "/upload", "/echo"}) {
        EXPECT_TRUE(paths.contains(path)) << path;
    }
}
