// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "SessionProcessor.h"

#include "Accounts.h"
#include "Database.h"
#include "PasswordChecker.h"
#include "Replies.h"
#include "SessionIdentifier.h"
#include "fcgi/BwaFcgiRequest.h"
#include "sessions/BwaWebSession.h"
#include "sessions/BwaWebSessionManager.h"
#include "testing/BwaTestRequest.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>

#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>

#include <sodium.h>

namespace {

// As cheap as libsodium makes it.
QString hashOf(const QByteArray& password)
{
    char hash[crypto_pwhash_STRBYTES];
    EXPECT_EQ(crypto_pwhash_str(hash, password.constData(),
                                static_cast<unsigned long long>(password.size()),
                                crypto_pwhash_OPSLIMIT_MIN, crypto_pwhash_MEMLIMIT_MIN),
              0);
    return QString::fromLatin1(hash);
}

BwaTestRequest loginOf(const QByteArray& user, const QByteArray& password,
                       const QByteArray& address = "192.0.2.1")
{
    BwaTestRequest request("POST");
    request.setBody("application/json",
                    "{\"user\": \"" + user + "\", \"password\": \"" + password + "\"}");
    request.setVariable("REMOTE_ADDR", address);
    return request;
}

// As loginOf(), of somebody who wants cookies.
BwaTestRequest loginWithCookies()
{
    BwaTestRequest request("POST");
    request.setBody("application/json", R"({"user": "demo", "password": "tea", "cookies": true})");
    return request;
}

// The Set-Cookie values, with ID for each id.
QList<QByteArray> cookiesOf(const BwaTestReply& reply)
{
    QList<QByteArray> cookies = reply.headerValues("Set-Cookie");
    for (QByteArray& cookie : cookies) {
        cookie.replace(static_cast<int>(cookie.indexOf('{')), 38, "ID");
    }
    return cookies;
}

QByteArray cookieHeader(const QByteArray& prefix, const BwaWebSession* session)
{
    return prefix + "session=" + session->sessionId().toByteArray() + "; " + prefix +
        "token=" + session->token().toByteArray();
}

void waitFor(const QObject* sender, const char* signal)
{
    QEventLoop loop;
    QObject::connect(sender, signal, &loop, SLOT(quit()));
    QTimer::singleShot(20000, &loop, SLOT(quit()));
    loop.exec();
}

class Login : public testing::Test
{
protected:
    Login()
    {
        addAccount(QStringLiteral("demo"));
        addAccount(QStringLiteral("guest"));
    }

    void addAccount(const QString& user)
    {
        m_database.run("INSERT INTO accounts VALUES ($1, $2)", {user, m_hash});
    }

    // One wrong password for each of 60 accounts, from these addresses in turn.
    void guessSixtyTimes(const QList<QByteArray>& addresses)
    {
        for (int i = 0; i < 60; ++i) {
            addAccount(QStringLiteral("user %1").arg(i)); // whose hash is cheap
            const QByteArray user = "user " + QByteArray::number(i);
            EXPECT_EQ(statusOf(loginOf(user, "coffee", addresses.at(i % addresses.size()))), 403);
        }
    }

    BwaWebSession* newSession()
    {
        return m_sessions.createSession(QStringLiteral("demo"), 600000, 60000);
    }

    int statusOf(const BwaTestRequest& request) { return request.sendTo(m_processor).statusCode; }

    int m_arguments = 0;
    QCoreApplication m_application{m_arguments, nullptr};
    QTemporaryDir m_folder;
    QString m_hash = hashOf("tea");
    Database m_database{m_folder.filePath(QStringLiteral("notes.db"))};
    Accounts m_accounts{m_database};
    PasswordChecker m_passwords{2};
    BwaWebSessionManager m_sessions;
    SessionIdentifier m_identifier{&m_sessions};
    SessionLifetimes m_lifetimes{600000, 60000, 3600000};
    SessionProcessor m_processor{&m_identifier, &m_sessions, &m_accounts, &m_passwords,
                                 m_lifetimes};
};

} // namespace

TEST_F(Login, GivenTheRightPasswordMakesASession)
{
    EXPECT_EQ(statusOf(loginOf("demo", "tea")), 201);
    EXPECT_EQ(m_sessions.sessions(QStringLiteral("demo")).size(), 1);
}

TEST_F(Login, GivenAWrongPasswordOrUserIsRefused)
{
    EXPECT_EQ(statusOf(loginOf("demo", "coffee")), 403);
    EXPECT_EQ(statusOf(loginOf("nobody", "tea")), 403);
    EXPECT_TRUE(m_sessions.sessions(QStringLiteral("demo")).isEmpty());
}

TEST_F(Login, GivenALongNameOrPasswordIsRefused)
{
    EXPECT_EQ(statusOf(loginOf(QByteArray(101, 'a'), "tea")), 400);
    EXPECT_EQ(statusOf(loginOf("demo", QByteArray(101, 'a'))), 400);
}

TEST_F(Login, GivenTooManyWrongPasswordsRefusesTheAccountAndNoOther)
{
    for (int i = 0; i < 20; ++i) {
        const QByteArray address = "192.0.2." + QByteArray::number(i);
        EXPECT_EQ(statusOf(loginOf("demo", "coffee", address)), 403);
    }

    EXPECT_EQ(statusOf(loginOf("demo", "tea", "192.0.2.100")), 429);
    EXPECT_EQ(statusOf(loginOf("guest", "tea", "192.0.2.100")), 201);
}

TEST_F(Login, GivenTooManyWrongPasswordsRefusesTheAddressAndNoOther)
{
    guessSixtyTimes(QList<QByteArray>{"192.0.2.1"});

    EXPECT_EQ(statusOf(loginOf("demo", "tea")), 429);
    EXPECT_EQ(statusOf(loginOf("demo", "tea", "192.0.2.100")), 201);
}

TEST_F(Login, GivenAddressesOfOneIpv6NetworkCountsThemTogether)
{
    guessSixtyTimes(QList<QByteArray>{"2001:db8::1", "2001:db8::2:0:0:3"});

    EXPECT_EQ(statusOf(loginOf("demo", "tea", "2001:db8::4")), 429);
    EXPECT_EQ(statusOf(loginOf("demo", "tea", "2001:db8:0:1::4")), 201);
}

TEST_F(Login, GivenTheRightPasswordNothingIsCounted)
{
    for (int i = 0; i < 61; ++i) {
        EXPECT_EQ(statusOf(loginOf("demo", "tea")), 201);
    }
}

TEST_F(Login, GivenHttpSetsCookiesOfThisApi)
{
    const BwaTestReply reply = loginWithCookies().sendTo(m_processor);

    EXPECT_EQ(reply.statusCode, 201);
    EXPECT_EQ(cookiesOf(reply),
              (QList<QByteArray>{"showcase-session=ID; Path=/api; SameSite=Strict; HttpOnly",
                                 "showcase-token=ID; Path=/api; SameSite=Strict; HttpOnly"}));
}

TEST_F(Login, GivenHttpsSetsCookiesThatNoOtherHostCanSet)
{
    BwaTestRequest request = loginWithCookies();
    request.setVariable("HTTPS", "on");

    EXPECT_EQ(
        cookiesOf(request.sendTo(m_processor)),
        (QList<QByteArray>{"__Host-showcase-session=ID; Path=/; SameSite=Strict; Secure; HttpOnly",
                           "__Host-showcase-token=ID; Path=/; SameSite=Strict; Secure; HttpOnly"}));
}

TEST_F(Login, GivenHttpsTakesNoCookiesThatAnotherHostMayHaveSet)
{
    const BwaWebSession* session = newSession();
    BwaTestRequest request("GET");
    request.setVariable("HTTPS", "on");

    request.setHeader("Cookie", cookieHeader("showcase-", session));
    EXPECT_EQ(statusOf(request), 403);
    request.setHeader("Cookie", cookieHeader("__Host-showcase-", session));
    EXPECT_EQ(statusOf(request), 200);
}

TEST_F(Login, GivenASessionOfTheSameClientEndsIt)
{
    const QUuid earlier = newSession()->sessionId();
    BwaTestRequest request = loginOf("demo", "tea");
    request.setHeader("Cookie", cookieHeader("showcase-", m_sessions.findSession(earlier)));

    EXPECT_EQ(statusOf(request), 201);

    EXPECT_EQ(m_sessions.findSession(earlier), nullptr);
    EXPECT_EQ(m_sessions.sessions(QStringLiteral("demo")).size(), 1);
}

TEST_F(Login, GivenTheMostSessionsOfAUserEndsTheOldest)
{
    QList<QUuid> inOrder;
    for (int i = 0; i < 22; ++i) {
        const QByteArray body = loginOf("demo", "tea").sendTo(m_processor).body;
        inOrder.append(QUuid(QString::fromLatin1(body.mid(body.indexOf('{', 1), 38))));
    }

    EXPECT_EQ(m_sessions.sessions(QStringLiteral("demo")).size(), 20);
    EXPECT_EQ(m_sessions.findSession(inOrder.at(0)), nullptr);
    EXPECT_EQ(m_sessions.findSession(inOrder.at(1)), nullptr);
    EXPECT_NE(m_sessions.findSession(inOrder.at(2)), nullptr);
}

TEST_F(Login, WhenItsLongestAgeIsReachedTheSessionEndsWhateverItsToken)
{
    const SessionLifetimes lifetimes{600000, 60000, 300};
    SessionProcessor processor(&m_identifier, &m_sessions, &m_accounts, &m_passwords, lifetimes);
    EXPECT_EQ(loginOf("demo", "tea").sendTo(processor).statusCode, 201);

    const QList<BwaWebSession*> sessions = m_sessions.sessions(QStringLiteral("demo"));
    if (!sessions.isEmpty()) { // a busy machine may have taken longer
        sessions.first()->generateNewToken();
        waitFor(&m_sessions, SIGNAL(aboutToRemove(QUuid)));
    }

    EXPECT_TRUE(m_sessions.sessions(QStringLiteral("demo")).isEmpty());
}

TEST_F(Login, GivenAnExpiredTokenLogsOut)
{
    BwaWebSession* const session = m_sessions.createSession(QStringLiteral("demo"), 1, 600000);
    waitFor(session, SIGNAL(tokenExpired()));
    BwaTestRequest renewal("PUT");
    renewal.setHeader("Cookie", cookieHeader("showcase-", session));
    BwaTestRequest logout("DELETE");
    logout.setHeader("Cookie", cookieHeader("showcase-", session));

    EXPECT_EQ(statusOf(renewal), 403);
    EXPECT_EQ(statusOf(logout), 204);

    EXPECT_TRUE(m_sessions.sessions(QStringLiteral("demo")).isEmpty());
}

TEST_F(Login, WhenTooManyWaitIsRefused)
{
    m_passwords.check(QByteArray(), QByteArray(), [](bool) {});
    m_passwords.check(QByteArray(), QByteArray(), [](bool) {});

    EXPECT_EQ(statusOf(loginOf("demo", "tea")), 503);

    m_passwords.finish();
    EXPECT_EQ(statusOf(loginOf("demo", "tea")), 201);
}

TEST_F(Login, WhenTheProgramStopsIsAnsweredBefore)
{
    const auto stop = [this](BwaFcgiRequest* request) {
        m_processor.processRequest(request);
        m_passwords.finish();
    };

    EXPECT_EQ(loginOf("demo", "tea").sendTo(stop).statusCode, 201);
}

TEST_F(Login, GivenAnExceptionInALaterAnswerSends500)
{
    const auto answerLater = [this](BwaFcgiRequest* request) {
        QTimer::singleShot(0, &m_application, [request] {
            finishKept(request, [] { throw std::runtime_error("no more tea"); });
        });
    };

    const BwaTestReply reply = BwaTestRequest("GET").sendTo(answerLater);

    EXPECT_EQ(reply.statusCode, 500);
    EXPECT_EQ(reply.errorText, "Error in an answer that came later: no more tea");
}
