// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTCANCEL_H
#define BWARESTCANCEL_H

#include "rest/BwaRestGlobal.h"

#include <atomic>
#include <memory>

/**
 * Tells work on the pool that nobody waits for its reply any more. No thread is stopped: work that
 * takes long calls isRequested() from time to time. Any thread may use this and its copies.
 */
class BWA_REST_EXPORT BwaRestCancel
{
public:
    /** Internal: for the service, which sets @a flag; not null. */
    explicit BwaRestCancel(const std::shared_ptr<const std::atomic<bool>>& flag)
        : m_flag(flag)
    {
    }

    /** Whether the client has gone, the deadline is over, or the service ends its calls. */
    bool isRequested() const { return *m_flag; }

private:
    std::shared_ptr<const std::atomic<bool>> m_flag;
};

#endif
