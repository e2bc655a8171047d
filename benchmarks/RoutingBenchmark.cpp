// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "SampleRequest.h"
#include "services/BwaDispatcherFcgiService.h"

#include <benchmark/benchmark.h>

namespace {

/** Leaves the request to the benchmark, which sends it again. */
class KeepingService : public BwaAbstractFcgiService
{
public:
    void processRequest(BwaFcgiRequest* request) override { benchmark::DoNotOptimize(request); }
};

void addChildren(BwaDispatcherFcgiService& dispatcher, qint64 count)
{
    for (qint64 i = 0; i < count; ++i) {
        dispatcher.addService(QStringLiteral("resource%1").arg(i), new KeepingService);
    }
}

void routing(benchmark::State& state)
{
    BwaDispatcherFcgiService root;
    addChildren(root, state.range(0));
    SampleRequest sample("/resource" + std::to_string(state.range(0) / 2));
    const auto request = sample.wrapped();
    for (auto _ : state) {
        root.processRequest(request.get());
    }
}
BENCHMARK(routing)->Arg(10)->Arg(10000);

void routingThreeDispatchersDeep(benchmark::State& state)
{
    BwaDispatcherFcgiService root;
    BwaDispatcherFcgiService* const users = root.addDispatcherService(QStringLiteral("v1"))
                                                ->addDispatcherService(QStringLiteral("users"));
    addChildren(*users, state.range(0));
    SampleRequest sample("/v1/users/resource" + std::to_string(state.range(0) / 2));
    const auto request = sample.wrapped();
    for (auto _ : state) {
        root.processRequest(request.get());
    }
}
BENCHMARK(routingThreeDispatchersDeep)->Arg(10)->Arg(10000);

} // namespace
