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
 * Functions ("letters") that other threads want called in the listener's thread. A mutex of its own
 * guards them; an event of Qt only wakes the receiver up.
 */
class BwaRestMailbox
{
public:
    /** A function to be called in the listener's thread. */
    using Letter = std::function<void(BwaRestHeldCalls&)>;

    /** Posts an event of the type QEvent::User to @a receiver when there are letters. */
    explicit BwaRestMailbox(QObject* receiver);

    /** Adds a letter, in any thread. When the mailbox is closed, drops it and returns false. */
    bool post(Letter letter);
    /** Removes and returns all letters, in the order in which they came. */
    std::vector<Letter> take();
    /** Drops the letters that are left. To be called before the receiver is destroyed. */
    void close();

private:
    std::mutex m_mutex;  // guards what follows
    QObject* m_receiver; // not owned; null when closed
    std::vector<Letter> m_letters;
};

#endif
