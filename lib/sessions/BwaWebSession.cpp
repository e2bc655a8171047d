// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "sessions/BwaWebSession.h"

namespace {

// Ready to start; starting is up to the caller.
void setUpTimer(QTimer& timer, int interval)
{
    timer.setInterval(interval);
    timer.setSingleShot(true);
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    timer.setTimerType(Qt::PreciseTimer); // others may be 5 % early
#endif
}

// A negative interval means never.
void startUnlessNegative(QTimer& timer)
{
    if (timer.interval() >= 0) {
        timer.start();
    }
}

} // namespace

BwaWebSession::BwaWebSession(const QString& username, int tokenLifetime, int removalDelay,
                             QObject* parent)
    : QObject(parent)
    , m_sessionId(QUuid::createUuid())
    , m_tokenExpired(true)
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
    , m_username(username)
{
    setUpTimers(-1, -1);
    qWarning("Non-expiring Web session created for user \"%s\"",
             username.toLocal8Bit().constData());
}

BwaWebSession::~BwaWebSession() = default;

QUuid BwaWebSession::generateNewToken()
{
    expireToken();
    m_removalTimer.stop();
    m_token = QUuid::createUuid();
    m_tokenExpired = false;
    startUnlessNegative(m_tokenTimer);
    return m_token;
}

void BwaWebSession::remove()
{
    Q_EMIT aboutToRemove();
    deleteLater();
}

void BwaWebSession::expireToken()
{
    if (m_tokenExpired) {
        return;
    }
    m_tokenExpired = true;
    Q_EMIT tokenExpired();
    startUnlessNegative(m_removalTimer);
}

void BwaWebSession::setUpTimers(int tokenLifetime, int removalDelay)
{
    connect(&m_tokenTimer, SIGNAL(timeout()), this, SLOT(expireToken()));
    setUpTimer(m_tokenTimer, tokenLifetime);
    connect(&m_removalTimer, SIGNAL(timeout()), this, SLOT(remove()));
    setUpTimer(m_removalTimer, removalDelay);
}
