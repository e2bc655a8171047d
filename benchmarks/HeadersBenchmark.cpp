// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "BwaStringStreaming.h"
#include "http/BwaHttp401StatusHeader.h"
#include "http/BwaHttpCookie.h"
#include "http/BwaHttpJsonHeader.h"
#include "http/BwaHttpStatusHeader.h"

#include <benchmark/benchmark.h>

#include <ostream>
#include <streambuf>

namespace {

/** Takes a reply and forgets it. */
class Sink : public std::streambuf
{
protected:
    std::streamsize xsputn(const char* /*text*/, std::streamsize size) override { return size; }
    int_type overflow(int_type character) override { return traits_type::not_eof(character); }
};

// What a processor writes for each reply: the header is built, rendered and gone.
void jsonHeader(benchmark::State& state)
{
    Sink sink;
    std::ostream stream(&sink);
    for (auto _ : state) {
        stream << BwaHttpJsonHeader();
    }
}
BENCHMARK(jsonHeader);

void headerWithCookie(benchmark::State& state)
{
    Sink sink;
    std::ostream stream(&sink);
    const BwaHttpCookie cookie(QStringLiteral("theme"), QStringLiteral("dark"));
    for (auto _ : state) {
        BwaHttpStatusHeader header(200, QStringLiteral("OK"));
        header.cookies.append(cookie);
        stream << header;
    }
}
BENCHMARK(headerWithCookie);

void message(benchmark::State& state)
{
    Sink sink;
    std::ostream stream(&sink);
    const QString text = QStringLiteral("No session can be used to authenticate the request")
                             .leftJustified(static_cast<int>(state.range(0)), QLatin1Char('.'));
    for (auto _ : state) {
        stream << text;
    }
    state.SetBytesProcessed(state.iterations() * text.size());
}
BENCHMARK(message)->Arg(80)->Arg(8000);

} // namespace
