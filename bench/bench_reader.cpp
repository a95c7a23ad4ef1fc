// SPDX-License-Identifier: GPL-3.0-or-later
// Files per second of the media reader on one thread, and of its two halves.

#include "bench/benchcorpus.h"
#include "scan/metadatareader.h"

#include <benchmark/benchmark.h>

namespace {

template <typename Read>
void readAllFiles(benchmark::State& state, Read read)
{
    const QStringList& files = BenchCorpus::files();
    for ([[maybe_unused]] auto _ : state) {
        for (const QString& file : files)
            benchmark::DoNotOptimize(read(file));
    }
    state.SetItemsProcessed(state.iterations() * files.size());
}

void readRecords(benchmark::State& state)
{
    readAllFiles(state, readMetaData);
}

void probeStreams(benchmark::State& state)
{
    readAllFiles(state, probeStreamInfo);
}

void readTags(benchmark::State& state)
{
    readAllFiles(state, readTagProperties);
}

} // namespace

BENCHMARK(readRecords)->Unit(benchmark::kMillisecond);
BENCHMARK(probeStreams)->Unit(benchmark::kMillisecond);
BENCHMARK(readTags)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
