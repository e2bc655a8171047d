// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BwaStringStreaming.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttp204StatusHeader.h"
#include "http/BwaHttpPlainTextHeader.h"
#include "redis/BwaRedisSession.h"
#include "redis/BwaRedisSessionTokenFcgiSessionIdentifier.h"
#include "redis/BwaRedisSessions.h"
#include "redis/RedisServer.h"
#include "services/BwaStandardFcgiRequestProcessor.h"
#include "testing/BwaTestRequest.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace {

QString authorizationOf(const BwaWebSession& session)
{
    return BwaSessionTokenFcgiSessionIdentifier::S_AUTHENTICATION_SCHEME_NAME +
        QStringLiteral(" %1:%2").arg(session.sessionId().toString(), session.token().toString());
}

//! [login]
class Login : public BwaStandardFcgiRequestProcessor
{
public:
    explicit Login(BwaRedisSessions* sessions)
        : BwaStandardFcgiRequestProcessor(nullptr)
        , m_sessions(sessions)
    {
    }

protected:
    void processPostMethod(BwaFcgiRequest* request) override
    {
        // Here the password has been checked.
        const BwaRedisSession* session =
            m_sessions->create(QStringLiteral("ann"), {QStringLiteral("admin")});
        if (session) {
            request->out() << BwaHttpPlainTextHeader() << authorizationOf(*session);
        } else {
            m_sessions->sendUnavailable(request);
        }
        delete request;
    }

private:
    BwaRedisSessions* m_sessions; // not owned
};
//! [login]

//! [hooks]
class Account : public BwaStandardFcgiRequestProcessor
{
public:
    Account(BwaRedisSessions* sessions, BwaAbstractFcgiSessionIdentifier* identifier)
        : BwaStandardFcgiRequestProcessor(identifier)
        , m_sessions(sessions)
        , m_identifier(identifier)
    {
    }

protected:
    void processGetMethod(BwaFcgiRequest* request) override
    {
        if (const auto* session = qobject_cast<BwaRedisSession*>(authenticateRequest(request))) {
            request->out() << BwaHttpPlainTextHeader() << session->username() << ": "
                           << session->roles().join(QLatin1Char(' '));
        } // otherwise the refusal has been sent
        delete request;
    }

    // Renews the token.
    void processPutMethod(BwaFcgiRequest* request) override
    {
        if (const auto* session = qobject_cast<BwaRedisSession*>(authenticateRequest(request))) {
            if (const BwaRedisSession* renewed = m_sessions->renew(session)) {
                request->out() << BwaHttpPlainTextHeader() << authorizationOf(*renewed);
            } else if (!m_sessions->hasAnswered()) {
                m_sessions->sendUnavailable(request);
            } else { // the session has ended since it was found
                m_identifier->sendUnauthorizedReply(request);
            }
        }
        delete request;
    }

    // Logs out, everywhere.
    void processDeleteMethod(BwaFcgiRequest* request) override
    {
        if (const BwaWebSession* session = authenticateRequest(request)) {
            if (m_sessions->removeSession(session->sessionId())) {
                request->out() << BwaHttp204StatusHeader();
            } else {
                m_sessions->sendUnavailable(request);
            }
        }
        delete request;
    }

private:
    BwaRedisSessions* m_sessions;                   // not owned
    BwaAbstractFcgiSessionIdentifier* m_identifier; // not owned
};
//! [hooks]

// What each process of the application has.
struct Process {
    explicit Process(const QString& redis)
        : sessions(patient(settingsFor(redis)))
    {
    }

    // A machine that runs tests may be slower than one that serves.
    static BwaRedisSettings patient(BwaRedisSettings settings)
    {
        settings.timeout = 10000;
        return settings;
    }

    //! [settings]
    static BwaRedisSettings settingsFor(const QString& redis)
    {
        BwaRedisSettings settings;
        settings.addresses = QStringList{redis}; // "/run/redis/redis.sock" or "10.0.0.2:6379"
        settings.keyPrefix = QStringLiteral("notes:");
        settings.tokenLifetime = 15 * 60 * 1000; // milliseconds
        return settings;
    }
    //! [settings]

    //! [identifier]
    BwaRedisSessions sessions; // must outlive the identifier
    BwaRedisSessionTokenFcgiSessionIdentifier identifier{&sessions, QStringLiteral("notes")};
    Account account{&sessions, &identifier};
    //! [identifier]
    Login login{&sessions};
};

class HowToShareSessions : public testing::Test
{
protected:
    BwaTestReply account(Process& process, const char* method)
    {
        BwaTestRequest request(method, "/account");
        request.setHeader("Authorization", authorization);
        return request.sendTo(process.account);
    }

    int argumentCount = 0;
    QCoreApplication application{argumentCount, nullptr};
    RedisServer redis;
    Process here{redis.path()};
    Process there{redis.path()};
    QByteArray authorization = BwaTestRequest("POST", "/login").sendTo(here.login).body;
};

} // namespace

TEST_F(HowToShareSessions, GivenALoginHereKnowsTheUserThere)
{
    EXPECT_EQ(account(there, "GET").body, "ann: admin");
}

TEST_F(HowToShareSessions, WhenRenewedThereKnowsTheNewTokenHere)
{
    authorization = account(there, "PUT").body;

    EXPECT_EQ(account(here, "GET").body, "ann: admin");
}

TEST_F(HowToShareSessions, WhenLoggedOutThereRefusesHere)
{
    EXPECT_EQ(account(there, "DELETE").statusCode, 204);

    EXPECT_EQ(account(here, "GET").statusCode, 401);
}

TEST_F(HowToShareSessions, WhenRedisIsAwayAsksClientsToComeAgain)
{
    redis.kill();

    EXPECT_EQ(account(here, "GET").header("Retry-After"), "1");
    EXPECT_EQ(BwaTestRequest("POST", "/login").sendTo(here.login).statusCode, 503);
}
