// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#ifndef BWARESTHELDCALLS_P_H
#define BWARESTHELDCALLS_P_H

#include "rest/BwaRestLaterState_p.h"
#include "rest/BwaRestReply.h"

#include <QHash>
#include <QObject>

#include <functional>
#include <map>
#include <memory>
#include <optional>

class BwaRestExchange;

/**
 * The calls of a service whose handlers have returned and which are answered later. It lives in the
 * listener's thread.
 */
class BwaRestHeldCalls : public QObject
{
public:
    BwaRestHeldCalls();
    /** Ends all calls. */
    ~BwaRestHeldCalls() override;

    /**
     * The state that the handles of @a exchange share; the same one at each call of this function.
     */
    std::shared_ptr<BwaRestLaterState> stateFor(BwaRestExchange& exchange, int deadline);
    /**
     * Called when the handler has returned @a reply: writes it, or keeps the exchange when the
     * reply is to come later.
     */
    void conclude(std::unique_ptr<BwaRestExchange> exchange, const BwaRestReply& reply);
    /** Writes the reply of a call; does nothing when the call has ended. */
    void answer(quint64 id, const BwaRestReply& reply);
    /** Answers all held calls with 503. */
    void endAll();
    /**
     * Calls @a function in the next turn of the event loop, after what other connections have
     * waiting.
     */
    void inNextTurn(const std::function<void()>& function);
    /** Ends all streams. From then on, each new one ends at once. */
    void endStreams();

protected:
    bool event(QEvent* event) override;

private:
    struct Call {
        std::weak_ptr<BwaRestLaterState> state;
        std::unique_ptr<BwaRestExchange> exchange; // null as long as its handler runs
        std::optional<BwaRestReply> early;         // a reply that came while the handler ran
        int timer = 0;                             // 0: no deadline
    };

    void hold(std::unique_ptr<BwaRestExchange> exchange, const BwaRestLaterState& state,
              const BwaRestReply& reply);
    void begin(quint64 id, BwaRestExchange& exchange, const BwaRestReply& reply);
    std::unique_ptr<BwaRestExchange> release(quint64 id);
    void stopTimer(const Call& call);
    void ring(int timer);
    void expire(quint64 id);
    void loseClient(quint64 id);
    void readLetters();

    std::shared_ptr<BwaRestMailbox> m_mailbox;
    std::map<quint64, Call> m_calls;           // by the id of the state
    QHash<int, quint64> m_timers;              // from a deadline's timer to its call
    QHash<int, std::function<void()>> m_turns; // by their timers
    bool m_takesStreams = true;
};

#endif
