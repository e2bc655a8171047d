// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "sessions/BwaCookiesFcgiSessionIdentifier.h"

#include "fcgi/BwaFcgiRequest.h"
#include "support/ErrorPage.h"
#include "support/QtPrinters.h"
#include "support/TestReplies.h"
#include "support/TwoSessions.h"

#include <gtest/gtest.h>

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

// The session of a request with the header "Cookie: <cookies>".
BwaWebSession* sessionFor(const BwaWebSessionManager& manager, const QByteArray& cookies)
{
    BwaCookiesFcgiSessionIdentifier identifier(&manager, QStringLiteral("sid"),
                                               QStringLiteral("tok"));
    BwaWebSession* session = nullptr;

    const BwaTestReply reply =
        replyWhile([&](BwaFcgiRequest* request) { session = identifier.session(request); },
                   {{"HTTP_COOKIE", cookies}});

    EXPECT_EQ(reply.raw, "");
    EXPECT_EQ(reply.errorText, "");
    return session;
}

struct CookieCase {
    std::string name;
    QByteArray cookies;
};

void PrintTo(const CookieCase& cookieCase, std::ostream* stream)
{
    *stream << cookieCase.cookies.constData();
}

class SessionOfCookies : public testing::TestWithParam<CookieCase>
{
};

class NoSessionOfCookies : public testing::TestWithParam<CookieCase>
{
};

const auto nameOf = [](const auto& info) { return info.param.name; };

} // namespace

TEST(BwaCookiesFcgiSessionIdentifier, KeepsWhatItWasGiven)
{
    const BwaWebSessionManager manager;

    const BwaCookiesFcgiSessionIdentifier identifier(&manager, QStringLiteral("sid"),
                                                     QStringLiteral("tok"));

    EXPECT_EQ(identifier.sessionManager(), &manager);
    EXPECT_EQ(identifier.sessionIdCookieName(), QStringLiteral("sid"));
    EXPECT_EQ(identifier.tokenCookieName(), QStringLiteral("tok"));
}

TEST_P(SessionOfCookies, IsFound)
{
    const TwoSessions sessions;

    EXPECT_EQ(sessionFor(sessions.manager, GetParam().cookies), sessions.session);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SessionOfCookies,
    testing::Values(
        CookieCase{"IdFirst", "sid=" + id + "; tok=" + token},
        CookieCase{"TokenFirst", "tok=" + token + "; sid=" + id},
        CookieCase{"OthersAround", "a=1; sid=" + id + "; b=2; tok=" + token + "; c=3"},
        CookieCase{"LastIdBeforeToken", "sid=x; sid=" + id + "; tok=" + token},
        CookieCase{"LastTokenBeforeId", "tok=x; tok=" + token + "; sid=" + id},
        CookieCase{"IdAfterBothIgnored", "sid=" + id + "; tok=" + token + "; sid=" + otherId},
        CookieCase{"TokenAfterBothIgnored", "sid=" + id + "; tok=" + token + "; tok=x"},
        CookieCase{"UpperCase", "sid=" + id.toUpper() + "; tok=" + token.toUpper()},
        CookieCase{"WithoutBraces", "sid=" + id.mid(1, 36) + "; tok=" + token.mid(1, 36)}),
    nameOf);

TEST_P(NoSessionOfCookies, IsFound)
{
    const TwoSessions sessions;

    EXPECT_EQ(sessionFor(sessions.manager, GetParam().cookies), nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Missing, NoSessionOfCookies,
    testing::Values(CookieCase{"None", ""}, CookieCase{"Others", "a=1; b=2"},
                    CookieCase{"OnlyId", "sid=" + id}, CookieCase{"OnlyToken", "tok=" + token},
                    CookieCase{"IdInOtherCase", "SID=" + id + "; tok=" + token},
                    CookieCase{"TokenInOtherCase", "sid=" + id + "; Tok=" + token},
                    CookieCase{"NotSeparated", "sid=" + id + ";tok=" + token},
                    CookieCase{"BlankBeforeName", "sid=" + id + ";  tok=" + token},
                    CookieCase{"Nameless", id + "; " + token}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Wrong, NoSessionOfCookies,
    testing::Values(
        CookieCase{"UnknownId", "sid=" + unknownId + "; tok=" + token},
        CookieCase{"OthersToken", "sid=" + id + "; tok=" + otherToken},
        CookieCase{"OthersId", "sid=" + otherId + "; tok=" + token},
        CookieCase{"Swapped", "sid=" + token + "; tok=" + id},
        CookieCase{"IdTwice", "sid=" + id + "; tok=" + id},
        CookieCase{"EmptyId", "sid=; tok=" + token},
        CookieCase{"EmptyToken", "sid=" + id + "; tok="},
        CookieCase{"NoUuidAsId", "sid=x; tok=" + token},
        CookieCase{"NoUuidAsToken", "sid=" + id + "; tok=x"},
        CookieCase{"Quoted", "sid=\"" + id + "\"; tok=\"" + token + "\""},
        CookieCase{"NullId", "sid=" + null + "; tok=" + token},
        CookieCase{"NullToken", "sid=" + id + "; tok=" + null},
        CookieCase{"NullTokenOfTokenlessSession", "sid=" + tokenlessId + "; tok=" + null},
        CookieCase{"NoUuidAsTokenOfTokenlessSession", "sid=" + tokenlessId + "; tok=x"},
        CookieCase{"WrongTokenLast", "tok=" + token + "; tok=" + otherToken + "; sid=" + id}),
    nameOf);

// A cookie with both names is the id only, so the token is never seen.
TEST(BwaCookiesFcgiSessionIdentifier, GivenBothNamesEqualFindsNoSession)
{
    const MessageRecorder silence; // of the warning of a non-expiring session
    BwaWebSessionManager manager;
    const QUuid both(QString::fromLatin1(id));
    manager.createSession(QStringLiteral("ann"), both, both);
    BwaCookiesFcgiSessionIdentifier identifier(&manager, QStringLiteral("sid"),
                                               QStringLiteral("sid"));

    replyWhile([&](BwaFcgiRequest* request) { EXPECT_EQ(identifier.session(request), nullptr); },
               {{"HTTP_COOKIE", "sid=" + id + "; sid=" + id}});
}

TEST(BwaCookiesFcgiSessionIdentifier, WhenTokenIsRenewedAcceptsOnlyTheNewOne)
{
    const TwoSessions sessions;
    const QByteArray newToken = sessions.session->generateNewToken().toString().toLatin1();

    EXPECT_EQ(sessionFor(sessions.manager, "sid=" + id + "; tok=" + token), nullptr);
    EXPECT_EQ(sessionFor(sessions.manager, "sid=" + id + "; tok=" + newToken), sessions.session);
}

TEST(BwaCookiesFcgiSessionIdentifier, WhenTokenHasExpiredStillFindsTheSession)
{
    const TwoSessions sessions;
    QMetaObject::invokeMethod(sessions.session, "expireToken");
    ASSERT_TRUE(sessions.session->isTokenExpired());

    EXPECT_EQ(sessionFor(sessions.manager, "sid=" + id + "; tok=" + token), sessions.session);
}

TEST(BwaCookiesFcgiSessionIdentifier, WhenSessionIsRemovedFindsItNoLonger)
{
    TwoSessions sessions;
    sessions.manager.removeSession(sessions.session->sessionId());

    EXPECT_EQ(sessionFor(sessions.manager, "sid=" + id + "; tok=" + token), nullptr);
}

TEST(BwaCookiesFcgiSessionIdentifier, RefusesWithForbiddenPageAndKeepsTheRequest)
{
    const BwaWebSessionManager manager;
    BwaCookiesFcgiSessionIdentifier identifier(&manager, QStringLiteral("sid"),
                                               QStringLiteral("tok"));

    const BwaTestReply reply =
        replyWhile([&](BwaFcgiRequest* request) { identifier.sendUnauthorizedReply(request); });

    EXPECT_EQ(reply.raw, errorPage(403, "Forbidden"));
    EXPECT_EQ(reply.errorText, "");
}
