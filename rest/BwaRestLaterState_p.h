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

/**
 * The state that all handles of a call share. Any thread may use it; end() is for the listener's
 * thread.
 */
class BwaRestLaterState
{
    Q_DISABLE_COPY(BwaRestLaterState)

public:
    /** @a deadline is in milliseconds, counted from when the handler has returned; -1: none. */
    BwaRestLaterState(const std::shared_ptr<BwaRestMailbox>& mailbox, int deadline);
    /** Answers with 500 when nobody has replied. */
    ~BwaRestLaterState();

    /** A number that no other call of this process has. */
    quint64 id() const { return m_id; }
    /** The deadline in milliseconds; -1: none. */
    int deadline() const { return m_deadline; }
    /** Tells work on the pool when end() has been called. */
    BwaRestCancel cancel() const { return BwaRestCancel(m_isCancelled); }

    /** See the functions of BwaRestLater. @{ */
    bool reply(const BwaRestReply& reply);
    bool isOpen() const;
    void onGone(const std::function<void()>& function);
    /** @} */
    /**
     * Has the listener's thread call @a finish and reply with its result. It is called even when
     * the call has ended.
     */
    void replyWith(const std::shared_ptr<BwaRestLaterState>& self,
                   const std::function<BwaRestReply()>& finish);
    /**
     * Ends the call without a reply, and calls the functions of onGone(). Returns false, and has no
     * effect, after a reply or an earlier end. For the listener's thread only.
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
