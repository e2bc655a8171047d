// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "redis/BwaRedisScripts_p.h"

#include <QCryptographicHash>

namespace {

// Functions for the scripts below: now() is the time in milliseconds; session() returns fields of
// the session, or nil when there is none or it has been ended through a generation.
const char preamble[] = R"lua(
local function now()
    local time = redis.call('TIME')
    return time[1] * 1000 + math.floor(time[2] / 1000)
end
local function session(...)
    local fields = redis.call('HMGET', KEYS[1], 'user', 'all', 'word', ...)
    if fields[1] and fields[2] == redis.call('GET', KEYS[2]) and
        fields[3] == redis.call('GET', ARGV[1] .. fields[1]) then
        return fields
    end
end
)lua";

const char createText[] = R"lua(
local life = ARGV[5] + ARGV[6]
redis.call('SET', KEYS[2], ARGV[1], 'NX')
redis.call('SET', KEYS[3], ARGV[2], 'NX', 'PX', life)
redis.call('PEXPIRE', KEYS[3], life, 'GT')
redis.call('HSET', KEYS[1], 'user', ARGV[3], 'all', redis.call('GET', KEYS[2]),
    'word', redis.call('GET', KEYS[3]), 'token', ARGV[4], 'expires', now() + ARGV[5],
    'roles', ARGV[7], 'data', ARGV[8])
redis.call('PEXPIRE', KEYS[1], life)
return 1
)lua";

const char findText[] = R"lua(
local s = session('token', 'previous', 'grace', 'expires', 'roles', 'data')
if not s then return false end
local time = now()
local previous = s[6] and time < tonumber(s[6]) and s[5] or ''
return {s[1], s[4], previous, time < tonumber(s[7]) and '1' or '0', s[8], s[9]}
)lua";

// The second HSET changes nothing. WAIT waits for the last write of this connection, so it makes
// WAIT wait until replicas have the change that an earlier run made.
const char renewText[] = R"lua(
local s = session('token', 'previous', 'grace', 'number')
if not s then return false end
local time = now()
if s[4] == ARGV[2] then
    local life = ARGV[5] + ARGV[6]
    redis.call('HSET', KEYS[1], 'token', ARGV[3], 'previous', ARGV[2], 'number', ARGV[4],
        'expires', time + ARGV[5], 'grace', time + ARGV[7])
    redis.call('PEXPIRE', KEYS[1], life)
    redis.call('PEXPIRE', ARGV[1] .. s[1], life, 'GT')
    return ARGV[4]
elseif s[5] == ARGV[2] and time < tonumber(s[6]) then
    redis.call('HSET', KEYS[1], 'number', s[7])
    return s[7]
end
return false
)lua";

} // namespace

BwaRedisScript::BwaRedisScript(const QByteArray& text)
    : text(text)
    , hash(QCryptographicHash::hash(text, QCryptographicHash::Sha1).toHex())
{
}

const BwaRedisScript BwaRedisScripts::create(QByteArray(preamble) + createText);
const BwaRedisScript BwaRedisScripts::find(QByteArray(preamble) + findText);
const BwaRedisScript BwaRedisScripts::renew(QByteArray(preamble) + renewText);
const BwaRedisScript BwaRedisScripts::remove("redis.call('DEL', KEYS[1]) return 1");
