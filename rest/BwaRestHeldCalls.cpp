// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// The handles of a call, which any thread may use, share a state (BwaRestLaterState). The exchange
// with the request stays here, in the listener's thread. A reply reaches it as a letter of the
// mailbox, which names the state by its id. When the call has been answered before, no exchange is
// found and the letter has no effect.

#include "rest/BwaRestExchange_p.h"
#include "rest/BwaRestHeldCalls_p.h"
#include "rest/BwaRestOutcome_p.h"
#include "rest/BwaRestProblem.h"

#include <QEvent>
#include <QTimerEvent>

#include <utility>

namespace {

BwaRestReply stopped()
{
    return BwaRestProblem(503, QString::fromLatin1("The service stops"));
}

} // namespace

BwaRestHeldCalls::BwaRestHeldCalls()
    : m_mailbox(std::make_shared<BwaRestMailbox>(this))
{
}

BwaRestHeldCalls::~BwaRestHeldCalls()
{
    readLetters();
    m_mailbox->close();
    endAll();
}

std::shared_ptr<BwaRestLaterState> BwaRestHeldCalls::stateFor(BwaRestExchange& exchange,
                                                              int deadline)
{
    if (!exchange.later) {
        exchange.later = std::make_shared<BwaRestLaterState>(m_mailbox, deadline);
        m_calls[exchange.later->id()].state = exchange.later;
    }
    return exchange.later;
}

void BwaRestHeldCalls::conclude(std::unique_ptr<BwaRestExchange> exchange,
                                const BwaRestReply& reply)
{
    const std::shared_ptr<BwaRestLaterState> state = std::move(exchange->later);
    if (state && reply.m_later == state) {
        hold(std::move(exchange), *state, reply);
        return;
    }
    exchange->write(reply.m_later ? BwaRestOutcome::failure("The reply is that of another call")
                                  : reply);
    exchange.reset();
    if (state) {
        m_calls.erase(state->id());
        state->end();
    }
}

void BwaRestHeldCalls::hold(std::unique_ptr<BwaRestExchange> exchange,
                            const BwaRestLaterState& state, const BwaRestReply& reply)
{
    if (m_calls.count(state.id()) == 0) { // all calls were ended while the handler ran
        exchange->write(stopped());
        return;
    }
    Call& call = m_calls[state.id()];
    call.exchange = std::move(exchange);
    if (state.deadline() >= 0) {
        call.timer = startTimer(state.deadline());
        m_timers.insert(call.timer, state.id());
    }
    call.exchange->whenGone([this, id = state.id()] { loseClient(id); });
    if (call.early) {
        answer(state.id(), *std::exchange(call.early, std::nullopt));
    } else if (reply.m_whenHeld) {
        begin(state.id(), *call.exchange, reply);
    }
}

void BwaRestHeldCalls::begin(quint64 id, BwaRestExchange& exchange, const BwaRestReply& reply)
{
    reply.m_whenHeld(exchange, reply);
    if (exchange.isStream() && !m_takesStreams) {
        loseClient(id);
    }
}

void BwaRestHeldCalls::answer(quint64 id, const BwaRestReply& reply)
{
    const auto call = m_calls.find(id);
    if (call == m_calls.end()) {
        return;
    }
    if (!call->second.exchange) {
        call->second.early = reply;
        return;
    }
    conclude(release(id), reply);
}

void BwaRestHeldCalls::stopTimer(const Call& call)
{
    if (call.timer != 0) {
        killTimer(call.timer);
        m_timers.remove(call.timer);
    }
}

std::unique_ptr<BwaRestExchange> BwaRestHeldCalls::release(quint64 id)
{
    const auto call = m_calls.find(id);
    stopTimer(call->second);
    std::unique_ptr<BwaRestExchange> exchange = std::move(call->second.exchange);
    m_calls.erase(call);
    return exchange;
}

// Called when the deadline is over. When somebody has replied, or the last handle has been
// destroyed, the answer is already in a letter, and this does nothing.
void BwaRestHeldCalls::expire(quint64 id)
{
    const auto call = m_calls.find(id);
    if (call == m_calls.end()) {
        return; // answered by a letter that was read before
    }
    const std::shared_ptr<BwaRestLaterState> state = call->second.state.lock();
    if (state && state->end()) {
        answer(id, BwaRestProblem(503, QString::fromLatin1("The reply has taken too long")));
    }
}

void BwaRestHeldCalls::loseClient(quint64 id)
{
    const std::shared_ptr<BwaRestLaterState> state = m_calls.at(id).state.lock();
    const std::unique_ptr<BwaRestExchange> exchange =
        release(id); // deletes the request when it goes out of scope
    if (state) {
        state->end();
    }
}

void BwaRestHeldCalls::endStreams()
{
    m_takesStreams = false;
    std::vector<quint64> streams;
    for (const auto& call : m_calls) {
        if (call.second.exchange && call.second.exchange->isStream()) {
            streams.push_back(call.first);
        }
    }
    for (const quint64 stream : streams) {
        loseClient(stream);
    }
}

// Also ends calls whose answer was posted after the mailbox was closed, and therefore dropped.
void BwaRestHeldCalls::endAll()
{
    readLetters();
    const std::map<quint64, Call> calls = std::exchange(m_calls, {});
    for (const auto& entry : calls) {
        const Call& call = entry.second;
        if (const std::shared_ptr<BwaRestLaterState> state = call.state.lock()) {
            state->end();
        }
        if (call.exchange) {
            stopTimer(call);
            call.exchange->write(stopped());
        }
    }
}

void BwaRestHeldCalls::readLetters()
{
    for (const BwaRestMailbox::Letter& letter : m_mailbox->take()) {
        letter(*this);
    }
}

// Uses a timer, because Qt delivers posted events before it looks at the sockets of other
// connections.
void BwaRestHeldCalls::inNextTurn(const std::function<void()>& function)
{
    m_turns.insert(startTimer(0), function);
}

void BwaRestHeldCalls::ring(int timer)
{
    if (const std::function<void()> turn = m_turns.take(timer)) {
        killTimer(timer);
        turn();
    } else {
        expire(m_timers.value(timer));
    }
}

// Reads the letters first. Their mutex also makes visible to this thread what the posting thread
// has written.
bool BwaRestHeldCalls::event(QEvent* event)
{
    readLetters();
    if (event->type() == QEvent::Timer) {
        ring(static_cast<QTimerEvent*>(event)->timerId());
        return true;
    }
    return QObject::event(event);
}
