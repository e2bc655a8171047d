// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef APPLICATION_H
#define APPLICATION_H

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

/** An application as long as this lives: calls that are held need its event loop. */
struct Application {
    int argc = 1;
    char name[5] = "test";
    char* argv[2] = {name, nullptr};
    QCoreApplication application = {argc, argv};

    /**
     * Runs the event loop until @a condition holds, for ten seconds at most. The timer ends a wait
     * that begins after the event in question: without GLib, Qt handles what is posted before it
     * waits.
     */
    static void runUntil(const std::function<bool()>& condition)
    {
        QElapsedTimer elapsed;
        elapsed.start();
        QTimer tick;
        tick.start(1);
        while (!condition()) {
            ASSERT_LT(elapsed.elapsed(), 10000) << "what was waited for has not come";
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }
};

#endif
