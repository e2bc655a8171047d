// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "SessionProcessor.h"

#include "Accounts.h"
#include "PasswordChecker.h"
#include "Replies.h"
#include "ReplyHeader.h"
#include "SessionIdentifier.h"
#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttp204StatusHeader.h"
#include "json/BwaJsonUtilities.h"
#include "sessions/BwaWebSession.h"
#include "sessions/BwaWebSessionManager.h"

#include <QJsonObject>
#include <QTimer>
#include <QVariant>

#include <algorithm>

#include <arpa/inet.h>

namespace {

constexpr int mostSessionsPerUser = 20;

// In a minute. A lower limit for a user would help those who want to lock the user out.
constexpr int mostFailuresOfUser = 20;
constexpr int mostFailuresOfAddress = 60; // shared by all behind one router

const char* const loginTime = "loginTime"; // a property of sessions, ns

constexpr int longestLogin = 100; // characters of a user's name or a password

QList<BwaHttpCookie> expiredCookies(BwaFcgiRequest* request, const BwaWebSession& session)
{
    QList<BwaHttpCookie> cookies = SessionIdentifier::cookies(request, session);
    for (BwaHttpCookie& cookie : cookies) {
        cookie.expired = true;
    }
    return cookies;
}

QString authorizationOf(const BwaWebSession& session)
{
    return BwaSessionTokenFcgiSessionIdentifier::S_AUTHENTICATION_SCHEME_NAME +
        QStringLiteral(" %1:%2").arg(session.sessionId().toString(), session.token().toString());
}

// Whoever has an IPv6 address has the 2^64 of its network as well, so these count as one.
QString networkOf(const QString& address)
{
    in6_addr bytes{};
    if (inet_pton(AF_INET6, address.toLatin1().constData(), &bytes) != 1) {
        return address;
    }
    return QString::fromLatin1(QByteArray(reinterpret_cast<const char*>(&bytes), 8).toHex());
}

// However often its token is renewed: a stolen session must not last for ever.
void endInTime(BwaWebSession* session, int longestAge)
{
    auto* const end = new QTimer(session);
    end->setSingleShot(true);
    QObject::connect(end, &QTimer::timeout, session, &BwaWebSession::remove);
    end->start(longestAge);
}

enum class Credentials { InBody, InCookies };

void sendCredentials(BwaFcgiRequest* request, const BwaWebSession& session, int tokenLifetime,
                     Credentials where, ReplyHeader&& header)
{
    QJsonObject body{{QStringLiteral("tokenLifetime"), tokenLifetime},
                     {QStringLiteral("user"), session.username()}};
    if (where == Credentials::InCookies) {
        header.cookies = SessionIdentifier::cookies(request, session);
    } else {
        body.insert(QStringLiteral("authorization"), authorizationOf(session));
    }
    request->out() << header;
    writeJson(request, body);
}

} // namespace

struct SessionProcessor::Login {
    QString user;
    QString password;
    bool useCookies = false;
    QString network;
};

SessionProcessor::SessionProcessor(SessionIdentifier* identifier, BwaWebSessionManager* sessions,
                                   const Accounts* accounts, PasswordChecker* passwords,
                                   const SessionLifetimes& lifetimes)
    : BwaStandardFcgiRequestProcessor(identifier)
    , m_sessions(sessions)
    , m_accounts(accounts)
    , m_passwords(passwords)
    , m_lifetimes(lifetimes)
    , m_failuresOfUser(mostFailuresOfUser)
    , m_failuresOfAddress(mostFailuresOfAddress)
{
    m_clock.start();
}

void SessionProcessor::processGetMethod(BwaFcgiRequest* request)
{
    if (const BwaWebSession* session = authenticateRequest(request)) {
        sendJson(request, QJsonObject{{QStringLiteral("user"), session->username()}});
    }
    delete request;
}

void SessionProcessor::processPostMethod(BwaFcgiRequest* request)
{
    Login login;
    if (readLogin(request, login) && mayTry(request, login)) {
        checkLater(request, login); // keeps the request; the last act: nothing may throw behind it
        return;
    }
    delete request;
}

void SessionProcessor::processPutMethod(BwaFcgiRequest* request)
{
    if (BwaWebSession* session = authenticateRequest(request)) {
        session->generateNewToken();
        sendCredentials(request, *session, m_lifetimes.token,
                        SessionIdentifier::isByHeader(request) ? Credentials::InBody
                                                               : Credentials::InCookies,
                        ReplyHeader(QStringLiteral("application/json; charset=utf-8")));
    }
    delete request;
}

void SessionProcessor::processDeleteMethod(BwaFcgiRequest* request)
{
    const bool acceptExpiredToken = true; // whoever comes late may leave all the same
    if (BwaWebSession* session = authenticateRequest(request, acceptExpiredToken)) {
        BwaHttp204StatusHeader header;
        if (!SessionIdentifier::isByHeader(request)) {
            header.cookies = expiredCookies(request, *session);
        }
        session->remove();
        request->out() << header;
    }
    delete request;
}

bool SessionProcessor::readLogin(BwaFcgiRequest* request, Login& login)
{
    QVariantMap object;
    if (!readJsonObject(request, object)) {
        return false;
    }
    login.network = networkOf(request->cgiRequest()->environment().remoteAddr());
    if (!BwaJsonUtilities::stringValue(object, QStringLiteral("user"), login.user) ||
        !BwaJsonUtilities::stringValue(object, QStringLiteral("password"), login.password) ||
        !BwaJsonUtilities::booleanValue(object, QStringLiteral("cookies"), login.useCookies,
                                        false) ||
        login.user.size() > longestLogin || login.password.size() > longestLogin) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
        return false;
    }
    return true;
}

// False when a refusal was sent.
bool SessionProcessor::mayTry(BwaFcgiRequest* request, const Login& login)
{
    if (m_failuresOfUser.isReached(login.user, now()) ||
        m_failuresOfAddress.isReached(login.network, now())) {
        request->sendHttpError(BwaFcgiRequest::TooManyRequests);
        return false;
    }
    if (m_passwords->isBusy()) {
        request->sendHttpError(BwaFcgiRequest::ServiceUnavailable);
        return false;
    }
    return true;
}

void SessionProcessor::checkLater(BwaFcgiRequest* request, const Login& login)
{
    m_failuresOfUser.count(login.user, now());
    m_failuresOfAddress.count(login.network, now());
    m_passwords->check(m_accounts->hashOf(login.user), login.password.toUtf8(),
                       [this, request, login](bool isRight) {
                           finishKept(request, [&] { answer(request, login, isRight); });
                       });
}

void SessionProcessor::answer(BwaFcgiRequest* request, const Login& login, bool isPasswordRight)
{
    if (!isPasswordRight) {
        request->sendHttpError(BwaFcgiRequest::Forbidden);
        return;
    }
    m_failuresOfUser.takeBack(login.user, now());
    m_failuresOfAddress.takeBack(login.network, now());
    logIn(request, login);
}

// Every login makes a new session: an id that the client brings along is never taken up, and the
// session that it has ends.
void SessionProcessor::logIn(BwaFcgiRequest* request, const Login& login)
{
    if (BwaWebSession* const earlier = sessionIdentifier()->session(request)) {
        earlier->remove();
    }
    makeRoom(login.user);
    BwaWebSession* const session =
        m_sessions->createSession(login.user, m_lifetimes.token, m_lifetimes.removal);
    session->setProperty(loginTime, m_clock.nsecsElapsed());
    endInTime(session, m_lifetimes.longestAge);
    sendCredentials(request, *session, m_lifetimes.token,
                    login.useCookies ? Credentials::InCookies : Credentials::InBody,
                    ReplyHeader::created(QStringLiteral("/api/session")));
}

// The oldest session gives way: its user may have left it behind, and must not be locked out by it.
void SessionProcessor::makeRoom(const QString& user)
{
    const QList<BwaWebSession*> sessions = m_sessions->sessions(user);
    if (sessions.size() < mostSessionsPerUser) {
        return;
    }
    const auto isOlder = [](const BwaWebSession* first, const BwaWebSession* second) {
        return first->property(loginTime).toLongLong() < second->property(loginTime).toLongLong();
    };
    (*std::min_element(sessions.begin(), sessions.end(), isOlder))->remove();
}
