// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "SampleRequest.h"

#include <benchmark/benchmark.h>

namespace {

void errorPage(benchmark::State& state)
{
    SampleRequest sample("/nothing");
    const auto request = sample.wrapped();
    for (auto _ : state) {
        request->sendHttpError(BwaFcgiRequest::NotFound);
    }
}
BENCHMARK(errorPage);

} // namespace
