// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "RateLimit.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include <sodium.h>

namespace {

constexpr std::size_t counterCount = 4096;

} // namespace

RateLimit::RateLimit(int mostInAMinute)
    : m_mostInAMinute(mostInAMinute)
    , m_minute(0)
    , m_counters(counterCount)
    , m_secret(crypto_shorthash_KEYBYTES)
{
    if (sodium_init() < 0) {
        throw std::runtime_error("libsodium cannot be used on this machine");
    }
    crypto_shorthash_keygen(m_secret.data());
}

bool RateLimit::isReached(const QString& key, qint64 now)
{
    return counter(key, now) >= m_mostInAMinute;
}

void RateLimit::count(const QString& key, qint64 now)
{
    ++counter(key, now);
}

void RateLimit::takeBack(const QString& key, qint64 now)
{
    int& events = counter(key, now);
    events = std::max(events - 1, 0); // the event may have been counted in the minute before
}

int& RateLimit::counter(const QString& key, qint64 now)
{
    if (now / 60 != m_minute) {
        m_minute = now / 60;
        std::fill(m_counters.begin(), m_counters.end(), 0);
    }
    const QByteArray text = key.toUtf8();
    unsigned char hash[crypto_shorthash_BYTES];
    crypto_shorthash(hash, reinterpret_cast<const unsigned char*>(text.constData()),
                     static_cast<unsigned long long>(text.size()), m_secret.data());
    std::size_t index = 0;
    std::memcpy(&index, hash, std::min(sizeof index, sizeof hash));
    return m_counters[index % m_counters.size()];
}
