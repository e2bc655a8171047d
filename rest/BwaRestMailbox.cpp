// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestMailbox_p.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

BwaRestMailbox::BwaRestMailbox(QObject* receiver)
    : m_receiver(receiver)
{
}

bool BwaRestMailbox::post(Letter letter)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_receiver) {
        return false;
    }
    if (m_letters.empty()) {
        QCoreApplication::postEvent(m_receiver, new QEvent(QEvent::User));
    }
    m_letters.push_back(std::move(letter));
    return true;
}

std::vector<BwaRestMailbox::Letter> BwaRestMailbox::take()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_letters, {});
}

// The letters are destroyed after unlocking: they may own the last handle of a call, whose
// destructor posts a letter.
void BwaRestMailbox::close()
{
    std::vector<Letter> letters;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_receiver = nullptr;
    letters.swap(m_letters);
}
