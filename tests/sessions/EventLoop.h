// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef EVENTLOOP_H
#define EVENTLOOP_H

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <gtest/gtest.h>

/** An application with an event loop and real time. */
class EventLoopTest : public testing::Test
{
protected:
    /** Runs the event loop until @a object emits @a signal; false when it does not within 10 s. */
    template <typename Object, typename Signal>
    static bool waitFor(const Object* object, Signal signal)
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

private:
    char m_name[10] = "test";
    char* m_arguments[2] = {m_name, nullptr};
    int m_argumentCount = 1;
    QCoreApplication m_application{m_argumentCount, m_arguments};
};

#endif
