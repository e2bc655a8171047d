// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "sessions/BwaSessionTokenFcgiSessionIdentifier.h"

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttp401StatusHeader.h"
#include "sessions/BwaSessionAuthentication_p.h"

#include <QStringList>

const QString BwaSessionTokenFcgiSessionIdentifier::S_AUTHENTICATION_SCHEME_NAME =
    QString::fromLatin1("SESSION-TOKEN");

BwaSessionTokenFcgiSessionIdentifier::BwaSessionTokenFcgiSessionIdentifier(
    const BwaWebSessionManager* manager, const QString& realm)
    : m_sessionManager(manager)
    , m_realm(realm)
{
}

BwaSessionTokenFcgiSessionIdentifier::~BwaSessionTokenFcgiSessionIdentifier() = default;

BwaWebSession* BwaSessionTokenFcgiSessionIdentifier::session(BwaFcgiRequest* request)
{
    return BwaSessionAuthentication::authenticatedSession(m_sessionManager, credentials(request));
}

BwaSessionCredentials
BwaSessionTokenFcgiSessionIdentifier::credentials(BwaFcgiRequest* request) const
{
    const QString authorization = request->cgiRequest()->environment().httpAuthorization();
    const QStringList schemeAndCredentials = authorization.split(QLatin1Char(' '));
    if (schemeAndCredentials.size() != 2 ||
        schemeAndCredentials.first() != S_AUTHENTICATION_SCHEME_NAME) {
        return {};
    }
    const QStringList credentials = schemeAndCredentials.last().split(QLatin1Char(':'));
    if (credentials.size() != 2) {
        return {};
    }
    return {QUuid(credentials.first()), QUuid(credentials.last())};
}

void BwaSessionTokenFcgiSessionIdentifier::sendUnauthorizedReply(BwaFcgiRequest* request)
{
    QMap<QString, QMap<QString, QString>> challenges;
    challenges[S_AUTHENTICATION_SCHEME_NAME].insert(QString::fromLatin1("realm"), m_realm);
    request->out() << BwaHttp401StatusHeader(challenges);
}
