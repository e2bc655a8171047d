// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "PasswordChecker.h"

#include <QCoreApplication>

#include <sodium.h>

PasswordChecker::PasswordChecker(int mostWaiting)
    : m_mostWaiting(mostWaiting)
    , m_waiting(0)
{
    m_thread.setMaxThreadCount(1);
}

PasswordChecker::~PasswordChecker()
{
    m_thread.waitForDone();
}

// The thread gets copies of the two texts, and nothing of the request.
void PasswordChecker::check(const QByteArray& hash, const QByteArray& password,
                            const Answer& answer)
{
    m_thread.start([this, hash, password, answer] {
        const bool isRight =
            crypto_pwhash_str_verify(hash.constData(), password.constData(),
                                     static_cast<unsigned long long>(password.size())) == 0;
        const auto deliver = [this, answer, isRight] {
            --m_waiting;
            answer(isRight);
        };
        QMetaObject::invokeMethod(this, deliver, Qt::QueuedConnection);
    });
    ++m_waiting;
}

void PasswordChecker::finish()
{
    m_thread.waitForDone();
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
}
