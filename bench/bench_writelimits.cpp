// SPDX-License-Identifier: GPL-3.0-or-later
// What writing costs beside the plain statements, in a table of 100,000 rows or, with the argument "large", of a
// million; and how often the making of a database waits for the disk.

#include "bench/benchcatalogue.h"
#include "bench/benchratio.h"
#include "scan/storeoperations.h"
#include "store/operationreply.h"
#include "store/querycomposer.h"
#include "store/recordreader.h"
#include "store/recordwriter.h"
#include "store/transaction.h"
#include "tests/store/literalwriter.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QThread>

#include <atomic>
#include <cstdio>
#include <functional>
#include <limits>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int rounds = 4;

std::atomic<int> syncsCount = 0;

} // namespace

// They stand before those of the C library for SQLite as well.
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" int fdatasync(int descriptor)
{
    ++syncsCount;
    return int(::syscall(SYS_fdatasync, descriptor));
}

namespace {

QSqlDatabase connection()
{
    return QSqlDatabase::database(QStringLiteral("MetaDatabase"), false);
}

MetaDataList rowsOf(int tableId, const QString& condition)
{
    QSqlQuery query(connection());
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT * FROM %1 WHERE %2 ORDER BY id").arg(metaDataTableName(tableId), condition)))
        qFatal("Cannot read");
    const RecordReader reader(query);
    MetaDataList items;
    while (query.next())
        items.append(reader.read());
    return items;
}

// Records as a scan brings them: one folder after the other, and they have no id yet.
MetaDataList scannedRows(int tableId, int count)
{
    MetaDataList items = rowsOf(tableId, QStringLiteral("id <= %1").arg(count));
    for (MetaData& item : items)
        item.setId(0);
    return items;
}

// Undone again.
double timeOf(const std::function<void()>& write)
{
    Transaction transaction(connection());
    if (!transaction.begin())
        qFatal("Cannot begin");
    const double time = BenchRatio::processorTime(1, write);
    transaction.rollback();
    return time;
}

// The best of some runs of each, in turn: the first ones fill the caches, and others share the machine.
void printBest(const QString& name, const char* unit, double unitsPerMicrosecond, double limit,
    const std::function<double()>& ownTime, const std::function<double()>& plainTime)
{
    double own = std::numeric_limits<double>::max();
    double plain = own;
    for (int round = 0; round < rounds; ++round) {
        own = std::min(own, ownTime());
        plain = std::min(plain, plainTime());
    }
    BenchRatio::print(name, unit, own * unitsPerMicrosecond, plain * unitsPerMicrosecond, limit);
}

void compareWriting(int tableId, const MetaDataList& items, const QString& name, double limit)
{
    const auto ownTime = [&]() {
        return timeOf([&]() { writeMetaData(connection(), tableId, items, 5000, true); });
    };
    const auto plainTime = [&]() {
        return timeOf([&]() { LiteralWriter(connection(), tableId, 5000).write(items); });
    };
    printBest(name, "us a row", 1.0 / items.size(), limit, ownTime, plainTime);
}

void compareRescans(int tableId, int rows)
{
    const double limit = 1.0 / 3;
    compareWriting(
        tableId, scannedRows(tableId, rows), "rescan of all rows, unchanged, beside three statements", limit);
    MetaDataList items = scannedRows(tableId, rows / 10);
    compareWriting(tableId, items, "rescan of a tenth, unchanged, beside three statements", limit);
    for (MetaData& item : items)
        item.setDescription(item.description() + "!");
    compareWriting(tableId, items, "rescan of changed rows, beside three statements", 1);
    for (MetaData& item : items)
        item.setFilePath("/new" + item.filePath());
    compareWriting(tableId, items, "insert, beside the plain statements", 1.1);
}

void writeWholeRows(int tableId, const QString& before, const QString& after)
{
    MetaDataList items = rowsOf(tableId, QStringLiteral("1"));
    for (MetaData& item : items)
        item.setDescription(item.description().replace(before, after));
    writeMetaData(connection(), tableId, items, 0, false);
}

void compareReplace(Database& store, int tableId)
{
    QString before = QStringLiteral("Sound");
    QString after = QStringLiteral("Noise");
    const auto ownTime = [&]() {
        const double time = BenchRatio::processorTime(1, [&]() {
            BenchCatalogue::await(
                store.replace(tableId, { QStringLiteral("description") }, before, after, Qt::CaseSensitive, {}));
        });
        std::swap(before, after);
        return time;
    };
    const auto wholeTime = [&]() {
        double time = 0;
        const auto replaceWhole = [&]() {
            time = timeOf([&]() { writeWholeRows(tableId, before, after); });
        };
        QMetaObject::invokeMethod(&store, replaceWhole, Qt::BlockingQueuedConnection);
        return time;
    };
    printBest("replace in a whole table, beside whole rows", "ms", 1e-3, 0.25, ownTime, wholeTime);
}

void countSyncs()
{
    const QTemporaryDir folder;
    QThread thread;
    Database database(folder.filePath(QStringLiteral("new.dat")));
    database.moveToThread(&thread);
    thread.start();
    syncsCount = 0;
    const double time = BenchRatio::passedTime(1, [&]() { database.open(); });
    const int count = syncsCount;
    database.close();
    thread.quit();
    thread.wait();
    BenchRatio::print("waits for the disk in making a database", "waits", count, 20, 1);
    std::printf("a new database: %.0f ms\n", time / 1e3);
}

} // namespace

int main(int argumentsCount, char** arguments)
{
    const QCoreApplication application(argumentsCount, arguments);
    countSyncs();
    const int rows = application.arguments().contains("large") ? BenchCatalogue::largeRows : BenchCatalogue::smallRows;
    Database& store = BenchCatalogue::database();
    store.setBulkOperations(scanBulkOperations());
    const int tableId = BenchCatalogue::tableOf(rows);
    QMetaObject::invokeMethod(
        &store, [&]() { compareRescans(tableId, rows); }, Qt::BlockingQueuedConnection);
    compareReplace(store, tableId);
    BenchCatalogue::close();
    return 0;
}
