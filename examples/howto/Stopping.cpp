// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiListener.h"
#include "fcgi/BwaFcgiRequest.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

class Application
{
public:
    //! [stop]
    // To be called from the event loop when SIGTERM has come.
    void stop()
    {
        QObject::connect(&m_listener, &BwaFcgiListener::drained, &QCoreApplication::quit);
        m_listener.stopAccepting();
        QTimer::singleShot(10000, &m_listener, [] { QCoreApplication::exit(1); });
    }
    //! [stop]

    BwaFcgiListener& listener() { return m_listener; }

private:
    BwaFcgiListener m_listener{{}};
};

} // namespace

TEST(HowToStop, WhenNothingIsOpenEndsTheEventLoop)
{
    int argumentCount = 0;
    const QCoreApplication application(argumentCount, nullptr);
    const QTemporaryDir folder;
    Application served;
    served.listener().setBacklog(1024);
    served.listener().listen(folder.filePath(QStringLiteral("socket")));

    QTimer::singleShot(0, [&] { served.stop(); });

    EXPECT_EQ(QCoreApplication::exec(), 0);
}
