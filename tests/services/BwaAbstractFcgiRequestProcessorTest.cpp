// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "services/BwaAbstractFcgiRequestProcessor.h"

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "support/ErrorPage.h"
#include "support/JsonDescription.h"
#include "support/QtPrinters.h"
#include "support/TestReplies.h"

#include <QVariant>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

CgiVariables jsonRequest(const QByteArray& contentType, const QByteArray& contentLength)
{
    return {{"SCRIPT_NAME", "/app"},
            {"PATH_INFO", "/notes"},
            {"CONTENT_TYPE", contentType},
            {"CONTENT_LENGTH", contentLength}};
}

// One call of parseJsonContent() and everything that can be seen of it.
struct Parsing {
    std::string value;
    bool ok;
    unsigned int bytesRead;
    BwaTestReply reply;
};

Parsing parsing(const CgiVariables& parameters, const QByteArray& body, bool okBefore)
{
    Parsing result = {std::string(), okBefore, 0, BwaTestReply()};
    const auto parse = [&result](BwaFcgiRequest* request) {
        result.value =
            description(BwaAbstractFcgiRequestProcessor::parseJsonContent(request, &result.ok));
        result.bytesRead = request->cgiRequest()->bodyBytesRead();
    };
    result.reply = replyWhile(parse, parameters, body);
    return result;
}

Parsing parsing(const QByteArray& contentType, const QByteArray& body)
{
    return parsing(jsonRequest(contentType, QByteArray::number(body.size())), body, true);
}

BwaCgiEnvironment::ServerProtocol serverProtocolOf(const CgiVariables& variables)
{
    BwaCgiEnvironment::ServerProtocol protocol;
    const auto parse = [&protocol](BwaFcgiRequest* request) {
        protocol = BwaAbstractFcgiRequestProcessor::parseServerProtocol(request);
    };
    replyWhile(parse, variables);
    return protocol;
}

QPair<QString, QHash<QString, QString>> contentTypeOf(const CgiVariables& variables)
{
    QPair<QString, QHash<QString, QString>> contentType;
    const auto parse = [&contentType](BwaFcgiRequest* request) {
        contentType = BwaAbstractFcgiRequestProcessor::parseContentType(request);
    };
    replyWhile(parse, variables);
    return contentType;
}

struct ContentTypeCase {
    std::string name;
    QByteArray contentType;
};

void PrintTo(const ContentTypeCase& contentTypeCase, std::ostream* stream)
{
    *stream << contentTypeCase.contentType.constData();
}

class ParseJsonContentAccepts : public testing::TestWithParam<ContentTypeCase>
{
};

class ParseJsonContentRefuses : public testing::TestWithParam<ContentTypeCase>
{
};

const auto nameOf = [](const auto& info) { return info.param.name; };

const QByteArray mediaTypeMessage =
    "Error in request processor for request to script \"/app\" with path info \"/notes\": "
    "Media type for a request body must be \"application/json\" and charset (if present) must be "
    "\"utf-8\"";

} // namespace

TEST(ParseServerProtocol, ReadsTheProtocolOfTheRequest)
{
    const auto protocol = serverProtocolOf({{"SERVER_PROTOCOL", "HTTP/1.0"}});

    EXPECT_EQ(protocol.protocol, QStringLiteral("HTTP"));
    EXPECT_EQ(protocol.majorVersion, 1U);
    EXPECT_EQ(protocol.minorVersion, 0U);
}

TEST(ParseServerProtocol, GivenNoProtocolIsEmpty)
{
    const auto protocol = serverProtocolOf({});

    EXPECT_EQ(protocol.protocol, QString());
    EXPECT_EQ(protocol.majorVersion, 0U);
    EXPECT_EQ(protocol.minorVersion, 0U);
}

TEST(ParseContentType, ReadsMediaTypeAndParametersAsWritten)
{
    const auto contentType =
        contentTypeOf({{"CONTENT_TYPE", "Text/HTML; CharSet=\"UTF-8\"; x = y"}});

    EXPECT_EQ(contentType.first, QStringLiteral("Text/HTML"));
    EXPECT_EQ(contentType.second,
              (QHash<QString, QString>{{QStringLiteral("CharSet"), QStringLiteral("UTF-8")},
                                       {QStringLiteral("x"), QStringLiteral("y")}}));
}

TEST(ParseContentType, GivenNoContentTypeIsEmpty)
{
    const auto contentType = contentTypeOf({});

    EXPECT_EQ(contentType.first, QString());
    EXPECT_TRUE(contentType.second.isEmpty());
}

TEST_P(ParseJsonContentAccepts, ContentType)
{
    const Parsing result = parsing(GetParam().contentType, R"({"a": [1, "x"]})");

    EXPECT_EQ(result.value, "{a: [qulonglong 1, string x]}");
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.reply.raw, "");
    EXPECT_EQ(result.reply.errorText, "");
}

INSTANTIATE_TEST_SUITE_P(
    MediaTypes, ParseJsonContentAccepts,
    testing::Values(ContentTypeCase{"Plain", "application/json"},
                    ContentTypeCase{"MixedCase", "Application/JSON"},
                    ContentTypeCase{"BlanksAround", " application/json "},
                    ContentTypeCase{"OtherParameter", "application/json; version=1"},
                    ContentTypeCase{"SecondElement", "application/json, text/html"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Charsets, ParseJsonContentAccepts,
    testing::Values(
        ContentTypeCase{"LowerCase", "application/json; charset=utf-8"},
        ContentTypeCase{"UpperCase", "application/json;charset=UTF-8"},
        ContentTypeCase{"Quoted", "application/json; charset=\"Utf-8\""},
        ContentTypeCase{"LastOfTwo", "application/json; charset=x; charset=utf-8"},
        ContentTypeCase{"UncheckedForItsNameInCapitals", "application/json; CHARSET=iso-8859-1"},
        ContentTypeCase{"UncheckedForItsNameInMixedCase", "application/json; Charset=iso-8859-1"}),
    nameOf);

TEST_P(ParseJsonContentRefuses, ContentType)
{
    const Parsing result = parsing(GetParam().contentType, "[1]");

    EXPECT_EQ(result.value, "invalid");
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.bytesRead, 0U);
    EXPECT_EQ(result.reply.raw, errorPage(415, "Unsupported Media Type"));
    EXPECT_EQ(result.reply.errorText, mediaTypeMessage);
}

INSTANTIATE_TEST_SUITE_P(
    MediaTypes, ParseJsonContentRefuses,
    testing::Values(ContentTypeCase{"Empty", ""}, ContentTypeCase{"Other", "text/json"},
                    ContentTypeCase{"Longer", "application/json5"},
                    ContentTypeCase{"Shorter", "application/jso"},
                    ContentTypeCase{"JsonAsSecondElement", "text/html, application/json"},
                    ContentTypeCase{"OtherInUtf8", "text/plain; charset=utf-8"},
                    ContentTypeCase{"OnlyCharset", "; charset=utf-8"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Charsets, ParseJsonContentRefuses,
    testing::Values(ContentTypeCase{"Latin1", "application/json; charset=iso-8859-1"},
                    ContentTypeCase{"WithoutHyphen", "application/json; charset=utf8"},
                    ContentTypeCase{"Utf16", "application/json; charset=utf-16"},
                    ContentTypeCase{"Empty", "application/json; charset="},
                    ContentTypeCase{"WithoutValue", "application/json; charset"},
                    ContentTypeCase{"LastOfTwo", "application/json; charset=utf-8; charset=x"}),
    nameOf);

TEST(ParseJsonContent, WhenBodyEndsEarlyAnswersBadRequest)
{
    const Parsing result = parsing(jsonRequest("application/json", "10"), "[1]", true);

    EXPECT_EQ(result.value, "invalid");
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.reply.raw, errorPage(400, "Bad Request"));
    EXPECT_EQ(result.reply.errorText,
              "Error in request processor for request to script \"/app\" with path info "
              "\"/notes\": Cannot read the all the content of the body to parse it");
}

TEST(ParseJsonContent, WhenBothContentTypeAndBodyAreBadRefusesTheContentType)
{
    const Parsing result = parsing(jsonRequest("text/plain", "10"), "[1]", true);

    EXPECT_EQ(result.reply.raw, errorPage(415, "Unsupported Media Type"));
    EXPECT_EQ(result.reply.errorText, mediaTypeMessage);
}

TEST(ParseJsonContent, WhenBodyIsNoJsonSendsNothing)
{
    const Parsing result = parsing("application/json", "{\"a\":1,}");

    EXPECT_EQ(result.value, "invalid");
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.reply.raw, "");
    EXPECT_EQ(result.reply.errorText, "");
}

TEST(ParseJsonContent, WhenBodyIsNoJsonPrintsNothing)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();

    parsing("application/json", "{\"a\":1,}");

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(ParseJsonContent, WhenBodyIsEmptySendsNothing)
{
    const Parsing result = parsing("application/json", "");

    EXPECT_EQ(result.value, "invalid");
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.reply.raw, "");
    EXPECT_EQ(result.reply.errorText, "");
}

TEST(ParseJsonContent, WhenBodyIsJsonNullIsOkWithInvalidVariant)
{
    const Parsing result =
        parsing(jsonRequest("application/json", "4"), "null", /*okBefore=*/false);

    EXPECT_EQ(result.value, "invalid");
    EXPECT_TRUE(result.ok);
}

TEST(ParseJsonContent, ReadsNothingBeyondTheAnnouncedLength)
{
    const Parsing result = parsing(jsonRequest("application/json", "3"), "[1], rest", true);

    EXPECT_EQ(result.value, "[qulonglong 1]");
    EXPECT_EQ(result.bytesRead, 3U);
}

TEST(ParseJsonContent, GivesTheSameValueAgain)
{
    bool ok = false;
    QVariant value;

    replyWhile(
        [&](BwaFcgiRequest* request) {
            BwaAbstractFcgiRequestProcessor::parseJsonContent(request);
            value = BwaAbstractFcgiRequestProcessor::parseJsonContent(request, &ok);
        },
        jsonRequest("application/json", "3"), "[1]");

    EXPECT_TRUE(ok);
    EXPECT_EQ(description(value), "[qulonglong 1]");
}

namespace {

struct WithoutFlagCase {
    std::string name;
    QByteArray contentType;
    QByteArray contentLength;
    QByteArray body;
    std::string value;
    QByteArray out;
};

void PrintTo(const WithoutFlagCase& withoutFlagCase, std::ostream* stream)
{
    *stream << withoutFlagCase.name;
}

class ParseJsonContentWithoutFlag : public testing::TestWithParam<WithoutFlagCase>
{
};

} // namespace

TEST_P(ParseJsonContentWithoutFlag, DoesTheSame)
{
    QVariant value;

    const BwaTestReply reply = replyWhile(
        [&](BwaFcgiRequest* request) {
            value = BwaAbstractFcgiRequestProcessor::parseJsonContent(request, nullptr);
        },
        jsonRequest(GetParam().contentType, GetParam().contentLength), GetParam().body);

    EXPECT_EQ(description(value), GetParam().value);
    EXPECT_EQ(reply.raw, GetParam().out);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ParseJsonContentWithoutFlag,
    testing::Values(WithoutFlagCase{"Json", "application/json", "3", "[1]", "[qulonglong 1]", ""},
                    WithoutFlagCase{"NoJson", "application/json", "2", "[1", "invalid", ""},
                    WithoutFlagCase{"WrongType", "text/plain", "3", "[1]", "invalid",
                                    errorPage(415, "Unsupported Media Type")},
                    WithoutFlagCase{"ShortBody", "application/json", "9", "[1]", "invalid",
                                    errorPage(400, "Bad Request")}),
    nameOf);

TEST(ParseJsonContent, WhenNamesHoldMarkersLogsThemAsTheyAre)
{
    const Parsing result =
        parsing({{"SCRIPT_NAME", "/a%2b%1"}, {"PATH_INFO", "/%1%3%L1"}}, "", true);

    EXPECT_EQ(result.reply.errorText,
              "Error in request processor for request to script \"/a%2b%1\" with path info "
              "\"/%1%3%L1\": Media type for a request body must be \"application/json\" and "
              "charset (if present) must be \"utf-8\"");
}

TEST(ParseJsonContent, WhenNamesAreBeyondAsciiLogsTheirBytes)
{
    const Parsing result = parsing({{"SCRIPT_NAME", "/caf\xe9"},
                                    {"PATH_INFO", "/\xc3\xa9"},
                                    {"CONTENT_TYPE", "application/json"},
                                    {"CONTENT_LENGTH", "5"}},
                                   "", true);

    EXPECT_EQ(result.reply.errorText,
              "Error in request processor for request to script \"/caf\xe9\" with path info "
              "\"/\xc3\xa9\": Cannot read the all the content of the body to parse it");
}
