// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef SHOWCASEFIXTURE_H
#define SHOWCASEFIXTURE_H

#include "Showcase.h"
#include "json/BwaJson.h"
#include "testing/BwaTestRequest.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <optional>

#include <sodium.h>

/** The showcase with the accounts demo and guest, whose password is "tea". */
class ShowcaseFixture : public testing::Test
{
protected:
    ShowcaseFixture()
    {
        settings.database = folder.filePath("notes.db");
        settings.files = "/srv/app/files";
        settings.hasDiagnostics = true;
        start();
        database.run("PRAGMA synchronous = OFF");
        addAccount("demo");
        addAccount("guest");
    }

    // With what the settings say now.
    void start() { showcase.emplace(settings); }

    void addAccount(const QString& user)
    {
        database.run("INSERT INTO accounts VALUES ($1, $2)", {user, cheapHash()});
    }

    static BwaTestRequest loginOf(const QByteArray& user, const QByteArray& password,
                                  const QByteArray& address = "192.0.2.1")
    {
        BwaTestRequest request("POST", "/session");
        request.setBody("application/json",
                        BwaJson::write(QVariantMap{{"user", QString::fromUtf8(user)},
                                                   {"password", QString::fromUtf8(password)}}));
        request.setVariable("REMOTE_ADDR", address);
        return request;
    }

    // The value of an Authorization header.
    static QByteArray grantedBy(const BwaTestReply& reply)
    {
        const QVariantMap json = BwaJson::parse(reply.body).toMap();
        return "SESSION-TOKEN " + json.value("session").toByteArray() + ':' +
            json.value("token").toByteArray();
    }

    BwaTestReply send(const BwaTestRequest& request) { return request.sendTo(showcase->service()); }
    int statusOf(const BwaTestRequest& request) { return send(request).statusCode; }
    QByteArray logIn(const QByteArray& user = "demo")
    {
        return grantedBy(send(loginOf(user, "tea")));
    }

    // With the session of m_authorization, if there is one.
    BwaTestReply send(const QByteArray& method, const QByteArray& target,
                      const QByteArray& body = QByteArray())
    {
        BwaTestRequest request(method, target);
        request.setHeader("Authorization", authorization);
        if (!body.isEmpty()) {
            request.setBody("application/json", body);
        }
        return send(request);
    }
    int statusOf(const QByteArray& method, const QByteArray& target,
                 const QByteArray& body = QByteArray())
    {
        return send(method, target, body).statusCode;
    }

    int argumentCount = 0;
    QCoreApplication application{argumentCount, nullptr};
    QTemporaryDir folder;
    ShowcaseSettings settings;
    std::optional<Showcase> showcase;
    Database database{folder.filePath("notes.db")};
    QByteArray authorization; // empty: no session

private:
    // As cheap as libsodium makes it.
    static QString cheapHash()
    {
        char hash[crypto_pwhash_STRBYTES];
        EXPECT_EQ(crypto_pwhash_str(hash, "tea", 3, crypto_pwhash_OPSLIMIT_MIN,
                                    crypto_pwhash_MEMLIMIT_MIN),
                  0);
        return hash;
    }
};

#endif
