// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGICONNECTIONS_P_H
#define BWAFCGICONNECTIONS_P_H

#include "fcgi/BwaFcgiRecords_p.h"

#include <QByteArray>

#include <fcgiapp.h>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include <sys/epoll.h>

class BwaFcgiListener;
class BwaFcgiRequest;

/**
 * The connections of one listener, and the requests that were accepted and not taken yet.
 *
 * A connection belongs to the accepting thread while it waits for a request or for its end, and to
 * the listener's thread while a request of it is served. Both threads use this class; a mutex
 * guards every move from one to the other.
 *
 * epoll watches connections edge-triggered, also while a request on them is served. So giving a
 * connection back takes no system call, unless something has arrived meanwhile.
 */
class BwaFcgiConnections
{
public:
    /** The part of a request's header that has been taken from a connection. */
    struct Header {
        BwaFcgiRecords::HeaderScan scan;
        QByteArray bytes;
    };

    BwaFcgiConnections();
    ~BwaFcgiConnections();
    BwaFcgiConnections(const BwaFcgiConnections&) = delete;
    BwaFcgiConnections& operator=(const BwaFcgiConnections&) = delete;

    // For the accepting thread

    /** Starts to watch @a listening, a non-blocking socket; false when descriptors are short. */
    bool open(int listening);
    /**
     * Closes the connections that wait. Those whose request is being served are closed when it
     * ends.
     */
    void close();
    /** Watches @a listening no more. From now on no connection is kept. */
    void stopKeeping(int listening);
    /** Whether connections are kept for web servers that want that. May be called in any thread. */
    bool areKept() const { return m_keeps; }
    /** Whether no request is open and no connection may still bring one. */
    bool isIdle();

    /** Waits until there is something to do, and returns the descriptors to read from. */
    const std::vector<int>& wait();
    /** Whether wait() has seen that the listening socket was shut down. */
    bool listeningHasEnded() const { return m_listeningHasEnded; }
    /** Waits while as many requests as mostWaiting() are untaken and @a stopRequested is not set.
     */
    void waitForRoom(const std::atomic<bool>& stopRequested);

    /** Takes over a new connection, which is non-blocking. */
    void add(int connection);
    /**
     * Makes wait() return the connection when it has input, also when the input has arrived
     * already.
     */
    void watchInput(int connection);
    /** Whether the connection waits for a request, so that the accepting thread may read from it.
     */
    bool isWaiting(int connection);
    /** Reads what an ended connection still receives, and closes it when the web server has. */
    void discardInput(int connection);
    /** The header that is being taken from a waiting connection, piece by piece; may be null. */
    std::unique_ptr<Header>& header(int connection);
    /**
     * A header has begun: it must be whole 10 s after the first such call. Closes the connection
     * when nothing more can come.
     */
    void expectHeader(int connection);
    /** Gives the connection to the thread that takes @a request. */
    void serve(int connection, FCGX_Request* request, bool inputIsWhole);
    /** Forgets a connection that somebody else has closed. */
    void forget(int connection);
    /** Closes the connection that waits longest; false when none has waited for a second. */
    bool closeOldest();

    // For the listener's thread

    /** How many accepted requests may be untaken; 1 at least. */
    void setMostWaiting(int requests);
    int mostWaiting() const { return static_cast<int>(m_mostWaiting); }
    /** What take() has found. */
    enum class Input { Unknown, Unread, Whole };
    /**
     * Hands @a request to the caller, who owns it from then on. Whole: libfcgi has read all of its
     * input already; Unread: none of it; Unknown: the request does not come from these connections.
     */
    Input take(FCGX_Request* request);
    /**
     * Hands the next request that nobody has taken to the caller, who owns it; null when there is
     * none.
     */
    FCGX_Request* takeNext();

    /**
     * Makes nextGone() return @a request, once, when its client has gone. With null, nextGone() no
     * longer returns a request of this connection.
     */
    void watch(int connection, BwaFcgiRequest* request);
    /**
     * Tells that all input of the request has been read, so that the next record may be an
     * ABORT_REQUEST.
     */
    void noteEndOfInput(int connection);
    /** Whether the web server has closed the connection or aborted the request on it. */
    bool isGone(int connection);
    /** The next request whose client has gone; null when there is none. */
    BwaFcgiRequest* nextGone();

    /**
     * Takes over @a request, of which nothing is left but its parameters, and has the accepting
     * thread delete it soon: the thread that allocated memory frees it fastest. At most one request
     * waits for that; a further call deletes the waiting one at once.
     */
    void deleteLater(FCGX_Request* request) { deleteParameters(m_ended.exchange(request)); }
    /** Deletes the request that deleteLater() has stored. For the accepting thread. */
    void deleteEnded() { deleteParameters(m_ended.exchange(nullptr)); }

    /** Waits for the next request on a connection whose input has been read. */
    void keep(int connection);
    /** Closes the connection once the web server has, or after 1 s. */
    void linger(int connection);

    // For any thread

    /** Closes the connection at once. */
    void closeNow(int connection);
    /** Ends wait() and waitForRoom(). */
    void wake();

    bool isForListener = false;          // its requests are fetched with take(); set before open()
    BwaFcgiListener* listener = nullptr; // not owned; for its thread; null once destroyed
    // Called when nextGone() has a request: by wait() and watch(), so in either thread. It must not
    // call this object, which is locked.
    std::function<void()> whenGone;
    std::atomic<int> transferTimeout{10000}; // ms, of a served connection; 0: none

private:
    struct Connection {
        enum State { Closed, Waiting, Served, Lingering };

        State state = Closed;
        bool isWatched = false;            // by epoll
        bool hasNews = false;              // epoll has reported it while it was served
        bool isKept = false;               // it has brought a request before
        bool isGone = false;               // closed or aborted by the web server
        bool inputIsWhole = false;         // all input of the request has been read
        std::int64_t waitingSince = 0;     // ms of the steady clock
        std::int64_t deadline = 0;         // ms of the steady clock; 0: none
        BwaFcgiRequest* request = nullptr; // not owned; told when the client goes
        std::unique_ptr<Header> header;
    };

    static void deleteParameters(FCGX_Request* request);
    void handleEvent(int descriptor, std::uint32_t events);
    void noteNews(int descriptor, Connection& connection);
    void tellGone(int descriptor);
    void beginWaiting(Connection& connection);
    void setDeadline(Connection& connection, std::int64_t milliseconds);
    int timeout() const;
    void closeOverdue();
    bool watchWithEpoll(int descriptor, Connection& connection);
    void changeState(Connection& connection, Connection::State state);
    void release(int descriptor);
    bool markClosed(int descriptor);
    void signalWakeUp();

    std::mutex m_mutex; // guards what follows
    std::condition_variable m_room;
    int m_epoll = -1;
    int m_wakeUp = -1; // an eventfd in the epoll set
    int m_listening = -1;
    std::atomic<bool> m_keeps = false;
    std::vector<Connection> m_connections; // by descriptor
    std::size_t m_counts[4] = {};          // of connections in each state
    std::deque<FCGX_Request*> m_untaken;   // owned; in the order of acceptance
    std::deque<int> m_gone;                // connections whose requests nextGone() is to return
    std::atomic<std::int64_t> m_nextDeadline{0}; // ms of the steady clock; 0: none

    std::atomic<FCGX_Request*> m_ended{nullptr}; // owned; to be deleted
    std::atomic<std::size_t> m_mostWaiting{1024};
    std::vector<int> m_ready;         // the accepting thread's
    bool m_listeningHasEnded = false; // the accepting thread's
};

#endif
