// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "sessions/BwaWebSession.h"

#include "sessions/BwaSessionSignalSender_p.h"
#include "sessions/BwaSessionTimers_p.h"

namespace {

// A negative interval means never: the timer is not started.
void startUnlessNegative(QTimer& timer, int interval)
{
    if (interval >= 0) {
        timer.setInterval(interval);
        BwaSessionTimers::start(&timer);
    }
}

} // namespace

BwaWebSession::BwaWebSession(const QString& username, int tokenLifetime, int removalDelay,
                             QObject* parent)
    : QObject(parent)
    , m_sessionId(QUuid::createUuid())
    , m_tokenExpired(true)
    , m_removalStarted(false)
    , m_username(username)
    , m_tokenLifetime(tokenLifetime)
    , m_removalDelay(removalDelay)
{
    setUpTimers();
    generateNewToken();
}

BwaWebSession::BwaWebSession(const QString& username, const QUuid& sessionId, const QUuid& token,
                             QObject* parent)
    : QObject(parent)
    , m_sessionId(sessionId)
    , m_token(token)
    , m_tokenExpired(false)
    , m_removalStarted(false)
    , m_username(username)
    , m_tokenLifetime(-1)
    , m_removalDelay(-1)
{
    setUpTimers();
    qWarning("Non-expiring Web session created for user \"%s\"",
             username.toLocal8Bit().constData());
}

BwaWebSession::BwaWebSession(const QString& username, const QUuid& sessionId, const QUuid& token,
                             TokenState state, QObject* parent)
    : QObject(parent)
    , m_sessionId(sessionId)
    , m_token(token)
    , m_tokenExpired(state == ExpiredToken)
    , m_removalStarted(false)
    , m_username(username)
    , m_tokenLifetime(-1)
    , m_removalDelay(-1)
{
}

BwaWebSession::~BwaWebSession()
{
    BwaSessionTimers::stop(&m_tokenTimer);
    BwaSessionTimers::stop(&m_removalTimer);
}

QUuid BwaWebSession::generateNewToken()
{
    endToken(); // not expireToken(), which would start the removal timer
    stopRemoval();
    m_token = QUuid::createUuid();
    m_tokenExpired = false;
    startUnlessNegative(m_tokenTimer, m_tokenLifetime);
    return m_token;
}

void BwaWebSession::remove()
{
    {
        const BwaSessionSignalSender sender(this);
        Q_EMIT aboutToRemove();
    }
    deleteLater();
}

void BwaWebSession::expireToken()
{
    if (endToken()) {
        m_removalStarted = true;
        startUnlessNegative(m_removalTimer, m_removalDelay);
    }
}

// Most tokens are renewed while they are valid, when no removal timer runs. The flag saves the
// search for the timer.
void BwaWebSession::stopRemoval()
{
    if (m_removalStarted) {
        m_removalStarted = false;
        BwaSessionTimers::stop(&m_removalTimer);
    }
}

bool BwaWebSession::endToken()
{
    if (m_tokenExpired) {
        return false;
    }
    m_tokenExpired = true;
    const BwaSessionSignalSender sender(this);
    Q_EMIT tokenExpired();
    return true;
}

void BwaWebSession::setUpTimers()
{
    connect(&m_tokenTimer, SIGNAL(timeout()), this, SLOT(expireToken()));
    m_tokenTimer.setSingleShot(true);
    connect(&m_removalTimer, SIGNAL(timeout()), this, SLOT(remove()));
    m_removalTimer.setSingleShot(true);
}
