// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Qt searches its timers one by one, so that among many of them each start and stop takes long.
// Here a thread's timers wait in a queue, ordered by the times at which they are due, and only the
// queue has a timer of Qt, which wakes it up.
//
// While the queue is not empty, the wake-up is never later than the time of its first timer. It may
// be earlier: when the first timer, due at 10:00, is started again for 10:30, the wake-up stays at
// 10:00. It then finds nothing due, and is set to the timer that is first by then. So starting a
// timer again, which nearly every request does, leaves Qt's timer alone.
//
// Qt's timer counts whole milliseconds, so it wakes the queue up within the last millisecond before
// a timer is due. Until the timer is due, the queue is then woken up in every turn of the event
// loop. If it were woken up later instead, a timer of Qt that was started later could fire first.

#include "sessions/BwaSessionTimers_p.h"

#include <QThreadStorage>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <map>
#include <unordered_map>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

// Where a timer is in the queue. Of two that are due at once, the one that was started first fires
// first.
struct Turn {
    Clock::time_point due;
    quint64 start; // counts the starts of all timers of the thread

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
    bool fireDue();
    QTimer* takeDue(Clock::time_point now);
    void wakeUpForFirst();
    void wakeUpBy(Clock::time_point due);

    std::map<Turn, QTimer*> m_queue;           // not owned
    std::unordered_map<QTimer*, Turn> m_turns; // the key in m_queue of each timer
    Clock::time_point m_wakeUp;
    quint64 m_starts = 0;
};

TimerQueue::TimerQueue()
{
    setSingleShot(true);
    setTimerType(Qt::PreciseTimer); // timers of other types may fire 5 % early
}

// Everything that can fail when memory is short is done before the queue changes.
void TimerQueue::insert(QTimer* timer)
{
    const Turn turn = {Clock::now() + std::chrono::milliseconds(timer->interval()), ++m_starts};
    wakeUpBy(turn.due);
    const auto running = m_turns.find(timer);
    if (running != m_turns.end()) {
        auto entry = m_queue.extract(running->second);
        entry.key() = running->second = turn;
        m_queue.insert(std::move(entry));
        return;
    }
    std::map<Turn, QTimer*> entry = {{turn, timer}};
    m_turns.insert({timer, turn});
    m_queue.merge(entry);
}

void TimerQueue::remove(QTimer* timer)
{
    const auto running = m_turns.find(timer);
    if (running == m_turns.end()) {
        return;
    }
    m_queue.erase(running->second);
    m_turns.erase(running);
    if (m_queue.empty()) {
        stop(); // otherwise Qt's timer would wake up the empty queue once
    }
}

void TimerQueue::timerEvent(QTimerEvent* /*event*/)
{
    stop();
    if (!fireDue()) {
        wakeUpForFirst();
        fireDue(); // timers that became due before Qt's timer was started again
    }
    wakeUpForFirst();
}

// Fires the timers that are due; false when none is.
bool TimerQueue::fireDue()
{
    const Clock::time_point now = Clock::now();
    bool hasFired = false;
    while (QTimer* const timer = takeDue(now)) {
        hasFired = true;
        wakeUpForFirst(); // because a slot of the timer may run an event loop
        QMetaObject::invokeMethod(timer, "timeout", Qt::DirectConnection);
    }
    return hasFired;
}

// Takes the next timer that is due off the queue; null when none is.
QTimer* TimerQueue::takeDue(Clock::time_point now)
{
    if (m_queue.empty() || m_queue.begin()->first.due > now) {
        return nullptr;
    }
    QTimer* const timer = m_queue.begin()->second;
    m_queue.erase(m_queue.begin());
    m_turns.erase(timer);
    return timer;
}

void TimerQueue::wakeUpForFirst()
{
    if (!m_queue.empty()) {
        wakeUpBy(m_queue.begin()->first.due);
    }
}

// Makes sure that the wake-up is not later than @a due. Without a QCoreApplication Qt's timer
// cannot run: it gets no id, and the next call tries to start it again.
void TimerQueue::wakeUpBy(Clock::time_point due)
{
    if (timerId() > 0 && m_wakeUp <= due) {
        return;
    }
    m_wakeUp = m_queue.empty() ? due : std::min(due, m_queue.begin()->first.due);
    const auto wait = std::chrono::floor<std::chrono::milliseconds>(m_wakeUp - Clock::now());
    start(static_cast<int>(qMax<qint64>(0, wait.count())));
}

// Never destroyed, because static sessions may be destroyed later than any static object here.
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
