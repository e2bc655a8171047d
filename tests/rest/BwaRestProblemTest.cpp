// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestProblem.h"

#include "rest/BwaRestReply.h"
#include "rest/RestReplies.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::Eq;

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

std::string rawReply(const BwaRestProblem& problem)
{
    return answering(problem).raw.toStdString();
}

} // namespace

TEST(BwaRestProblem, IsSentAsProblemJson)
{
    EXPECT_EQ(rawReply(BwaRestProblem(404)),
              "Status: 404 Not Found\n"
              "Content-Type: application/problem+json\n"
              "Content-Length: 34\n"
              "\n"
              R"({"status":404,"title":"Not Found"})");
}

TEST(BwaRestProblem, GivenDetailSendsIt)
{
    EXPECT_EQ(answering(BwaRestProblem(409, text("It\xe2\x80\x99s taken"))).body,
              "{\"detail\":\"It\xe2\x80\x99s taken\",\"status\":409,\"title\":\"Conflict\"}");
}

TEST(BwaRestProblem, GivenMembersAndHeadersSendsThem)
{
    const BwaRestProblem problem =
        BwaRestProblem(503).with(text("wait"), 5).header("Retry-After", "5");

    EXPECT_EQ(rawReply(problem),
              "Status: 503 Service Unavailable\n"
              "Retry-After: 5\n"
              "Content-Type: application/problem+json\n"
              "Content-Length: 53\n"
              "\n"
              R"({"status":503,"title":"Service Unavailable","wait":5})");
}

TEST(BwaRestProblem, GivenMemberStatusKeepsItsOwn)
{
    EXPECT_EQ(BwaRestProblem(400).with(text("status"), 200).members().value(text("status")), 400);
}

TEST(BwaRestProblem, GivenStatusThatIsNoErrorIsALogged500)
{
    const BwaTestReply reply = answering(BwaRestProblem(200));

    EXPECT_EQ(reply.body, R"({"status":500,"title":"Internal Server Error"})");
    EXPECT_EQ(reply.errorText,
              R"(Error in REST call GET "/": A problem cannot have the status 200)");
}

TEST(BwaRestProblem, GivenMemberThatIsNoJsonIsALogged500)
{
    const BwaTestReply reply = answering(BwaRestProblem(404).with(text("at"), QVariant(QUuid())));

    EXPECT_EQ(reply.body, R"({"status":500,"title":"Internal Server Error"})");
    EXPECT_EQ(reply.errorText,
              R"(Error in REST call GET "/": The reply holds a value that is no JSON)");
}

TEST(BwaRestProblem, TellsStatusAndDetailAsAnException)
{
    EXPECT_STREQ(BwaRestProblem(404).what(), "404 Not Found");
    EXPECT_STREQ(BwaRestProblem(400, text("No \xc3\xbc")).what(), "400 Bad Request: No \xc3\xbc");
}

TEST(BwaRestProblem, GivenStatusWithoutPhraseIsNamedAfterItsClass)
{
    EXPECT_STREQ(BwaRestProblem(499).what(), "499 Client Error");
    EXPECT_STREQ(BwaRestProblem(599).what(), "599 Server Error");
}
