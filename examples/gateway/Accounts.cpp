// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Accounts.h"

#include <QFile>

#include <stdexcept>

#include <sodium.h>

namespace {

constexpr int mostMemory = 19 * 1024 * 1024; // bytes for one hash

struct Login {
    QString user;
    QString password;
};

const auto loginFields = BwaRestFields<Login>()
                             .add("user", &Login::user, BwaRestRule::length(1, 64))
                             .add("password", &Login::password, BwaRestRule::length(1, 128));

} // namespace

Accounts::Accounts(const QString& file)
    : m_unusedHash(hash(QUuid::createUuid().toByteArray()))
{
    QFile lines(file);
    if (!lines.open(QFile::ReadOnly)) {
        throw std::runtime_error("cannot read the accounts of " + file.toStdString());
    }
    for (QByteArray line = lines.readLine(); !line.isEmpty(); line = lines.readLine()) {
        QStringList words = QString::fromUtf8(line).simplified().split(' ');
        const QString user = words.takeFirst();
        m_accounts[user].hash = words.isEmpty() ? m_unusedHash : words.takeFirst().toLatin1();
        m_accounts[user].roles = words;
    }
}

QByteArray Accounts::hash(const QByteArray& password)
{
    char text[crypto_pwhash_STRBYTES];
    if (sodium_init() < 0 ||
        crypto_pwhash_str(text, password.constData(), static_cast<unsigned>(password.size()), 2,
                          mostMemory) != 0) {
        throw std::runtime_error("cannot hash a password");
    }
    return text;
}

void Accounts::addTo(BwaRestGroup& group)
{
    group
        .post("/session", loginFields,
              [this](const BwaRestCall& call, const Login& login) {
                  return logIn(call, login.user, login.password);
              })
        .says("Logs in: gives cookies and a token");
    group.put("/session", [this](const BwaRestCall& call) { return m_sessions.renew(call); })
        .says("Gives a new token before the old one expires");
    group.remove("/session", [this](const BwaRestCall& call) { return m_sessions.logout(call); })
        .says("Logs out");
}

//! [login]
// Checks the password on the pool, because a hash takes long. It takes as long for an unknown user.
BwaRestReply Accounts::logIn(const BwaRestCall& call, const QString& user, const QString& password)
{
    const Account account = m_accounts.value(user, {m_unusedHash, {}});
    return call.onPoolThen(
        [hash = account.hash, sent = password.toUtf8()](const BwaRestCancel&) {
            return crypto_pwhash_str_verify(hash.constData(), sent.constData(),
                                            static_cast<unsigned>(sent.size())) == 0;
        },
        [this, user, roles = account.roles](bool isRight) -> BwaRestReply {
            return isRight ? m_sessions.login(user, roles)
                           : BwaRestReply(BwaRestProblem(403, "Name or password is wrong"));
        });
}
//! [login]
