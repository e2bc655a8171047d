// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestHeldCalls_p.h"
#include "rest/BwaRestLaterState_p.h"
#include "rest/BwaRestOutcome_p.h"

#include <utility>

namespace {

quint64 nextId()
{
    static std::atomic<quint64> last{0};
    return ++last;
}

} // namespace

BwaRestLaterState::BwaRestLaterState(const std::shared_ptr<BwaRestMailbox>& mailbox, int deadline)
    : m_mailbox(mailbox)
    , m_id(nextId())
    , m_deadline(deadline)
    , m_isCancelled(std::make_shared<std::atomic<bool>>(false))
    , m_progress(Progress::Open)
{
}

BwaRestLaterState::~BwaRestLaterState()
{
    if (isOpen()) { // checked first, because making the reply takes longer
        reply(BwaRestOutcome::failure("Nobody is left to answer the call"));
    }
}

// Declares the functions before the lock, so that they are destroyed after unlocking: they may own
// the last handles of other calls, which lock as well.
bool BwaRestLaterState::leaveOpen(Progress progress)
{
    std::vector<std::function<void()>> functions;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_progress != Progress::Open) {
        return false;
    }
    m_progress = progress;
    functions.swap(m_goneFunctions);
    return true;
}

bool BwaRestLaterState::reply(const BwaRestReply& reply)
{
    return leaveOpen(Progress::Replied) &&
        m_mailbox->post([id = m_id, reply](BwaRestHeldCalls& calls) { calls.answer(id, reply); });
}

bool BwaRestLaterState::isOpen() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_progress == Progress::Open;
}

void BwaRestLaterState::onGone(const std::function<void()>& function)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_progress == Progress::Open) {
        m_goneFunctions.push_back(function);
    } else if (m_progress == Progress::Ended) {
        m_mailbox->post([function](BwaRestHeldCalls&) { function(); });
    }
}

void BwaRestLaterState::replyWith(const std::shared_ptr<BwaRestLaterState>& self,
                                  const std::function<BwaRestReply()>& finish)
{
    m_mailbox->post([self, finish](BwaRestHeldCalls& calls) {
        const BwaRestReply reply = BwaRestOutcome::of(finish);
        if (self->leaveOpen(Progress::Replied)) {
            calls.answer(self->m_id, reply);
        }
    });
}

bool BwaRestLaterState::end()
{
    std::vector<std::function<void()>> functions;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_progress != Progress::Open) {
            return false;
        }
        m_progress = Progress::Ended;
        functions.swap(m_goneFunctions);
    }
    *m_isCancelled = true;
    for (const std::function<void()>& function : functions) {
        function();
    }
    return true;
}
