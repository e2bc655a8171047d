// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestLater.h"

#include "rest/BwaRestLaterState_p.h"
#include "rest/BwaRestReply.h"

BwaRestLater::BwaRestLater(const std::shared_ptr<BwaRestLaterState>& state)
    : m_state(state)
{
}

bool BwaRestLater::reply(const BwaRestReply& reply) const
{
    return m_state->reply(reply);
}

bool BwaRestLater::isOpen() const
{
    return m_state->isOpen();
}

void BwaRestLater::onGone(const std::function<void()>& function) const
{
    m_state->onGone(function);
}
