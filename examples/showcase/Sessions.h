// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef SESSIONS_H
#define SESSIONS_H

#include <bwebapi/rest.h>

class BwaRedisSessions;

/** What an operator sets for sessions. */
struct SessionSettings {
    int tokenLifetime = 600000;   // milliseconds until a token expires
    qint64 longestAge = 28800000; // milliseconds from the login to the end of the session
    bool allowsHttp = false;      // cookies go over plain HTTP, too
    QStringList redisAddresses;   // none, and no Sentinels: the sessions are in this process
    int redisReplicas = 0;        // that must have confirmed a change
    int redisTimeout = 100;       // milliseconds for an answer
    QStringList redisSentinels;   // their addresses; may be none
    QString redisMaster;          // as the Sentinels call it
};

/** The sessions of users, in this process or in Redis, where every process finds them. */
class Sessions
{
    Q_DISABLE_COPY(Sessions)

public:
    /** @throws std::runtime_error when it is built without Redis, and is to use it */
    explicit Sessions(const SessionSettings& settings);
    ~Sessions();

    /** Adds who is logged in, the renewal of the token, and the logout, at "/session". */
    void addTo(BwaRestGroup& api);
    /**
     * A group below @a api for those who are logged in. However often the token is renewed, the
     * session ends with its age: a stolen one must not last for ever.
     */
    BwaRestGroup& users(BwaRestGroup& api);
    /** Begins a session; the application has checked who it is. */
    BwaRestReply begin(const QString& user);
    /** Ends the session of a client who logs in anew, if there is one. */
    void endEarlier(const BwaRestCall& call);

private:
    void checkAge(const BwaRestCall& call);

    qint64 m_longestAge;
    std::unique_ptr<BwaRedisSessions> m_shared; // null: in this process
    std::unique_ptr<BwaRestSessions> m_sessions;
};

#endif
