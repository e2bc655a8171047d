// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiRequest.h"

#include "cgi/BwaCgiRequest.h"
#include "support/FcgiExchange.h"
#include "support/QtPrinters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <type_traits>

#include <poll.h>
#include <sys/mman.h>

namespace {

const FcgiParameters someRequest = {{"REQUEST_METHOD", "POST"}, {"SCRIPT_NAME", "/api.fcgi"},
                                    {"PATH_INFO", "/users/3"},  {"QUERY_STRING", "name=J%2E&x"},
                                    {"CONTENT_LENGTH", "4"},    {"CONTENT_TYPE", "text/plain"},
                                    {"HTTP_COOKIE", "a=1"}};

struct PathCase {
    const char* name;
    FcgiParameters parameters;
    const char* fullPath;
};

class BwaFcgiRequestFullPath : public testing::TestWithParam<PathCase>
{
};

} // namespace

TEST(BwaFcgiRequest, IsNotCopyable)
{
    EXPECT_FALSE(std::is_copy_constructible_v<::BwaFcgiRequest>);
    EXPECT_FALSE(std::is_copy_assignable_v<::BwaFcgiRequest>);
    EXPECT_FALSE(std::is_polymorphic_v<::BwaFcgiRequest>);
}

TEST(BwaFcgiRequest, HandsOutTheRawRequest)
{
    FcgiExchange exchange(someRequest);
    FCGX_Request* raw = exchange.takeFcgxRequest();

    BwaFcgiRequest request(raw);

    EXPECT_EQ(request.fcgxRequest(), raw);
}

TEST(BwaFcgiRequest, ParsesTheVariablesOfTheRequest)
{
    FcgiExchange exchange(someRequest);

    const std::unique_ptr<BwaFcgiRequest> request(exchange.takeRequest());

    const BwaCgiRequest* cgi = request->cgiRequest();
    EXPECT_EQ(cgi->environment().requestMethod(), QStringLiteral("POST"));
    EXPECT_EQ(cgi->environment().scriptName(), QStringLiteral("/api.fcgi"));
    EXPECT_EQ(cgi->environment().pathInfo(), QStringLiteral("/users/3"));
    EXPECT_EQ(cgi->environment().cookies().value(0).value, QStringLiteral("1"));
    EXPECT_EQ(cgi->queryVariables().value(QStringLiteral("name")), QStringLiteral("J."));
}

TEST(BwaFcgiRequest, BuildsTheParsedRequestOnItsInput)
{
    FcgiExchange exchange(someRequest);

    const std::unique_ptr<BwaFcgiRequest> request(exchange.takeRequest());

    EXPECT_EQ(request->cgiRequest()->input(), request->input());
    EXPECT_EQ(request->input()->getenv(QStringLiteral("PATH_INFO")), QStringLiteral("/users/3"));
}

TEST(BwaFcgiRequest, LeavesTheBodyToBeReadOnDemand)
{
    FcgiExchange exchange(someRequest, "body");

    const std::unique_ptr<BwaFcgiRequest> request(exchange.takeRequest());

    EXPECT_EQ(request->cgiRequest()->bodyBytesRead(), 0u);
    EXPECT_EQ(request->input()->read(100), QByteArray("body"));
}

TEST(BwaFcgiRequest, WhenAskedProcessesTheBody)
{
    FcgiExchange exchange(someRequest, "body");
    const std::unique_ptr<BwaFcgiRequest> request(exchange.takeRequest());

    EXPECT_TRUE(request->cgiRequest()->processBodyContent());

    EXPECT_EQ(request->cgiRequest()->body(), QByteArray("body"));
}

TEST_P(BwaFcgiRequestFullPath, JoinsScriptNameAndPathInfo)
{
    FcgiExchange exchange(GetParam().parameters);

    const std::unique_ptr<BwaFcgiRequest> request(exchange.takeRequest());

    EXPECT_EQ(request->fullPath(), QString::fromLatin1(GetParam().fullPath));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BwaFcgiRequestFullPath,
    testing::Values(
        PathCase{
            "Both", {{"SCRIPT_NAME", "/api.fcgi"}, {"PATH_INFO", "/users/3"}}, "/api.fcgi/users/3"},
        PathCase{"EmptyPathInfo", {{"SCRIPT_NAME", "/api.fcgi"}, {"PATH_INFO", ""}}, "/api.fcgi"},
        PathCase{"NoPathInfo", {{"SCRIPT_NAME", "/api.fcgi"}}, "/api.fcgi"},
        PathCase{"NoScriptName", {{"PATH_INFO", "/users"}}, "/users"},
        PathCase{
            "NoSeparatorIsAdded", {{"SCRIPT_NAME", "api"}, {"PATH_INFO", "users"}}, "apiusers"},
        PathCase{"Neither", {}, ""},
        PathCase{"PercentSigns", {{"SCRIPT_NAME", "/%1%2"}, {"PATH_INFO", "/%1"}}, "/%1%2/%1"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(BwaFcgiRequest, WritesOutAsTheReplyAndErrAsErrors)
{
    FcgiExchange exchange(someRequest);
    BwaFcgiRequest* request = exchange.takeRequest();

    request->out() << "Status: 200 OK\n\nbody";
    request->err() << "something went wrong";
    delete request;

    const FcgiReply reply = exchange.reply();
    EXPECT_EQ(reply.out, QByteArray("Status: 200 OK\n\nbody"));
    EXPECT_EQ(reply.err, QByteArray("something went wrong"));
}

TEST(BwaFcgiRequest, WritesBytesAsTheyStand)
{
    FcgiExchange exchange(someRequest);
    BwaFcgiRequest* request = exchange.takeRequest();
    const QByteArray bytes("\0\r\n\xff\x80 \0", 7);

    request->out().write(bytes.constData(), bytes.size());
    delete request;

    EXPECT_EQ(exchange.reply().out, bytes);
}

TEST(BwaFcgiRequest, WritesSingleBytesAsTheyStand)
{
    FcgiExchange exchange(someRequest);
    BwaFcgiRequest* request = exchange.takeRequest();
    QByteArray bytes;

    for (int code = 0; code < 256; ++code) {
        bytes.append(static_cast<char>(code));
        request->out().put(static_cast<char>(code));
    }
    const bool isGood = request->out().good();
    delete request;

    EXPECT_TRUE(isGood);
    EXPECT_EQ(exchange.reply().out, bytes);
}

TEST(BwaFcgiRequest, WhenTheBodyIsFlushedSendsItAtOnce)
{
    FcgiExchange exchange(someRequest);
    BwaFcgiRequest* request = exchange.takeRequest();

    request->out() << "A: b\n\none " << 1 << '\n' << std::flush << std::flush << "two" << std::endl;
    delete request;

    EXPECT_THAT(exchange.reply().outRecords, testing::ElementsAre("A: b\n\none 1\n", "two\n"));
}

TEST(BwaFcgiRequest, WhenACompletedHeaderIsFlushedSendsItAtOnce)
{
    FcgiExchange exchange(someRequest);
    BwaFcgiRequest* request = exchange.takeRequest();

    request->out() << "A: b" << std::endl << std::endl << std::flush << "body" << std::flush;
    delete request;

    const FcgiReply reply = exchange.reply();
    EXPECT_EQ(reply.outRecords.last(), QByteArray("body"));
    EXPECT_EQ(reply.out, QByteArray("A: b\n\nbody"));
}

TEST(BwaFcgiRequest, WhenErrorsAreFlushedSendsThemAtOnce)
{
    FcgiExchange exchange(someRequest);
    const std::unique_ptr<BwaFcgiRequest> request(exchange.takeRequest());

    request->err() << "something" << std::flush;

    pollfd entry = {exchange.client().descriptor(), POLLIN, 0};
    EXPECT_EQ(poll(&entry, 1, 0), 1);
}

TEST(BwaFcgiRequest, WhenDeletedFinishesTheExchange)
{
    FcgiExchange exchange(someRequest);

    delete exchange.takeRequest();

    const FcgiReply reply = exchange.reply();
    EXPECT_TRUE(reply.ended);
    EXPECT_EQ(reply.protocolStatus, 0);
    EXPECT_EQ(reply.out, QByteArray());
    EXPECT_EQ(reply.err, QByteArray());
    EXPECT_TRUE(exchange.client().isClosedByPeer());
}

TEST(BwaFcgiRequest, WhenDeletedWithUnreadBodyFinishesTheExchange)
{
    FcgiExchange exchange(someRequest, QByteArray(60000, 'x'));
    BwaFcgiRequest* request = exchange.takeRequest();

    request->out() << "reply";
    delete request;

    const FcgiReply reply = exchange.reply();
    EXPECT_EQ(reply.out, QByteArray("reply"));
    EXPECT_TRUE(reply.ended);
}

TEST(BwaFcgiRequest, WhenTheFrontServerKeepsConnectionsClosesTheConnectionAllTheSame)
{
    FcgiExchange exchange =
        FcgiExchange::ofBytes(FcgiClient::requestBytes(someRequest, QByteArray(), true));
    BwaFcgiRequest* request = exchange.takeRequest();

    request->out() << "reply";
    delete request;

    const FcgiReply reply = exchange.reply();
    EXPECT_EQ(reply.out, QByteArray("reply"));
    EXPECT_TRUE(reply.ended);
    EXPECT_TRUE(exchange.client().isClosedByPeer());
}

TEST(BwaFcgiRequest, WhenThePeerHasGoneIsDeletedWithoutHarm)
{
    FcgiExchange exchange(someRequest);
    BwaFcgiRequest* request = exchange.takeRequest();
    exchange.client().abort();

    request->out() << "A: b\n\nnobody reads this" << std::flush << "nor this" << std::endl;
    const bool broken = request->out().bad();
    request->err() << "nor that" << std::flush;
    delete request;

    EXPECT_TRUE(broken);
}

// libfcgi counts with int.
TEST(BwaFcgiRequest, WhenMoreThanAnIntCountsIsWrittenAtOnceIsDeletedWithoutHarm)
{
    const auto size = static_cast<std::size_t>(3) << 30U;
    if (sizeof size < 8) {
        GTEST_SKIP() << "nothing is as large";
    }
    void* const text =
        mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(text, MAP_FAILED);
    FcgiExchange exchange(someRequest);
    BwaFcgiRequest* request = exchange.takeRequest();
    exchange.client().abort();

    request->out() << "A: b\n\n";
    request->out().write(static_cast<const char*>(text), static_cast<std::streamsize>(size));
    const bool broken = request->out().bad();
    delete request;
    munmap(text, size);

    EXPECT_TRUE(broken);
}

TEST(BwaFcgiRequest, WhenItsStreamsThrowOnErrorsIsDeletedWithoutThrowing)
{
    FcgiExchange exchange(someRequest);
    BwaFcgiRequest* request = exchange.takeRequest();
    request->out().exceptions(std::ios::badbit | std::ios::failbit);
    request->err().exceptions(std::ios::badbit | std::ios::failbit);

    request->out() << "reply";
    delete request;

    EXPECT_EQ(exchange.reply().out, QByteArray("reply"));
}

TEST(BwaFcgiRequest, WhenThePeerHasGoneReadsNoBody)
{
    const QByteArray whole = FcgiClient::requestBytes(someRequest, "body");
    FcgiExchange exchange = FcgiExchange::ofBytes(whole.left(whole.size() - 24)); // no body records
    const std::unique_ptr<BwaFcgiRequest> request(exchange.takeRequest());
    exchange.client().abort();

    EXPECT_EQ(request->input()->read(4), QByteArray());
}
