// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "StopSignals.h"

#include <csignal>

#include <sys/signalfd.h>
#include <unistd.h>

namespace {

int openStopSignals()
{
    sigset_t signalSet;
    sigemptyset(&signalSet);
    sigaddset(&signalSet, SIGINT);
    sigaddset(&signalSet, SIGTERM);
    sigaddset(&signalSet, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &signalSet, nullptr);
    return signalfd(-1, &signalSet, SFD_CLOEXEC);
}

} // namespace

StopSignals::StopSignals()
    : m_descriptor(openStopSignals())
    , m_notifier(m_descriptor, QSocketNotifier::Read)
{
    m_notifier.setEnabled(false);
}

StopSignals::~StopSignals()
{
    m_notifier.setEnabled(false);
    close(m_descriptor);
}

void StopSignals::onFirst(const std::function<void()>& action)
{
    QObject::connect(&m_notifier, &QSocketNotifier::activated, [this, action] {
        m_notifier.setEnabled(false);
        action();
    });
    m_notifier.setEnabled(true);
}
