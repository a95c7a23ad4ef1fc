// SPDX-License-Identifier: GPL-3.0-or-later
// Files per second of a whole scan, into an empty table and again into the same one, and of the listing alone.

#include "bench/benchcorpus.h"
#include "scan/medialister.h"
#include "scan/storeoperations.h"
#include "store/database.h"
#include "store/operationreply.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QThread>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

constexpr int tableId = 1;

// A store on a thread of its own with an empty database.
class Store
{
public:
    Store()
        : m_database(m_folder.filePath(QStringLiteral("bench.dat")))
    {
        m_database.setBulkOperations(scanBulkOperations());
        m_database.moveToThread(&m_thread);
        m_thread.start();
        if (!m_database.open())
            qFatal("Cannot open the store: %s", qPrintable(m_database.lastError()));
    }
    ~Store()
    {
        m_database.close();
        m_thread.quit();
        m_thread.wait();
    }
    Q_DISABLE_COPY(Store)

    void clear() { await(m_database.clearTable(tableId)); }
    void scan() { await(m_database.scan(tableId, { BenchCorpus::folder() }, {})); }

private:
    static void await(OperationReply* reply)
    {
        const std::unique_ptr<OperationReply> owned(reply);
        reply->waitForFinished();
        if (reply->hasError())
            qFatal("Operation failed: %s", qPrintable(reply->errorString()));
    }

    QTemporaryDir m_folder;
    QThread m_thread;
    Database m_database;
};

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
    Store store;
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        store.clear();
        state.ResumeTiming();
        store.scan();
    }
    state.SetItemsProcessed(state.iterations() * BenchCorpus::files().size());
}

void scanAgain(benchmark::State& state)
{
    BenchCorpus::folder();
    Store store;
    store.scan();
    for ([[maybe_unused]] auto _ : state)
        store.scan();
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
