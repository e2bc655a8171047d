// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "cgi/BwaCgiRequest.h"

#include <QStringList>

#include <benchmark/benchmark.h>

namespace {

// Fifty fields, every second of which holds something that is escaped.
QString formText()
{
    QStringList fields;
    for (int i = 0; i < 25; ++i) {
        fields += QStringLiteral("street%1=12+St+James%27s+Square").arg(i);
        fields += QStringLiteral("town%1=London").arg(i);
    }
    return fields.join(QStringLiteral("&"));
}

void formOfFiftyFields(benchmark::State& state)
{
    const QString text = formText();
    for (auto _ : state) {
        benchmark::DoNotOptimize(BwaCgiRequest::parseUrlEncodedVariables(text));
    }
    state.SetBytesProcessed(state.iterations() * text.size());
}
BENCHMARK(formOfFiftyFields);

void urlDecoding(benchmark::State& state)
{
    const QString text = state.range(0)
        ? QStringLiteral("12+St+James%27s+Square%2C+London+%28SW1Y+4JH%29").repeated(20)
        : QStringLiteral("nothing-that-is-escaped-in-this-long-value----").repeated(20);
    state.SetLabel(state.range(0) ? "escapes" : "plain");
    for (auto _ : state) {
        benchmark::DoNotOptimize(BwaCgiRequest::urlDecode(text));
    }
    state.SetBytesProcessed(state.iterations() * text.size());
}
BENCHMARK(urlDecoding)->Arg(0)->Arg(1);

} // namespace
