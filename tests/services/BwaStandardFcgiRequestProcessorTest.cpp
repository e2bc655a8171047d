// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "services/BwaStandardFcgiRequestProcessor.h"

#include "BwaStringStreaming.h"
#include "fcgi/BwaFcgiRequest.h"
#include "sessions/BwaCookiesFcgiSessionIdentifier.h"
#include "sessions/BwaSessionTokenFcgiSessionIdentifier.h"
#include "support/ErrorPage.h"
#include "support/MessageRecorder.h"
#include "support/QtPrinters.h"
#include "support/TestReplies.h"
#include "support/TwoSessions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <stdexcept>
#include <string>

using testing::ElementsAre;
using testing::Return;
using testing::StrictMock;

namespace {

CgiVariables requestWith(const QByteArray& method)
{
    return {{"SCRIPT_NAME", "/app"}, {"PATH_INFO", "/notes"}, {"REQUEST_METHOD", method}};
}

// Answers with the name of the hook that was called.
class HookProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    HookProcessor()
        : BwaStandardFcgiRequestProcessor(nullptr)
    {
    }

protected:
    void processGetMethod(BwaFcgiRequest* request) override { answer(request, "get"); }
    void processPostMethod(BwaFcgiRequest* request) override { answer(request, "post"); }
    void processPutMethod(BwaFcgiRequest* request) override { answer(request, "put"); }
    void processDeleteMethod(BwaFcgiRequest* request) override { answer(request, "delete"); }
    void processOtherMethod(BwaFcgiRequest* request, const QString& method) override
    {
        request->out() << "other " << method;
        delete request;
    }

private:
    static void answer(BwaFcgiRequest* request, const char* text)
    {
        request->out() << text;
        delete request;
    }
};

// Throws from every hook, with the request alive.
template <typename Exception>
class ThrowingProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    explicit ThrowingProcessor(const Exception& exception)
        : BwaStandardFcgiRequestProcessor(nullptr)
        , m_exception(exception)
    {
    }

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        request->out() << "begun";
        throw m_exception;
    }
    void processPostMethod(BwaFcgiRequest*) override { throw m_exception; }
    void processPutMethod(BwaFcgiRequest*) override { throw m_exception; }
    void processDeleteMethod(BwaFcgiRequest*) override { throw m_exception; }
    void processOtherMethod(BwaFcgiRequest*, const QString&) override { throw m_exception; }

private:
    Exception m_exception;
};

// Throws from every hook, once the request has been answered and deleted.
class TooLateProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    TooLateProcessor()
        : BwaStandardFcgiRequestProcessor(nullptr)
    {
    }

protected:
    void processGetMethod(BwaFcgiRequest* request) override { answerAndThrow(request); }
    void processPostMethod(BwaFcgiRequest* request) override { answerAndThrow(request); }
    void processPutMethod(BwaFcgiRequest* request) override { answerAndThrow(request); }
    void processDeleteMethod(BwaFcgiRequest* request) override { answerAndThrow(request); }
    void processOtherMethod(BwaFcgiRequest* request, const QString& /*method*/) override
    {
        answerAndThrow(request);
    }

private:
    static void answerAndThrow(BwaFcgiRequest* request)
    {
        request->out() << "all";
        delete request;
        throw std::runtime_error("too late");
    }
};

// Opens what is protected.
class OpenProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::authenticateRequest;
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;
    using BwaStandardFcgiRequestProcessor::processNotAllowedMethod;
};

// Greets users with a session.
class GreetingProcessor : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        if (const BwaWebSession* session = authenticateRequest(request)) {
            request->out() << "hello " << session->username();
        }
        delete request;
    }
};

class MockIdentifier : public BwaAbstractFcgiSessionIdentifier
{
public:
    // Google Mock reports a call that was not expected; it throws nothing.
    ~MockIdentifier() override { die(); } // NOLINT(bugprone-exception-escape)

    MOCK_METHOD(BwaWebSession*, session, (BwaFcgiRequest*), (override));
    MOCK_METHOD(void, sendUnauthorizedReply, (BwaFcgiRequest*), (override));
    MOCK_METHOD(void, die, ());
};

struct MethodCase {
    std::string name;
    QByteArray method;
    QByteArray hook;
};

void PrintTo(const MethodCase& methodCase, std::ostream* stream)
{
    *stream << methodCase.name;
}

class Method : public testing::TestWithParam<MethodCase>
{
};

class NotAllowedMethod : public testing::TestWithParam<MethodCase>
{
};

const auto nameOf = [](const auto& info) { return info.param.name; };

const QByteArray noSession =
    "Error in request processor for request to script \"/app\" with path info \"/notes\": No "
    "session can be used to authenticate the request";

} // namespace

// Methods

TEST_P(Method, CallsItsHook)
{
    HookProcessor processor;

    const BwaTestReply reply = replyOf(processor, requestWith(GetParam().method));

    EXPECT_EQ(reply.raw, GetParam().hook);
    EXPECT_EQ(reply.errorText, "");
}

INSTANTIATE_TEST_SUITE_P(Own, Method,
                         testing::Values(MethodCase{"Get", "GET", "get"},
                                         MethodCase{"Post", "POST", "post"},
                                         MethodCase{"Put", "PUT", "put"},
                                         MethodCase{"Delete", "DELETE", "delete"}),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(Other, Method,
                         testing::Values(MethodCase{"Head", "HEAD", "other HEAD"},
                                         MethodCase{"Options", "OPTIONS", "other OPTIONS"},
                                         MethodCase{"Patch", "PATCH", "other PATCH"},
                                         MethodCase{"Empty", "", "other "},
                                         MethodCase{"LowerCaseGet", "get", "other get"},
                                         MethodCase{"MixedCasePost", "Post", "other Post"},
                                         MethodCase{"LowerCaseDelete", "delete", "other delete"},
                                         MethodCase{"BlankAfterGet", "GET ", "other GET "},
                                         MethodCase{"LongerThanGet", "GETX", "other GETX"},
                                         MethodCase{"BeyondAscii", "\xe9", "other \xe9"}),
                         nameOf);

TEST(BwaStandardFcgiRequestProcessor, GivenNoMethodCallsTheHookOfOthers)
{
    HookProcessor processor;

    EXPECT_EQ(replyOf(processor, CgiVariables()).raw, "other ");
}

TEST_P(NotAllowedMethod, IsRefusedByDefault)
{
    BwaStandardFcgiRequestProcessor processor(nullptr);

    const BwaTestReply reply = replyOf(processor, requestWith(GetParam().method));

    EXPECT_EQ(reply.raw, errorPage(405, "Method Not Allowed"));
    EXPECT_EQ(reply.errorText, "");
}

INSTANTIATE_TEST_SUITE_P(
    Cases, NotAllowedMethod,
    testing::Values(MethodCase{"Get", "GET", ""}, MethodCase{"Post", "POST", ""},
                    MethodCase{"Put", "PUT", ""}, MethodCase{"Delete", "DELETE", ""},
                    MethodCase{"LowerCase", "get", ""}, MethodCase{"Head", "HEAD", ""},
                    MethodCase{"Empty", "", ""}),
    nameOf);

TEST(ProcessNotAllowedMethod, RefusesAndDeletesTheRequest)
{
    OpenProcessor processor(nullptr);

    const BwaTestReply reply = testRequest(requestWith("GET")).sendTo([&](BwaFcgiRequest* request) {
        processor.processNotAllowedMethod(request);
    });

    EXPECT_EQ(reply.raw, errorPage(405, "Method Not Allowed"));
    EXPECT_EQ(reply.errorText, "");
}

// Exceptions

TEST_P(Method, WhenItsHookThrowsAnswersInternalServerError)
{
    ThrowingProcessor<std::runtime_error> processor(std::runtime_error("no more notes"));

    const BwaTestReply reply = replyOf(processor, requestWith(GetParam().method));

    EXPECT_TRUE(reply.raw.endsWith(errorPage(500, "Internal Server Error")));
    EXPECT_EQ(reply.errorText,
              "Error in request processor for request to script \"/app\" with path info "
              "\"/notes\": no more notes");
}

TEST_P(Method, WhenItsHookThrowsTooLateIsLoggedOnly)
{
    const MessageRecorder messages;
    TooLateProcessor processor;

    const BwaTestReply reply = replyOf(processor, requestWith(GetParam().method));

    EXPECT_EQ(reply.raw, "all");
    EXPECT_EQ(reply.errorText, "");
    EXPECT_THAT(messages.debugTexts(),
                ElementsAre("An exception occurs while processing a FastCGI request: too late"));
}

TEST(BwaStandardFcgiRequestProcessor, WhenHookThrowsAfterOutputKeepsTheOutput)
{
    ThrowingProcessor<std::bad_alloc> processor{std::bad_alloc()};

    EXPECT_EQ(replyOf(processor, requestWith("GET")).raw,
              "begun" + errorPage(500, "Internal Server Error"));
}

TEST(BwaStandardFcgiRequestProcessor, WhenHookThrowsNoStandardExceptionLetsItPassWithTheRequest)
{
    ThrowingProcessor<int> processor(42);

    const BwaTestReply reply = replyWhile(
        [&](BwaFcgiRequest* request) { EXPECT_THROW(processor.processRequest(request), int); },
        requestWith("PUT"));

    EXPECT_EQ(reply.raw, "");
    EXPECT_EQ(reply.errorText, "");
}

namespace {

struct LogCase {
    std::string name;
    std::string text;
    QByteArray logged;
};

void PrintTo(const LogCase& logCase, std::ostream* stream)
{
    *stream << logCase.name;
}

class ProcessorExceptionText : public testing::TestWithParam<LogCase>
{
};

} // namespace

TEST_P(ProcessorExceptionText, IsLoggedAsTheBytesItHolds)
{
    ThrowingProcessor<std::logic_error> processor{std::logic_error(GetParam().text)};

    const BwaTestReply reply =
        replyOf(processor,
                {{"SCRIPT_NAME", "/%3%2"}, {"PATH_INFO", "/%1%3\xe9"}, {"REQUEST_METHOD", "POST"}});

    EXPECT_EQ(reply.errorText,
              "Error in request processor for request to script \"/%3%2\" with path info "
              "\"/%1%3\xe9\": " +
                  GetParam().logged);
}

INSTANTIATE_TEST_SUITE_P(Cases, ProcessorExceptionText,
                         testing::Values(LogCase{"Empty", "", ""},
                                         LogCase{"Markers", "%1 %2 %3", "%1 %2 %3"},
                                         LogCase{"Latin1", "\xe9\x80\xff", "\xe9\x80\xff"},
                                         LogCase{"Utf8", "\xe2\x82\xac", "\xe2\x82\xac"}),
                         nameOf);

// Sessions

TEST(BwaStandardFcgiRequestProcessor, KeepsItsIdentifierAndDoesNotOwnIt)
{
    StrictMock<MockIdentifier> identifier;

    {
        const BwaStandardFcgiRequestProcessor processor(&identifier);
        EXPECT_EQ(processor.sessionIdentifier(), &identifier);
    }

    EXPECT_CALL(identifier, die());
}

TEST(AuthenticateRequest, GivenSessionReturnsItSilently)
{
    const TwoSessions sessions;
    StrictMock<MockIdentifier> identifier;
    OpenProcessor processor(&identifier);
    EXPECT_CALL(identifier, die());

    const BwaTestReply reply = replyWhile(
        [&](BwaFcgiRequest* request) {
            EXPECT_CALL(identifier, session(request)).WillOnce(Return(sessions.session));
            EXPECT_EQ(processor.authenticateRequest(request), sessions.session);
        },
        requestWith("GET"));

    EXPECT_EQ(reply.raw, "");
    EXPECT_EQ(reply.errorText, "");
}

TEST(AuthenticateRequest, GivenNoSessionLogsRefusesAndKeepsTheRequest)
{
    StrictMock<MockIdentifier> identifier;
    OpenProcessor processor(&identifier);
    EXPECT_CALL(identifier, die());

    const BwaTestReply reply = replyWhile(
        [&](BwaFcgiRequest* request) {
            EXPECT_CALL(identifier, session(request)).WillOnce(Return(nullptr));
            EXPECT_CALL(identifier, sendUnauthorizedReply(request));
            EXPECT_EQ(processor.authenticateRequest(request, true), nullptr);
        },
        requestWith("GET"));

    EXPECT_EQ(reply.raw, "");
    EXPECT_EQ(reply.errorText, noSession);
}

namespace {

// The session of a request whose good session has an expired token; and what was replied.
struct ExpiredTokenTest : public testing::Test {
    ExpiredTokenTest()
        : identifier(&sessions.manager, QStringLiteral("api"))
        , processor(&identifier)
    {
        QMetaObject::invokeMethod(sessions.session, "expireToken");
    }

    /** What is replied while authenticateRequest() with these arguments gives that session. */
    template <typename... Arguments>
    BwaTestReply replyWhenGiven(const BwaWebSession* session, Arguments... arguments)
    {
        return replyWhile(
            [&](BwaFcgiRequest* request) {
                EXPECT_EQ(processor.authenticateRequest(request, arguments...), session);
            },
            {{"SCRIPT_NAME", "/app"},
             {"PATH_INFO", "/notes"},
             {"HTTP_AUTHORIZATION",
              "SESSION-TOKEN " + credentials::id + ":" + credentials::token}});
    }

    TwoSessions sessions;
    BwaSessionTokenFcgiSessionIdentifier identifier;
    OpenProcessor processor;
};

const QByteArray challenge = "Status: 401 Unauthorized\n"
                             "WWW-Authenticate: SESSION-TOKEN, realm=\"api\"\n"
                             "\n";

} // namespace

TEST_F(ExpiredTokenTest, IsRefusedByDefault)
{
    const BwaTestReply reply = replyWhenGiven(nullptr);

    EXPECT_EQ(reply.raw, challenge);
    EXPECT_EQ(reply.errorText, noSession);
}

TEST_F(ExpiredTokenTest, IsRefusedOnDemand)
{
    EXPECT_EQ(replyWhenGiven(nullptr, false).raw, challenge);
}

TEST_F(ExpiredTokenTest, IsAcceptedOnDemand)
{
    const BwaTestReply reply = replyWhenGiven(sessions.session, true);

    EXPECT_EQ(reply.raw, "");
    EXPECT_EQ(reply.errorText, "");
}

TEST_F(ExpiredTokenTest, WhenSessionIsRemovedIsRefusedEvenOnDemand)
{
    sessions.manager.removeSession(sessions.session->sessionId());

    EXPECT_EQ(replyWhenGiven(nullptr, true).raw, challenge);
}

// Whoever is refused learns nothing of the reason.

namespace {

struct RefusalCase {
    std::string name;
    QByteArray id;
    QByteArray token;
};

void PrintTo(const RefusalCase& refusalCase, std::ostream* stream)
{
    *stream << refusalCase.name;
}

class Refusal : public testing::TestWithParam<RefusalCase>
{
protected:
    Refusal() { QMetaObject::invokeMethod(m_sessions.otherSession, "expireToken"); }

    const BwaWebSessionManager* manager() const { return &m_sessions.manager; }

private:
    TwoSessions m_sessions;
};

} // namespace

TEST_P(Refusal, OfSessionTokenIsTheSameChallenge)
{
    BwaSessionTokenFcgiSessionIdentifier identifier(manager(), QStringLiteral("api"));
    GreetingProcessor processor(&identifier);
    CgiVariables parameters = requestWith("GET");
    if (!GetParam().id.isNull()) {
        parameters.append(
            {"HTTP_AUTHORIZATION", "SESSION-TOKEN " + GetParam().id + ":" + GetParam().token});
    }

    const BwaTestReply reply = replyOf(processor, parameters);

    EXPECT_EQ(reply.raw, challenge);
    EXPECT_EQ(reply.errorText, noSession);
}

TEST_P(Refusal, OfCookiesIsTheSamePage)
{
    BwaCookiesFcgiSessionIdentifier identifier(manager(), QStringLiteral("sid"),
                                               QStringLiteral("tok"));
    GreetingProcessor processor(&identifier);
    CgiVariables parameters = requestWith("GET");
    if (!GetParam().id.isNull()) {
        parameters.append({"HTTP_COOKIE", "sid=" + GetParam().id + "; tok=" + GetParam().token});
    }

    const BwaTestReply reply = replyOf(processor, parameters);

    EXPECT_EQ(reply.raw, errorPage(403, "Forbidden"));
    EXPECT_EQ(reply.errorText, noSession);
}

INSTANTIATE_TEST_SUITE_P(
    Causes, Refusal,
    testing::Values(RefusalCase{"NoCredentials", QByteArray(), QByteArray()},
                    RefusalCase{"UnknownId", credentials::unknownId, credentials::token},
                    RefusalCase{"WrongToken", credentials::id, credentials::otherToken},
                    RefusalCase{"Malformed", "x", "y"},
                    RefusalCase{"ExpiredToken", credentials::otherId, credentials::otherToken}),
    nameOf);

TEST(BwaStandardFcgiRequestProcessor, GivenGoodCredentialsAnswersWithTheSession)
{
    const TwoSessions sessions;
    BwaSessionTokenFcgiSessionIdentifier identifier(&sessions.manager, QStringLiteral("api"));
    GreetingProcessor processor(&identifier);
    CgiVariables parameters = requestWith("GET");
    parameters.append(
        {"HTTP_AUTHORIZATION", "SESSION-TOKEN " + credentials::id + ":" + credentials::token});

    const BwaTestReply reply = replyOf(processor, parameters);

    EXPECT_EQ(reply.raw, "hello ann");
    EXPECT_EQ(reply.errorText, "");
}
