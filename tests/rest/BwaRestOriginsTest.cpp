// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestProblem.h"
#include "rest/BwaRestService.h"
#include "testing/BwaTestRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

using testing::ElementsAre;

namespace {

const char ours[] = "https://app.example";

BwaTestReply replyTo(BwaRestService& service, const QByteArray& method, const QByteArray& path,
                     const QByteArray& origin)
{
    BwaTestRequest request(method, path);
    request.setHeader("Origin", origin);
    return request.sendTo(service);
}

BwaTestReply preflight(BwaRestService& service, const QByteArray& origin,
                       const QByteArray& requested)
{
    BwaTestRequest request("OPTIONS", "/x");
    request.setHeader("Origin", origin);
    request.setHeader("Access-Control-Request-Method", "PUT");
    request.setHeader("Access-Control-Request-Headers", requested);
    return request.sendTo(service);
}

/** Refuses everybody before its handlers, one of which throws. */
class BwaRestOriginsTest : public testing::Test
{
protected:
    BwaRestOriginsTest()
    {
        service.allowOrigins({QString::fromLatin1(ours)});
        service.get("/x", [](const BwaRestCall&) {
            return BwaRestReply(QVariantMap()).etag("1").header("X-Total", "7");
        });
        service.put("/x", [](const BwaRestCall&) -> BwaRestReply { throw BwaRestProblem(401); });
        service.get("/y", [](const BwaRestCall&) -> BwaRestReply { throw std::exception(); });
    }

    BwaRestService service;
};

} // namespace

TEST_F(BwaRestOriginsTest, GivenOriginAllowsItAndShowsTheHeaders)
{
    EXPECT_EQ(replyTo(service, "GET", "/x", ours).raw,
              "Status: 200 OK\nX-Total: 7\nETag: \"1\"\n"
              "Vary: Origin\n"
              "Access-Control-Allow-Origin: https://app.example\n"
              "Access-Control-Expose-Headers: X-Total, ETag\n"
              "Content-Type: application/json\nContent-Length: 2\n\n{}");
}

TEST_F(BwaRestOriginsTest, GivenAnyStatusAllowsTheOrigin)
{
    BwaTestRequest unchanged("GET", "/x");
    unchanged.setHeader("Origin", ours);
    unchanged.setHeader("If-None-Match", "\"1\"");
    const BwaTestReply replies[] = {replyTo(service, "PUT", "/x", ours),
                                    replyTo(service, "GET", "/z", ours),
                                    replyTo(service, "POST", "/x", ours),
                                    replyTo(service, "GET", "/y", ours), unchanged.sendTo(service)};

    QList<int> codes;
    for (const BwaTestReply& reply : replies) {
        codes.append(reply.statusCode);
        EXPECT_EQ(reply.header("Access-Control-Allow-Origin"), ours) << reply.statusCode;
        EXPECT_THAT(reply.headerValues("Vary"), ElementsAre("Origin")) << reply.statusCode;
    }

    EXPECT_THAT(codes, ElementsAre(401, 404, 405, 500, 304));
}

TEST_F(BwaRestOriginsTest, GivenOtherOriginOnlySaysThatRepliesVary)
{
    for (const char* origin : {"https://app.example.org", "http://app.example", "null", "",
                               "https://APP.example", "https://app.example/"}) {
        const BwaTestReply reply = replyTo(service, "GET", "/x", origin);

        EXPECT_TRUE(reply.header("Access-Control-Allow-Origin").isNull()) << origin;
        EXPECT_EQ(reply.header("Vary"), "Origin") << origin;
    }
}

TEST_F(BwaRestOriginsTest, WithoutOriginOnlySaysThatRepliesVary)
{
    EXPECT_EQ(BwaTestRequest("GET", "/z").sendTo(service).header("Vary"), "Origin");
}

TEST_F(BwaRestOriginsTest, GivenPreflightAllowsMethodsAndRequestedHeadersWithoutHooks)
{
    service.before(
        [](const BwaRestCall&) -> std::optional<BwaRestReply> { throw BwaRestProblem(401); });

    EXPECT_EQ(preflight(service, ours, "content-type,x-a").raw,
              "Status: 204 No Content\n"
              "Allow: GET, HEAD, PUT, OPTIONS\n"
              "Vary: Origin\n"
              "Access-Control-Allow-Origin: https://app.example\n"
              "Access-Control-Expose-Headers: Allow\n"
              "Vary: Access-Control-Request-Method, Access-Control-Request-Headers\n"
              "Access-Control-Allow-Methods: GET, HEAD, PUT, OPTIONS\n"
              "Access-Control-Allow-Headers: content-type, x-a\n"
              "Access-Control-Max-Age: 600\n\n");
}

TEST_F(BwaRestOriginsTest, GivenPreflightOfAnotherOriginAllowsNothing)
{
    EXPECT_EQ(preflight(service, "https://b.example", "x-a").raw,
              "Status: 204 No Content\nAllow: GET, HEAD, PUT, OPTIONS\nVary: Origin\n"
              "Vary: Access-Control-Request-Method, Access-Control-Request-Headers\n\n");
}

TEST_F(BwaRestOriginsTest, GivenRequestedHeadersThatAreNoneLeavesThemOut)
{
    EXPECT_EQ(preflight(service, ours, "x-a, b c\r\nd: e, \"f\",,g")
                  .header("Access-Control-Allow-Headers"),
              "x-a, g");
}

TEST_F(BwaRestOriginsTest, GivenCredentialsAllowsThem)
{
    service.allowOrigins({QString::fromLatin1(ours)}, true);

    EXPECT_EQ(replyTo(service, "GET", "/x", ours).header("Access-Control-Allow-Credentials"),
              "true");
}

TEST_F(BwaRestOriginsTest, GivenStarAllowsEachOrigin)
{
    service.allowOrigins({QStringLiteral("*")});

    EXPECT_EQ(
        replyTo(service, "GET", "/x", "https://b.example").header("Access-Control-Allow-Origin"),
        "https://b.example");
}

TEST_F(BwaRestOriginsTest, GivenStarWithCredentialsThrows)
{
    EXPECT_THROW(service.allowOrigins({QStringLiteral("*")}, true), std::logic_error);
}

TEST_F(BwaRestOriginsTest, WithoutAllowedOriginsWritesNothing)
{
    BwaRestService other;

    EXPECT_TRUE(replyTo(other, "GET", "/x", ours).header("Vary").isNull());
}
