// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTLATERSTATE_P_H
#define BWARESTLATERSTATE_P_H

#include "rest/BwaRestCancel.h"
#include "rest/BwaRestMailbox_p.h"
#include "rest/BwaRestReply.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

/** What the copies of a BwaRestLater share. Any thread may use it, but for end(). */
class BwaRestLaterState
{
    Q_DISABLE_COPY(BwaRestLaterState)

public:
    /** @a deadline in milliseconds from the moment on at which the call is held; -1: none. */
    BwaRestLaterState(const std::shared_ptr<BwaRestMailbox>& mailbox, int deadline);
    /** Answers with 500 when nobody has replied. */
    ~BwaRestLaterState();

    /** No other one of this process has the same. */
    quint64 id() const { return m_id; }
    /** In milliseconds. */
    int deadline() const { return m_deadline; }
    /** Requested by end(). */
    BwaRestCancel cancel() const { return BwaRestCancel(m_isCancelled); }

    /** As of BwaRestLater. @{ */
    bool reply(const BwaRestReply& reply);
    bool isOpen() const;
    void onGone(const std::function<void()>& function);
    /** @} */
    /** Has the listener's thread reply what @a finish returns, which is called in any case. */
    void replyWith(const std::shared_ptr<BwaRestLaterState>& self,
                   const std::function<BwaRestReply()>& finish);
    /**
     * Nobody waits any more; calls the functions of onGone(). False, and without effect, when there
     * has been a reply or an end. For the listener's thread only.
     */
    bool end();

private:
    enum class Progress { Open, Replied, Ended };

    bool leaveOpen(Progress progress);

    const std::shared_ptr<BwaRestMailbox> m_mailbox;
    const quint64 m_id;
    const int m_deadline;
    const std::shared_ptr<std::atomic<bool>> m_isCancelled;
    mutable std::mutex m_mutex; // guards what follows
    Progress m_progress;
    std::vector<std::function<void()>> m_goneFunctions;
};

#endif
