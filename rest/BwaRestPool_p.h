// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTPOOL_P_H
#define BWARESTPOOL_P_H

#include <atomic>
#include <functional>
#include <memory>

class QThreadPool;

/** Threads that work beside the listener's, with a bound on what waits for them. */
class BwaRestPool
{
public:
    /** @a pool is not owned; null is the global one. */
    BwaRestPool(QThreadPool* pool, int mostWaiting);

    /**
     * Has @a work done in another thread; it must throw nothing.
     * @throws BwaRestProblem 503 when too much waits
     */
    void start(std::function<void()> work);

private:
    QThreadPool* m_pool; // not owned
    int m_mostWaiting;
    std::shared_ptr<std::atomic<int>> m_unfinished; // works, also those that wait
};

#endif
