// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestSessions.h"

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "rest/BwaRestCall.h"
#include "rest/BwaRestExchange_p.h"
#include "rest/BwaRestProblem.h"
#include "sessions/BwaSessionTokenFcgiSessionIdentifier.h"
#include "sessions/BwaWebSession.h"

namespace {

const char idCookie[] = "SESSION-ID";
const char tokenCookie[] = "SESSION-TOKEN";

struct Credentials {
    QUuid sessionId;
    QUuid token;
};

QString cookieOf(const BwaRestExchange& exchange, const char* name)
{
    for (const BwaHttpCookie& cookie : exchange.request().cgiRequest()->environment().cookies()) {
        if (cookie.name == QLatin1String(name)) {
            return cookie.value;
        }
    }
    return QString();
}

// Null where the client sends none, or none that are UUIDs. Another scheme may be for the web
// server.
Credentials credentialsOf(const BwaRestExchange& exchange)
{
    const QString authorization = QString::fromLatin1(exchange.header("Authorization"));
    const QString pair = authorization.section(QLatin1Char(' '), 1);
    if (authorization.section(QLatin1Char(' '), 0, 0) ==
        BwaSessionTokenFcgiSessionIdentifier::S_AUTHENTICATION_SCHEME_NAME) {
        return {QUuid(pair.section(QLatin1Char(':'), 0, 0)),
                QUuid(pair.section(QLatin1Char(':'), 1))};
    }
    return {QUuid(cookieOf(exchange, idCookie)), QUuid(cookieOf(exchange, tokenCookie))};
}

// In the same time wherever they differ.
bool areEqual(const QUuid& first, const QUuid& second)
{
    const QByteArray firstBytes = first.toRfc4122();
    const QByteArray secondBytes = second.toRfc4122();
    int difference = 0;
    for (int index = 0; index < firstBytes.size(); ++index) {
        difference |= firstBytes.at(index) ^ secondBytes.at(index);
    }
    return difference == 0;
}

// A page of another site may have the browser write with its cookies. Hosts are compared, as the
// scheme is known to the outermost web server alone.
void refuseForeignWrite(const BwaRestExchange& exchange)
{
    const QByteArray origin = exchange.header("Origin");
    const QByteArray host = origin.mid(origin.indexOf("://") + 3).toLower();
    const bool isWrite = exchange.method != "GET" && exchange.method != "HEAD";
    if (isWrite && !origin.isEmpty() && host != exchange.header("Host").toLower() &&
        !exchange.settings().origins.names(origin)) {
        throw BwaRestProblem(403, QString::fromLatin1("Pages of other sites may not do this"));
    }
}

BwaHttpCookie cookie(const char* name, const QString& value, bool isSecure)
{
    BwaHttpCookie cookie(QString::fromLatin1(name), value);
    cookie.path = QString::fromLatin1("/");
    cookie.httpOnly = true;
    cookie.secure = isSecure;
    return cookie;
}

} // namespace

BwaRestSessions::BwaRestSessions(const QString& realm, int tokenLifetime, int graceTime)
    : m_challenge(BwaSessionTokenFcgiSessionIdentifier::S_AUTHENTICATION_SCHEME_NAME.toLatin1() +
                  " realm=\"" + realm.toUtf8().replace('\\', "\\\\").replace('"', "\\\"") + '"')
    , m_tokenLifetime(tokenLifetime)
    , m_graceTime(graceTime)
{
    QObject::connect(&m_manager, &BwaWebSessionManager::aboutToRemove,
                     [this](const QUuid& sessionId) { m_entries.remove(sessionId); });
}

BwaRestSessions::~BwaRestSessions() = default;

BwaRestSessions& BwaRestSessions::allowHttp()
{
    m_isSecure = false;
    return *this;
}

BwaRestReply BwaRestSessions::login(const QString& user, const QStringList& roles,
                                    const QVariantMap& data)
{
    const BwaWebSession* const session = m_manager.createSession(user, m_tokenLifetime, 0);
    m_entries[session->sessionId()].session =
        std::make_shared<const BwaRestSession>(BwaRestSession{user, roles, data});
    return granted(session->sessionId());
}

BwaRestReply BwaRestSessions::renew(const BwaRestCall& call)
{
    const QUuid sessionId = require(call.m_exchange);
    BwaWebSession* const session = m_manager.findSession(sessionId);
    if (areEqual(session->token(), credentialsOf(call.m_exchange).token)) {
        Entry& entry = m_entries[sessionId];
        entry.previousToken = session->token();
        entry.grace.setRemainingTime(m_graceTime);
        session->generateNewToken();
    }
    return granted(sessionId);
}

BwaRestReply BwaRestSessions::logout(const BwaRestCall& call)
{
    refuseForeignWrite(call.m_exchange);
    m_manager.removeSession(find(call.m_exchange));
    BwaRestReply reply = BwaRestReply::empty();
    for (const char* name : {idCookie, tokenCookie}) {
        BwaHttpCookie expired = cookie(name, QString(), m_isSecure);
        expired.expired = true;
        reply.cookie(expired);
    }
    return reply;
}

// The id of the session that the client proves; null without one.
QUuid BwaRestSessions::find(const BwaRestExchange& exchange) const
{
    const Credentials credentials = credentialsOf(exchange);
    return isToken(credentials.sessionId, credentials.token) ? credentials.sessionId : QUuid();
}

bool BwaRestSessions::isToken(const QUuid& sessionId, const QUuid& token) const
{
    const BwaWebSession* const session = m_manager.findSession(sessionId);
    const auto entry = m_entries.find(sessionId);
    if (!session || entry == m_entries.end() || session->isTokenExpired() || token.isNull()) {
        return false;
    }
    const bool isCurrent = areEqual(session->token(), token);
    const bool isPrevious = areEqual(entry->previousToken, token) && !entry->grace.hasExpired();
    return isCurrent || isPrevious;
}

QUuid BwaRestSessions::require(const BwaRestExchange& exchange) const
{
    const QUuid sessionId = find(exchange);
    if (sessionId.isNull()) {
        throw BwaRestProblem(BwaRestProblem(401).header("WWW-Authenticate", m_challenge));
    }
    refuseForeignWrite(exchange);
    return sessionId;
}

void BwaRestSessions::check(BwaRestExchange* exchange, const QString& role) const
{
    exchange->session = m_entries.value(require(*exchange)).session;
    if (!role.isEmpty() && !exchange->session->roles.contains(role)) {
        throw BwaRestProblem(403, QString::fromLatin1("This needs another role"));
    }
}

BwaRestReply BwaRestSessions::granted(const QUuid& sessionId) const
{
    const auto text = [](const QUuid& uuid) { return uuid.toString(QUuid::WithoutBraces); };
    const QString token = text(m_manager.findSession(sessionId)->token());
    const std::shared_ptr<const BwaRestSession> session = m_entries.value(sessionId).session;
    BwaRestReply reply(QVariantMap{{QStringLiteral("session"), text(sessionId)},
                                   {QStringLiteral("token"), token},
                                   {QStringLiteral("expiresIn"), m_tokenLifetime / 1000},
                                   {QStringLiteral("user"), session->user},
                                   {QStringLiteral("roles"), session->roles}});
    return reply.header("Cache-Control", "no-store")
        .cookie(cookie(idCookie, text(sessionId), m_isSecure))
        .cookie(cookie(tokenCookie, token, m_isSecure));
}
