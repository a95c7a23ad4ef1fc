// SPDX-License-Identifier: GPL-3.0-or-later
// What browsing costs: counts, pages and rows of records from the store, the cells of the model, scrolling the view.

#include "bench/benchcatalogue.h"
#include "browse/metadatamodel.h"
#include "browse/metadataview.h"
#include "store/operationreply.h"

#include <QApplication>
#include <QRandomGenerator>

#include <benchmark/benchmark.h>

#include <functional>

using BenchCatalogue::await;

namespace {

constexpr int pageSize = 50;
constexpr int rowsOnScreen = 40;

QVariantMap sortedView(const QString& field, Qt::SortOrder order, const QString& lookup = QString())
{
    return { { QStringLiteral("lookup"), lookup },
        { QStringLiteral("lookupFields"), QStringList{ QStringLiteral("library"), QStringLiteral("description") } },
        { QStringLiteral("sortField"), field }, { QStringLiteral("sortOrder"), int(order) } };
}

void waitUntil(const std::function<bool()>& isReached)
{
    while (!isReached())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void countRows(benchmark::State& state, const QString& lookup)
{
    Database& store = BenchCatalogue::database();
    const int tableId = BenchCatalogue::tableOf(state.range(0));
    const QVariantMap view = sortedView(QStringLiteral("filePath"), Qt::AscendingOrder, lookup);
    for ([[maybe_unused]] auto _ : state)
        await(store.getRowsCount(tableId, view));
}

// A page at so many hundredths of the table.
void readPage(
    benchmark::State& state, const QString& field, Qt::SortOrder order, int place, const QString& lookup = QString())
{
    Database& store = BenchCatalogue::database();
    const int tableId = BenchCatalogue::tableOf(state.range(0));
    QVariantMap page = sortedView(field, order, lookup);
    const qint64 lastPage = state.range(0) - pageSize;
    page.insert(QStringLiteral("offset"), int(lastPage * place / 100));
    page.insert(QStringLiteral("limit"), pageSize);
    for ([[maybe_unused]] auto _ : state)
        await(store.pullMetaData(tableId, page));
}

void lookUpRow(benchmark::State& state, const QString& field)
{
    Database& store = BenchCatalogue::database();
    const int tableId = BenchCatalogue::tableOf(state.range(0));
    const QVariantMap view = sortedView(field, Qt::AscendingOrder);
    const int middle = int(state.range(0) / 2);
    for ([[maybe_unused]] auto _ : state)
        await(store.lookupMetaDataRow(tableId, middle, view));
}

// All that a painted screen asks of the model, with the pages in its cache.
void readScreen(benchmark::State& state)
{
    MetaDataModel model;
    model.setDatabase(&BenchCatalogue::database(), BenchCatalogue::tableOf(state.range(0)));
    waitUntil([&model]() { return model.isRowsCountActual(); });
    for ([[maybe_unused]] auto _ : state) {
        for (int row = 0; row < rowsOnScreen; ++row) {
            for (int column = 0; column < MetaDataModel::ColumnsCount; ++column) {
                const QModelIndex index = model.index(row, column);
                for (const int role : { int(Qt::DisplayRole), int(MetaDataModel::HighlightedWordsRole),
                         int(MetaDataModel::OpacityRole), int(MetaDataModel::TrailingTextRole) })
                    benchmark::DoNotOptimize(index.data(role));
            }
        }
    }
    state.SetItemsProcessed(state.iterations() * rowsOnScreen * MetaDataModel::ColumnsCount);
}

void paintScreen(benchmark::State& state)
{
    MetaDataView view;
    view.resize(1263, 444);
    view.setDatabase(&BenchCatalogue::database(), BenchCatalogue::tableOf(state.range(0)));
    view.show();
    waitUntil([&view]() { return view.metaDataModel()->isRowsCountActual(); });
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(view.viewport()->grab());
}

// From the move of the scroll bar until the rows are there; includes the 100 ms that the model waits for more misses.
void scrollToRandomPage(benchmark::State& state)
{
    MetaDataView view;
    view.resize(1263, 444);
    view.setDatabase(&BenchCatalogue::database(), BenchCatalogue::tableOf(state.range(0)));
    view.show();
    const MetaDataModel& model = *view.metaDataModel();
    waitUntil([&model]() { return model.isRowsCountActual() && !model.isProcessing(); });
    QRandomGenerator generator(1);
    for ([[maybe_unused]] auto _ : state) {
        const int row = generator.bounded(model.rowsCount());
        view.scrollTo(model.index(row, 0), QAbstractItemView::PositionAtCenter);
        waitUntil([&model, row]() { return model.isRowFresh(row); });
    }
}

void bothTables(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(BenchCatalogue::smallRows)->Arg(BenchCatalogue::largeRows)->UseRealTime();
}

} // namespace

BENCHMARK_CAPTURE(countRows, all, QString())->Apply(bothTables)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(countRows, lookup, QStringLiteral("sound 77"))->Apply(bothTables)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readPage, firstByPath, QStringLiteral("filePath"), Qt::AscendingOrder, 0)
    ->Apply(bothTables)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readPage, middleByPath, QStringLiteral("filePath"), Qt::AscendingOrder, 50)
    ->Apply(bothTables)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readPage, lastByPath, QStringLiteral("filePath"), Qt::AscendingOrder, 100)
    ->Apply(bothTables)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(readPage, lastByRatingDown, QStringLiteral("rating"), Qt::DescendingOrder, 100)
    ->Apply(bothTables)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(
    readPage, firstOfLookup, QStringLiteral("filePath"), Qt::AscendingOrder, 0, QStringLiteral("sound 77"))
    ->Apply(bothTables)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(lookUpRow, byPath, QStringLiteral("filePath"))->Apply(bothTables)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(lookUpRow, byRating, QStringLiteral("rating"))->Apply(bothTables)->Unit(benchmark::kMillisecond);
BENCHMARK(readScreen)->Apply(bothTables)->Unit(benchmark::kMicrosecond);
BENCHMARK(paintScreen)->Apply(bothTables)->Unit(benchmark::kMillisecond);
BENCHMARK(scrollToRandomPage)->Apply(bothTables)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    // Figures do not depend on a display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    BenchCatalogue::close();
    return 0;
}
