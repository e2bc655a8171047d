// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Login.h"

#include "Accounts.h"
#include "Sessions.h"
#include "cgi/BwaCgiEnvironment.h"

#include <arpa/inet.h>
#include <sodium.h>

namespace {

// In a minute. A lower limit for a user would help those who want to lock the user out.
constexpr int mostFailuresOfUser = 20;
constexpr int mostFailuresOfAddress = 60; // shared by all behind one router

const auto credentialFields =
    BwaRestFields<Credentials>()
        .add("user", &Credentials::user, BwaRestRule::length(0, 100))
        .add("password", &Credentials::password, BwaRestRule::length(0, 100));

// Whoever has an IPv6 address has the 2^64 of its network as well, so these count as one.
QString networkOf(const QString& address)
{
    in6_addr bytes{};
    if (inet_pton(AF_INET6, address.toLatin1().constData(), &bytes) != 1) {
        return address;
    }
    return QByteArray(reinterpret_cast<const char*>(&bytes), 8).toHex();
}

bool isRight(const QByteArray& password, const QByteArray& hash)
{
    return crypto_pwhash_str_verify(hash.constData(), password.constData(),
                                    static_cast<unsigned long long>(password.size())) == 0;
}

} // namespace

Login::Login(const Accounts& accounts, Sessions& sessions)
    : m_accounts(accounts)
    , m_sessions(sessions)
    , m_failuresOfUser(mostFailuresOfUser)
    , m_failuresOfAddress(mostFailuresOfAddress)
{
    m_clock.start();
}

void Login::addTo(BwaRestGroup& api)
{
    api.post("/session", credentialFields,
             [this](const BwaRestCall& call, const Credentials& credentials) {
                 return logIn(call, credentials);
             })
        .says("Logs in: gives cookies and a token");
}

BwaRestReply Login::logIn(const BwaRestCall& call, const Credentials& credentials)
{
    const QString network = networkOf(call.environment().remoteAddr());
    refuseGuesses(credentials.user, network);
    m_sessions.endEarlier(call);
    BwaRestReply reply = check(call, credentials, network);
    m_failuresOfUser.count(credentials.user, now());
    m_failuresOfAddress.count(network, now());
    return reply;
}

void Login::refuseGuesses(const QString& user, const QString& network)
{
    if (m_failuresOfUser.isReached(user, now()) || m_failuresOfAddress.isReached(network, now())) {
        throw BwaRestProblem(
            BwaRestProblem(429, "There were too many logins").header("Retry-After", "60"));
    }
}

// The thread gets copies of two texts, and nothing of the call.
BwaRestReply Login::check(const BwaRestCall& call, const Credentials& credentials,
                          const QString& network)
{
    return call.onPoolThen(
        [password = credentials.password.toUtf8(), hash = m_accounts.hashOf(credentials.user)](
            const BwaRestCancel&) { return isRight(password, hash); },
        [this, user = credentials.user, network](bool isUser) -> BwaRestReply {
            if (!isUser) {
                return BwaRestProblem(403, "User or password is wrong");
            }
            m_failuresOfUser.takeBack(user, now());
            m_failuresOfAddress.takeBack(network, now());
            return m_sessions.begin(user);
        });
}
