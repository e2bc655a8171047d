// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAREDISCLIENT_P_H
#define BWAREDISCLIENT_P_H

#include "redis/BwaRedisConnection_p.h"
#include "redis/BwaRedisScripts_p.h"
#include "redis/BwaRedisSettings.h"

#include <QDeadlineTimer>

#include <memory>

/**
 * Finds the primary and runs scripts on it.
 *
 * When the connection is lost before the reply, a script may run twice: the second run must have no
 * further effect.
 */
class BwaRedisClient
{
    Q_DISABLE_COPY(BwaRedisClient)

public:
    explicit BwaRedisClient(const BwaRedisSettings& settings);
    ~BwaRedisClient();

    /** Runs a script that changes nothing; null when there is no answer in time. */
    BwaRedisReply read(const BwaRedisScript& script, const QList<QByteArray>& keys,
                       const QList<QByteArray>& arguments);
    /**
     * Runs a script that changes something. Null when there is no answer in time, when Redis
     * refuses the change, and when too few replicas confirm it.
     */
    BwaRedisReply change(const BwaRedisScript& script, const QList<QByteArray>& keys,
                         const QList<QByteArray>& arguments);
    /** Whether the last call has returned an answer. */
    bool hasAnswered() const { return m_hasAnswered; }

private:
    struct Call;

    BwaRedisReply run(const Call& call, const QDeadlineTimer& deadline);
    BwaRedisReply attempt(const Call& call, const QDeadlineTimer& deadline);
    BwaRedisReplies ask(const Call& call, const QDeadlineTimer& deadline);
    BwaRedisReply accepted(BwaRedisReplies replies);

    bool findPrimary(const QDeadlineTimer& deadline);
    QString primaryBySentinel(const QString& sentinel, const QDeadlineTimer& deadline);
    bool connectToPrimary(const QString& address, const QDeadlineTimer& deadline);
    void lose(const QString& reason);

    void tellReachable(bool isReachable, const QString& reason = QString());
    void tellChangeable(bool isChangeable, const QString& reason = QString());

    BwaRedisSettings m_settings;
    BwaRedisTlsContext m_tls;
    std::unique_ptr<BwaRedisConnection> m_connection; // null: none
    QDeadlineTimer m_pause;                           // until it is over, calls fail at once
    QString m_failure;                                // why there is no connection
    bool m_hasAnswered = false;
    bool m_isReachable = true;  // what was told last
    bool m_isChangeable = true; // what was told last
};

#endif
