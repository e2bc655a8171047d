// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "fcgi/BwaFcgiLibrary_p.h"

#include <QMetaType>

#include <fcgiapp.h>

#include <atomic>
#include <csignal>

namespace {

std::atomic<bool> isDown{false};

volatile std::sig_atomic_t hasCome[NSIG] = {};

extern "C" {
static void recordSignal(int signal)
{
    hasCome[signal] = 1;
}
}

/**
 * Records a signal while this object lives, and raises it afterwards. libfcgi installs no handler
 * for a signal that has one already.
 */
class SignalRecorder
{
public:
    explicit SignalRecorder(int signal)
        : m_signal(signal)
    {
        struct sigaction record = {};
        record.sa_handler = recordSignal;
        record.sa_flags = SA_RESTART;
        ::sigaction(m_signal, &record, &m_before);
    }
    ~SignalRecorder()
    {
        ::sigaction(m_signal, &m_before, nullptr);
        if (hasCome[m_signal] != 0) {
            ::raise(m_signal);
        }
    }
    SignalRecorder(const SignalRecorder&) = delete;
    SignalRecorder& operator=(const SignalRecorder&) = delete;

private:
    int m_signal;
    struct sigaction m_before = {};
};

bool setUp()
{
    const SignalRecorder terminate(SIGTERM);
    const SignalRecorder user(SIGUSR1);
    FCGX_Init();
    qRegisterMetaType<FCGX_Request*>("FCGX_Request*");
    return true;
}

} // namespace

namespace BwaFcgiLibrary {

void initialize()
{
    static const bool isSetUp = setUp();
    static_cast<void>(isSetUp);
}

void shutDown()
{
    isDown = true;
    FCGX_ShutdownPending();
}

bool isShutDown()
{
    return isDown;
}

} // namespace BwaFcgiLibrary
