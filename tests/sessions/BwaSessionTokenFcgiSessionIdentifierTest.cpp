// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "sessions/BwaSessionTokenFcgiSessionIdentifier.h"

#include "fcgi/BwaFcgiRequest.h"
#include "support/QtPrinters.h"
#include "support/TestReplies.h"
#include "support/TwoSessions.h"

#include <gtest/gtest.h>

#include <cctype>
#include <ostream>
#include <string>

using credentials::id;
using credentials::null;
using credentials::otherId;
using credentials::otherToken;
using credentials::token;
using credentials::tokenlessId;
using credentials::unknownId;

namespace {

// The session of a request with the header "Authorization: <authorization>".
BwaWebSession* sessionFor(const BwaWebSessionManager& manager, const QByteArray& authorization)
{
    BwaSessionTokenFcgiSessionIdentifier identifier(&manager, QStringLiteral("api"));
    BwaWebSession* session = nullptr;

    const BwaTestReply reply =
        replyWhile([&](BwaFcgiRequest* request) { session = identifier.session(request); },
                   {{"HTTP_AUTHORIZATION", authorization}});

    EXPECT_EQ(reply.raw, "");
    EXPECT_EQ(reply.errorText, "");
    return session;
}

// What a client without a session gets.
BwaTestReply refusal(const QString& realm)
{
    const BwaWebSessionManager manager;
    BwaSessionTokenFcgiSessionIdentifier identifier(&manager, realm);

    return replyWhile([&](BwaFcgiRequest* request) { identifier.sendUnauthorizedReply(request); });
}

struct AuthorizationCase {
    std::string name;
    QByteArray authorization;
};

void PrintTo(const AuthorizationCase& authorizationCase, std::ostream* stream)
{
    *stream << authorizationCase.authorization.constData();
}

class SessionOfAuthorization : public testing::TestWithParam<AuthorizationCase>
{
};

class NoSessionOfAuthorization : public testing::TestWithParam<AuthorizationCase>
{
};

const auto nameOf = [](const auto& info) { return info.param.name; };

const QByteArray good = "SESSION-TOKEN " + id + ":" + token;

} // namespace

TEST(BwaSessionTokenFcgiSessionIdentifier, KeepsWhatItWasGiven)
{
    const BwaWebSessionManager manager;

    const BwaSessionTokenFcgiSessionIdentifier identifier(&manager, QStringLiteral("api"));

    EXPECT_EQ(identifier.sessionManager(), &manager);
    EXPECT_EQ(identifier.realm(), QStringLiteral("api"));
}

TEST(BwaSessionTokenFcgiSessionIdentifier, NamesItsScheme)
{
    EXPECT_EQ(BwaSessionTokenFcgiSessionIdentifier::S_AUTHENTICATION_SCHEME_NAME,
              QStringLiteral("SESSION-TOKEN"));
}

TEST_P(SessionOfAuthorization, IsFound)
{
    const TwoSessions sessions;

    EXPECT_EQ(sessionFor(sessions.manager, GetParam().authorization), sessions.session);
}

// A UUID may lack a brace and be followed by other text: so Qt reads it, and it does no harm.
INSTANTIATE_TEST_SUITE_P(
    Cases, SessionOfAuthorization,
    testing::Values(AuthorizationCase{"AsWritten", good},
                    AuthorizationCase{"UpperCaseDigits",
                                      "SESSION-TOKEN " + id.toUpper() + ":" + token.toUpper()},
                    AuthorizationCase{"WithoutBraces",
                                      "SESSION-TOKEN " + id.mid(1, 36) + ":" + token.mid(1, 36)},
                    AuthorizationCase{"WithoutClosingBraces",
                                      "SESSION-TOKEN " + id.left(37) + ":" + token.left(37)},
                    AuthorizationCase{"TextAfterToken", good + "x"},
                    AuthorizationCase{"TextAfterId", "SESSION-TOKEN " + id + "x:" + token}),
    nameOf);

TEST_P(NoSessionOfAuthorization, IsFound)
{
    const TwoSessions sessions;

    EXPECT_EQ(sessionFor(sessions.manager, GetParam().authorization), nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Scheme, NoSessionOfAuthorization,
    testing::Values(AuthorizationCase{"NoHeader", ""}, AuthorizationCase{"Alone", "SESSION-TOKEN"},
                    AuthorizationCase{"BlankAfter", "SESSION-TOKEN "},
                    AuthorizationCase{"LowerCase", "session-token " + id + ":" + token},
                    AuthorizationCase{"MixedCase", "Session-Token " + id + ":" + token},
                    AuthorizationCase{"Other", "Bearer " + id + ":" + token},
                    AuthorizationCase{"Longer", "SESSION-TOKENS " + id + ":" + token},
                    AuthorizationCase{"Missing", id + ":" + token},
                    AuthorizationCase{"Empty", " " + id + ":" + token}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Blanks, NoSessionOfAuthorization,
    testing::Values(AuthorizationCase{"TwoBetween", "SESSION-TOKEN  " + id + ":" + token},
                    AuthorizationCase{"InFront", " " + good},
                    AuthorizationCase{"AtTheEnd", good + " "},
                    AuthorizationCase{"AfterColon", "SESSION-TOKEN " + id + ": " + token},
                    AuthorizationCase{"BeforeColon", "SESSION-TOKEN " + id + " :" + token},
                    AuthorizationCase{"TabBetween", "SESSION-TOKEN\t" + id + ":" + token},
                    AuthorizationCase{"TabBeforeId", "SESSION-TOKEN \t" + id + ":" + token}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Credentials, NoSessionOfAuthorization,
    testing::Values(
        AuthorizationCase{"NoColon", "SESSION-TOKEN " + id},
        AuthorizationCase{"OtherSeparator", "SESSION-TOKEN " + id + ";" + token},
        AuthorizationCase{"OnlyColon", "SESSION-TOKEN :"},
        AuthorizationCase{"NoId", "SESSION-TOKEN :" + token},
        AuthorizationCase{"NoToken", "SESSION-TOKEN " + id + ":"},
        AuthorizationCase{"ThirdPiece", good + ":x"},
        AuthorizationCase{"ColonAtTheEnd", good + ":"},
        AuthorizationCase{"TwoColons", "SESSION-TOKEN " + id + "::" + token},
        AuthorizationCase{"NoUuidAsId", "SESSION-TOKEN x:" + token},
        AuthorizationCase{"NoUuidAsToken", "SESSION-TOKEN " + id + ":x"},
        AuthorizationCase{"Urn", "SESSION-TOKEN " + id + ":urn:uuid:" + token.mid(1, 36)},
        AuthorizationCase{"WithoutDashes",
                          "SESSION-TOKEN " + id + ":" + QByteArray(token).replace('-', "")},
        AuthorizationCase{"ShortToken", "SESSION-TOKEN " + id + ":" + token.left(36)},
        AuthorizationCase{"Parentheses", "SESSION-TOKEN (" + id.mid(1, 36) + "):" + token}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Wrong, NoSessionOfAuthorization,
    testing::Values(AuthorizationCase{"UnknownId", "SESSION-TOKEN " + unknownId + ":" + token},
                    AuthorizationCase{"OthersToken", "SESSION-TOKEN " + id + ":" + otherToken},
                    AuthorizationCase{"OthersId", "SESSION-TOKEN " + otherId + ":" + token},
                    AuthorizationCase{"Swapped", "SESSION-TOKEN " + token + ":" + id},
                    AuthorizationCase{"IdTwice", "SESSION-TOKEN " + id + ":" + id},
                    AuthorizationCase{"NullId", "SESSION-TOKEN " + null + ":" + token},
                    AuthorizationCase{"NullToken", "SESSION-TOKEN " + id + ":" + null},
                    AuthorizationCase{"NullTokenOfTokenlessSession",
                                      "SESSION-TOKEN " + tokenlessId + ":" + null},
                    AuthorizationCase{"NoUuidAsTokenOfTokenlessSession",
                                      "SESSION-TOKEN " + tokenlessId + ":x"},
                    AuthorizationCase{"BothNull", "SESSION-TOKEN " + null + ":" + null}),
    nameOf);

TEST(BwaSessionTokenFcgiSessionIdentifier, GivenAnyOtherDigitInTheTokenFindsNoSession)
{
    const TwoSessions sessions;

    for (int position = 0; position < token.size(); ++position) {
        QByteArray wrong = token;
        if (std::isxdigit(static_cast<unsigned char>(wrong.at(position))) != 0) {
            wrong[position] = wrong.at(position) == '7' ? '3' : '7';
            EXPECT_EQ(sessionFor(sessions.manager, "SESSION-TOKEN " + id + ":" + wrong), nullptr)
                << wrong.constData();
        }
    }
    EXPECT_EQ(sessionFor(sessions.manager, good), sessions.session);
}

TEST(BwaSessionTokenFcgiSessionIdentifier, TellsTheSessionsApart)
{
    const TwoSessions sessions;

    EXPECT_EQ(sessionFor(sessions.manager, "SESSION-TOKEN " + otherId + ":" + otherToken),
              sessions.otherSession);
}

TEST(BwaSessionTokenFcgiSessionIdentifier, AcceptsWhatASessionWritesOfItself)
{
    BwaWebSessionManager manager;
    const BwaWebSession* session = manager.createSession(QStringLiteral("ann"), -1, -1);
    const QString authorization = QStringLiteral("SESSION-TOKEN ") +
        session->sessionId().toString() + QLatin1Char(':') + session->token().toString();

    EXPECT_EQ(sessionFor(manager, authorization.toLatin1()), session);
}

TEST(BwaSessionTokenFcgiSessionIdentifier, WhenTokenIsRenewedAcceptsOnlyTheNewOne)
{
    const TwoSessions sessions;
    const QByteArray newToken = sessions.session->generateNewToken().toString().toLatin1();

    EXPECT_EQ(sessionFor(sessions.manager, good), nullptr);
    EXPECT_EQ(sessionFor(sessions.manager, "SESSION-TOKEN " + id + ":" + newToken),
              sessions.session);
}

TEST(BwaSessionTokenFcgiSessionIdentifier, WhenTokenHasExpiredStillFindsTheSession)
{
    const TwoSessions sessions;
    QMetaObject::invokeMethod(sessions.session, "expireToken");
    ASSERT_TRUE(sessions.session->isTokenExpired());

    EXPECT_EQ(sessionFor(sessions.manager, good), sessions.session);
}

TEST(BwaSessionTokenFcgiSessionIdentifier, WhenSessionIsRemovedFindsItNoLonger)
{
    TwoSessions sessions;
    sessions.manager.removeSession(sessions.session->sessionId());

    EXPECT_EQ(sessionFor(sessions.manager, good), nullptr);
}

TEST(BwaSessionTokenFcgiSessionIdentifier, RefusesWithChallengeOfItsRealm)
{
    const BwaTestReply reply = refusal(QStringLiteral("api"));

    EXPECT_EQ(reply.raw,
              "Status: 401 Unauthorized\n"
              "WWW-Authenticate: SESSION-TOKEN, realm=\"api\"\n"
              "\n");
    EXPECT_EQ(reply.errorText, "");
}

TEST(BwaSessionTokenFcgiSessionIdentifier, QuotesItsRealm)
{
    EXPECT_EQ(refusal(QStringLiteral("the \"api\" of \\ann")).raw,
              "Status: 401 Unauthorized\n"
              "WWW-Authenticate: SESSION-TOKEN, realm=\"the \\\"api\\\" of \\\\ann\"\n"
              "\n");
}

TEST(BwaSessionTokenFcgiSessionIdentifier, GivenNoRealmQuotesNothing)
{
    EXPECT_EQ(refusal(QString()).raw,
              "Status: 401 Unauthorized\n"
              "WWW-Authenticate: SESSION-TOKEN, realm=\"\"\n"
              "\n");
}
