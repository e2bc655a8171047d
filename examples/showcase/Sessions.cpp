// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "Sessions.h"

#include <QDateTime>

#include <stdexcept>

#ifdef SHOWCASE_HAS_REDIS
#include "redis/BwaRedisRestStore.h"

#include <bwebapi/redis.h>
#else
class BwaRedisSessions
{
};
#endif

namespace {

const QString realm = "showcase";
const QString loginTime = "loginTime"; // in the data of a session; milliseconds since 1970

bool areInRedis(const SessionSettings& settings)
{
    return !settings.redisAddresses.isEmpty() || !settings.redisSentinels.isEmpty();
}

#ifdef SHOWCASE_HAS_REDIS
std::unique_ptr<BwaRedisSessions> sharedSessions(const SessionSettings& settings)
{
    BwaRedisSettings redis;
    redis.addresses = settings.redisAddresses;
    redis.timeout = settings.redisTimeout;
    redis.replicas = settings.redisReplicas;
    redis.sentinels = settings.redisSentinels;
    redis.masterName = settings.redisMaster;
    redis.tokenLifetime = settings.tokenLifetime;
    redis.keyPrefix = "showcase:";
    return std::make_unique<BwaRedisSessions>(redis);
}

std::unique_ptr<BwaRestSessions> sessionsIn(BwaRedisSessions* shared)
{
    return std::make_unique<BwaRestSessions>(realm, std::make_unique<BwaRedisRestStore>(shared));
}
#else
std::unique_ptr<BwaRedisSessions> sharedSessions(const SessionSettings& /*settings*/)
{
    throw std::runtime_error("this program was built without Redis");
}

std::unique_ptr<BwaRestSessions> sessionsIn(BwaRedisSessions* /*shared*/)
{
    return nullptr;
}
#endif

} // namespace

Sessions::Sessions(const SessionSettings& settings)
    : m_longestAge(settings.longestAge)
    , m_shared(areInRedis(settings) ? sharedSessions(settings) : nullptr)
    , m_sessions(m_shared ? sessionsIn(m_shared.get())
                          : std::make_unique<BwaRestSessions>(realm, settings.tokenLifetime))
{
    if (settings.allowsHttp) {
        m_sessions->allowHttp();
    }
}

Sessions::~Sessions() = default;

void Sessions::addTo(BwaRestGroup& api)
{
    BwaRestGroup& own = users(api);
    own.get("/session",
            [](const BwaRestCall& call) {
                return BwaRestReply(QVariantMap{{"user", call.session()->user}});
            })
        .says("Who is logged in");
    own.put("/session", [this](const BwaRestCall& call) { return m_sessions->renew(call); })
        .says("Gives a new token before the old one expires");
    api.remove("/session", [this](const BwaRestCall& call) { return m_sessions->logout(call); })
        .says("Logs out");
}

BwaRestGroup& Sessions::users(BwaRestGroup& api)
{
    const auto hook = [this](const BwaRestCall& call) -> std::optional<BwaRestReply> {
        checkAge(call);
        return std::nullopt;
    };
    return api.group("").needs(*m_sessions).before(hook);
}

BwaRestReply Sessions::begin(const QString& user)
{
    return m_sessions->login(user, {}, {{loginTime, QDateTime::currentMSecsSinceEpoch()}});
}

void Sessions::endEarlier(const BwaRestCall& call)
{
    m_sessions->logout(call);
}

void Sessions::checkAge(const BwaRestCall& call)
{
    const qint64 begin = call.session()->data.value(loginTime).toLongLong();
    if (QDateTime::currentMSecsSinceEpoch() - begin < m_longestAge) {
        return;
    }
    m_sessions->logout(call);
    throw BwaRestProblem(BwaRestProblem(401, "The session is too old")
                             .header("WWW-Authenticate", "SESSION-TOKEN realm=\"showcase\""));
}
