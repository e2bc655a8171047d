// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "rest/BwaRestStopSignals_p.h"

#include <QEvent>
#include <QSocketNotifier>

#include <cerrno>
#include <stdexcept>

#include <sys/eventfd.h>
#include <unistd.h>

namespace {

int counter = -1; // an eventfd, to which a signal handler may write

void count(int /*signal*/)
{
    const int error = errno;
    const quint64 one = 1;
    const ssize_t written = ::write(counter, &one, sizeof one); // fails only when it is full
    Q_UNUSED(written)
    errno = error;
}

} // namespace

BwaRestStopSignals::BwaRestStopSignals()
    : m_previousTerminate()
    , m_previousInterrupt()
{
    counter = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (counter < 0) {
        throw std::runtime_error("no descriptor for the signals that stop the server");
    }
    auto* const notifier = new QSocketNotifier(counter, QSocketNotifier::Read, this);
    notifier->installEventFilter(this); // the notifier's own signal differs between versions of Qt
    struct sigaction action = {};
    action.sa_handler = &count;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, &m_previousTerminate);
    ::sigaction(SIGINT, &action, &m_previousInterrupt);
}

bool BwaRestStopSignals::eventFilter(QObject* notifier, QEvent* event)
{
    if (event->type() != QEvent::SockAct) {
        return QObject::eventFilter(notifier, event);
    }
    quint64 signals = 0;
    if (::read(counter, &signals, sizeof signals) > 0) {
        Q_EMIT received();
    }
    return true;
}

BwaRestStopSignals::~BwaRestStopSignals()
{
    ::sigaction(SIGTERM, &m_previousTerminate, nullptr);
    ::sigaction(SIGINT, &m_previousInterrupt, nullptr);
    ::close(counter);
    counter = -1;
}
