// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTPOOL_P_H
#define BWARESTPOOL_P_H

#include <atomic>
#include <functional>
#include <memory>

class QThreadPool;

/** Runs functions in the threads of a pool, and limits how many wait. */
class BwaRestPool
{
public:
    /** @a pool is not owned; null is the global one. */
    BwaRestPool(QThreadPool* pool, int mostWaiting);

    /**
     * Runs @a work in a thread of the pool; it must not throw.
     * @throws BwaRestProblem 503 when too many functions wait
     */
    void start(std::function<void()> work);

private:
    QThreadPool* m_pool; // not owned
    int m_mostWaiting;
    std::shared_ptr<std::atomic<int>> m_unfinished; // functions, running and waiting
};

#endif
