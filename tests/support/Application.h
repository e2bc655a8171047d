// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef APPLICATION_H
#define APPLICATION_H

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

/** A QCoreApplication as long as this lives: timers and queued calls need its event loop. */
class Application
{
private:
    char m_name[5] = "test";
    char* m_arguments[2] = {m_name, nullptr};
    int m_argumentCount = 1;
    QCoreApplication m_application = {m_argumentCount, m_arguments};
};

/**
 * Runs the event loop of this thread until @a condition holds; a failure after 10 s.
 *
 * Without GLib, Qt delivers posted events before it waits. So a condition that comes true while
 * they are delivered would be seen only after the next event, which the timer provides.
 */
inline void runEventLoopUntil(const std::function<bool()>& condition)
{
    QElapsedTimer elapsed;
    elapsed.start();
    QTimer tick;
    tick.start(1);
    while (!condition()) {
        if (elapsed.elapsed() > 10000) {
            ADD_FAILURE() << "what was waited for in the event loop has not come";
            return;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

/** Runs the event loop until @a object emits @a signal; false when it does not within 10 s. */
template <typename Object, typename Signal>
bool waitFor(const Object* object, Signal signal)
{
    QEventLoop loop;
    bool emitted = false;
    QObject::connect(object, signal, &loop, [&] {
        emitted = true;
        loop.quit();
    });
    QTimer::singleShot(10000, &loop, SLOT(quit()));
    loop.exec();
    return emitted;
}

#endif
