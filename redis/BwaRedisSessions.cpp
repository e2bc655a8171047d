// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// A session is a Redis hash, named after its id, which expires by itself. Further keys make it
// possible to end many sessions at once: they hold random texts, called generations, one for all
// sessions and one for each user. A session stores both generations of the time when it was
// created, and is valid while they are the current ones. To end all sessions of a user, the user's
// generation is deleted; the next login creates another one. In the scripts, a session has them in
// its fields "all" and "word".
//
// A new token is computed from the previous token and a random number, which Redis stores. Redis
// has only hashes of tokens; but when a client sends the previous token within the grace time, the
// new token can be computed from it again.

#include "redis/BwaRedisSessions.h"

#include "fcgi/BwaFcgiRequest.h"
#include "http/BwaHttpStatusHeader.h"
#include "json/BwaJson.h"
#include "redis/BwaRedisClient_p.h"
#include "redis/BwaRedisScripts_p.h"
#include "redis/BwaRedisSession.h"

#include <QCryptographicHash>

#include <ostream>
#include <stdexcept>

namespace {

QByteArray randomBytes()
{
    return QUuid::createUuid().toRfc4122();
}

QByteArray hashOf(const QByteArray& bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

QByteArray hashOf(const QUuid& token)
{
    return hashOf(token.toRfc4122());
}

QUuid nextToken(const QUuid& token, const QByteArray& number)
{
    QByteArray bytes = hashOf(number + token.toRfc4122()).left(16);
    bytes[6] = static_cast<char>((bytes.at(6) & 0x0f) | 0x40); // a random UUID (RFC 4122, 4.4)
    bytes[8] = static_cast<char>((bytes.at(8) & 0x3f) | 0x80);
    return QUuid::fromRfc4122(bytes);
}

// Takes the same time wherever the hashes differ.
bool areEqual(const QByteArray& first, const QByteArray& second)
{
    int difference = first.size() == second.size() ? 0 : 1;
    for (int index = 0; index < qMin(first.size(), second.size()); ++index) {
        difference |= first.at(index) ^ second.at(index);
    }
    return difference == 0;
}

QByteArray textOf(const QVariant& value)
{
    bool ok = false;
    QByteArray text = BwaJson::write(value, &ok);
    if (!ok) {
        throw std::invalid_argument("The data of a session is no JSON");
    }
    return text;
}

class UnavailableHeader : public BwaHttpStatusHeader
{
public:
    explicit UnavailableHeader(int seconds)
        : BwaHttpStatusHeader(BwaFcgiRequest::ServiceUnavailable,
                              QString::fromLatin1("Service Unavailable"))
        , m_seconds(seconds)
    {
    }

    void render(std::ostream& stream) const override
    {
        renderStatus(stream);
        stream << "Retry-After: " << m_seconds << "\nContent-Type: text/plain" << std::endl
               << std::endl;
    }

private:
    int m_seconds;
};

} // namespace

BwaRedisSessions::BwaRedisSessions(const BwaRedisSettings& settings)
    : m_settings(settings)
    , m_client(new BwaRedisClient(settings))
{
    m_settings.tokenLifetime = qMax(1, settings.tokenLifetime);
    m_settings.removalDelay = qMax(0, settings.removalDelay);
}

BwaRedisSessions::~BwaRedisSessions() = default;

BwaRedisSession* BwaRedisSessions::create(const QString& username, const QStringList& roles,
                                          const QVariantMap& data)
{
    const QUuid sessionId = QUuid::createUuid();
    const QUuid token = QUuid::createUuid();
    const QByteArray rolesText = roles.isEmpty() ? QByteArray() : textOf(roles);
    const QByteArray dataText = data.isEmpty() ? QByteArray() : textOf(data);
    const BwaRedisReply reply =
        m_client->change(BwaRedisScripts::create,
                         {key("session:", sessionId.toRfc4122().toHex()), key("all"),
                          key("user:", username.toUtf8())},
                         {randomBytes().toHex(), randomBytes().toHex(), username.toUtf8(),
                          hashOf(token), QByteArray::number(m_settings.tokenLifetime),
                          QByteArray::number(m_settings.removalDelay), rolesText, dataText});
    if (!reply) {
        return nullptr;
    }
    auto* const session =
        new BwaRedisSession(username, sessionId, token, BwaRedisSession::ValidToken, &m_parent);
    session->m_roles = rolesText;
    session->m_data = dataText;
    return adopt(session);
}

BwaRedisSession* BwaRedisSessions::find(const QUuid& sessionId, const QUuid& token)
{
    const BwaRedisReply reply = m_client->read(
        BwaRedisScripts::find, {key("session:", sessionId.toRfc4122().toHex()), key("all")},
        {key("user:")});
    if (!reply || reply->elements != 6 || token.isNull()) {
        return nullptr;
    }
    const auto text = [&reply](size_t index) {
        const redisReply* const element = reply->element[index];
        return QByteArray(element->str, static_cast<int>(element->len));
    };
    const QByteArray hash = hashOf(token);
    const bool isCurrent = areEqual(hash, text(1));
    const bool isPrevious = areEqual(hash, text(2));
    if (!isCurrent && !isPrevious) {
        return nullptr;
    }
    auto* const session = new BwaRedisSession(
        QString::fromUtf8(text(0)), sessionId, token,
        text(3) == "1" ? BwaRedisSession::ValidToken : BwaRedisSession::ExpiredToken, &m_parent);
    session->m_roles = text(4);
    session->m_data = text(5);
    return adopt(session);
}

BwaRedisSession* BwaRedisSessions::renew(const BwaRedisSession* session)
{
    const QByteArray number = randomBytes();
    const BwaRedisReply reply = m_client->change(
        BwaRedisScripts::renew,
        {key("session:", session->sessionId().toRfc4122().toHex()), key("all")},
        {key("user:"), hashOf(session->token()), hashOf(nextToken(session->token(), number)),
         number, QByteArray::number(m_settings.tokenLifetime),
         QByteArray::number(m_settings.removalDelay), QByteArray::number(m_settings.graceTime)});
    if (!reply || !reply->str) {
        return nullptr;
    }
    const QByteArray agreed(reply->str, static_cast<int>(reply->len));
    auto* const renewed = new BwaRedisSession(session->username(), session->sessionId(),
                                              nextToken(session->token(), agreed),
                                              BwaRedisSession::ValidToken, &m_parent);
    renewed->m_roles = session->m_roles;
    renewed->m_data = session->m_data;
    return adopt(renewed);
}

bool BwaRedisSessions::removeSession(const QUuid& sessionId)
{
    const QByteArray session = key("session:", sessionId.toRfc4122().toHex());
    return m_client->change(BwaRedisScripts::remove, {session}, {}) != nullptr;
}

bool BwaRedisSessions::removeSessions(const QString& username)
{
    return m_client->change(BwaRedisScripts::remove, {key("user:", username.toUtf8())}, {}) !=
        nullptr;
}

bool BwaRedisSessions::removeSessions()
{
    return m_client->change(BwaRedisScripts::remove, {key("all")}, {}) != nullptr;
}

bool BwaRedisSessions::hasAnswered() const
{
    return m_client->hasAnswered();
}

int BwaRedisSessions::retryAfter() const
{
    return qMax(1, (m_settings.pause + 999) / 1000);
}

void BwaRedisSessions::sendUnavailable(BwaFcgiRequest* request) const
{
    request->out() << UnavailableHeader(retryAfter())
                   << "The sessions cannot be reached. Try again soon." << std::endl;
}

// Has the event loop delete @a session, and its remove() end the session in Redis.
BwaRedisSession* BwaRedisSessions::adopt(BwaRedisSession* session)
{
    QObject::connect(session, &BwaWebSession::aboutToRemove, &m_parent,
                     [this, sessionId = session->sessionId()] { removeSession(sessionId); });
    session->deleteLater();
    return session;
}

QByteArray BwaRedisSessions::key(const char* kind, const QByteArray& name) const
{
    return m_settings.keyPrefix.toUtf8() + kind + name;
}
