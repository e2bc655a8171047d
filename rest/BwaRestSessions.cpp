// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestSessions.h"

#include "cgi/BwaCgiRequest.h"
#include "fcgi/BwaFcgiRequest.h"
#include "rest/BwaRestCall.h"
#include "rest/BwaRestExchange_p.h"
#include "rest/BwaRestProblem.h"
#include "rest/BwaRestProcessSessions_p.h"
#include "sessions/BwaSessionTokenFcgiSessionIdentifier.h"

#include <stdexcept>

namespace {

const char idCookie[] = "SESSION-ID";
const char tokenCookie[] = "SESSION-TOKEN";

struct Credentials {
    bool areComplete() const { return !sessionId.isNull() && !token.isNull(); }

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

// The id and the token that the client sends; null when it sends none or one that is no UUID. An
// Authorization header of another scheme is ignored: it may be for the web server.
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

// Refuses a writing call from a page of another site, with which browsers send the user's cookies.
// Only hosts are compared, because only the outermost web server knows the scheme.
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

BwaRestSessions::BwaRestSessions(const QString& realm, std::unique_ptr<BwaRestSessionStore> store)
    : m_challenge(BwaSessionTokenFcgiSessionIdentifier::S_AUTHENTICATION_SCHEME_NAME.toLatin1() +
                  " realm=\"" + realm.toUtf8().replace('\\', "\\\\").replace('"', "\\\"") + '"')
    , m_store(std::move(store))
{
}

BwaRestSessions::BwaRestSessions(const QString& realm, int tokenLifetime, int graceTime)
    : BwaRestSessions(realm, std::make_unique<BwaRestProcessSessions>(tokenLifetime, graceTime))
{
    m_inProcess = static_cast<BwaRestProcessSessions*>(m_store.get());
}

BwaRestSessions::~BwaRestSessions() = default;
BwaRestSessionStore::BwaRestSessionStore() = default;
BwaRestSessionStore::~BwaRestSessionStore() = default;

BwaRestSessions& BwaRestSessions::allowHttp()
{
    m_isSecure = false;
    return *this;
}

BwaWebSessionManager& BwaRestSessions::manager()
{
    if (!m_inProcess) {
        throw std::logic_error("The sessions are in a store, not in a manager");
    }
    return m_inProcess->manager;
}

BwaRestReply BwaRestSessions::login(const QString& user, const QStringList& roles,
                                    const QVariantMap& data)
{
    return granted(m_store->create(BwaRestSession{user, roles, data}));
}

BwaRestReply BwaRestSessions::renew(const BwaRestCall& call)
{
    refuseForeignWrite(call.m_exchange);
    const Credentials credentials = credentialsOf(call.m_exchange);
    BwaRestGrant grant;
    if (credentials.areComplete()) {
        grant = m_store->renew(credentials.sessionId, credentials.token);
    }
    require(grant);
    return granted(grant);
}

BwaRestReply BwaRestSessions::logout(const BwaRestCall& call)
{
    refuseForeignWrite(call.m_exchange);
    const BwaRestGrant grant = find(call.m_exchange);
    if (grant.session) {
        m_store->remove(grant.sessionId);
    }
    BwaRestReply reply = BwaRestReply::empty();
    for (const char* name : {idCookie, tokenCookie}) {
        BwaHttpCookie expired = cookie(name, QString(), m_isSecure);
        expired.expired = true;
        reply.cookie(expired);
    }
    return reply;
}

// The session whose id and token the client has sent, if any.
BwaRestGrant BwaRestSessions::find(const BwaRestExchange& exchange) const
{
    const Credentials credentials = credentialsOf(exchange);
    return credentials.areComplete() ? m_store->find(credentials.sessionId, credentials.token)
                                     : BwaRestGrant();
}

void BwaRestSessions::require(const BwaRestGrant& grant) const
{
    if (!grant.session) {
        throw BwaRestProblem(BwaRestProblem(401).header("WWW-Authenticate", m_challenge));
    }
}

// A group and a group within it may need the same sessions. Then the store is asked only once.
void BwaRestSessions::check(BwaRestExchange* exchange, const QString& role) const
{
    if (exchange->sessions != this) {
        const BwaRestGrant grant = find(*exchange);
        require(grant);
        refuseForeignWrite(*exchange);
        exchange->session = grant.session;
        exchange->sessions = this;
    }
    if (!role.isEmpty() && !exchange->session->roles.contains(role)) {
        throw BwaRestProblem(403, QString::fromLatin1("This needs another role"));
    }
}

BwaRestReply BwaRestSessions::granted(const BwaRestGrant& grant) const
{
    const auto text = [](const QUuid& uuid) { return uuid.toString(QUuid::WithoutBraces); };
    BwaRestReply reply(QVariantMap{{QStringLiteral("session"), text(grant.sessionId)},
                                   {QStringLiteral("token"), text(grant.token)},
                                   {QStringLiteral("expiresIn"), m_store->tokenLifetime() / 1000},
                                   {QStringLiteral("user"), grant.session->user},
                                   {QStringLiteral("roles"), grant.session->roles}});
    return reply.header("Cache-Control", "no-store")
        .cookie(cookie(idCookie, text(grant.sessionId), m_isSecure))
        .cookie(cookie(tokenCookie, text(grant.token), m_isSecure));
}
