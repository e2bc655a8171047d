// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "PasswordChecker.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QList>
#include <QThread>
#include <QTimer>

#include <gmock/gmock.h>

#include <sodium.h>

namespace {

// As cheap as libsodium makes it.
QByteArray hashOf(const QByteArray& password)
{
    char hash[crypto_pwhash_STRBYTES];
    EXPECT_EQ(crypto_pwhash_str(hash, password.constData(),
                                static_cast<unsigned long long>(password.size()),
                                crypto_pwhash_OPSLIMIT_MIN, crypto_pwhash_MEMLIMIT_MIN),
              0);
    return hash;
}

class PasswordCheck : public testing::Test
{
protected:
    void SetUp() override { ASSERT_GE(sodium_init(), 0); }

    void check(const QByteArray& password)
    {
        m_checker.check(m_hash, password, [this](bool isRight) {
            m_answers.append(isRight);
            m_thread = QThread::currentThread();
        });
    }

    void waitForAnswers(int count)
    {
        QElapsedTimer elapsed;
        elapsed.start();
        QTimer tick; // the last answer may come before a wait that nothing else would end
        tick.start(1);
        while (m_answers.size() < count && elapsed.elapsed() < 20000) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }

    int m_arguments = 0;
    QCoreApplication m_application{m_arguments, nullptr};
    QByteArray m_hash = hashOf("tea");
    PasswordChecker m_checker{2};
    QList<bool> m_answers;
    QThread* m_thread = nullptr;
};

} // namespace

TEST_F(PasswordCheck, TellsRightFromWrongInOrder)
{
    check("tea");
    check("coffee");
    waitForAnswers(2);

    EXPECT_EQ(m_answers, (QList<bool>{true, false}));
    EXPECT_EQ(m_thread, QThread::currentThread());
}

TEST_F(PasswordCheck, AnswersNothingBeforeTheEventLoopRuns)
{
    check("tea");

    EXPECT_TRUE(m_answers.isEmpty());
    m_checker.finish();
    EXPECT_EQ(m_answers, QList<bool>{true});
}

TEST_F(PasswordCheck, GivenTheMostChecksIsBusyUntilOneIsAnswered)
{
    check("tea");
    EXPECT_FALSE(m_checker.isBusy());
    check("tea");
    EXPECT_TRUE(m_checker.isBusy());

    m_checker.finish();

    EXPECT_FALSE(m_checker.isBusy());
}
