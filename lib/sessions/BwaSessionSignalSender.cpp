// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "sessions/BwaSessionSignalSender_p.h"

#include <utility>

namespace {

thread_local BwaWebSession* offered = nullptr; // not owned

} // namespace

BwaSessionSignalSender::BwaSessionSignalSender(BwaWebSession* session)
    : m_previous(std::exchange(offered, session))
{
}

BwaSessionSignalSender::~BwaSessionSignalSender()
{
    offered = m_previous;
}

BwaWebSession* BwaSessionSignalSender::take()
{
    return std::exchange(offered, nullptr);
}
