// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

// A signal that comes while the first listen() sets libfcgi up, which installs handlers of its own.

#include "support/ListenerFixture.h"
#include "support/QtPrinters.h"

#include <fcgiapp.h>
#include <gtest/gtest.h>

#include <csignal>

#include <dlfcn.h>

namespace {

volatile std::sig_atomic_t received = 0; // signals
int raisedBefore = 0;                    // a signal, or 0
int raisedAfter = 0;                     // a signal, or 0

void count(int)
{
    received = received + 1;
}

struct Signal {
    const char* name;
    int before;
    int after;
};

class BwaFcgiListenerFirstListen
    : public ListenerFixture
    , public testing::WithParamInterface<Signal>
{
protected:
    void SetUp() override
    {
        serve("/api", answerPathInfo);
        raisedBefore = GetParam().before;
        raisedAfter = GetParam().after;
    }

    void TearDown() override
    {
        raisedBefore = 0;
        raisedAfter = 0;
    }

    static int theSignal() { return GetParam().before + GetParam().after; }
};

} // namespace

// Stands in front of the function of libfcgi, which it calls.
extern "C" Q_DECL_EXPORT int FCGX_Init()
{
    if (raisedBefore != 0) {
        raise(raisedBefore);
    }
    const int result = reinterpret_cast<int (*)()>(dlsym(RTLD_NEXT, "FCGX_Init"))();
    if (raisedAfter != 0) {
        raise(raisedAfter);
    }
    return result;
}

TEST_P(BwaFcgiListenerFirstListen, LosesNoSignal)
{
    std::signal(theSignal(), count);

    start();

    EXPECT_EQ(received, 1);
    EXPECT_EQ(replyTo(apiRequest("/x")).out, QByteArray("/x"));
    EXPECT_EQ(received, 1);
}

TEST_P(BwaFcgiListenerFirstListen, WhenASignalEndsTheProcessEnds)
{
    std::signal(theSignal(), SIG_DFL);

    EXPECT_EXIT(start(), testing::KilledBySignal(theSignal()), "");
}

INSTANTIATE_TEST_SUITE_P(Cases, BwaFcgiListenerFirstListen,
                         testing::Values(Signal{"TermBefore", SIGTERM, 0},
                                         Signal{"TermAfter", 0, SIGTERM},
                                         Signal{"User1Before", SIGUSR1, 0},
                                         Signal{"User1After", 0, SIGUSR1}),
                         [](const auto& info) { return std::string(info.param.name); });
