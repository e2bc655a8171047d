// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// listen() after an error, from wherever it may be called, and what the error was.

#include "support/ListenerFixture.h"
#include "support/QtPrinters.h"

#include <QStringList>
#include <QTimer>

#include <fcgiapp.h>
#include <gmock/gmock.h>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

const int rounds = 300;
const int fromTheSlot = -1;

// Milliseconds after listeningError() at which listen() is called again, or fromTheSlot.
class BwaFcgiListenerAgain
    : public ListenerFixture
    , public testing::WithParamInterface<int>
{
protected:
    void SetUp() override
    {
        serve("/api", answerPathInfo);
        QObject::connect(&listener(), &BwaFcgiListener::drained, [this] { ++drained; });
    }

    // After each error listens where @a nextAddress says.
    void listenAfterEachError(const std::function<QString()>& nextAddress)
    {
        QObject::connect(&listener(), &BwaFcgiListener::listeningError, [this, nextAddress] {
            if (GetParam() == fromTheSlot) {
                listener().listen(nextAddress());
            } else {
                QTimer::singleShot(GetParam(), &listener(),
                                   [this, nextAddress] { listener().listen(nextAddress()); });
            }
        });
    }

    // Serves until so many attempts have failed and the next one has not.
    void serveUntilListening(int errors)
    {
        runEventLoopUntil([&] { return listeningErrors == errors && listeningSocket() >= 0; });
    }

    QString badAddress() const { return folder() + QLatin1String("/missing/socket"); }
    QString goodAddress() const { return QString::fromLatin1(path()); }

    int drained = 0;
};

} // namespace

TEST_P(BwaFcgiListenerAgain, WorksEachTime)
{
    listenAfterEachError([this] { return goodAddress(); });

    for (int round = 1; round <= rounds; ++round) {
        listener().listen(badAddress());
        serveUntilListening(round);
        ASSERT_EQ(replyTo(apiRequest("/x")).out, QByteArray("/x")) << round;
        listener().stopAccepting();
        runEventLoopUntil([&] { return drained == round; });
    }
}

TEST_P(BwaFcgiListenerAgain, AfterManyErrorsWorks)
{
    listenAfterEachError(
        [this] { return listeningErrors < rounds ? badAddress() : goodAddress(); });

    listener().listen(badAddress());
    serveUntilListening(rounds);

    EXPECT_EQ(replyTo(apiRequest("/x")).out, QByteArray("/x"));
}

INSTANTIATE_TEST_SUITE_P(Delays, BwaFcgiListenerAgain, testing::Values(fromTheSlot, 0, 1),
                         [](const auto& info) {
                             return info.param == fromTheSlot
                                 ? std::string("FromTheSlot")
                                 : "After" + std::to_string(info.param) + "Milliseconds";
                         });

// Messages

namespace {

// The text of the system's error depends on the C library.
QString refused(const QString& address, int error)
{
    return QLatin1String("cannot listen on \"") + address + QLatin1String("\": ") +
        QString::fromLocal8Bit(std::strerror(error));
}

class BwaFcgiListenerErrorString : public ListenerFixture
{
protected:
    void SetUp() override { serve("/api", answerPathInfo); }

    QString errorAt(const QString& address)
    {
        listener().listen(address);
        runEventLoopUntil([this] { return listeningErrors > 0; });
        return listener().errorString();
    }
};

} // namespace

TEST_F(BwaFcgiListenerErrorString, WithoutAnErrorIsNull)
{
    EXPECT_TRUE(listener().errorString().isNull());

    start();
    replyTo(apiRequest());

    EXPECT_TRUE(listener().errorString().isNull());
}

TEST_F(BwaFcgiListenerErrorString, OfAMissingFolderNamesItsAddress)
{
    const QString address = folder() + QLatin1String("/missing/socket");

    EXPECT_EQ(errorAt(address), refused(address, ENOENT));
}

TEST_F(BwaFcgiListenerErrorString, OfAPortInUseSaysSo)
{
    const QString address = loopbackAddress(freePort());
    const int other = FCGX_OpenSocket(address.toLatin1().constData(), 5);

    EXPECT_EQ(errorAt(address), refused(address, EADDRINUSE));
    close(other);
}

TEST_F(BwaFcgiListenerErrorString, OfALongPathSaysSo)
{
    const QString address = QString(200, QLatin1Char('s'));

    EXPECT_EQ(errorAt(address), refused(address, ENAMETOOLONG));
}

TEST_F(BwaFcgiListenerErrorString, OfAnInputThatIsNoSocketSaysSo)
{
    const StandardInput input(open("/dev/null", O_RDONLY | O_CLOEXEC));

    EXPECT_EQ(errorAt(QString()),
              QStringLiteral("cannot listen: descriptor 0 is no listening socket"));
}

TEST_F(BwaFcgiListenerErrorString, OfASocketThatWasShutDownSaysSo)
{
    start();
    replyTo(apiRequest());

    shutdown(listeningSocket(), SHUT_RDWR);
    runEventLoopUntil([this] { return listeningErrors > 0; });

    EXPECT_EQ(listener().errorString(), QStringLiteral("the listening socket has been shut down"));
}

TEST_F(BwaFcgiListenerErrorString, IsTheCausesInTheSlot)
{
    QStringList texts;
    QObject::connect(&listener(), &BwaFcgiListener::listeningError,
                     [&] { texts.append(listener().errorString()); });
    const QString text = errorAt(folder() + QLatin1String("/missing/socket"));

    EXPECT_THAT(texts, testing::ElementsAre(text));
}

TEST_F(BwaFcgiListenerErrorString, WhenListeningAgainWorksIsNull)
{
    errorAt(folder() + QLatin1String("/missing/socket"));

    start();
    EXPECT_EQ(replyTo(apiRequest("/x")).out, QByteArray("/x"));

    EXPECT_TRUE(listener().errorString().isNull());
}
