// SPDX-FileCopyrightText: The Brindo Web API authors
// SPDX-License-Identifier: MIT

#include "json/BwaJson.h"
#include "json/BwaJsonUtilities.h"

#include <QJsonDocument>

#include <benchmark/benchmark.h>

namespace {

// About 1 KB: numbers, texts, a list and an object inside.
const char order[] =
    R"({"id":4211987,"account":9007199254740993,"quantity":12,"price":149.95,"express":true,)"
    R"("customer":"Ada Lovelace","email":"ada@example.org","telephone":"+44 20 7946 0000",)"
    R"("address":{"street":"12 St James's Square","town":"London","postcode":"SW1Y 4JH",)"
    R"("country":"United Kingdom","latitude":51.5074,"longitude":-0.1357},)"
    R"("items":[{"article":"lamp","colour":"blue","pieces":2,"price":49.95},)"
    R"({"article":"shade","colour":"gr\u00fcn","pieces":1,"price":19.5},)"
    R"({"article":"bulb","colour":null,"pieces":9,"price":3.35}],)"
    R"("vouchers":[],"gift":false,"discount":-5,"weight":2.75e3,)"
    R"("note":"Please leave the parcel with the neighbours on the ground floor if nobody answers )"
    R"(the bell before noon; the courtyard gate is open from eight in the morning until six in )"
    R"(the evening.\nThe key for the back door hangs behind the third \"flower pot\" on the left. )"
    R"(The two lamps are a present and should arrive in their original boxes, wrapped in plain )"
    R"(brown paper and without the delivery note."})";

void jsonToVariants(benchmark::State& state)
{
    const QByteArray text(order);
    bool ok = false;
    for (auto _ : state) {
        benchmark::DoNotOptimize(BwaJson::parse(text, &ok));
    }
    state.SetBytesProcessed(state.iterations() * text.size());
}
BENCHMARK(jsonToVariants);

// The peer of jsonToVariants.
void jsonToVariantsWithQt(benchmark::State& state)
{
    const QByteArray text(order);
    for (auto _ : state) {
        benchmark::DoNotOptimize(QJsonDocument::fromJson(text).toVariant());
    }
    state.SetBytesProcessed(state.iterations() * text.size());
}
BENCHMARK(jsonToVariantsWithQt);

void extractionOfThreeFields(benchmark::State& state)
{
    bool ok = false;
    const QVariantMap object = BwaJson::parse(QByteArray(order), &ok).toMap();
    int id = 0;
    double price = 0;
    QString customer;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            BwaJsonUtilities::integerValue(object, QStringLiteral("id"), id) &&
            BwaJsonUtilities::realNumberValue(object, QStringLiteral("price"), price) &&
            BwaJsonUtilities::stringValue(object, QStringLiteral("customer"), customer));
    }
}
BENCHMARK(extractionOfThreeFields);

void base64Extraction(benchmark::State& state)
{
    const QVariant value(QString::fromLatin1(QByteArray(750, '~').toBase64()));
    QByteArray bytes;
    for (auto _ : state) {
        benchmark::DoNotOptimize(BwaJsonUtilities::base64EncodedByteArrayValue(value, bytes));
    }
    state.SetBytesProcessed(state.iterations() * value.toString().size());
}
BENCHMARK(base64Extraction);

} // namespace
