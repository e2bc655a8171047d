// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestProblem.h"
#include "rest/BwaRestService.h"
#include "rest/BwaRestSessions.h"
#include "testing/BwaTestRequest.h"

#include <QCoreApplication>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

// In place of the check of a salted, slow password hash on the pool: see BwaRestCall::onPoolThen().
QStringList rolesOf(const QString& user, const QString& password)
{
    if (user == QLatin1String("broken")) {
        throw std::runtime_error("a secret of ours");
    }
    if (password != user + QStringLiteral("'s password")) {
        throw BwaRestProblem(401, QStringLiteral("Name or password is wrong"));
    }
    return user == QLatin1String("ann") ? QStringList{QStringLiteral("admin")} : QStringList();
}

class Notes
{
public:
    Notes()
    {
        addLogin();
        //! [needs]
        BwaRestGroup& notes = service.group("/notes").needs(m_sessions);
        notes.get("", [](const BwaRestCall& call) {
            return QVariantMap{{QStringLiteral("user"), call.session()->user}};
        });
        BwaRestGroup& users = service.group("/users").needs(m_sessions, QStringLiteral("admin"));
        users.remove("/{name}/sessions", [this](const BwaRestCall& call) {
            m_sessions.manager().removeSessions(call.text("name"));
            return BwaRestReply::empty();
        });
        //! [needs]
    }

private:
    void addLogin()
    {
        //! [login]
        service.post("/login", [this](const BwaRestCall& call) {
            const QVariantMap sent = call.json().toMap();
            const QString user = sent.value(QStringLiteral("user")).toString();
            const QString password = sent.value(QStringLiteral("password")).toString();
            return m_sessions.login(user, rolesOf(user, password)); // throws 401
        });
        service.post("/renew", [this](const BwaRestCall& call) { return m_sessions.renew(call); });
        service.post("/logout",
                     [this](const BwaRestCall& call) { return m_sessions.logout(call); });
        //! [login]
    }

    //! [sessions]
    BwaRestSessions m_sessions{QStringLiteral("notes")}; // must outlive the service
    //! [sessions]

public:
    BwaRestService service;
};

class HowToRoles : public testing::Test
{
protected:
    BwaTestReply login(const QByteArray& user, const QByteArray& password)
    {
        BwaTestRequest request("POST", "/login");
        request.setBody("application/json",
                        R"({"user":")" + user + R"(","password":")" + password + R"("})");
        return request.sendTo(notes.service);
    }

    // The value of an Authorization header.
    QByteArray authorization(const QByteArray& user)
    {
        const BwaTestReply reply = login(user, user + "'s password");
        const QVariantMap json = QJsonDocument::fromJson(reply.body).toVariant().toMap();
        return "SESSION-TOKEN " + json.value(QStringLiteral("session")).toByteArray() + ':' +
            json.value(QStringLiteral("token")).toByteArray();
    }

    BwaTestReply send(const QByteArray& method, const QByteArray& path,
                      const QByteArray& authorization, const QByteArray& origin = QByteArray())
    {
        BwaTestRequest request(method, path);
        request.setHeader("Authorization", authorization);
        request.setHeader("Host", "example.org");
        request.setHeader("Origin", origin);
        return request.sendTo(notes.service);
    }

    int argc = 1;
    char name[5] = "test";
    char* argv[2] = {name, nullptr};
    QCoreApplication application = {argc, argv};
    Notes notes;
};

} // namespace

TEST_F(HowToRoles, GivenALoginLetsTheUserIn)
{
    EXPECT_EQ(send("GET", "/notes", authorization("bob")).body, R"({"user":"bob"})");
}

TEST_F(HowToRoles, GivenNoSessionOrAGuessIsA401)
{
    EXPECT_EQ(login("bob", "guess").statusCode, 401);
    EXPECT_EQ(send("GET", "/notes", QByteArray()).statusCode, 401);
    EXPECT_EQ(send("GET", "/notes", "SESSION-TOKEN \xff:\xff").statusCode, 401);
}

TEST_F(HowToRoles, GivenAnotherRoleIsA403)
{
    EXPECT_EQ(send("DELETE", "/users/bob/sessions", authorization("bob")).statusCode, 403);
}

TEST_F(HowToRoles, WhenTheAdminEndsSessionsTheyEnd)
{
    const QByteArray bob = authorization("bob");

    EXPECT_EQ(send("DELETE", "/users/bob/sessions", authorization("ann")).statusCode, 204);

    EXPECT_EQ(send("GET", "/notes", bob).statusCode, 401);
}

TEST_F(HowToRoles, GivenAPageOfAnotherSiteIsA403)
{
    const QByteArray ann = authorization("ann");

    EXPECT_EQ(send("DELETE", "/users/bob/sessions", ann, "https://evil.example").statusCode, 403);
    EXPECT_EQ(send("DELETE", "/users/bob/sessions", ann, "https://example.org").statusCode, 204);
}

TEST_F(HowToRoles, WhenTheLoginThrowsTheClientLearnsNoSecret)
{
    EXPECT_EQ(login("broken", "").body, R"({"status":500,"title":"Internal Server Error"})");
}
