// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTCANCEL_H
#define BWARESTCANCEL_H

#include "rest/BwaRestGlobal.h"

#include <atomic>
#include <memory>

/**
 * Tells work on the pool that nobody waits for its reply any more. Nothing is killed: work that
 * takes long asks it from time to time. Any thread may use it, and copies of it.
 */
class BWA_REST_EXPORT BwaRestCancel
{
public:
    /** For the service, which sets @a flag; not null. */
    explicit BwaRestCancel(const std::shared_ptr<const std::atomic<bool>>& flag)
        : m_flag(flag)
    {
    }

    /** The client has gone, the deadline is over or the service ends its calls. */
    bool isRequested() const { return *m_flag; }

private:
    std::shared_ptr<const std::atomic<bool>> m_flag;
};

#endif
