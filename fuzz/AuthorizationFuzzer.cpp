// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Credentials, an Authorization header in the first line and a Cookie header in the second: both
// ways to identify a session agree with a literal model, which finds one for the one right pair
// only.

#include "Choices.h"
#include "Fuzzing.h"
#include "Texts.h"
#include "fcgi/BwaFcgiRequest.h"
#include "sessions/BwaCookiesFcgiSessionIdentifier.h"
#include "sessions/BwaSessionTokenFcgiSessionIdentifier.h"
#include "sessions/BwaWebSession.h"
#include "sessions/BwaWebSessionManager.h"
#include "support/FcgiExchange.h"
#include "support/MessageRecorder.h"

#include <QRegExp>

#include <gtest/gtest.h>

#include <memory>

namespace {

const QUuid id(QStringLiteral("{11111111-2222-4333-8444-555555555555}"));
const QUuid token(QStringLiteral("{66666666-7777-4888-9999-aaaaaaaaaaaa}"));

BwaWebSessionManager* managerOfOneSession()
{
    const MessageRecorder silence; // of the warning of a session that never expires
    static BwaWebSessionManager manager;
    manager.createSession(QStringLiteral("somebody"), id, token);
    return &manager;
}

bool areRight(const QString& presentedId, const QString& presentedToken)
{
    return QUuid(presentedId) == id && QUuid(presentedToken) == token;
}

bool literalHeaderIsRight(const QString& header)
{
    QRegExp pattern(QStringLiteral("SESSION-TOKEN ([^ :]*):([^ :]*)"));
    return pattern.exactMatch(header) && areRight(pattern.cap(1), pattern.cap(2));
}

// The cookies up to the one at which both names have been seen count; of several with one name, the
// last.
bool literalCookiesAreRight(const QString& header)
{
    QString presentedId;
    QString presentedToken;
    const QStringList cookies = header.split(QStringLiteral("; "));
    for (const QString& cookie : cookies) {
        if (cookie.startsWith(QLatin1String("id="))) {
            presentedId = QLatin1Char('=') + cookie.mid(3);
        } else if (cookie.startsWith(QLatin1String("token="))) {
            presentedToken = QLatin1Char('=') + cookie.mid(6);
        }
        if (!presentedId.isNull() && !presentedToken.isNull()) {
            break;
        }
    }
    return areRight(presentedId.mid(1), presentedToken.mid(1));
}

} // namespace

void fuzz(const QByteArray& input)
{
    static const BwaWebSessionManager* const manager = managerOfOneSession();
    BwaSessionTokenFcgiSessionIdentifier byToken(manager, QStringLiteral("realm"));
    BwaCookiesFcgiSessionIdentifier byCookies(manager, QStringLiteral("id"),
                                              QStringLiteral("token"));
    Choices choices(input);
    const QByteArray authorization = choices.line();
    const QByteArray cookies = choices.line();
    FcgiExchange exchange({{"HTTP_AUTHORIZATION", authorization}, {"HTTP_COOKIE", cookies}});
    const std::unique_ptr<BwaFcgiRequest> request(exchange.takeRequest());

    const BwaWebSession* const sessionByToken = byToken.session(request.get());
    const BwaWebSession* const sessionByCookies = byCookies.session(request.get());

    const BwaWebSession* const session = manager->findSession(id);
    EXPECT_EQ(sessionByToken,
              literalHeaderIsRight(variableText(authorization)) ? session : nullptr);
    EXPECT_EQ(sessionByCookies, literalCookiesAreRight(variableText(cookies)) ? session : nullptr);
}
