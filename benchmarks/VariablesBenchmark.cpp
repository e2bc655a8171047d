// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "SampleRequest.h"
#include "cgi/BwaCgiEnvironment.h"

#include <benchmark/benchmark.h>

namespace {

void variableSnapshot(benchmark::State& state)
{
    SampleRequest request("/hello");
    for (auto _ : state) {
        benchmark::DoNotOptimize(BwaFcgiRequest::BwaFcgiInput(request.fcgxRequest()));
    }
}
BENCHMARK(variableSnapshot);

void snapshotAndEnvironment(benchmark::State& state)
{
    SampleRequest request("/hello");
    for (auto _ : state) {
        BwaFcgiRequest::BwaFcgiInput input(request.fcgxRequest());
        benchmark::DoNotOptimize(BwaCgiEnvironment(&input));
    }
}
BENCHMARK(snapshotAndEnvironment);

void protocolVersion(benchmark::State& state)
{
    const QString protocol = QStringLiteral("HTTP/1.1");
    for (auto _ : state) {
        benchmark::DoNotOptimize(BwaCgiEnvironment::parseServerProtocol(protocol));
    }
}
BENCHMARK(protocolVersion);

} // namespace
