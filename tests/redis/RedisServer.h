// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef REDISSERVER_H
#define REDISSERVER_H

#include <QByteArray>
#include <QDeadlineTimer>
#include <QList>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <csignal>

/**
 * A process of redis-server, in a temporary folder, that listens on a Unix socket there. It ends
 * with this object, and with the test.
 */
class RedisServer
{
public:
    /** Starts it with these options, such as "--requirepass", "word", and waits until it serves. */
    explicit RedisServer(const QStringList& options = QStringList());
    ~RedisServer();

    /** The path of the socket. */
    QString path() const { return m_folder.filePath(QStringLiteral("redis.sock")); }
    QString folder() const { return m_folder.path(); }

    /** Starts it again after kill(); may return while it is loading its data. */
    void restart(const QStringList& options = QStringList());
    void kill();
    /** Sends a signal, such as SIGSTOP. */
    void signal(int number) const;
    /** The reply as text; elements of arrays, and of arrays in these, are separated by blanks. */
    QByteArray ask(const QList<QByteArray>& command) const;
    /** Waits until the text is in ask(command). */
    bool waitForReply(const QList<QByteArray>& command, const QByteArray& text) const;

private:
    void waitForLine(const QByteArray& text);

    QTemporaryDir m_folder;
    QProcess m_process;
    QByteArray m_output;
};

/** Whether @a condition becomes true within 60 s; asks again and again. */
template <typename Condition>
bool becomesTrue(Condition condition)
{
    const QDeadlineTimer deadline(60000);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
    }
    return true;
}

#endif
