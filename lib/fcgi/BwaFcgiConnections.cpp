// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiClock_p.h"
#include "fcgi/BwaFcgiConnections_p.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <utility>

#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

const std::int64_t headerTime = 10000; // ms from the first byte of a header to its last
const std::int64_t lingerTime = 1000;  // ms until an ended connection is closed
const std::int64_t drainTime = 1000;  // ms that a new connection has for its request while draining
const std::int64_t lastUseTime = 200; // the same for a kept connection
const std::int64_t silentTime = 1000; // ms of silence before closeOldest() may close one
const int mostEvents = 64;
const int mostReads = 16; // of an ended connection, before other connections have their turn

// Whether an ABORT_REQUEST comes next. To be called only when the whole input of the request has
// been read, so that the next byte begins a record.
bool isAborted(int connection)
{
    char bytes[BwaFcgiRecords::headerSize];
    const ssize_t size = ::recv(connection, bytes, sizeof bytes, MSG_PEEK | MSG_DONTWAIT);
    return size == sizeof bytes &&
        BwaFcgiRecords::Record(bytes).type == BwaFcgiRecords::AbortRequest;
}

} // namespace

BwaFcgiConnections::BwaFcgiConnections()
{
    m_ready.reserve(mostEvents); // an exception in wait() would lose what epoll has reported
}

BwaFcgiConnections::~BwaFcgiConnections()
{
    close();
    deleteEnded();
}

void BwaFcgiConnections::deleteParameters(FCGX_Request* request)
{
    if (request) {
        FCGX_Free(request, 0);
        delete request;
    }
}

bool BwaFcgiConnections::open(int listening)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_epoll = ::epoll_create1(EPOLL_CLOEXEC);
    m_wakeUp = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    m_listening = listening;
    m_listeningHasEnded = false;
    m_keeps = true;
    epoll_event wakeUp = {};
    wakeUp.events = EPOLLIN | EPOLLET; // edge-triggered, so that nobody has to reset it by reading
    wakeUp.data.fd = m_wakeUp;
    epoll_event connection = {};
    connection.events = EPOLLIN | EPOLLRDHUP;
    connection.data.fd = listening;
    return m_epoll >= 0 && m_wakeUp >= 0 && // when false, errno says why
        ::epoll_ctl(m_epoll, EPOLL_CTL_ADD, m_wakeUp, &wakeUp) == 0 &&
        ::epoll_ctl(m_epoll, EPOLL_CTL_ADD, listening, &connection) == 0;
}

void BwaFcgiConnections::close()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_keeps = false;
    for (std::size_t descriptor = 0; descriptor < m_connections.size(); ++descriptor) {
        Connection& connection = m_connections[descriptor];
        connection.isWatched = false;
        if (connection.state == Connection::Waiting || connection.state == Connection::Lingering) {
            release(static_cast<int>(descriptor));
        }
    }
    for (int* const descriptor : {&m_epoll, &m_wakeUp}) {
        if (*descriptor >= 0) {
            ::close(*descriptor);
            *descriptor = -1;
        }
    }
}

// Waiting connections are not closed at once: a web server may have chosen one for a request that
// is on its way.
void BwaFcgiConnections::stopKeeping(int listening)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    ::epoll_ctl(m_epoll, EPOLL_CTL_DEL, listening, nullptr);
    m_keeps = false;
    for (Connection& connection : m_connections) {
        if (connection.state == Connection::Waiting) {
            setDeadline(connection, connection.isKept ? lastUseTime : drainTime);
        }
    }
}

bool BwaFcgiConnections::isIdle()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_counts[Connection::Waiting] == 0 && m_counts[Connection::Served] == 0 &&
        m_counts[Connection::Lingering] == 0;
}

const std::vector<int>& BwaFcgiConnections::wait()
{
    m_ready.clear();
    epoll_event events[mostEvents];
    const int count = ::epoll_wait(m_epoll, events, mostEvents, timeout());
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (int index = 0; index < count; ++index) {
        handleEvent(events[index].data.fd, events[index].events);
    }
    // The listening socket comes last: its next connection must not overtake the requests that were
    // reported with it.
    const auto listening = std::find(m_ready.begin(), m_ready.end(), m_listening);
    if (listening != m_ready.end()) {
        std::rotate(listening, listening + 1, m_ready.end());
    }
    closeOverdue();
    return m_ready;
}

void BwaFcgiConnections::waitForRoom(const std::atomic<bool>& stopRequested)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_room.wait(lock, [&] { return m_untaken.size() < m_mostWaiting || stopRequested; });
}

void BwaFcgiConnections::handleEvent(int descriptor, std::uint32_t events)
{
    if (descriptor == m_wakeUp) {
        return;
    }
    if (descriptor == m_listening) {
        m_listeningHasEnded = (events & (EPOLLRDHUP | EPOLLHUP | EPOLLERR)) != 0;
        m_ready.push_back(descriptor);
        return;
    }
    Connection& connection = m_connections[static_cast<std::size_t>(descriptor)];
    const bool wasGone = connection.isGone;
    connection.isGone = wasGone || (events & (EPOLLRDHUP | EPOLLHUP | EPOLLERR)) != 0;
    switch (connection.state) {
    case Connection::Waiting:
    case Connection::Lingering:
        m_ready.push_back(descriptor);
        break;
    case Connection::Served:
        if (!wasGone) {
            noteNews(descriptor, connection);
        }
        break;
    case Connection::Closed: // reported before the connection was closed
        break;
    }
}

void BwaFcgiConnections::noteNews(int descriptor, Connection& connection)
{
    connection.hasNews = true;
    if (connection.isGone || (connection.inputIsWhole && isAborted(descriptor))) {
        connection.isGone = true;
        tellGone(descriptor);
    }
}

void BwaFcgiConnections::tellGone(int descriptor)
{
    if (!m_connections[static_cast<std::size_t>(descriptor)].request || !whenGone) {
        return;
    }
    try {
        m_gone.push_back(descriptor);
        whenGone();
    } catch (const std::exception&) {
        // Memory is short. whenGone() is not called, but isGone() still returns true.
    }
}

void BwaFcgiConnections::discardInput(int connection)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_connections[static_cast<std::size_t>(connection)].state != Connection::Lingering) {
            return;
        }
    }
    char unread[4096];
    ssize_t size = 0;
    int reads = 0;
    do {
        size = ::recv(connection, unread, sizeof unread, MSG_DONTWAIT);
    } while (size > 0 && ++reads < mostReads);
    if (size > 0) {
        watchInput(connection); // epoll reports the rest after other connections
    } else if (size == 0 || errno != EAGAIN) {
        closeNow(connection);
    }
}

void BwaFcgiConnections::add(int connection)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto index = static_cast<std::size_t>(connection);
    if (index >= m_connections.size()) {
        m_connections.resize(index + 1);
    }
    // The entry of an earlier connection with this descriptor may still be Served, when the owner
    // of its request has closed it.
    changeState(m_connections[index], Connection::Closed);
    m_connections[index] = Connection();
    beginWaiting(m_connections[index]);
    if (!m_keeps) {
        setDeadline(m_connections[index], drainTime);
    }
}

void BwaFcgiConnections::watchInput(int connection)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    Connection& waiting = m_connections[static_cast<std::size_t>(connection)];
    if (m_keeps) {
        waiting.deadline = 0; // it was set for a record, which has been read in time
    }
    if (!watchWithEpoll(connection, waiting)) {
        release(connection);
    }
}

bool BwaFcgiConnections::isWaiting(int connection)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_connections[static_cast<std::size_t>(connection)].state == Connection::Waiting;
}

std::unique_ptr<BwaFcgiConnections::Header>& BwaFcgiConnections::header(int connection)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_connections[static_cast<std::size_t>(connection)].header;
}

void BwaFcgiConnections::expectHeader(int connection)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    Connection& waiting = m_connections[static_cast<std::size_t>(connection)];
    if (waiting.isGone || (!waiting.isWatched && !watchWithEpoll(connection, waiting))) {
        release(connection);
    } else if (waiting.deadline == 0) {
        setDeadline(waiting, headerTime);
    }
}

void BwaFcgiConnections::serve(int connection, FCGX_Request* request, bool inputIsWhole)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (isForListener) {
        m_untaken.push_back(request);
    } else {
        // The receiver of newRequest() has libfcgi read the input, for which the connection must be
        // blocking, and does not give the connection back.
        ::fcntl(connection, F_SETFL, 0);
        request->keepConnection = 0;
    }
    Connection& served = m_connections[static_cast<std::size_t>(connection)];
    changeState(served, Connection::Served);
    // Behind unread input the next request may have arrived. epoll has reported that already and
    // will not do so again.
    served.hasNews = !inputIsWhole;
    served.inputIsWhole = inputIsWhole;
    served.deadline = 0;
    served.header.reset();
}

void BwaFcgiConnections::forget(int connection)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    Connection& closed = m_connections[static_cast<std::size_t>(connection)];
    changeState(closed, Connection::Closed);
    closed = Connection();
}

bool BwaFcgiConnections::closeOldest()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto isOlder = [](const Connection& one, const Connection& other) {
        const bool waits = one.state == Connection::Waiting;
        return other.state == Connection::Waiting ? waits && one.waitingSince < other.waitingSince
                                                  : waits;
    };
    const auto oldest = std::min_element(m_connections.begin(), m_connections.end(), isOlder);
    if (oldest == m_connections.end() || oldest->state != Connection::Waiting ||
        BwaFcgiClock::now() - oldest->waitingSince < silentTime) {
        return false;
    }
    release(static_cast<int>(oldest - m_connections.begin()));
    return true;
}

void BwaFcgiConnections::setMostWaiting(int requests)
{
    m_mostWaiting = static_cast<std::size_t>(std::max(requests, 1));
    wake();
}

BwaFcgiConnections::Input BwaFcgiConnections::take(FCGX_Request* request)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    // The listener takes requests in the order of acceptance, so the search ends at the first one.
    const auto found = std::find(m_untaken.begin(), m_untaken.end(), request);
    if (found == m_untaken.end()) {
        return Input::Unknown;
    }
    if (m_untaken.size() == m_mostWaiting) {
        m_room.notify_one();
    }
    m_untaken.erase(found);
    const bool isWhole = m_connections[static_cast<std::size_t>(request->ipcFd)].inputIsWhole;
    return isWhole ? Input::Whole : Input::Unread;
}

FCGX_Request* BwaFcgiConnections::takeNext()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_untaken.empty()) {
        return nullptr;
    }
    FCGX_Request* const request = m_untaken.front();
    m_untaken.pop_front();
    return request;
}

void BwaFcgiConnections::watch(int connection, BwaFcgiRequest* request)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    Connection& served = m_connections[static_cast<std::size_t>(connection)];
    served.request = request;
    if (served.isGone) {
        tellGone(connection);
    } else if (request && !served.isWatched && m_epoll >= 0) {
        watchWithEpoll(connection, served);
    }
}

void BwaFcgiConnections::noteEndOfInput(int connection)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    Connection& served = m_connections[static_cast<std::size_t>(connection)];
    served.inputIsWhole = true;
    if (served.isWatched && served.hasNews) {
        watchWithEpoll(connection, served);
    }
}

bool BwaFcgiConnections::isGone(int connection)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_connections[static_cast<std::size_t>(connection)].isGone;
}

BwaFcgiRequest* BwaFcgiConnections::nextGone()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    while (!m_gone.empty()) {
        Connection& served = m_connections[static_cast<std::size_t>(m_gone.front())];
        m_gone.pop_front();
        if (served.isGone && served.request) {
            return std::exchange(served.request, nullptr);
        }
    }
    return nullptr;
}

void BwaFcgiConnections::keep(int connection)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    Connection& kept = m_connections[static_cast<std::size_t>(connection)];
    if (!m_keeps || kept.isGone ||
        ((!kept.isWatched || kept.hasNews) && !watchWithEpoll(connection, kept))) {
        release(connection);
        return;
    }
    kept.request = nullptr;
    kept.isKept = true;
    beginWaiting(kept);
}

void BwaFcgiConnections::linger(int connection)
{
    ::shutdown(connection, SHUT_WR);
    const std::lock_guard<std::mutex> lock(m_mutex);
    Connection& ending = m_connections[static_cast<std::size_t>(connection)];
    if (m_epoll < 0 || !watchWithEpoll(connection, ending)) {
        release(connection);
        return;
    }
    ending.request = nullptr;
    changeState(ending, Connection::Lingering);
    setDeadline(ending, lingerTime);
    signalWakeUp();
}

void BwaFcgiConnections::closeNow(int connection)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!markClosed(connection)) {
            return;
        }
    }
    ::close(connection); // after unlocking, so that the other thread does not wait for it
}

void BwaFcgiConnections::wake()
{
    const std::lock_guard<std::mutex> lock(m_mutex); // or the waiter could miss it
    signalWakeUp();
    m_room.notify_one();
}

void BwaFcgiConnections::signalWakeUp()
{
    const std::uint64_t one = 1;
    if (m_wakeUp >= 0 && ::write(m_wakeUp, &one, sizeof one) < 0) {
        // It fails only when the counter is full, after almost 2^64 signals.
    }
}

void BwaFcgiConnections::beginWaiting(Connection& connection)
{
    changeState(connection, Connection::Waiting);
    connection.waitingSince = BwaFcgiClock::now();
}

void BwaFcgiConnections::setDeadline(Connection& connection, std::int64_t milliseconds)
{
    connection.deadline = BwaFcgiClock::now() + milliseconds;
    if (m_nextDeadline == 0 || connection.deadline < m_nextDeadline) {
        m_nextDeadline = connection.deadline;
    }
}

// Milliseconds until the next deadline, rounded up; -1 when there is none.
int BwaFcgiConnections::timeout() const
{
    const std::int64_t deadline = m_nextDeadline;
    return deadline == 0
        ? -1
        : static_cast<int>(std::max<std::int64_t>(deadline - BwaFcgiClock::now(), 0)) + 1;
}

void BwaFcgiConnections::closeOverdue()
{
    const std::int64_t time = m_nextDeadline == 0 ? 0 : BwaFcgiClock::now();
    if (time < m_nextDeadline || m_nextDeadline == 0) {
        return;
    }
    m_nextDeadline = 0;
    for (std::size_t index = 0; index < m_connections.size(); ++index) {
        const std::int64_t deadline = m_connections[index].deadline;
        if (deadline != 0 && deadline <= time) {
            release(static_cast<int>(index));
        } else if (deadline != 0 && (m_nextDeadline == 0 || deadline < m_nextDeadline)) {
            m_nextDeadline = deadline;
        }
    }
}

// To watch a connection that is watched already makes epoll report input that has arrived.
bool BwaFcgiConnections::watchWithEpoll(int descriptor, Connection& connection)
{
    epoll_event event = {};
    event.events = EPOLLIN | EPOLLRDHUP | EPOLLET;
    event.data.fd = descriptor;
    const int operation = connection.isWatched ? EPOLL_CTL_MOD : EPOLL_CTL_ADD;
    connection.isWatched = ::epoll_ctl(m_epoll, operation, descriptor, &event) == 0;
    connection.hasNews = false;
    return connection.isWatched;
}

void BwaFcgiConnections::changeState(Connection& connection, Connection::State state)
{
    --m_counts[connection.state];
    ++m_counts[state];
    connection.state = state;
}

void BwaFcgiConnections::release(int descriptor)
{
    if (markClosed(descriptor)) {
        ::close(descriptor);
    }
}

// Returns false when the connection has been closed already.
bool BwaFcgiConnections::markClosed(int descriptor)
{
    Connection& connection = m_connections[static_cast<std::size_t>(descriptor)];
    if (connection.state == Connection::Closed) {
        return false;
    }
    changeState(connection, Connection::Closed);
    connection = Connection();
    if (!m_keeps) {
        signalWakeUp(); // the accepting thread may wait for the last connection to close
    }
    return true;
}
