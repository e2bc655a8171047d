// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"

#include <benchmark/benchmark.h>

namespace {

void headerValue(benchmark::State& state, const char* text)
{
    const QString header = QString::fromLatin1(text);
    for (auto _ : state) {
        benchmark::DoNotOptimize(BwaCgiRequest::parseGenericHeader(header));
    }
}
BENCHMARK_CAPTURE(headerValue, plain, "application/json");
BENCHMARK_CAPTURE(headerValue, boundary, "multipart/form-data; boundary=----d74496d66958873e");
BENCHMARK_CAPTURE(headerValue, quoted,
                  "form-data; name=\"file\"; filename=\"my \\\"best\\\" photo.jpg\"");

} // namespace
