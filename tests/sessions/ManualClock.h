// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef MANUALCLOCK_H
#define MANUALCLOCK_H

#include "support/Application.h"
#include "support/QtVersion.h"

#include <QEvent>
#include <QList>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

/**
 * An event dispatcher whose time stands still until a test moves it on. As long as it lives, the
 * process has no other monotonic time.
 */
class ManualClock : public EventDispatcher
{
public:
    ManualClock();
    ~ManualClock() override;

    /** Milliseconds since the clock began. */
    qint64 now() const { return m_now; }
    /** Fires what becomes due in the next @a milliseconds, and deletes what is to be deleted. */
    void advance(qint64 milliseconds)
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // as every loop does
        const qint64 end = m_now + milliseconds;
        for (auto timer = earliest(); timer != m_timers.end() && timer->due <= end;
             timer = earliest()) {
            m_now = std::max(m_now, timer->due);
            timer->due += timer->interval;
            QTimerEvent event(timer->id);
            QObject* const object = timer->object;
            QCoreApplication::sendEvent(object, &event);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
        m_now = end;
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /** How many timers run. */
    int running() const { return static_cast<int>(m_timers.size()); }
    /** How many timers have been started. */
    int started() const { return m_started; }
    /** Whether every timer that runs is to fire neither early nor late. */
    bool arePrecise() const
    {
        return std::all_of(m_timers.begin(), m_timers.end(),
                           [](const Timer& timer) { return timer.type == Qt::PreciseTimer; });
    }

    void registerTimer(int timerId, TimerInterval interval, Qt::TimerType type,
                       QObject* object) override
    {
        ++m_started;
        m_timers.append({timerId, interval, type, object, m_now + interval});
    }

    bool unregisterTimer(int timerId) override
    {
        return removeTimers([&](const Timer& timer) { return timer.id == timerId; });
    }

    bool unregisterTimers(QObject* object) override
    {
        return removeTimers([&](const Timer& timer) { return timer.object == object; });
    }

    QList<TimerInfo> registeredTimers(QObject* object) const override
    {
        QList<TimerInfo> timers;
        for (const Timer& timer : m_timers) {
            if (timer.object == object) {
                timers.append(TimerInfo(timer.id, static_cast<int>(timer.interval), timer.type));
            }
        }
        return timers;
    }

    int remainingTime(int timerId) override
    {
        for (const Timer& timer : m_timers) {
            if (timer.id == timerId) {
                return static_cast<int>(timer.due - m_now);
            }
        }
        return -1;
    }

    bool processEvents(QEventLoop::ProcessEventsFlags /*flags*/) override { return false; }
    void registerSocketNotifier(QSocketNotifier* /*notifier*/) override { }
    void unregisterSocketNotifier(QSocketNotifier* /*notifier*/) override { }
    void wakeUp() override { }
    void interrupt() override { }

private:
    struct Timer {
        int id;
        TimerInterval interval;
        Qt::TimerType type;
        QObject* object;
        qint64 due; // milliseconds since the clock began
    };

    QList<Timer>::iterator earliest()
    {
        return std::min_element(
            m_timers.begin(), m_timers.end(),
            [](const Timer& first, const Timer& second) { return first.due < second.due; });
    }

    template <typename Condition>
    bool removeTimers(Condition condition)
    {
        const auto end = std::remove_if(m_timers.begin(), m_timers.end(), condition);
        const bool found = end != m_timers.end();
        m_timers.erase(end, m_timers.end());
        return found;
    }

    QList<Timer> m_timers; // in the order of their start
    qint64 m_now = 0;
    int m_started = 0;
};

/** An application whose time is a ManualClock. */
class ManualClockTest : public testing::Test
{
protected:
    ManualClockTest()
        : clock(new ManualClock)
    {
        QCoreApplication::setEventDispatcher(clock);
        m_application = std::make_unique<Application>();
    }

    ManualClock* const clock; // owned by the application's thread

private:
    std::unique_ptr<Application> m_application;
};

#endif
