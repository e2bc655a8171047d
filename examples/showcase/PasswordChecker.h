// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef PASSWORDCHECKER_H
#define PASSWORDCHECKER_H

#include <QByteArray>
#include <QObject>
#include <QThreadPool>

#include <functional>

/**
 * Checks passwords, one after another, in a thread of its own. Each takes 0.1 to 0.3 s and 64 MiB,
 * so that whoever steals the hashes cannot try many passwords; in the thread that serves the
 * requests all other clients would have to wait for it.
 */
class PasswordChecker : public QObject
{
public:
    /** Called in the thread of this object, from its event loop; must not throw. */
    using Answer = std::function<void(bool isRight)>;

    /** At most @a mostWaiting checks wait or run at a time. */
    explicit PasswordChecker(int mostWaiting = 16);
    /** Calls no answer any more: see finish(). */
    ~PasswordChecker() override;

    /** Whether check() must not be called now: too many are waiting. */
    bool isBusy() const { return m_waiting >= m_mostWaiting; }
    /** Compares @a password with a @a hash that libsodium made; always answers later. */
    void check(const QByteArray& hash, const QByteArray& password, const Answer& answer);
    /** Waits for all checks, and calls their answers. To be called before what these use ends. */
    void finish();

private:
    QThreadPool m_thread;
    int m_mostWaiting;
    int m_waiting; // and running
};

#endif
