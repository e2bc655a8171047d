// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "http/BwaHttp401StatusHeader.h"

#include "http/InheritsVirtually.h"
#include "support/QtPrinters.h"
#include "support/Rendered.h"
#include "support/RenderedWithFlushes.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Parameters = QMap<QString, QString>;
using Challenges = QMap<QString, Parameters>;

Challenges sessionTokenChallenge()
{
    return Challenges{{QStringLiteral("SESSION-TOKEN"),
                       Parameters{{QStringLiteral("realm"), QStringLiteral("api")}}}};
}

BwaHttp401StatusHeader withCookies(BwaHttp401StatusHeader header)
{
    header.cookies.append(BwaHttpCookie(QStringLiteral("b"), QStringLiteral("1")));
    header.cookies.append(BwaHttpCookie(QStringLiteral("a"), QStringLiteral("2")));
    return header;
}

} // namespace

TEST(BwaHttp401StatusHeader, HasTheFixedStatus)
{
    const BwaHttp401StatusHeader header(sessionTokenChallenge());

    EXPECT_EQ(header.statusCode(), 401);
    EXPECT_EQ(header.reasonPhrase(), QLatin1String("Unauthorized"));
    EXPECT_TRUE(header.cookies.isEmpty());
}

TEST(BwaHttp401StatusHeader, DerivesFromTheStatusHeaderInTheOrdinaryWay)
{
    EXPECT_TRUE((std::is_base_of_v<BwaHttpStatusHeader, BwaHttp401StatusHeader>));
    EXPECT_FALSE((InheritsVirtually<BwaHttp401StatusHeader, BwaHttpStatusHeader>::value));
}

TEST(BwaHttp401StatusHeader, GivenNoSchemeHasANullChallenge)
{
    EXPECT_TRUE(BwaHttp401StatusHeader(Challenges()).challenge().isNull());
}

TEST(BwaHttp401StatusHeader, GivenNoSchemeStillWritesTheChallengeLine)
{
    EXPECT_EQ(rendered(BwaHttp401StatusHeader(Challenges())),
              "Status: 401 Unauthorized\nWWW-Authenticate: \n\n");
}

TEST(BwaHttp401StatusHeader, WritesStatusChallengeAndAnEmptyLine)
{
    EXPECT_EQ(rendered(BwaHttp401StatusHeader(sessionTokenChallenge())),
              "Status: 401 Unauthorized\nWWW-Authenticate: SESSION-TOKEN, realm=\"api\"\n\n");
}

TEST(BwaHttp401StatusHeader, WhenCookiesAreSetWritesThemAfterTheChallenge)
{
    EXPECT_EQ(rendered(withCookies(BwaHttp401StatusHeader(sessionTokenChallenge()))),
              "Status: 401 Unauthorized\nWWW-Authenticate: SESSION-TOKEN, realm=\"api\"\n"
              "Set-Cookie:b=1\nSet-Cookie:a=2\n\n");
}

TEST(BwaHttp401StatusHeader, FlushesAfterEachLineAndNowhereElse)
{
    EXPECT_EQ(renderedWithFlushes(withCookies(BwaHttp401StatusHeader(sessionTokenChallenge()))),
              "Status: 401 Unauthorized\n|WWW-Authenticate: SESSION-TOKEN, realm=\"api\"\n|"
              "Set-Cookie:b=1\n|Set-Cookie:a=2\n|\n|");
}

TEST(BwaHttp401StatusHeader, WhenRenderedTwiceWritesTheSameBytesTwice)
{
    const BwaHttp401StatusHeader header(sessionTokenChallenge());

    const std::string first = rendered(header);
    const std::string second = rendered(header);

    EXPECT_EQ(first,
              "Status: 401 Unauthorized\nWWW-Authenticate: SESSION-TOKEN, realm=\"api\"\n\n");
    EXPECT_EQ(second, first);
}

TEST(BwaHttp401StatusHeader, WhenTheMapChangesLaterKeepsItsChallenge)
{
    Challenges challenges = sessionTokenChallenge();
    const BwaHttp401StatusHeader header(challenges);

    challenges.clear();

    EXPECT_EQ(header.challenge(), QLatin1String("SESSION-TOKEN, realm=\"api\""));
}

TEST(BwaHttp401StatusHeader, GivenNulInASchemeKeepsItInTheChallengeAndCutsTheLine)
{
    const QString scheme = QString::fromLatin1("A\0B", 3);
    const BwaHttp401StatusHeader header(
        Challenges{{scheme, Parameters{{QStringLiteral("p"), QStringLiteral("1")}}}});

    EXPECT_EQ(header.challenge(), scheme + QLatin1String(", p=\"1\""));
    EXPECT_EQ(rendered(header), "Status: 401 Unauthorized\nWWW-Authenticate: A\n\n");
}

TEST(BwaHttp401StatusHeader, WritesLatin1)
{
    const BwaHttp401StatusHeader header(Challenges{
        {QStringLiteral("A"), Parameters{{QStringLiteral("r"), QStringLiteral("\u00e9\u20ac")}}}});

    EXPECT_EQ(rendered(header), "Status: 401 Unauthorized\nWWW-Authenticate: A, r=\"\xe9?\"\n\n");
}

namespace {

struct ChallengeCase {
    const char* name;
    Challenges challenges;
    QString expected;
};

void PrintTo(const ChallengeCase& testCase, std::ostream* stream)
{
    *stream << testCase.name;
}

class ChallengeOf : public testing::TestWithParam<ChallengeCase>
{
};

} // namespace

TEST_P(ChallengeOf, IsExactlyThisText)
{
    EXPECT_EQ(BwaHttp401StatusHeader(GetParam().challenges).challenge(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ChallengeOf,
    testing::Values(
        ChallengeCase{"KeepsTheCommaAfterTheScheme", sessionTokenChallenge(),
                      QStringLiteral("SESSION-TOKEN, realm=\"api\"")},
        ChallengeCase{
            "TwoSchemes",
            Challenges{{QStringLiteral("A"), {{QStringLiteral("p"), QStringLiteral("1")}}},
                       {QStringLiteral("B"), {{QStringLiteral("q"), QStringLiteral("2")}}}},
            QStringLiteral("A, p=\"1\", B, q=\"2\"")},
        ChallengeCase{"BareScheme", Challenges{{QStringLiteral("Negotiate"), {}}},
                      QStringLiteral("Negotiate")},
        ChallengeCase{"BareSchemes",
                      Challenges{{QStringLiteral("B"), {}}, {QStringLiteral("A"), {}}},
                      QStringLiteral("A, B")},
        ChallengeCase{"SchemesInAscendingOrder",
                      Challenges{{QStringLiteral("b"), {}},
                                 {QStringLiteral("a"), {}},
                                 {QStringLiteral("Z"), {}},
                                 {QStringLiteral("\u00e9"), {}},
                                 {QStringLiteral("AA"), {}}},
                      QStringLiteral("AA, Z, a, b, \u00e9")},
        ChallengeCase{"ParametersInAscendingOrder",
                      Challenges{{QStringLiteral("A"),
                                  {{QStringLiteral("z"), QStringLiteral("1")},
                                   {QStringLiteral("B"), QStringLiteral("2")},
                                   {QStringLiteral("a"), QStringLiteral("3")}}}},
                      QStringLiteral("A, B=\"2\", a=\"3\", z=\"1\"")},
        ChallengeCase{"OnlyValuesAreEscaped",
                      Challenges{{QStringLiteral("S\"\\"),
                                  {{QStringLiteral("n\"\\"), QStringLiteral("v\"\\")}}}},
                      QStringLiteral("S\"\\, n\"\\=\"v\\\"\\\\\"")},
        ChallengeCase{"NullAndEmptyTexts", Challenges{{QString(), {{QString(), QString()}}}},
                      QStringLiteral(", =\"\"")},
        ChallengeCase{"EmptySchemeThenAnother",
                      Challenges{{QString(), {}}, {QStringLiteral("B"), {}}},
                      QStringLiteral(", B")},
        ChallengeCase{
            "PercentMarkers",
            Challenges{{QStringLiteral("%1"), {{QStringLiteral("%2"), QStringLiteral("%1%3")}}}},
            QStringLiteral("%1, %2=\"%1%3\"")}),
    [](const auto& info) { return std::string(info.param.name); });
