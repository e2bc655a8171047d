// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAREDISCONNECTION_P_H
#define BWAREDISCONNECTION_P_H

#include "redis/BwaRedisTls_p.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QList>
#include <QString>

#include <memory>
#include <vector>

#include <hiredis/hiredis.h>

/** A command and its arguments. */
using BwaRedisCommand = QList<QByteArray>;

struct BwaRedisReplyDeleter {
    void operator()(redisReply* reply) const { freeReplyObject(reply); }
};
using BwaRedisReply = std::unique_ptr<redisReply, BwaRedisReplyDeleter>;
using BwaRedisReplies = std::vector<BwaRedisReply>;

/**
 * A connection to one server. No function waits longer than the caller's deadline.
 *
 * It uses hiredis only to format commands and to parse replies. The connections of hiredis limit
 * the time of each read but not of all reads together, and older versions have no TLS.
 */
class BwaRedisConnection
{
    Q_DISABLE_COPY(BwaRedisConnection)

public:
    /** Connects to @a address. When that fails, failure() says why. @a tls must outlive this. */
    BwaRedisConnection(const QString& address, BwaRedisTlsContext* tls,
                       const QDeadlineTimer& deadline);
    ~BwaRedisConnection();

    /**
     * Sends the commands and returns their replies in the same order. When that fails, the result
     * is empty, failure() says why, and the connection must not be used again.
     */
    BwaRedisReplies exchange(const QList<BwaRedisCommand>& commands,
                             const QDeadlineTimer& deadline);
    /** The address, and what has gone wrong. */
    QString failure() const { return m_address + QLatin1String(": ") + m_failure; }

private:
    bool connectToPath(const QByteArray& path, const QDeadlineTimer& deadline);
    bool connectToPort(const QDeadlineTimer& deadline);
    bool connectTo(const void* address, size_t size, const QDeadlineTimer& deadline);
    bool waitFor(short events, const QDeadlineTimer& deadline);
    bool fail(const QString& failure);
    bool failWithErrno(int error);

    void send(const QByteArray& bytes);
    bool transfer(const QDeadlineTimer& deadline);
    bool writeSome();
    bool readSome();
    bool takeReplies(BwaRedisReplies* replies);

    struct ReaderDeleter {
        void operator()(redisReader* reader) const { redisReaderFree(reader); }
    };

    QString m_address;
    QString m_failure;
    int m_socket = -1;
    std::unique_ptr<BwaRedisTls> m_tls; // null: not encrypted
    std::unique_ptr<redisReader, ReaderDeleter> m_reader;
    QByteArray m_output; // bytes that are still to be written
};

#endif
