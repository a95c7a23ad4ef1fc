// SPDX-License-Identifier: GPL-3.0-or-later
// What changing records costs at a million of them: writing, deleting, marking, evaluating libraries, replacing.

#include "bench/benchcatalogue.h"
#include "resources/resources.h"
#include "scan/libraryrules.h"
#include "scan/storeoperations.h"
#include "store/operationreply.h"
#include "store/recordwriter.h"
#include "store/transaction.h"

#include <QCoreApplication>
#include <QFile>
#include <QSqlDatabase>

#include <benchmark/benchmark.h>

using BenchCatalogue::await;

namespace {

constexpr int writtenRecords = 10000;
constexpr int listedIds = 100000;
constexpr int emptyTable = 3;

Database& store()
{
    Database& database = BenchCatalogue::database();
    database.setBulkOperations(scanBulkOperations());
    return database;
}

QString defaultRules()
{
    initialiseResources();
    QFile file(QStringLiteral(":/Resources/LibraryEvaluationRules.txt"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("The rules are missing");
    return QString::fromUtf8(file.readAll());
}

// Records at every hundredth place of the large table's paths, or at paths that it has not.
MetaDataList records(bool areKnown)
{
    MetaDataList items;
    for (int number = 0; number < writtenRecords; ++number) {
        const QString name
            = QStringLiteral("%1%2.wav").arg(areKnown ? "" : "new ").arg(number * 100, 8, 10, QLatin1Char('0'));
        MetaData item({ { QStringLiteral("filePath"), "/sounds/" + name }, { QStringLiteral("fileName"), name },
            { QStringLiteral("fileType"), "wav" }, { QStringLiteral("library"), "" },
            { QStringLiteral("description"), "A new description" }, { QStringLiteral("rating"), 1.0 },
            { QStringLiteral("duration"), 2.5 } });
        item.setSampleRate(48000);
        item.setChannelsCount(2);
        item.setBitsPerSample(16);
        items.append(item);
    }
    return items;
}

// As a scan writes them; undone after each round, outside the timing.
void writeRecords(benchmark::State& state, int tableId, bool areKnown)
{
    const MetaDataList items = records(areKnown);
    const auto write = [&]() {
        const QSqlDatabase connection = QSqlDatabase::database(QStringLiteral("MetaDatabase"), false);
        for ([[maybe_unused]] auto _ : state) {
            Transaction transaction(connection);
            if (!transaction.begin() || !writeMetaData(connection, tableId, items, 1, true).isEmpty())
                qFatal("Cannot write");
            state.PauseTiming();
            transaction.rollback();
            state.ResumeTiming();
        }
    };
    QMetaObject::invokeMethod(&store(), write, Qt::BlockingQueuedConnection);
    state.SetItemsProcessed(state.iterations() * writtenRecords);
}

QVariantList ids(int first)
{
    QVariantList list;
    for (int id = first; id < first + listedIds; ++id)
        list.append(id);
    return list;
}

void markPlaylist(benchmark::State& state)
{
    const int tableId = BenchCatalogue::tableOf(BenchCatalogue::largeRows);
    const QVariantList list = ids(1);
    int value = 0;
    for ([[maybe_unused]] auto _ : state) {
        value = 1 - value;
        await(store().setMetaDataPlaylist(tableId, list, value));
    }
    state.SetItemsProcessed(state.iterations() * listedIds);
}

void deleteRecords(benchmark::State& state)
{
    const int tableId = BenchCatalogue::tableOf(BenchCatalogue::largeRows);
    int first = 1;
    for ([[maybe_unused]] auto _ : state) {
        await(store().deleteMetaData(tableId, ids(first)));
        first += listedIds;
    }
    state.SetItemsProcessed(state.iterations() * listedIds);
}

// Every second round all libraries change, or none ever.
void evaluateLibraries(benchmark::State& state, bool areChanged)
{
    const int tableId = BenchCatalogue::tableOf(BenchCatalogue::largeRows);
    const QString rules = defaultRules();
    await(store().evaluateLibraries(tableId, rules));
    bool isSecond = false;
    for ([[maybe_unused]] auto _ : state) {
        isSecond = !isSecond;
        await(store().evaluateLibraries(tableId, areChanged && isSecond ? rules + "\r\nAll: wav" : rules));
    }
    state.SetItemsProcessed(state.iterations() * BenchCatalogue::largeRows);
}

void replaceText(benchmark::State& state, bool areChanged)
{
    const int tableId = BenchCatalogue::tableOf(BenchCatalogue::largeRows);
    QString before = areChanged ? QStringLiteral("Sound") : QStringLiteral("Nowhere");
    QString after = QStringLiteral("Noise");
    for ([[maybe_unused]] auto _ : state) {
        await(store().replace(tableId, { QStringLiteral("description") }, before, after, Qt::CaseSensitive, {}));
        if (areChanged)
            std::swap(before, after);
    }
    state.SetItemsProcessed(state.iterations() * BenchCatalogue::largeRows);
}

QStringList fileNames()
{
    QStringList names;
    for (int number = 0; number < 1000; ++number)
        names.append(QStringLiteral("Heavy door slam, wood %1 close_KIT%2-A.wav")
                         .arg(QString::number(number), QString::number(number % 17)));
    return names;
}

void nameLibrary(benchmark::State& state)
{
    const LibraryRules rules = parseLibraryRules(defaultRules());
    const QStringList names = fileNames();
    int place = 0;
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(evaluateLibrary(names.at(place++ % names.size()), rules));
}

void nameLibraryByAllPatterns(benchmark::State& state)
{
    const LibraryRules rules = parseLibraryRules(defaultRules());
    const QStringList names = fileNames();
    int place = 0;
    for ([[maybe_unused]] auto _ : state) {
        const QString& name = names.at(place++ % names.size());
        for (const LibraryRule& rule : rules) {
            if (rule.pattern.indexIn(name) >= 0)
                break;
        }
    }
}

} // namespace

BENCHMARK(nameLibrary);
BENCHMARK(nameLibraryByAllPatterns);
BENCHMARK_CAPTURE(writeRecords, insertIntoAnEmptyTable, emptyTable, false)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(writeRecords, insertAtAMillion, 2, false)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(writeRecords, rescanAtAMillion, 2, true)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(markPlaylist)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(evaluateLibraries, noneChanged, false)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK_CAPTURE(evaluateLibraries, allChanged, true)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK_CAPTURE(replaceText, noneChanged, false)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK_CAPTURE(replaceText, allChanged, true)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
// The last, since nothing brings the records back.
BENCHMARK(deleteRecords)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

int main(int argumentsCount, char** arguments)
{
    QCoreApplication application(argumentsCount, arguments);
    benchmark::Initialize(&argumentsCount, arguments);
    if (benchmark::ReportUnrecognizedArguments(argumentsCount, arguments))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    BenchCatalogue::close();
    return 0;
}
