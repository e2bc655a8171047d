// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "sessions/BwaWebSession.h"

#include "sessions/BwaEmittingSession_p.h"
#include "sessions/BwaSessionTimers_p.h"

namespace {

// Ready to start; starting is up to the caller.
void setUpTimer(QTimer& timer, int interval)
{
    timer.setInterval(interval);
    timer.setSingleShot(true);
}

// A negative interval means never.
void startUnlessNegative(QTimer& timer)
{
    if (timer.interval() >= 0) {
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
{
    setUpTimers(tokenLifetime, removalDelay);
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
{
    setUpTimers(-1, -1);
    qWarning("Non-expiring Web session created for user \"%s\"",
             username.toLocal8Bit().constData());
}

BwaWebSession::~BwaWebSession()
{
    BwaSessionTimers::stop(&m_tokenTimer);
    BwaSessionTimers::stop(&m_removalTimer);
}

QUuid BwaWebSession::generateNewToken()
{
    endToken(); // without starting the removal's timer, which would be stopped at once
    callRemovalOff();
    m_token = QUuid::createUuid();
    m_tokenExpired = false;
    startUnlessNegative(m_tokenTimer);
    return m_token;
}

void BwaWebSession::remove()
{
    {
        const BwaEmittingSession emitting(this);
        Q_EMIT aboutToRemove();
    }
    deleteLater();
}

void BwaWebSession::expireToken()
{
    if (endToken()) {
        m_removalStarted = true;
        startUnlessNegative(m_removalTimer);
    }
}

// The flag spares every renewal of a valid token a search among the timers.
void BwaWebSession::callRemovalOff()
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
    const BwaEmittingSession emitting(this);
    Q_EMIT tokenExpired();
    return true;
}

void BwaWebSession::setUpTimers(int tokenLifetime, int removalDelay)
{
    connect(&m_tokenTimer, SIGNAL(timeout()), this, SLOT(expireToken()));
    setUpTimer(m_tokenTimer, tokenLifetime);
    connect(&m_removalTimer, SIGNAL(timeout()), this, SLOT(remove()));
    setUpTimer(m_removalTimer, removalDelay);
}
