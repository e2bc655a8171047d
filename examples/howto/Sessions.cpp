// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BwaStringStreaming.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttp204StatusHeader.h"
#include "http/BwaHttpPlainTextHeader.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "sessions/BwaCookiesFcgiSessionIdentifier.h"
#include "sessions/BwaSessionTokenFcgiSessionIdentifier.h"
#include "sessions/BwaWebSession.h"
#include "sessions/BwaWebSessionManager.h"
#include "testing/BwaTestRequest.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace {

constexpr int tokenLifetime = 15 * 60 * 1000; // milliseconds
constexpr int removalDelay = 60 * 60 * 1000;  // milliseconds

//! [cookies]
BwaHttpCookie hostCookie(const QString& name, const QUuid& value)
{
    const bool secure = true;
    const bool httpOnly = true;
    return BwaHttpCookie(name, value.toString(), 0, QString(), QStringLiteral("/"), secure,
                         httpOnly);
}

QList<BwaHttpCookie> cookiesOf(const BwaWebSession& session)
{
    return {hostCookie(QStringLiteral("__Host-session"), session.sessionId()),
            hostCookie(QStringLiteral("__Host-token"), session.token())};
}
//! [cookies]

//! [token]
QString authorizationOf(const BwaWebSession& session)
{
    return BwaSessionTokenFcgiSessionIdentifier::S_AUTHENTICATION_SCHEME_NAME +
        QStringLiteral(" %1:%2").arg(session.sessionId().toString(), session.token().toString());
}
//! [token]

//! [hooks]
class Account : public BwaStandardFcgiRequestProcessor
{
public:
    using BwaStandardFcgiRequestProcessor::BwaStandardFcgiRequestProcessor;

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        if (const BwaWebSession* session = authenticateRequest(request)) {
            request->out() << BwaHttpPlainTextHeader() << session->username();
        } // otherwise the refusal has been sent
        delete request;
    }

    // Renews the token; the only hook that accepts an expired one.
    void processPutMethod(BwaFcgiRequest* request) override
    {
        const bool acceptExpiredToken = true;
        if (BwaWebSession* session = authenticateRequest(request, acceptExpiredToken)) {
            session->generateNewToken();
            BwaHttp204StatusHeader header;
            header.cookies = cookiesOf(*session);
            request->out() << header;
        }
        delete request;
    }

    // Logs out.
    void processDeleteMethod(BwaFcgiRequest* request) override
    {
        if (BwaWebSession* session = authenticateRequest(request)) {
            BwaHttp204StatusHeader header;
            header.cookies = cookiesOf(*session);
            for (BwaHttpCookie& cookie : header.cookies) {
                cookie.expired = true;
            }
            session->remove();
            request->out() << header;
        }
        delete request;
    }
};
//! [hooks]

QByteArray cookieHeaderOf(const BwaWebSession& session)
{
    return QStringLiteral("__Host-session=%1; __Host-token=%2")
        .arg(session.sessionId().toString(), session.token().toString())
        .toLatin1();
}

class HowToUseCookies : public testing::Test
{
protected:
    BwaTestReply reply(const char* method)
    {
        BwaTestRequest request(method, "/account");
        request.setHeader("Cookie", m_cookies);
        return request.sendTo(m_account);
    }

    int m_argumentCount = 0;
    QCoreApplication m_application{m_argumentCount, nullptr}; // for the timers of the sessions
    //! [by-cookies]
    BwaWebSessionManager m_sessions;
    BwaCookiesFcgiSessionIdentifier m_identifier{&m_sessions, QStringLiteral("__Host-session"),
                                                 QStringLiteral("__Host-token")};
    Account m_account{&m_identifier};
    //! [by-cookies]

    BwaWebSession* m_session =
        m_sessions.createSession(QStringLiteral("ann"), tokenLifetime, removalDelay);
    QByteArray m_cookies = cookieHeaderOf(*m_session);
};

} // namespace

TEST_F(HowToUseCookies, GivenTheCookiesKnowsTheUser)
{
    EXPECT_EQ(reply("GET").body, "ann");
}

TEST_F(HowToUseCookies, GivenNoCookiesRefuses)
{
    m_cookies = "a=b";

    EXPECT_EQ(reply("GET").statusCode, 403);
}

TEST_F(HowToUseCookies, WhenRenewedOnlyTheNewTokenCounts)
{
    const BwaTestReply renewed = reply("PUT");

    EXPECT_EQ(renewed.headerValues("Set-Cookie").size(), 2);
    EXPECT_EQ(reply("GET").statusCode, 403);
    m_cookies = cookieHeaderOf(*m_session);
    EXPECT_EQ(reply("GET").body, "ann");
}

TEST_F(HowToUseCookies, WhenLoggedOutRefuses)
{
    EXPECT_EQ(reply("DELETE").statusCode, 204);

    EXPECT_EQ(reply("GET").statusCode, 403);
}

TEST(HowToUseTokens, GivenTheHeaderKnowsTheUser)
{
    int argumentCount = 0;
    QCoreApplication application(argumentCount, nullptr);
    //! [by-token]
    BwaWebSessionManager sessions;
    BwaSessionTokenFcgiSessionIdentifier identifier(&sessions, QStringLiteral("shop"));
    Account account(&identifier);
    //! [by-token]
    //! [login]
    const BwaWebSession* session =
        sessions.createSession(QStringLiteral("ann"), tokenLifetime, removalDelay);
    //! [login]
    BwaTestRequest request("GET", "/account");

    EXPECT_EQ(request.sendTo(account).statusCode, 401);
    request.setHeader("Authorization", authorizationOf(*session).toLatin1());
    EXPECT_EQ(request.sendTo(account).body, "ann");
}
