// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTMAILBOX_P_H
#define BWARESTMAILBOX_P_H

#include <functional>
#include <mutex>
#include <vector>

class BwaRestHeldCalls;
class QObject;

/**
 * What other threads want done in the listener's. Its own lock guards the letters, not that of Qt's
 * events: those only wake the receiver up.
 */
class BwaRestMailbox
{
public:
    /** Does something in the listener's thread, where the calls are. */
    using Letter = std::function<void(BwaRestHeldCalls&)>;

    /** @a receiver gets an event of the type QEvent::User when there are letters. */
    explicit BwaRestMailbox(QObject* receiver);

    /** Any thread; false when the mailbox is closed, and the letter is then dropped. */
    bool post(Letter letter);
    /** Gives the letters to the caller, in the order in which they came. */
    std::vector<Letter> take();
    /** To be called before the receiver goes. Letters that are left are dropped. */
    void close();

private:
    std::mutex m_mutex;  // guards what follows
    QObject* m_receiver; // not owned; null when closed
    std::vector<Letter> m_letters;
};

#endif
