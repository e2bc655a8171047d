// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "testing/BwaTestReply.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

struct StatusCase {
    const char* name;
    QByteArray raw;
    int statusCode;
    QByteArray reasonPhrase;
};

void PrintTo(const StatusCase& statusCase, std::ostream* stream)
{
    *stream << statusCase.name;
}

class BwaTestReplyStatus : public testing::TestWithParam<StatusCase>
{
};

struct BrokenCase {
    const char* name;
    QByteArray raw;
};

void PrintTo(const BrokenCase& brokenCase, std::ostream* stream)
{
    *stream << brokenCase.name;
}

class BwaTestReplyWithoutHeaderBlock : public testing::TestWithParam<BrokenCase>
{
};

const auto nameOf = [](const auto& info) { return std::string(info.param.name); };

} // namespace

TEST_P(BwaTestReplyStatus, IsReadAsAWebServerDoes)
{
    const BwaTestReply reply(GetParam().raw, "");

    EXPECT_EQ(reply.statusCode, GetParam().statusCode);
    EXPECT_EQ(reply.reasonPhrase, GetParam().reasonPhrase);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, BwaTestReplyStatus,
    testing::Values(
        StatusCase{"Header", "Status: 404 Not Found\n\n", 404, "Not Found"},
        StatusCase{"HeaderInLowerCase", "status:404 Not Found\n\n", 404, "Not Found"},
        StatusCase{"HeaderBehindAnother", "A: b\nStatus: 201 Created\n\n", 201, "Created"},
        StatusCase{"HeaderWithoutReason", "Status: 204\n\n", 204, ""},
        StatusCase{"CarriageReturns", "Status: 404 Not Found\r\n\r\n", 404, "Not Found"},
        StatusCase{"StatusLine", "HTTP/1.1 200 OK\nA: b\n\n", 200, "OK"},
        StatusCase{"FirstOfTwo", "Status: 404 Not Found\nStatus: 200 OK\n\n", 404, "Not Found"},
        StatusCase{"None", "Content-Type: text/plain\n\n", 200, ""},
        StatusCase{"NoneWithLocation", "Location: /other\n\n", 302, ""},
        StatusCase{"WithLocation", "Status: 201 Created\nLocation: /x\n\n", 201, "Created"}),
    nameOf);

TEST_P(BwaTestReplyWithoutHeaderBlock, KeepsOnlyTheRawBytes)
{
    const BwaTestReply reply(GetParam().raw, "an error");

    EXPECT_EQ(reply.statusCode, 0);
    EXPECT_EQ(reply.reasonPhrase, "");
    EXPECT_TRUE(reply.headers.isEmpty());
    EXPECT_EQ(reply.body, "");
    EXPECT_EQ(reply.raw, GetParam().raw);
    EXPECT_EQ(reply.errorText, "an error");
}

INSTANTIATE_TEST_SUITE_P(Cases, BwaTestReplyWithoutHeaderBlock,
                         testing::Values(BrokenCase{"Nothing", ""}, BrokenCase{"OnlyABody", "text"},
                                         BrokenCase{"EmptyLineFirst", "\nStatus: 200 OK\n\n"},
                                         BrokenCase{"WithoutEnd", "Status: 200 OK\nA: b\n"},
                                         BrokenCase{"LineWithoutColon", "Status: 200 OK\ntext\n\n"},
                                         BrokenCase{"LineWithoutName", "Status: 200 OK\n: b\n\n"},
                                         BrokenCase{"StatusWithoutNumber", "Status: fine\n\n"},
                                         BrokenCase{"StatusOfTwoDigits", "Status: 20 OK\n\n"},
                                         BrokenCase{"StatusOfFourDigits", "Status: 2000 OK\n\n"},
                                         BrokenCase{"StatusBelow100", "Status: 099 OK\n\n"},
                                         BrokenCase{"StatusLineWithoutCode", "HTTP/1.1\n\n"},
                                         BrokenCase{"StatusLineInTheMiddle",
                                                    "A: b\nHTTP/1.1 200 OK\n\n"}),
                         nameOf);

TEST(BwaTestReply, KeepsHeadersInTheirOrderAndCase)
{
    const BwaTestReply reply("Set-Cookie:a=1\nStatus: 200 OK\nX-Empty:\nset-cookie: b = 2 \n\n",
                             "");

    EXPECT_EQ(reply.headers,
              (QList<QPair<QByteArray, QByteArray>>{
                  {"Set-Cookie", "a=1"}, {"X-Empty", ""}, {"set-cookie", "b = 2"}}));
}

TEST(BwaTestReply, FindsHeadersInAnyCase)
{
    const BwaTestReply reply("Set-Cookie:a=1\nX: y\nset-cookie:b=2\n\n", "");

    EXPECT_EQ(reply.header("SET-COOKIE"), "a=1");
    EXPECT_EQ(reply.headerValues("SET-COOKIE"), (QList<QByteArray>{"a=1", "b=2"}));
}

TEST(BwaTestReply, TellsAnEmptyHeaderFromNone)
{
    const BwaTestReply reply("X-Empty:\n\n", "");

    EXPECT_TRUE(reply.header("X-Empty").isEmpty());
    EXPECT_FALSE(reply.header("X-Empty").isNull());
    EXPECT_TRUE(reply.header("X-Other").isNull());
}

TEST(BwaTestReply, CutsHeadersAtTheirFirstColon)
{
    const BwaTestReply reply("Location:: /x/1\n\n", "");

    EXPECT_EQ(reply.header("Location"), ": /x/1");
}

TEST(BwaTestReply, KeepsTheBodyByteForByte)
{
    const BwaTestReply reply(QByteArray("A: b\n\n\r\n\0\xff\n\n", 12), "");

    EXPECT_EQ(reply.body, QByteArray("\r\n\0\xff\n\n", 6));
}
