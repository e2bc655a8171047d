// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiEnvironment.h"

#include <QStringList>

#include <benchmark/benchmark.h>

namespace {

void cookies(benchmark::State& state)
{
    QStringList pairs;
    for (int i = 0; i < state.range(0); ++i) {
        pairs += QStringLiteral("cookie%1=%2").arg(i).arg(1234567 * (i + 1));
    }
    const QString header = pairs.join(QStringLiteral("; "));
    for (auto _ : state) {
        benchmark::DoNotOptimize(BwaCgiEnvironment::parseCookies(header));
    }
}
BENCHMARK(cookies)->Arg(1)->Arg(10);

} // namespace
