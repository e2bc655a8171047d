// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "SampleRequest.h"
#include "sessions/BwaSessionTokenFcgiSessionIdentifier.h"
#include "sessions/BwaWebSession.h"
#include "sessions/BwaWebSessionManager.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QPair>
#include <QVector>

#include <benchmark/benchmark.h>

#include <map>

namespace {

const int hour = 3600 * 1000; // milliseconds
const int endless = -1;       // a lifetime without timers

/** Sessions of one user, all of them with the same lifetimes. */
struct LiveSessions {
    BwaWebSessionManager manager;
    QVector<BwaWebSession*> sessions; // owned by the manager
};

// Made once for each number, and never destroyed.
LiveSessions& liveSessions(qint64 count, int lifetime)
{
    static std::map<QPair<qint64, int>, LiveSessions*> made;
    LiveSessions*& live = made[qMakePair(count, lifetime)];
    if (!live) {
        live = new LiveSessions;
        for (qint64 i = 0; i < count; ++i) {
            live->sessions.append(
                live->manager.createSession(QStringLiteral("ada"), lifetime, lifetime));
        }
    }
    return *live;
}

void sessionLookup(benchmark::State& state)
{
    const LiveSessions& live = liveSessions(state.range(0), endless);
    int next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(live.manager.findSession(live.sessions.at(next)->sessionId()));
        next = (next + 7919) % live.sessions.size();
    }
}
BENCHMARK(sessionLookup)->Arg(100)->Arg(100000);

void sessionOfRequest(benchmark::State& state)
{
    BwaWebSessionManager manager;
    const BwaWebSession* const session =
        manager.createSession(QStringLiteral("ada"), endless, endless);
    const QString credentials =
        session->sessionId().toString() + QLatin1Char(':') + session->token().toString();
    BwaSessionTokenFcgiSessionIdentifier identifier(&manager, QStringLiteral("benchmark"));
    SampleRequest sample("/hello", credentials.toStdString());
    const auto request = sample.wrapped();
    for (auto _ : state) {
        if (identifier.session(request.get()) != session) {
            state.SkipWithError("the session is not found");
            break;
        }
    }
}
BENCHMARK(sessionOfRequest);

void sessionRenewal(benchmark::State& state)
{
    const LiveSessions& live = liveSessions(state.range(0), hour);
    int next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(live.sessions.at(next)->generateNewToken());
        next = (next + 7919) % live.sessions.size();
    }
}
BENCHMARK(sessionRenewal)->Arg(100)->Arg(100000);

// How far from its time a token expires, among so many others that do not.
void sessionExpiryDeviation(benchmark::State& state)
{
    const int lifetime = 200; // milliseconds
    LiveSessions& live = liveSessions(state.range(0), hour);
    for (auto _ : state) {
        QElapsedTimer sinceCreation;
        sinceCreation.start();
        BwaWebSession* const session =
            live.manager.createSession(QStringLiteral("ada"), lifetime, endless);
        qint64 expired = 0; // nanoseconds
        QEventLoop loop;
        QObject::connect(session, &BwaWebSession::tokenExpired, &loop, [&] {
            expired = sinceCreation.nsecsElapsed();
            loop.quit();
        });
        loop.exec();
        session->remove();
        state.SetIterationTime(qAbs(1e-9 * static_cast<double>(expired) - 1e-3 * lifetime));
    }
}
BENCHMARK(sessionExpiryDeviation)->Arg(100000)->UseManualTime()->Iterations(5);

} // namespace
