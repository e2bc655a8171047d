// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Random lives of sessions, next to a literal model of the rule: two timers of Qt a session.

#include "sessions/BwaWebSession.h"
#include "sessions/ManualClock.h"

#include <QPointer>
#include <QTimer>

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

using Random = std::mt19937;
using Log = std::vector<std::string>; // what happened to which session

// BWA_TEST_SEED repeats a failed run.
unsigned int seed()
{
    const QByteArray chosen = qgetenv("BWA_TEST_SEED");
    return chosen.isEmpty() ? std::random_device()() : chosen.toUInt();
}

int between(int smallest, int largest, Random& random)
{
    return std::uniform_int_distribution<int>(smallest, largest)(random);
}

// Whether the application renews the token of that session whenever it expires. Not with a lifetime
// of 0, which would never come to rest on a clock that stands still.
bool isRenewedOnExpiry(int tokenLifetime, const std::string& name)
{
    return tokenLifetime > 0 && name.back() == '5';
}

// A session without id and token.
class ModelSession : public QObject
{
public:
    ModelSession(int tokenLifetime, int removalDelay, Log* log, const std::string& name)
        : m_log(log)
        , m_name(name)
    {
        setUp(m_token, tokenLifetime);
        connect(&m_token, &QTimer::timeout, this, [this] { expireToken(); });
        setUp(m_removal, removalDelay);
        connect(&m_removal, &QTimer::timeout, this, [this] { remove(); });
        renew();
    }

    void renew()
    {
        expireToken();
        m_removal.stop();
        m_expired = false;
        start(m_token);
    }

    void expireToken()
    {
        if (!m_expired) {
            m_expired = true;
            m_log->push_back(m_name + " expired");
            if (isRenewedOnExpiry(m_token.interval(), m_name)) {
                renew();
            }
            start(m_removal);
        }
    }

    void remove()
    {
        m_log->push_back(m_name + " removed");
        deleteLater();
    }

private:
    static void setUp(QTimer& timer, int interval)
    {
        timer.setInterval(interval);
        timer.setSingleShot(true);
        timer.setTimerType(Qt::PreciseTimer);
    }

    static void start(QTimer& timer)
    {
        if (timer.interval() >= 0) {
            timer.start();
        }
    }

    Log* m_log; // not owned
    std::string m_name;
    bool m_expired = true;
    QTimer m_token;
    QTimer m_removal;
};

// A session and its model, which live through the same.
struct Pair {
    QPointer<BwaWebSession> session;
    QPointer<ModelSession> model;
};

class SessionTimersAgainstModel : public ManualClockTest
{
protected:
    ~SessionTimersAgainstModel() override
    {
        for (const Pair& pair : m_pairs) {
            delete pair.session;
            delete pair.model;
        }
    }

    void doSomething(Random& random)
    {
        Pair& pair = m_pairs[static_cast<size_t>(between(0, 19, random))];
        const int action = between(0, 9, random);
        if (action < 3) {
            clock->advance(between(0, 12, random));
        } else if (!pair.session) {
            create(pair, random);
        } else if (action < 7) {
            pair.session->generateNewToken();
            pair.model->renew();
        } else if (action == 7) {
            QMetaObject::invokeMethod(pair.session, "expireToken");
            pair.model->expireToken();
        } else if (action == 8) {
            pair.session->remove();
            pair.model->remove();
        } else {
            delete pair.session;
            delete pair.model;
        }
    }

    Log log;
    Log modelLog;

private:
    void create(Pair& pair, Random& random)
    {
        const int lifetime = between(-2, 30, random);
        const int delay = between(-2, 15, random);
        const std::string name = std::to_string(++m_created);
        pair.model = new ModelSession(lifetime, delay, &modelLog, name);
        auto* const session = new BwaWebSession(QStringLiteral("ann"), lifetime, delay);
        pair.session = session;
        QObject::connect(session, &BwaWebSession::tokenExpired, [this, lifetime, name, session] {
            log.push_back(name + " expired");
            if (isRenewedOnExpiry(lifetime, name)) {
                session->generateNewToken();
            }
        });
        QObject::connect(session, &BwaWebSession::aboutToRemove,
                         [this, name] { log.push_back(name + " removed"); });
    }

    std::vector<Pair> m_pairs = std::vector<Pair>(20);
    int m_created = 0;
};

} // namespace

TEST_F(SessionTimersAgainstModel, EqualsTwoTimersASession)
{
    const unsigned int thisSeed = seed();
    SCOPED_TRACE("BWA_TEST_SEED=" + std::to_string(thisSeed));
    Random random(thisSeed);

    for (int step = 0; step < 20000; ++step) {
        doSomething(random);

        ASSERT_EQ(log, modelLog) << "after step " << step;
        log.clear();
        modelLog.clear();
    }
}
