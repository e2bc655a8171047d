// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestService.h"

#include "rest/BwaRestProblem.h"
#include "testing/BwaTestRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

using testing::ElementsAre;

namespace {

BwaRestReply nothing(const BwaRestCall& /*call*/)
{
    return BwaRestReply::empty();
}

QByteArray problem(int status, const QByteArray& title)
{
    return "{\"status\":" + QByteArray::number(status) + ",\"title\":\"" + title + "\"}";
}

void expectProblem(const BwaTestReply& reply, int status, const QByteArray& title)
{
    EXPECT_EQ(reply.statusCode, status);
    EXPECT_EQ(reply.header("Content-Type"), "application/problem+json");
    EXPECT_EQ(reply.body, problem(status, title));
}

/** A service below two dispatchers, at "/api/v1/devices". */
class MountedService
{
public:
    MountedService()
    {
        root.addDispatcherService(QStringLiteral("v1"))
            ->addService(QStringLiteral("devices"), service);
    }

    BwaTestReply reply(const QByteArray& method, const QByteArray& path)
    {
        BwaTestRequest request(method, "/v1/devices" + path);
        request.setVariable("SCRIPT_NAME", "/api");
        return request.sendTo(root);
    }

    BwaDispatcherFcgiService root;
    BwaRestService* service = new BwaRestService; // owned by its dispatcher
};

} // namespace

TEST(BwaRestService, GivenUnknownPathIsAProblem)
{
    BwaRestService service;

    expectProblem(BwaTestRequest("GET", "/x").sendTo(service), 404, "Not Found");
}

TEST(BwaRestService, GivenOtherMethodIsAProblemThatTellsTheOthers)
{
    BwaRestService service;
    service.get("/x", nothing);
    service.patch("/x", nothing);

    const BwaTestReply reply = BwaTestRequest("DELETE", "/x").sendTo(service);

    expectProblem(reply, 405, "Method Not Allowed");
    EXPECT_EQ(reply.header("Allow"), "GET, HEAD, PATCH, OPTIONS");
}

TEST(BwaRestService, GivenOptionsTellsTheMethods)
{
    BwaRestService service;
    service.post("/x", nothing);
    service.put("/x", nothing);
    service.remove("/x", nothing);

    EXPECT_EQ(BwaTestRequest("OPTIONS", "/x").sendTo(service).raw,
              "Status: 204 No Content\nAllow: POST, PUT, DELETE, OPTIONS\n\n");
}

TEST(BwaRestService, GivenHeadWithoutGetIsNotAllowed)
{
    BwaRestService service;
    service.post("/x", nothing);

    EXPECT_EQ(BwaTestRequest("HEAD", "/x").sendTo(service).raw,
              "Status: 405 Method Not Allowed\nAllow: POST, OPTIONS\n"
              "Content-Type: application/problem+json\nContent-Length: 43\n\n");
}

TEST(BwaRestService, CallsTheHandlerOfEachMethod)
{
    BwaRestService service;
    const auto tell = [](const BwaRestCall& call) {
        return BwaRestReply::bytes(call.method(), "text/plain");
    };
    service.get("", tell);
    service.post("", tell);
    service.put("", tell);
    service.patch("", tell);
    service.remove("", tell);

    for (const char* method : {"GET", "POST", "PUT", "PATCH", "DELETE"}) {
        EXPECT_EQ(BwaTestRequest(method).sendTo(service).body, method);
    }
}

TEST(BwaRestService, BelowDispatchersGetsPathsBelowItself)
{
    MountedService mounted;
    mounted.service->get("/{id:int}", [](const BwaRestCall& call) {
        return BwaRestReply::bytes(call.path().toUtf8(), "text/plain");
    });
    mounted.service->get("", nothing);

    EXPECT_EQ(mounted.reply("GET", "/7").body, "/7");
    EXPECT_EQ(mounted.reply("GET", "").statusCode, 204);
    EXPECT_EQ(mounted.reply("GET", "/").statusCode, 204);
}

TEST(BwaRestService, BelowDispatchersAndInGroupsRefusesWithProblems)
{
    MountedService mounted;
    mounted.service->group("/a").group("/b").post("/c", nothing);

    const BwaTestReply notAllowed = mounted.reply("GET", "/a/b/c");

    expectProblem(mounted.reply("GET", "/a/b"), 404, "Not Found");
    expectProblem(notAllowed, 405, "Method Not Allowed");
    EXPECT_EQ(notAllowed.header("Allow"), "POST, OPTIONS");
}

TEST(BwaRestService, WhenHandlerThrowsSaysNothingOfItAndLogs)
{
    BwaRestService service;
    service.get("/x", [](const BwaRestCall&) -> BwaRestReply {
        throw std::runtime_error("no \"disk\"\nleft");
    });

    const BwaTestReply reply = BwaTestRequest("GET", "/x").sendTo(service);

    expectProblem(reply, 500, "Internal Server Error");
    EXPECT_EQ(reply.errorText, R"(Error in REST call GET "/x": no "disk"?left)");
}

TEST(BwaRestService, WhenHandlerThrowsAProblemSendsItAndLogsNothing)
{
    BwaRestService service;
    service.get("/x", [](const BwaRestCall&) -> BwaRestReply { throw BwaRestProblem(410); });

    const BwaTestReply reply = BwaTestRequest("GET", "/x").sendTo(service);

    expectProblem(reply, 410, "Gone");
    EXPECT_EQ(reply.errorText, "");
}

TEST(BwaRestService, WhenPathHoldsLineEndsLogsOneLine)
{
    BwaRestService service;
    service.get("/{x}", [](const BwaRestCall&) -> BwaRestReply { throw std::runtime_error("a"); });

    EXPECT_EQ(BwaTestRequest("GET", "/b%0Ac%C3%A4").sendTo(service).errorText,
              "Error in REST call GET \"/b?c\xc3\xa4\": a");
}

TEST(BwaRestService, AsksHooksFromTheOutermostGroupOn)
{
    BwaRestService service;
    QStringList asked;
    const auto hook = [&asked](const char* name) {
        return [&asked, name](const BwaRestCall&) -> std::optional<BwaRestReply> {
            asked.append(QString::fromLatin1(name));
            return std::nullopt;
        };
    };
    BwaRestGroup& group = service.group("/g");
    group.get("", nothing);
    group.before(hook("c"));
    service.before(hook("a")).before(hook("b"));

    EXPECT_EQ(BwaTestRequest("GET", "/g").sendTo(service).statusCode, 204);
    EXPECT_EQ(asked.join(QLatin1Char(' ')).toStdString(), "a b c");
}

TEST(BwaRestService, WhenHookRepliesAsksNobodyElse)
{
    BwaRestService service;
    service.before([](const BwaRestCall& call) -> std::optional<BwaRestReply> {
        return call.path() == QLatin1String("/g")
            ? std::optional<BwaRestReply>(BwaRestReply::empty(202))
            : std::nullopt;
    });
    BwaRestGroup& group = service.group("/g");
    group.before(
        [](const BwaRestCall&) -> std::optional<BwaRestReply> { throw std::logic_error("asked"); });
    group.get("", nothing);
    service.get("/h", nothing);

    EXPECT_EQ(BwaTestRequest("GET", "/g").sendTo(service).statusCode, 202);
    EXPECT_EQ(BwaTestRequest("GET", "/h").sendTo(service).statusCode, 204);
}

TEST(BwaRestService, WhenHookThrowsReplies)
{
    BwaRestService service;
    service.get("", nothing);
    service.before(
        [](const BwaRestCall&) -> std::optional<BwaRestReply> { throw BwaRestProblem(403); });

    expectProblem(BwaTestRequest("GET").sendTo(service), 403, "Forbidden");
}

TEST(BwaRestService, AsksNoHooksForUnknownPathsAndMethods)
{
    BwaRestService service;
    service.get("", nothing);
    service.before(
        [](const BwaRestCall&) -> std::optional<BwaRestReply> { throw BwaRestProblem(403); });

    EXPECT_EQ(BwaTestRequest("GET", "/x").sendTo(service).statusCode, 404);
    EXPECT_EQ(BwaTestRequest("PUT").sendTo(service).statusCode, 405);
    EXPECT_EQ(BwaTestRequest("OPTIONS").sendTo(service).statusCode, 204);
}
