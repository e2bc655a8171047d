// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Qt searches its timers one by one, so that among many of them each start and stop takes long.
// Here they wait in an ordered queue, and one timer of Qt wakes up for the first.
//
// Most timers are started again before they fire, always for a later time. Such a timer keeps its
// place in the queue, too early as it now is, and moves back when its turn comes.

#include "sessions/BwaSessionTimers_p.h"

#include <QThreadStorage>
#include <QTimer>

#include <chrono>
#include <map>
#include <unordered_map>

namespace {

using Clock = std::chrono::steady_clock;

// When a timer fires. Of two that are due at once, the one that was started first.
struct Turn {
    Clock::time_point due;
    quint64 start;

    bool operator<(const Turn& other) const
    {
        return due < other.due || (due == other.due && start < other.start);
    }
};

class TimerQueue : public QTimer
{
public:
    TimerQueue();

    void insert(QTimer* timer);
    void remove(QTimer* timer);

protected:
    void timerEvent(QTimerEvent* event) override;

private:
    struct Running {
        Turn turn;
        Turn place; // in the queue; not later than its turn
    };

    QTimer* takeDue(Clock::time_point now);
    void wakeUpForFirst();

    std::unordered_map<QTimer*, Running> m_running;
    std::map<Turn, QTimer*> m_queue; // not owned
    Clock::time_point m_wakeUp;
    quint64 m_starts = 0;
};

TimerQueue::TimerQueue()
{
    setSingleShot(true);
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    setTimerType(Qt::PreciseTimer); // others may be 5 % early
#endif
}

void TimerQueue::insert(QTimer* timer)
{
    const Turn turn = {Clock::now() + std::chrono::milliseconds(timer->interval()), ++m_starts};
    const auto inserted = m_running.insert({timer, {turn, turn}});
    if (inserted.second) {
        m_queue.insert({turn, timer});
    } else {
        inserted.first->second.turn = turn;
    }
    wakeUpForFirst(); // again, too: without an application it could not be
}

void TimerQueue::remove(QTimer* timer)
{
    const auto running = m_running.find(timer);
    if (running == m_running.end()) {
        return;
    }
    m_queue.erase(running->second.place);
    m_running.erase(running);
    wakeUpForFirst();
}

void TimerQueue::timerEvent(QTimerEvent* /*event*/)
{
    stop();
    const Clock::time_point now = Clock::now();
    while (QTimer* const timer = takeDue(now)) {
        wakeUpForFirst(); // what it calls may run an event loop
        QMetaObject::invokeMethod(timer, "timeout", Qt::DirectConnection);
    }
    wakeUpForFirst();
}

// The next timer that is to fire, no longer running; null if none is due.
QTimer* TimerQueue::takeDue(Clock::time_point now)
{
    while (!m_queue.empty() && m_queue.begin()->first.due <= now) {
        QTimer* const timer = m_queue.begin()->second;
        m_queue.erase(m_queue.begin());
        const auto running = m_running.find(timer);
        const Turn turn = running->second.turn;
        if (turn.start == running->second.place.start) {
            m_running.erase(running);
            return timer;
        }
        running->second.place = turn;
        m_queue.insert({turn, timer});
    }
    return nullptr;
}

void TimerQueue::wakeUpForFirst()
{
    if (m_queue.empty()) {
        stop();
        return;
    }
    const Clock::time_point first = m_queue.begin()->first.due;
    if (timerId() > 0 && m_wakeUp == first) {
        return;
    }
    m_wakeUp = first;
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(first - Clock::now());
    start(static_cast<int>(qMax<qint64>(0, wait.count())));
}

// Never destroyed, because static sessions may come after it.
QThreadStorage<TimerQueue*>& queues()
{
    static auto* const queues = new QThreadStorage<TimerQueue*>;
    return *queues;
}

} // namespace

void BwaSessionTimers::start(QTimer* timer)
{
    if (!queues().hasLocalData()) {
        queues().setLocalData(new TimerQueue);
    }
    queues().localData()->insert(timer);
}

void BwaSessionTimers::stop(QTimer* timer)
{
    if (queues().hasLocalData()) {
        queues().localData()->remove(timer);
    }
}
