// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestService.h"
#include "testing/BwaTestRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

// Answers with the pattern of the route.
void addGet(BwaRestGroup& group, const char* pattern)
{
    group.get(pattern,
              [pattern](const BwaRestCall&) { return BwaRestReply::bytes(pattern, "text/plain"); });
}

// The pattern that a path reaches, or the status code.
std::string reached(BwaRestService& service, const QByteArray& path)
{
    const BwaTestReply reply = BwaTestRequest("GET", path).sendTo(service);
    return reply.statusCode == 200 ? reply.body.toStdString() : std::to_string(reply.statusCode);
}

std::string reached(const std::vector<const char*>& patterns, const QByteArray& path)
{
    BwaRestService service;
    for (const char* pattern : patterns) {
        addGet(service, pattern);
    }
    return reached(service, path);
}

// What each path reaches in whatever order the patterns are added.
void expectInEachOrder(std::vector<const char*> patterns,
                       const std::vector<std::pair<const char*, const char*>>& expected)
{
    const auto less = [](const char* a, const char* b) { return std::string(a) < b; };
    std::sort(patterns.begin(), patterns.end(), less);
    do {
        BwaRestService service;
        for (const char* pattern : patterns) {
            addGet(service, pattern);
        }
        for (const auto& pair : expected) {
            EXPECT_EQ(reached(service, pair.first), pair.second) << pair.first;
        }
    } while (std::next_permutation(patterns.begin(), patterns.end(), less));
}

std::string refusal(const std::vector<const char*>& patterns)
{
    BwaRestService service;
    try {
        for (const char* pattern : patterns) {
            addGet(service, pattern);
        }
    } catch (const std::logic_error& error) {
        return error.what();
    }
    return "none";
}

} // namespace

TEST(BwaRestRouting, GivenEmptyPatternTakesTheServiceWithAndWithoutSlash)
{
    EXPECT_EQ(reached({""}, ""), "");
    EXPECT_EQ(reached({"/"}, ""), "/");
    EXPECT_EQ(reached({"/"}, "/"), "/");
    EXPECT_EQ(reached({"/"}, "//"), "404");
}

TEST(BwaRestRouting, ComparesLiteralsByteByByte)
{
    EXPECT_EQ(reached({"/a"}, "/a"), "/a");
    EXPECT_EQ(reached({"/a"}, "/A"), "404");
    EXPECT_EQ(reached({"/a"}, "/a/"), "404");
    EXPECT_EQ(reached({"/a/"}, "/a"), "404");
    EXPECT_EQ(reached({"/a/"}, "/a/"), "/a/");
    EXPECT_EQ(reached({"/a"}, "/ab"), "404");
    EXPECT_EQ(reached({"/a/b"}, "/a"), "404");
    EXPECT_EQ(reached({"/\xc3\xa4"}, "/%C3%A4"), "/\xc3\xa4");
    EXPECT_EQ(reached({"/\xef\xbb\xbf-"}, "/%EF%BB%BF-"), "/\xef\xbb\xbf-");
    EXPECT_EQ(reached({"/\xef\xbb\xbf-"}, "/-"), "404");
}

TEST(BwaRestRouting, GivenPathWithoutSlashIs404)
{
    EXPECT_EQ(reached({"/a", "/{b...}"}, "a"), "404");
}

TEST(BwaRestRouting, GivenPathThatIsNoUtf8Is400)
{
    EXPECT_EQ(reached({"/{a}"}, "/%FF"), "400");
    EXPECT_EQ(reached({"/{a}"}, "/%C3"), "400");
    EXPECT_EQ(reached({"/{a}"}, "/%ED%A0%80"), "400");
}

TEST(BwaRestRouting, GivenTextParameterTakesOnePlace)
{
    EXPECT_EQ(reached({"/a/{b}"}, "/a/x"), "/a/{b}");
    EXPECT_EQ(reached({"/a/{b}"}, "/a/"), "404");
    EXPECT_EQ(reached({"/a/{b}"}, "/a/x/y"), "404");
    EXPECT_EQ(reached({"/a/{b}"}, "/a/x%2Fy"), "404");
}

TEST(BwaRestRouting, GivenNumberParameterTakesNumbersOf64Bits)
{
    for (const char* number :
         {"0", "7", "-7", "70", "9223372036854775807", "-9223372036854775808"}) {
        EXPECT_EQ(reached({"/{id:int}"}, QByteArray("/") + number), "/{id:int}") << number;
    }
    for (const char* other :
         {"", "abc", "1e3", "9223372036854775808", "-9223372036854775809", "+1", "-", "-0", "007",
          "-07", "00", "--1", "1.0", "%201", "1%20", "0x10", "%D9%A1", "1,000"}) {
        EXPECT_EQ(reached({"/{id:int}"}, QByteArray("/") + other), "404") << other;
    }
}

TEST(BwaRestRouting, GivenUuidParameterTakesUuids)
{
    const char* const pattern = "/{id:uuid}";

    EXPECT_EQ(reached({pattern}, "/123e4567-e89b-12d3-A456-426614174000"), pattern);
    EXPECT_EQ(reached({pattern}, "/123e4567-e89b-12d3-a456-42661417400"), "404");
    EXPECT_EQ(reached({pattern}, "/123e4567-e89b-12d3-a456-4266141740000"), "404");
    EXPECT_EQ(reached({pattern}, "/123e4567-e89b-12d3-a456-42661417400g"), "404");
    EXPECT_EQ(reached({pattern}, "/123e4567ae89b-12d3-a456-426614174000"), "404");
    EXPECT_EQ(reached({pattern}, "/{123e4567-e89b-12d3-a456-426614174000}"), "404");
}

TEST(BwaRestRouting, GivenRestParameterTakesAllThatFollows)
{
    EXPECT_EQ(reached({"/f/{p...}"}, "/f/a"), "/f/{p...}");
    EXPECT_EQ(reached({"/f/{p...}"}, "/f/a/b/"), "/f/{p...}");
    EXPECT_EQ(reached({"/f/{p...}"}, "/f//"), "/f/{p...}");
    EXPECT_EQ(reached({"/f/{p...}"}, "/f/"), "404");
    EXPECT_EQ(reached({"/f/{p...}"}, "/f"), "404");
}

TEST(BwaRestRouting, GivenLiteralAndParameterPrefersTheLiteralInEachOrder)
{
    expectInEachOrder({"/x/{a}", "/x/b"}, {{"/x/b", "/x/b"}, {"/x/c", "/x/{a}"}});
}

TEST(BwaRestRouting, WhenLiteralLeadsNowhereGoesBackInEachOrder)
{
    expectInEachOrder({"/{o}/{id}", "/secret/{id}/path"},
                      {{"/secret/9", "/{o}/{id}"}, {"/secret/9/path", "/secret/{id}/path"}});
    expectInEachOrder({"/{p...}", "/a/b", "/a/{c:int}/d"},
                      {{"/a/b", "/a/b"},
                       {"/a/b/d", "/{p...}"},
                       {"/a/1/d", "/a/{c:int}/d"},
                       {"/a/1/e", "/{p...}"}});
}

TEST(BwaRestRouting, GivenGroupsJoinsPrefixes)
{
    BwaRestService service;
    BwaRestGroup& users = service.group("/users").group("/{user}");
    addGet(users, "");
    addGet(users, "/notes/{id:int}");

    EXPECT_EQ(reached(service, "/users/me"), "");
    EXPECT_EQ(reached(service, "/users/me/notes/1"), "/notes/{id:int}");
    EXPECT_EQ(reached(service, "/users"), "404");
}

TEST(BwaRestRouting, GivenEqualPatternsNamesBoth)
{
    EXPECT_EQ(refusal({"/x/{a}", "/x/{b}"}),
              R"(The routes "GET /x/{a}" and "GET /x/{b}" match the same paths)");
    EXPECT_EQ(refusal({"", "/"}), R"(The routes "GET " and "GET /" match the same paths)");
}

TEST(BwaRestRouting, GivenTwoKindsOfParametersAtOnePlaceNamesBoth)
{
    EXPECT_EQ(refusal({"/x/{a}/y", "/x/{b:int}"}),
              R"(The routes "GET /x/{a}/y" and )"
              R"("GET /x/{b:int}" have different kinds of )"
              R"(parameters at one place)");
    EXPECT_THAT(refusal({"/x/{a:uuid}", "/x/{b...}"}), HasSubstr("different kinds"));
}

TEST(BwaRestRouting, GivenOtherMethodSharesThePattern)
{
    BwaRestService service;
    addGet(service, "/{a}");
    service.put("/{b}", [](const BwaRestCall& call) {
        return BwaRestReply::bytes(call.text("b").toUtf8(), "text/plain");
    });

    EXPECT_EQ(BwaTestRequest("PUT", "/x").sendTo(service).body, "x");
}

TEST(BwaRestRouting, GivenPatternsThatAreNoneSaysWhy)
{
    EXPECT_EQ(refusal({"a"}), R"(The pattern "a" does not begin with a slash)");
    EXPECT_EQ(refusal({"/{a:float}"}),
              R"(The pattern "/{a:float}" has a kind of parameter that is )"
              "neither int nor uuid");
    EXPECT_EQ(refusal({"/{a...}/b"}),
              R"(The pattern "/{a...}/b" goes on behind a parameter that takes all that follows)");
    EXPECT_EQ(refusal({"/{a}/{a}"}), R"(The pattern "/{a}/{a}" has two parameters of one name)");
    EXPECT_THAT(refusal({"/x{a}"}), HasSubstr("only a part of what stands between two slashes"));
    EXPECT_THAT(refusal({"/{a"}), HasSubstr("only a part"));
    EXPECT_THAT(refusal({"/{}"}), HasSubstr("whose name is not of letters"));
    EXPECT_THAT(refusal({"/{a-b}"}), HasSubstr("whose name is not of letters"));
    EXPECT_THAT(refusal({"/{...}"}), HasSubstr("whose name is not of letters"));
}
