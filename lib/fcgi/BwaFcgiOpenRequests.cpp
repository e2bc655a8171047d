// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiOpenRequests_p.h"

#include <algorithm>

#include <sys/resource.h>

BwaFcgiOpenRequests::BwaFcgiOpenRequests(std::size_t limit)
    : m_limit(limit)
    , m_count(0)
{
}

void BwaFcgiOpenRequests::waitForRoom(const std::atomic<bool>& stopRequested)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_room.wait(lock, [&] { return m_count < m_limit || stopRequested; });
}

void BwaFcgiOpenRequests::wake()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex); // not between a look and the wait
    }
    m_room.notify_one();
}

void BwaFcgiOpenRequests::add(FCGX_Request* request)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_waiting.push_back(request);
    ++m_count;
}

void BwaFcgiOpenRequests::take(FCGX_Request* request)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = std::find(m_waiting.begin(), m_waiting.end(), request);
    if (found == m_waiting.end()) {
        ++m_count;
    } else {
        m_waiting.erase(found); // the first one, as a rule
    }
}

FCGX_Request* BwaFcgiOpenRequests::takeNext()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_waiting.empty()) {
        return nullptr;
    }
    FCGX_Request* const request = m_waiting.front();
    m_waiting.pop_front();
    return request;
}

void BwaFcgiOpenRequests::finished()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        --m_count;
    }
    m_room.notify_one();
}

std::size_t mostOpenRequests()
{
    const std::size_t most = 1024;
    rlimit descriptors = {};
    if (::getrlimit(RLIMIT_NOFILE, &descriptors) != 0) {
        return most;
    }
    return static_cast<std::size_t>(std::clamp<rlim_t>(descriptors.rlim_cur / 2, 1, most));
}
