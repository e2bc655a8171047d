// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// Who answers a call later shares a state with others, in any thread. The exchange, with the
// request, stays here: whatever happens to a state ends in a letter, which finds the exchange by
// the number of the state, or finds that it has been answered.

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

// When somebody has replied, or the last handle has gone, the answer is already on its way in a
// letter.
void BwaRestHeldCalls::expire(quint64 id)
{
    const auto call = m_calls.find(id);
    if (call == m_calls.end()) {
        return; // answered by a letter that came with its timer
    }
    const std::shared_ptr<BwaRestLaterState> state = call->second.state.lock();
    if (state && state->end()) {
        answer(id, BwaRestProblem(503, QString::fromLatin1("The reply has taken too long")));
    }
}

void BwaRestHeldCalls::loseClient(quint64 id)
{
    const std::shared_ptr<BwaRestLaterState> state = m_calls.at(id).state.lock();
    const std::unique_ptr<BwaRestExchange> exchange = release(id); // with it goes the request
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

// Also those whose answer is in a letter that the mailbox has not taken any more.
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

// A timer: what is posted would come before what other connections bring.
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

// The letters first: with their lock this sees what the thread that posted the event has written.
bool BwaRestHeldCalls::event(QEvent* event)
{
    readLetters();
    if (event->type() == QEvent::Timer) {
        ring(static_cast<QTimerEvent*>(event)->timerId());
        return true;
    }
    return QObject::event(event);
}
