// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "SessionProcessor.h"

#include "Accounts.h"
#include "Replies.h"
#include "SessionIdentifier.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttp201StatusJsonHeader.h"
#include "http/BwaHttp204StatusHeader.h"
#include "http/BwaHttpJsonHeader.h"
#include "json/BwaJsonUtilities.h"
#include "sessions/BwaWebSession.h"
#include "sessions/BwaWebSessionManager.h"

#include <QJsonObject>

namespace {

// Each session costs two timers; nobody needs more than this at a time.
constexpr int mostSessionsPerUser = 100;

// Out of reach of scripts, and sent to this API only. Behind TLS it would be secure as well.
BwaHttpCookie cookie(const QString& name, const QUuid& value)
{
    return BwaHttpCookie(name, value.toString(), 0, QString(), QStringLiteral("/api"), false, true);
}

QList<BwaHttpCookie> cookiesOf(const BwaWebSession& session)
{
    return {cookie(SessionIdentifier::sessionCookieName(), session.sessionId()),
            cookie(SessionIdentifier::tokenCookieName(), session.token())};
}

QList<BwaHttpCookie> expiredCookiesOf(const BwaWebSession& session)
{
    QList<BwaHttpCookie> cookies = cookiesOf(session);
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

enum class Credentials { InBody, InCookies };

void sendCredentials(BwaFcgiRequest* request, const BwaWebSession& session, int tokenLifetime,
                     Credentials where, BwaHttpContentHeader&& header)
{
    QJsonObject body{{QStringLiteral("tokenLifetime"), tokenLifetime},
                     {QStringLiteral("user"), session.username()}};
    if (where == Credentials::InCookies) {
        header.cookies = cookiesOf(session);
    } else {
        body.insert(QStringLiteral("authorization"), authorizationOf(session));
    }
    request->out() << header;
    writeJson(request, body);
}

} // namespace

SessionProcessor::SessionProcessor(SessionIdentifier* identifier, BwaWebSessionManager* sessions,
                                   const Accounts* accounts, const SessionLifetimes& lifetimes)
    : BwaStandardFcgiRequestProcessor(identifier)
    , m_sessions(sessions)
    , m_accounts(accounts)
    , m_lifetimes(lifetimes)
{
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
    logIn(request);
    delete request;
}

void SessionProcessor::processPutMethod(BwaFcgiRequest* request)
{
    if (BwaWebSession* session = authenticateRequest(request)) {
        session->generateNewToken();
        sendCredentials(request, *session, m_lifetimes.token,
                        SessionIdentifier::isByHeader(request) ? Credentials::InBody
                                                               : Credentials::InCookies,
                        BwaHttpJsonHeader(QStringLiteral("utf-8")));
    }
    delete request;
}

void SessionProcessor::processDeleteMethod(BwaFcgiRequest* request)
{
    if (BwaWebSession* session = authenticateRequest(request)) {
        BwaHttp204StatusHeader header;
        if (!SessionIdentifier::isByHeader(request)) {
            header.cookies = expiredCookiesOf(*session);
        }
        session->remove();
        request->out() << header;
    }
    delete request;
}

// Every login makes a new session: an id that the client brings along is never taken up.
void SessionProcessor::logIn(BwaFcgiRequest* request)
{
    QVariantMap object;
    if (!readJsonObject(request, object)) {
        return;
    }
    QString user;
    QString password;
    bool useCookies = false;
    if (!BwaJsonUtilities::stringValue(object, QStringLiteral("user"), user) ||
        !BwaJsonUtilities::stringValue(object, QStringLiteral("password"), password) ||
        !BwaJsonUtilities::booleanValue(object, QStringLiteral("cookies"), useCookies, false)) {
        request->sendHttpError(BwaFcgiRequest::BadRequest);
    } else if (!m_accounts->isPasswordRight(user, password)) {
        request->sendHttpError(BwaFcgiRequest::Forbidden);
    } else if (m_sessions->sessions(user).size() >= mostSessionsPerUser) {
        request->sendHttpError(BwaFcgiRequest::TooManyRequests);
    } else {
        sendCredentials(
            request, *m_sessions->createSession(user, m_lifetimes.token, m_lifetimes.removal),
            m_lifetimes.token, useCookies ? Credentials::InCookies : Credentials::InBody,
            BwaHttp201StatusJsonHeader(QStringLiteral("utf-8"), QStringLiteral("/api/session")));
    }
}
