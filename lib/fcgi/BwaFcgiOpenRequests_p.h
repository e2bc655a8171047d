// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWAFCGIOPENREQUESTS_P_H
#define BWAFCGIOPENREQUESTS_P_H

#include <fcgiapp.h>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>

/**
 * The requests of one listener that have been accepted and not finished; of those that have not
 * been handed out yet it knows each.
 *
 * Both threads use it: the accepting thread adds, the listener's thread takes and finishes. What
 * the one wrote to a request before add() the other sees after take().
 */
class BwaFcgiOpenRequests
{
public:
    explicit BwaFcgiOpenRequests(std::size_t limit);

    /** Waits until fewer than the limit are open, or until wake() when @a stopRequested is set. */
    void waitForRoom(const std::atomic<bool>& stopRequested);
    /** Makes waitForRoom() look at its flag again. */
    void wake();
    /** Opens @a request, which nobody has taken yet. */
    void add(FCGX_Request* request);
    /** Gives @a request, still open, to the caller; one that nobody has added is opened. */
    void take(FCGX_Request* request);
    /** The next request that waits to be taken, or null. */
    FCGX_Request* takeNext();
    /** One request that was taken is not open any more. */
    void finished();

private:
    const std::size_t m_limit;
    std::mutex m_mutex; // guards what follows
    std::condition_variable m_room;
    std::size_t m_count;
    std::deque<FCGX_Request*> m_waiting; // owned; in the order of acceptance
};

/** How many requests of a listener may be open: half of the descriptors, 1024 at most. */
std::size_t mostOpenRequests();

#endif
