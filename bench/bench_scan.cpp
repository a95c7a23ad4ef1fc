// SPDX-License-Identifier: GPL-3.0-or-later
// Files per second of a whole scan, into an empty table and again into the same one, and of the listing alone.

#include "bench/benchcorpus.h"
#include "bench/benchscanner.h"
#include "scan/medialister.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

namespace {

void listFiles(benchmark::State& state)
{
    BenchCorpus::folder();
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(listMediaFiles({ BenchCorpus::folder() }, mediaFileFilters()));
    state.SetItemsProcessed(state.iterations() * BenchCorpus::files().size());
}

void scanIntoEmptyTable(benchmark::State& state)
{
    BenchCorpus::folder();
    BenchScanner scanner;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        scanner.clear();
        state.ResumeTiming();
        scanner.scan();
    }
    state.SetItemsProcessed(state.iterations() * BenchCorpus::files().size());
}

void scanAgain(benchmark::State& state)
{
    BenchCorpus::folder();
    BenchScanner scanner;
    scanner.scan();
    for ([[maybe_unused]] auto _ : state)
        scanner.scan();
    state.SetItemsProcessed(state.iterations() * BenchCorpus::files().size());
}

} // namespace

BENCHMARK(listFiles)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(scanIntoEmptyTable)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(scanAgain)->Unit(benchmark::kMillisecond)->UseRealTime();

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
