// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestCall.h"

#include "cgi/BwaCgiEnvironment.h"
#include "rest/BwaRestProblem.h"
#include "rest/RestReplies.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

BwaRestReply textReply(const QString& text)
{
    return BwaRestReply::bytes(text.toUtf8(), "text/plain");
}

// What @a handler replies at @a pattern to GET.
BwaTestReply replyAt(const char* pattern, const QByteArray& target,
                     const BwaRestGroup::Handler& handler)
{
    BwaRestService service;
    service.get(pattern, handler);
    return BwaTestRequest("GET", target).sendTo(service);
}

// The values of "a" in a query string, as JSON.
BwaTestReply queryReply(const QByteArray& query)
{
    return replyAt("", "/?" + query, [](const BwaRestCall& call) -> BwaRestReply {
        QVariantList values;
        for (const QString& value : call.query("a")) {
            values.append(value);
        }
        return values;
    });
}

BwaTestRequest putRequest(const QByteArray& contentType, const QByteArray& body)
{
    BwaTestRequest request("PUT");
    request.setBody(contentType, body);
    return request;
}

BwaRestReply echoBody(const BwaRestCall& call)
{
    return BwaRestReply::bytes(call.body(), "text/plain");
}

BwaRestReply echoJson(const BwaRestCall& call)
{
    return QVariantList{call.json()};
}

BwaRestReply shownPairs(const QList<QPair<QString, QString>>& pairs)
{
    QString text;
    for (const auto& pair : pairs) {
        text += pair.first + QLatin1Char('=') + pair.second + QLatin1Char(';');
    }
    return textReply(text);
}

BwaRestReply echoForm(const BwaRestCall& call)
{
    return shownPairs(call.formPairs());
}

BwaRestReply requireFirst(const BwaRestCall& call)
{
    call.requireMatch("1");
    return BwaRestReply::empty();
}

BwaTestReply matchReply(const QByteArray& list)
{
    BwaTestRequest request("PUT");
    request.setHeader("If-Match", list);
    return answeringTo(request, requireFirst);
}

void expectProblem(const BwaTestReply& reply, int status, const QByteArray& body)
{
    EXPECT_EQ(reply.statusCode, status);
    EXPECT_EQ(reply.header("Content-Type"), "application/problem+json");
    EXPECT_EQ(reply.body, body);
    EXPECT_EQ(reply.errorText, "");
}

} // namespace

TEST(BwaRestCall, TellsMethodAndPath)
{
    const BwaTestReply reply =
        replyAt("/{a}/{b...}", "/%C3%A4/b%2Fc/", [](const BwaRestCall& call) {
            return textReply(QString::fromLatin1(call.method()) + call.path());
        });

    EXPECT_EQ(reply.body, "GET/\xc3\xa4/b/c/");
}

TEST(BwaRestCall, TellsParameters)
{
    const BwaTestReply reply = replyAt(
        "/{name}/x/{id:int}/{tag:uuid}/{rest...}",
        "/%C3%A4%25/x/-7/123E4567-e89b-12d3-a456-426614174000/r//", [](const BwaRestCall& call) {
            return textReply(call.text("name") + QLatin1Char(' ') +
                             QString::number(call.number("id")) + call.uuid("tag").toString() +
                             call.text("rest") + QLatin1Char(' ') + call.text("id"));
        });

    EXPECT_EQ(reply.body, "\xc3\xa4% -7{123e4567-e89b-12d3-a456-426614174000}r// -7");
}

TEST(BwaRestCall, GivenManyParametersTellsEach)
{
    const BwaTestReply reply =
        replyAt("/{a}/{b}/{c}/{d}/{e}/{f}/{g}/{h}/{i}/{j}", "/0/1/2/3/4/5/6/7/8/9",
                [](const BwaRestCall& call) { return textReply(call.text("a") + call.text("j")); });

    EXPECT_EQ(reply.body, "09");
}

TEST(BwaRestCall, GivenLargestNumbersTellsThem)
{
    for (const char* number : {"9223372036854775807", "-9223372036854775808"}) {
        const BwaTestReply reply =
            replyAt("/{id:int}", QByteArray("/") + number, [](const BwaRestCall& call) {
                return textReply(QString::number(call.number("id")));
            });

        EXPECT_EQ(reply.body, number);
    }
}

TEST(BwaRestCall, GivenUnknownParameterIsALogged500)
{
    const BwaTestReply reply =
        replyAt("/{a}", "/x", [](const BwaRestCall& call) { return textReply(call.text("b")); });

    EXPECT_EQ(reply.statusCode, 500);
    EXPECT_EQ(reply.errorText,
              R"(Error in REST call GET "/x": The pattern "/{a}" has no parameter "b")");
}

TEST(BwaRestCall, GivenParameterOfAnotherKindIsALogged500)
{
    const auto number = [](const BwaRestCall& call) {
        return textReply(QString::number(call.number("a")));
    };
    const auto uuid = [](const BwaRestCall& call) { return textReply(call.uuid("a").toString()); };

    EXPECT_EQ(replyAt("/{a}", "/1", number).errorText,
              R"(Error in REST call GET "/1": The pattern "/{a}" has no number "a")");
    EXPECT_EQ(replyAt("/{a:int}", "/1", uuid).errorText,
              R"(Error in REST call GET "/1": The pattern "/{a:int}" has no UUID "a")");
}

TEST(BwaRestCall, TellsQueryValuesInTheirOrder)
{
    EXPECT_EQ(queryReply("a=1&b=2&a=3&&a&a=&A=4").body, R"(["1","3","",""])");
    EXPECT_EQ(queryReply("").body, "[]");
}

TEST(BwaRestCall, DecodesQueriesFromUtf8)
{
    EXPECT_EQ(queryReply("a=%C3%A4+%2B%26&%61=%zz%&a=x;a=y=z").body,
              "[\"\xc3\xa4 +&\",\"%zz%\",\"x;a=y=z\"]");
    EXPECT_EQ(queryReply("a=%EF%BB%BFx").body, "[\"\xef\xbb\xbfx\"]");
    EXPECT_EQ(queryReply("a=%00").body, R"(["\u0000"])");
}

TEST(BwaRestCall, GivenQueryThatIsNoUtf8Is400)
{
    for (const char* query : {"a=%FF", "b=%C3", "%C0%80=1", "a=%ED%A0%80", "a=\xff"}) {
        expectProblem(queryReply(query), 400,
                      R"({"detail":"The request holds a text that is no UTF-8","status":400,)"
                      R"("title":"Bad Request"})");
    }
}

TEST(BwaRestCall, TellsHeaders)
{
    BwaTestRequest request("GET");
    request.setHeader("X-Name", "\xc3\xa4");
    request.setHeader("X-Empty", "");
    const BwaTestReply reply = answeringTo(request, [](const BwaRestCall& call) {
        EXPECT_EQ(call.header("x-name"), "\xc3\xa4");
        EXPECT_TRUE(call.header("X-Empty").isEmpty() && !call.header("X-Empty").isNull());
        EXPECT_TRUE(call.header("X-Other").isNull());
        return BwaRestReply::empty();
    });

    EXPECT_EQ(reply.statusCode, 204);
}

TEST(BwaRestCall, ReadsTheBodyOnce)
{
    const BwaTestReply reply =
        answeringTo(putRequest("text/plain", "\xff."), [](const BwaRestCall& call) {
            return BwaRestReply::bytes(call.body() + call.body(), call.header("content-type"));
        });

    EXPECT_EQ(reply.body, "\xff.\xff.");
    EXPECT_EQ(reply.header("Content-Type"), "text/plain");
}

TEST(BwaRestCall, WithoutBodyTellsAnEmptyOne)
{
    EXPECT_EQ(answeringTo(BwaTestRequest("PUT"), echoBody).raw,
              "Content-Type: text/plain\nContent-Length: 0\n\n");
}

TEST(BwaRestCall, GivenBodyOfUnknownLengthIs411)
{
    BwaTestRequest request = putRequest("text/plain", "a");
    request.setHeader("Transfer-Encoding", "chunked");
    request.setVariable("CONTENT_LENGTH", "");

    expectProblem(answeringTo(request, echoBody), 411,
                  R"({"detail":"The body needs a Content-Length","status":411,)"
                  R"("title":"Length Required"})");
}

TEST(BwaRestCall, GivenAProtocolThatAnnouncesNoBodyTakesNoneForEmpty)
{
    for (const char* protocol : {"HTTP/2.0", "HTTP/2", "HTTP/3.0"}) {
        BwaTestRequest request = putRequest("text/plain", "a");
        request.setVariable("SERVER_PROTOCOL", protocol);
        EXPECT_EQ(answeringTo(request, echoBody).body, "a") << protocol;

        request.setVariable("CONTENT_LENGTH", "");
        EXPECT_EQ(answeringTo(request, echoBody).statusCode, 411) << protocol;
    }
}

TEST(BwaRestCall, GivenLengthThatIsNoNumberIs400)
{
    for (const char* length : {"+1", "-1", " 1", "1 ", "0x1", "a", "1,1"}) {
        BwaTestRequest request = putRequest("text/plain", "a");
        request.setVariable("CONTENT_LENGTH", length);

        expectProblem(answeringTo(request, echoBody), 400,
                      R"({"detail":"The Content-Length is no number","status":400,)"
                      R"("title":"Bad Request"})");
    }
}

TEST(BwaRestCall, GivenBodyThatEndsEarlyIs400)
{
    BwaTestRequest request = putRequest("text/plain", "a");
    request.setVariable("CONTENT_LENGTH", "2");

    expectProblem(answeringTo(request, echoBody), 400,
                  R"({"detail":"The body ends early","status":400,"title":"Bad Request"})");
}

TEST(BwaRestCall, GivenBodyBeyondOneMebibyteIs413)
{
    EXPECT_EQ(answeringTo(putRequest("a/b", QByteArray(1048576, 'a')), echoBody).body.size(),
              1048576);
    expectProblem(answeringTo(putRequest("a/b", QByteArray(1048577, 'a')), echoBody), 413,
                  R"({"detail":"A body may have 1048576 bytes here","limit":1048576,)"
                  R"("status":413,"title":"Payload Too Large"})");
}

TEST(BwaRestCall, GivenLengthsBeyondAllNumbersIs413)
{
    for (const char* length :
         {"4294967296", "5368709120", "18446744073709551616", "99999999999999999999999999"}) {
        BwaTestRequest request = putRequest("text/plain", "a");
        request.setVariable("CONTENT_LENGTH", length);

        EXPECT_EQ(answeringTo(request, echoBody).statusCode, 413) << length;
    }
}

TEST(BwaRestCall, GivenLimitOfAGroupKeepsToIt)
{
    BwaRestService service;
    service.limit(2);
    service.put("", echoBody);
    service.group("/a").put("", echoBody);
    service.group("/b").limit(3).put("", echoBody);
    BwaTestRequest inherited("PUT", "/a");
    inherited.setBody("a/b", "abc");
    BwaTestRequest own("PUT", "/b");
    own.setBody("a/b", "abc");

    EXPECT_EQ(putRequest("a/b", "ab").sendTo(service).body, "ab");
    EXPECT_EQ(putRequest("a/b", "abc").sendTo(service).statusCode, 413);
    EXPECT_EQ(inherited.sendTo(service).statusCode, 413);
    EXPECT_EQ(own.sendTo(service).body, "abc");
}

TEST(BwaRestCall, GivenNegativeLimitThrows)
{
    BwaRestService service;

    EXPECT_THROW(service.limit(-1), std::logic_error);
}

TEST(BwaRestCall, ReadsJson)
{
    for (const char* type : {"application/json", "APPLICATION/JSON; Charset=UTF-8",
                             "application/merge-patch+json", "application/json; x=y"}) {
        EXPECT_EQ(answeringTo(putRequest(type, R"( {"a":18446744073709551615} )"), echoJson).body,
                  R"([{"a":18446744073709551615}])")
            << type;
    }
}

TEST(BwaRestCall, GivenAnotherTypeThanJsonIs415)
{
    for (const char* type : {"", "text/plain", "text/json", "application/jsonx", "application/x",
                             "application/json; charset=latin1", "x/y+json"}) {
        expectProblem(answeringTo(putRequest(type, "{}"), echoJson), 415,
                      R"({"detail":"The body is to be application/json in UTF-8","status":415,)"
                      R"("title":"Unsupported Media Type"})");
    }
}

TEST(BwaRestCall, GivenTextThatIsNoJsonIs400)
{
    for (const char* body : {"", "{", "{}x", "[1e400]", "[\"\xff\"]", "\xef\xbb\xbf{}"}) {
        expectProblem(answeringTo(putRequest("application/json", body), echoJson), 400,
                      R"({"detail":"The body is no JSON","status":400,"title":"Bad Request"})");
    }
}

TEST(BwaRestCall, ChecksTheSizeOfJsonBeforeItsType)
{
    EXPECT_EQ(answeringTo(putRequest("text/plain", QByteArray(1048577, ' ')), echoJson).statusCode,
              413);
}

TEST(BwaRestCall, TellsAllOfTheQueryInItsOrder)
{
    const BwaTestReply reply = replyAt("", "/?b=1&a=%C3%A4&b", [](const BwaRestCall& call) {
        return shownPairs(call.queryPairs());
    });

    EXPECT_EQ(reply.body, "b=1;a=ä;b=;");
}

TEST(BwaRestCall, TellsTheFieldsOfAFormInTheirOrder)
{
    const QByteArray type = "Application/x-www-form-urlencoded; charset=utf-8";

    EXPECT_EQ(answeringTo(putRequest(type, "b=1+2&a=%C3%A4&b"), echoForm).body, "b=1 2;a=ä;b=;");
    EXPECT_EQ(answeringTo(putRequest(type, ""), echoForm).body, "");
}

TEST(BwaRestCall, GivenAnotherTypeThanAFormIs415)
{
    expectProblem(answeringTo(putRequest("text/plain", "a=1"), echoForm), 415,
                  R"({"detail":"The body is to be application/x-www-form-urlencoded",)"
                  R"("status":415,"title":"Unsupported Media Type"})");
}

TEST(BwaRestCall, GivenAFormThatIsNoUtf8Is400)
{
    expectProblem(answeringTo(putRequest("application/x-www-form-urlencoded", "a=%FF"), echoForm),
                  400,
                  R"({"detail":"The request holds a text that is no UTF-8","status":400,)"
                  R"("title":"Bad Request"})");
}

TEST(BwaRestCall, GivenATooLargeFormIs413BeforeItsTypeIsChecked)
{
    EXPECT_EQ(answeringTo(putRequest("text/plain", QByteArray(1048577, '&')), echoForm).statusCode,
              413);
}

TEST(BwaRestCall, TellsWhatTheWebServerSaysOfTheClient)
{
    BwaTestRequest request("GET");
    request.setVariable("REMOTE_ADDR", "2001:db8::1");

    const BwaTestReply reply = answeringTo(request, [](const BwaRestCall& call) {
        return textReply(call.environment().remoteAddr());
    });

    EXPECT_EQ(reply.body, "2001:db8::1");
}

TEST(BwaRestCall, GivenMatchingEntityTagGoesOn)
{
    for (const char* list : {"\"1\"", "W/\"1\"", "\"0\", \"1\"", "*"}) {
        EXPECT_EQ(matchReply(list).statusCode, 204) << list;
    }
}

TEST(BwaRestCall, GivenOtherEntityTagsIs412)
{
    for (const char* list : {"\"2\"", "1", ""}) {
        expectProblem(matchReply(list), 412,
                      R"({"detail":"It has been changed meanwhile","status":412,)"
                      R"("title":"Precondition Failed"})");
    }
}

TEST(BwaRestCall, WithoutEntityTagWhereOneIsNeededIs428)
{
    expectProblem(answeringTo(BwaTestRequest("PUT"), requireFirst), 428,
                  R"({"detail":"The request needs an If-Match header","status":428,)"
                  R"("title":"Precondition Required"})");
}
