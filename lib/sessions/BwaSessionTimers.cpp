// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Qt searches its timers one by one, so that among many of them each start and stop takes long.
// Here they wait in an ordered queue, and one timer of Qt wakes up for the first.
//
// Most timers are started again before they fire, always for a later time. Such a timer keeps its
// place in the queue, too early as it now is, and moves back when its turn comes.
//
// Qt's timer counts whole milliseconds. It wakes up within the last one before a timer is due, and
// then each time around the event loop: a timer of Qt that was started later never fires before.

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

    bool fireDue();
    QTimer* takeDue(Clock::time_point now);
    void moveBackFirst();
    void wakeUpForFirst();
    void wakeUpBy(Clock::time_point due);

    std::unordered_map<QTimer*, Running> m_running;
    std::map<Turn, QTimer*> m_queue; // not owned
    Clock::time_point m_wakeUp;
    quint64 m_starts = 0;
};

TimerQueue::TimerQueue()
{
    setSingleShot(true);
    setTimerType(Qt::PreciseTimer); // others may fire 5 % early
}

void TimerQueue::insert(QTimer* timer)
{
    const Turn turn = {Clock::now() + std::chrono::milliseconds(timer->interval()), ++m_starts};
    wakeUpBy(turn.due); // what may fail comes before anything changes
    const auto running = m_running.find(timer);
    if (running != m_running.end()) {
        running->second.turn = turn;
        return;
    }
    std::map<Turn, QTimer*> place = {{turn, timer}};
    m_running.insert({timer, {turn, turn}});
    m_queue.merge(place);
}

void TimerQueue::remove(QTimer* timer)
{
    const auto running = m_running.find(timer);
    if (running == m_running.end()) {
        return;
    }
    m_queue.erase(running->second.place);
    m_running.erase(running);
    if (m_queue.empty()) {
        stop(); // otherwise it may wake up for nothing, once
    }
}

void TimerQueue::timerEvent(QTimerEvent* /*event*/)
{
    stop();
    if (!fireDue()) {
        wakeUpForFirst();
        fireDue(); // what has become due before Qt's timer ran again
    }
    wakeUpForFirst();
}

// Fires what is due; false when nothing is.
bool TimerQueue::fireDue()
{
    const Clock::time_point now = Clock::now();
    bool hasFired = false;
    while (QTimer* const timer = takeDue(now)) {
        hasFired = true;
        wakeUpForFirst(); // what it calls may run an event loop
        QMetaObject::invokeMethod(timer, "timeout", Qt::DirectConnection);
    }
    return hasFired;
}

// The next timer that is to fire, no longer running; null if none is due.
QTimer* TimerQueue::takeDue(Clock::time_point now)
{
    moveBackFirst();
    if (m_queue.empty() || m_queue.begin()->first.due > now) {
        return nullptr;
    }
    QTimer* const timer = m_queue.begin()->second;
    m_queue.erase(m_queue.begin());
    m_running.erase(timer);
    return timer;
}

// Moves timers back until the first one has the place of its turn.
void TimerQueue::moveBackFirst()
{
    while (!m_queue.empty()) {
        Running& running = m_running.at(m_queue.begin()->second);
        if (running.turn.start == running.place.start) {
            return;
        }
        running.place = running.turn;
        auto first = m_queue.extract(m_queue.begin());
        first.key() = running.turn;
        m_queue.insert(std::move(first));
    }
}

void TimerQueue::wakeUpForFirst()
{
    moveBackFirst();
    if (!m_queue.empty()) {
        wakeUpBy(m_queue.begin()->first.due);
    }
}

// Wakes up at that time, or before; again, if there was no application to wake it up.
void TimerQueue::wakeUpBy(Clock::time_point due)
{
    if (timerId() > 0 && m_wakeUp <= due) {
        return;
    }
    m_wakeUp = m_queue.empty() ? due : std::min(due, m_queue.begin()->first.due);
    const auto wait = std::chrono::floor<std::chrono::milliseconds>(m_wakeUp - Clock::now());
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
