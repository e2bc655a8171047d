// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "sessions/BwaEmittingSession_p.h"

#include <utility>

namespace {

thread_local BwaWebSession* emittingSession = nullptr; // not owned

} // namespace

BwaEmittingSession::BwaEmittingSession(BwaWebSession* session)
    : m_previous(emittingSession)
{
    emittingSession = session;
}

BwaEmittingSession::~BwaEmittingSession()
{
    emittingSession = m_previous;
}

BwaWebSession* BwaEmittingSession::take()
{
    return std::exchange(emittingSession, nullptr);
}
