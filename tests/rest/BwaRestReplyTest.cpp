// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestReply.h"

#include "rest/RestReplies.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

using testing::ElementsAre;

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

BwaTestRequest requestWith(const QByteArray& header, const QByteArray& value,
                           const QByteArray& method = "GET")
{
    BwaTestRequest request(method);
    request.setHeader(header, value);
    return request;
}

QByteArray cookieLine(const BwaHttpCookie& cookie, BwaRestReply::SameSite sameSite)
{
    return answering(BwaRestReply::empty().cookie(cookie, sameSite)).header("Set-Cookie");
}

} // namespace

TEST(BwaRestReply, GivenMapIsJson)
{
    EXPECT_EQ(answering(QVariantMap{{text("name"), text("\xc3\xa4")}}).raw,
              "Content-Type: application/json\n"
              "Content-Length: 13\n"
              "\n"
              "{\"name\":\"\xc3\xa4\"}");
}

TEST(BwaRestReply, GivenListAndStatusIsJson)
{
    const qulonglong largest = std::numeric_limits<qulonglong>::max();
    const double notANumber = std::numeric_limits<double>::quiet_NaN();

    EXPECT_EQ(answering(BwaRestReply(QVariantList{largest, notANumber}, 202)).raw,
              "Status: 202 Accepted\n"
              "Content-Type: application/json\n"
              "Content-Length: 27\n"
              "\n"
              "[18446744073709551615,null]");
}

TEST(BwaRestReply, WhenEmptyHasNeitherTypeNorBody)
{
    EXPECT_EQ(answering(BwaRestReply::empty()).raw, "Status: 204 No Content\n\n");
}

TEST(BwaRestReply, GivenBytesSendsThem)
{
    const QByteArray bytes("\0\xff\r\n", 4);

    EXPECT_EQ(answering(BwaRestReply::bytes(bytes, "image/x")).raw,
              "Content-Type: image/x\n"
              "Content-Length: 4\n\n" +
                  bytes);
}

TEST(BwaRestReply, WhenCreatedTellsItsPlaceFromTheScriptNameOn)
{
    BwaTestRequest request("PUT", "/v1/devices");
    request.setVariable("SCRIPT_NAME", "/api");
    BwaDispatcherFcgiService root;
    auto* const service = new BwaRestService;
    root.addService(text("v1"), service);
    service->put("/devices", [](const BwaRestCall&) {
        return BwaRestReply::created(text("/devices/a b?\xc3\xa4\r\n"), QVariantMap());
    });

    const BwaTestReply reply = request.sendTo(root);

    EXPECT_EQ(reply.raw,
              "Status: 201 Created\n"
              "Location: /api/v1/devices/a%20b%3F%C3%A4%0D%0A\n"
              "Content-Type: application/json\n"
              "Content-Length: 2\n\n{}");
}

TEST(BwaRestReply, WhenRedirectingEncodesWhatNoUrlHolds)
{
    EXPECT_EQ(answering(BwaRestReply::redirect(text("/a?b=%20&c=\xc3\xa4\r\nX: y"))).raw,
              "Status: 303 See Other\nLocation: /a?b=%20&c=%C3%A4%0D%0AX:%20y\n\n");
    EXPECT_EQ(answering(BwaRestReply::redirect(text("https://[::1]:8/#x"), 308)).raw,
              "Status: 308 Permanent Redirect\nLocation: https://[::1]:8/#x\n\n");
}

TEST(BwaRestReply, WhenFileNamesItForTheWebServer)
{
    const BwaRestReply file = BwaRestReply::file(text("/srv/a b%\n.pdf"), "application/pdf");

    EXPECT_EQ(answering(file).raw,
              "Content-Type: application/pdf\n"
              "X-Sendfile: /srv/a%20b%25%0A.pdf\n\n");
}

TEST(BwaRestReply, WhenFileBehindNginxNamesItAsSet)
{
    BwaRestService service;
    service.setFileHeader(BwaRestService::XAccelRedirect);
    service.get("", [](const BwaRestCall&) {
        return BwaRestReply::file(text("/files/a.pdf"), "application/pdf");
    });

    EXPECT_EQ(BwaTestRequest("GET").sendTo(service).header("X-Accel-Redirect"), "/files/a.pdf");
}

TEST(BwaRestReply, WritesHeadersInTheirOrder)
{
    const BwaRestReply reply =
        BwaRestReply::empty().header("X-A", "1").header("X-B", "").header("X-A", "2");

    EXPECT_EQ(answering(reply).raw, "Status: 204 No Content\nX-A: 1\nX-B: \nX-A: 2\n\n");
}

TEST(BwaRestReply, GivenContentTypeAsHeaderReplacesItsOwn)
{
    const BwaRestReply reply =
        BwaRestReply(QVariantMap()).header("content-type", "application/x+json");

    EXPECT_THAT(answering(reply).headerValues("Content-Type"), ElementsAre("application/x+json"));
}

TEST(BwaRestReply, GivenLineEndOrNulInAHeaderLeavesItOutAndLogs)
{
    for (const QByteArray& end :
         {QByteArray("\r"), QByteArray("\n"), QByteArray("\r\n"), QByteArray(1, '\0')}) {
        const BwaRestReply reply =
            BwaRestReply::empty().header("X-A", "a" + end + "X-B: b").header("X" + end, "a");

        const BwaTestReply sent = answering(reply);

        EXPECT_EQ(sent.raw, "Status: 204 No Content\n\n");
        EXPECT_EQ(sent.errorText,
                  "Error in REST call GET \"/\": The reply leaves out the header X-A"
                  "Error in REST call GET \"/\": The reply leaves out the header X" +
                      end.toPercentEncoding());
    }
}

TEST(BwaRestReply, GivenHeadersThatAreNotItsOwnLeavesThemOut)
{
    const BwaRestReply reply =
        BwaRestReply::empty().header("STATUS", "200").header("Content-Length", "7");

    EXPECT_EQ(answering(reply).raw, "Status: 204 No Content\n\n");
}

TEST(BwaRestReply, GivenLineEndInAContentTypeSendsBytesWithoutIt)
{
    EXPECT_EQ(answering(BwaRestReply::bytes("a", "text/plain\r\nX: y")).header("Content-Type"),
              "application/octet-stream");
}

TEST(BwaRestReply, GivenStatusThatIsNoneIsALogged500)
{
    for (const int status : {0, 100, 199, 600, -1}) {
        const BwaTestReply reply = answering(BwaRestReply::empty(status));

        EXPECT_EQ(reply.raw, "Status: 500 Internal Server Error\n\n");
        EXPECT_EQ(reply.errorText,
                  "Error in REST call GET \"/\": A reply cannot have the status " +
                      QByteArray::number(status));
    }
}

TEST(BwaRestReply, GivenValueThatIsNoJsonIsALogged500)
{
    const BwaTestReply reply = answering(QVariantMap{{text("a"), QVariant(QUuid())}});

    EXPECT_EQ(reply.body, R"({"status":500,"title":"Internal Server Error"})");
    EXPECT_EQ(reply.errorText,
              "Error in REST call GET \"/\": The reply holds a value that is no JSON");
}

TEST(BwaRestReply, WritesCookies)
{
    const BwaHttpCookie session(text("a"), text("b"));
    const BwaHttpCookie full(text("a"), text("\xc3\xa4"), 60, text("example.org"), text("/p"), true,
                             true);

    EXPECT_EQ(cookieLine(session, BwaRestReply::Lax), "a=b; SameSite=Lax");
    EXPECT_EQ(cookieLine(full, BwaRestReply::Strict),
              "a=\xc3\xa4; Max-Age=60; Domain=example.org; Path=/p; Secure; HttpOnly; "
              "SameSite=Strict");
}

TEST(BwaRestReply, GivenCookieForOtherSitesMakesItSecure)
{
    EXPECT_EQ(cookieLine(BwaHttpCookie(text("a"), text("b")), BwaRestReply::None),
              "a=b; Secure; SameSite=None");
}

TEST(BwaRestReply, GivenExpiredCookieDeletesIt)
{
    BwaHttpCookie cookie(text("a"), QString());
    cookie.expired = true;

    EXPECT_EQ(cookieLine(cookie, BwaRestReply::Lax),
              "a=; Max-Age=0; Expires=Thu, 01 Jan 1970 00:00:00 GMT; SameSite=Lax");
}

TEST(BwaRestReply, GivenCookieThatWouldEndEarlyLeavesItOutAndLogs)
{
    for (const char* value : {"b; Path=/", "b\r", "b\n", "b\x01", "b\x7f"}) {
        const BwaTestReply reply =
            answering(BwaRestReply::empty().cookie(BwaHttpCookie(text("a"), text(value))));

        EXPECT_EQ(reply.raw, "Status: 204 No Content\n\n");
        EXPECT_EQ(reply.errorText,
                  "Error in REST call GET \"/\": The reply leaves out the cookie a");
    }
}

TEST(BwaRestReply, GivenCookieNameThatIsNoTokenLeavesItOut)
{
    const BwaHttpCookie cookie(text("a b"), text("c"));

    EXPECT_EQ(answering(BwaRestReply::empty().cookie(cookie)).raw, "Status: 204 No Content\n\n");
}

TEST(BwaRestReply, WritesAnEntityTag)
{
    EXPECT_EQ(answering(BwaRestReply::empty().etag("v1")).header("ETag"), "\"v1\"");
}

TEST(BwaRestReply, GivenBytesThatNoEntityTagHoldsEncodesThem)
{
    EXPECT_EQ(answering(BwaRestReply::empty().etag("a \"%\n\x7f\xff")).header("ETag"),
              "\"a%20%22%25%0A%7F\xff\"");
}

TEST(BwaRestReply, WhenClientHasTheEntityTagIs304WithoutBody)
{
    const BwaRestReply reply =
        BwaRestReply(QVariantMap()).etag("1").header("Cache-Control", "no-cache");

    EXPECT_EQ(answering(reply, requestWith("If-None-Match", "\"1\"")).raw,
              "Status: 304 Not Modified\nCache-Control: no-cache\nETag: \"1\"\n\n");
}

TEST(BwaRestReply, WhenClientHasOneOfSeveralEntityTagsIs304)
{
    const BwaRestReply reply = BwaRestReply(QVariantMap()).etag("1,\\");

    for (const char* list :
         {"\"1,\\\"", "W/\"1,\\\"", "\"0\", \"1,\\\"", "\"0\",\tW/\"1,\\\" ", "*"}) {
        EXPECT_EQ(answering(reply, requestWith("If-None-Match", list)).statusCode, 304) << list;
    }
}

TEST(BwaRestReply, WhenClientHasAnotherEntityTagIsSent)
{
    const BwaRestReply reply = BwaRestReply(QVariantMap()).etag("1");

    for (const char* list : {"", "\"2\"", "1", "w/\"1\"", "\"1", "\"1,\"1\"", ",,"}) {
        EXPECT_EQ(answering(reply, requestWith("If-None-Match", list)).statusCode, 200) << list;
    }
}

TEST(BwaRestReply, WhenWritingIsNot304)
{
    const BwaRestReply reply = BwaRestReply(QVariantMap()).etag("1");

    EXPECT_EQ(answering(reply, requestWith("If-None-Match", "\"1\"", "PUT")).statusCode, 200);
}

TEST(BwaRestReply, WhenNot200IsNot304)
{
    const BwaRestReply reply = BwaRestReply(QVariantMap(), 201).etag("1");

    EXPECT_EQ(answering(reply, requestWith("If-None-Match", "\"1\"")).statusCode, 201);
}

TEST(BwaRestReply, GivenHeadKeepsHeadersAndLosesTheBody)
{
    EXPECT_EQ(answering(QVariantMap(), BwaTestRequest("HEAD")).raw,
              "Content-Type: application/json\nContent-Length: 2\n\n");
}
