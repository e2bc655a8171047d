// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestPool_p.h"
#include "rest/BwaRestProblem.h"

#include <QRunnable>
#include <QThreadPool>

#include <utility>

namespace {

/**
 * One function to run. It is destroyed with this object, in any thread, also when the application
 * clears the pool.
 */
class Work : public QRunnable
{
public:
    Work(std::function<void()> function, std::shared_ptr<std::atomic<int>> unfinished)
        : m_function(std::move(function))
        , m_unfinished(std::move(unfinished))
    {
        ++*m_unfinished;
    }
    ~Work() override { --*m_unfinished; }

    void run() override { m_function(); }

private:
    std::function<void()> m_function;
    std::shared_ptr<std::atomic<int>> m_unfinished;
};

} // namespace

BwaRestPool::BwaRestPool(QThreadPool* pool, int mostWaiting)
    : m_pool(pool ? pool : QThreadPool::globalInstance())
    , m_mostWaiting(mostWaiting)
    , m_unfinished(std::make_shared<std::atomic<int>>(0))
{
}

void BwaRestPool::start(std::function<void()> work)
{
    if (*m_unfinished - m_pool->maxThreadCount() >= m_mostWaiting) {
        throw BwaRestProblem(BwaRestProblem(503).header("Retry-After", "1"));
    }
    m_pool->start(new Work(std::move(work), m_unfinished));
}
