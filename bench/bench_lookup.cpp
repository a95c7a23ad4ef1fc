// SPDX-License-Identifier: GPL-3.0-or-later
// What reads of a large table cost from memory, beside what the composed statements cost, in one run. Prints a table.
// Usage: bench_lookup [ROWS [brief]]; brief leaves the exports out, which by OFFSET take minutes.

#include "bench/benchcatalogue.h"
#include "store/databaseschema.h"
#include "store/indexedreads.h"
#include "store/operationreply.h"
#include "store/querycomposer.h"
#include "store/readoperations.h"
#include "store/recordreader.h"

#include <QCoreApplication>
#include <QSqlError>
#include <QSqlQuery>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <limits>

namespace {

constexpr int tableId = 1;
constexpr int pageSize = 50;
constexpr int exportedPageSize = 10000;
// Together about as long as one run of a statement.
constexpr int runs = 101;
constexpr int statementRuns = 3;
constexpr int firstUseRuns = 7;
constexpr int exportRounds = 3;

// Paths in another order than the ids, libraries that repeat, descriptions of about forty-five characters.
const char* const fillStatement
    = "INSERT INTO %1 (filePath, fileName, fileType, library, description, duration, rating, sampleRate, "
      "channelsCount, bitsPerSample, playlist, scanTimestamp) "
      "WITH RECURSIVE numbers(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM numbers WHERE i + 1 < %2) "
      "SELECT printf('/sounds/some folder %d/part %d/%08d.wav', (i * 7919) % 100, i % 100, (i * 7919) % %2), "
      "printf('%08d.wav', i), 'wav', 'Library ' || (i % 100), 'Sound of a thing in some place, number ' || i, "
      "1 + i % 600, i % 1000, 48000, 2, 16, i % 1000 = 0, 1000 FROM numbers";

using Work = std::function<void()>;

// As a user waits for it: texts are searched by several threads.
double milliseconds(const Work& work)
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    work();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// The best of a few runs, each after `prepare`, which is not counted: others share the machine.
double best(int count, const Work& prepare, const Work& work)
{
    double least = std::numeric_limits<double>::max();
    for (int i = 0; i < count; ++i) {
        prepare();
        least = std::min(least, milliseconds(work));
    }
    return least;
}

void doNothing() { }

double bestOfStatements(const Work& work)
{
    return best(statementRuns, doNothing, work);
}

void print(const char* what, double baseline, double ours)
{
    std::printf("| %-50s | %10.2f ms | %10.3f ms | %8.4f |\n", what, baseline, ours, ours / baseline);
    std::fflush(stdout);
}

QVariantMap view(const QString& lookup, const QString& sortField = QStringLiteral("filePath"), bool withPaths = false)
{
    QStringList fields{ QStringLiteral("library"), QStringLiteral("description") };
    if (withPaths)
        fields.append(QStringLiteral("filePath"));
    return { { QStringLiteral("lookup"), lookup }, { QStringLiteral("lookupFields"), fields },
        { QStringLiteral("sortField"), sortField }, { QStringLiteral("sortOrder"), 0 } };
}

QVariantMap page(QVariantMap parameters, int offset, int limit = pageSize)
{
    parameters.insert(QStringLiteral("offset"), offset);
    parameters.insert(QStringLiteral("limit"), limit);
    return parameters;
}

// The reads of one connection, by the statements and from memory.
class Reads
{
public:
    explicit Reads(const QSqlDatabase& connection)
        : m_connection(connection)
    {
        forget();
    }

    void forget()
    {
        m_indexed.reset();
        m_indexed = std::make_unique<IndexedReads>(m_connection);
    }
    size_t bytes() const { return m_indexed->bytes(); }
    // Texts that were searched before get their words in the background.
    void waitForWords() { m_indexed->waitForWords(); }

    int countByStatement(const QVariantMap& parameters) const
    {
        OperationReply reply;
        runGetRowsCount(m_connection, &reply, tableId, parameters);
        return reply.result(QStringLiteral("rowsCount")).toInt();
    }
    int count(const QVariantMap& parameters)
    {
        OperationReply reply;
        if (!m_indexed->getRowsCount(m_connection, &reply, tableId, parameters))
            return countByStatement(parameters);
        return reply.result(QStringLiteral("rowsCount")).toInt();
    }
    void pullByStatement(const QVariantMap& parameters) const
    {
        OperationReply reply;
        runPullMetaData(m_connection, &reply, tableId, parameters);
    }
    void pull(const QVariantMap& parameters)
    {
        OperationReply reply;
        if (!m_indexed->pullMetaData(m_connection, &reply, tableId, parameters))
            pullByStatement(parameters);
    }
    void place(qint64 id, const QVariantMap& parameters)
    {
        OperationReply reply;
        if (!m_indexed->lookupMetaDataRow(m_connection, &reply, tableId, id, parameters))
            runLookupMetaDataRow(m_connection, &reply, tableId, id, parameters);
    }
    void placeByStatement(qint64 id, const QVariantMap& parameters) const
    {
        OperationReply reply;
        runLookupMetaDataRow(m_connection, &reply, tableId, id, parameters);
    }
    void execute(const QString& statement) const
    {
        QSqlQuery query(m_connection);
        if (!query.exec(statement))
            qFatal("%s: %s", qPrintable(statement), qPrintable(query.lastError().text()));
    }
    // Every record of the view once, by one statement.
    void readAll(const QVariantMap& parameters) const
    {
        QSqlQuery query(m_connection);
        query.setForwardOnly(true);
        query.exec(composeSelect(tableId, QStringLiteral("*"), parameters));
        const RecordReader reader(query);
        MetaDataList items;
        while (query.next()) {
            items.append(reader.read());
            if (items.size() == exportedPageSize)
                items.clear();
        }
    }

private:
    QSqlDatabase m_connection;
    std::unique_ptr<IndexedReads> m_indexed;
};

// The count and a page of the hits, each time of a view that was not asked for just before.
void measureLookupAndPage(Reads& reads, const QString& what, const QVariantMap& parameters, int offset)
{
    QVariantMap other = parameters;
    other.insert(QStringLiteral("lookup"), QStringLiteral("another view"));
    const int hits = reads.count(parameters);
    const QVariantMap wanted = page(parameters, offset);
    const double baseline = bestOfStatements([&]() {
        if (reads.countByStatement(parameters) != hits)
            qFatal("Another number of hits than from memory: %s", qPrintable(what));
        reads.pullByStatement(wanted);
    });
    const double ours = best(
        runs, [&]() { reads.count(other); },
        [&]() {
            reads.count(parameters);
            reads.pull(wanted);
        });
    print(qPrintable(what), baseline, ours);
}

void measureLookup(Reads& reads, const char* what, const QString& lookup, bool withPaths = false)
{
    const QVariantMap parameters = view(lookup, QStringLiteral("filePath"), withPaths);
    const int hits = reads.count(parameters);
    measureLookupAndPage(reads, QStringLiteral("%1, first page").arg(QLatin1String(what)), parameters, 0);
    measureLookupAndPage(reads, QStringLiteral("%1, middle page").arg(QLatin1String(what)), parameters, hits / 2);
}

// From the second lookup on until the words are there.
void measureWords(Reads& reads)
{
    const QVariantMap parameters = view(QStringLiteral("another"));
    reads.count(view(QStringLiteral("one")));
    const size_t before = reads.bytes();
    const double texts = best(firstUseRuns, doNothing, [&]() {
        reads.forget();
        reads.count(view(QStringLiteral("one")));
    });
    const double words = milliseconds([&]() {
        reads.count(parameters);
        reads.waitForWords();
    });
    std::printf("| texts read in %.0f ms, %zu bytes; their words made in %.0f ms, %zu bytes more\n", texts, before,
        words, reads.bytes() - before);
}

void measureLookups(Reads& reads)
{
    measureWords(reads);
    measureLookup(reads, "lookup \"sound\": in every row", QStringLiteral("sound"));
    measureLookup(reads, "lookup \"library 77\": two words", QStringLiteral("library 77"));
    measureLookup(reads, "lookup \"thing place 4242\": three words", QStringLiteral("thing place 4242"));
    measureLookup(reads, "lookup \"s\": one letter", QStringLiteral("s"));
    measureLookup(reads, "lookup \"4242\": few rows", QStringLiteral("4242"));
    measureLookup(reads, "lookup \"absent\": no row", QStringLiteral("absent"));
    measureLookup(reads, "lookup \"sound !77\": negated", QStringLiteral("sound !77"));
    measureLookup(reads, "lookup \"number 1\": both in most rows", QStringLiteral("number 1"));
    measureLookup(reads, "lookup \"n_mber\": wildcard in every row", QStringLiteral("n_mber"));
    measureLookup(reads, "lookup \"42%24\": wildcard in few rows", QStringLiteral("42%24"));
    std::printf("| bytes held: %zu\n", reads.bytes());
}

void measurePlaces(Reads& reads, int rows)
{
    const auto measureBoth = [](const char* what, const Work& baseline, const Work& ours) {
        print(what, bestOfStatements(baseline), best(runs, doNothing, ours));
    };
    const QVariantMap end = page(view(QString()), rows - pageSize);
    measureBoth(
        "page at the end, by path", [&]() { reads.pullByStatement(end); }, [&]() { reads.pull(end); });
    const QVariantMap all = view(QString());
    measureBoth(
        "place of a record, by path", [&]() { reads.placeByStatement(rows / 2, all); },
        [&]() { reads.place(rows / 2, all); });
    const QVariantMap some = view(QStringLiteral("77"));
    measureBoth(
        "place of a record in a lookup", [&]() { reads.placeByStatement(rows / 2, some); },
        [&]() { reads.place(rows / 2, some); });
}

// From nothing, and after changes of single rows: each of another one, from the number's next on.
void measureFreshness(Reads& reads, const char* lookup, int& number)
{
    const QVariantMap parameters = view(QLatin1String(lookup));
    const double baseline = bestOfStatements([&]() {
        reads.countByStatement(parameters);
        reads.pullByStatement(page(parameters, 0));
    });
    const auto measureAfter = [&](const char* what, const Work& change, int count = runs) {
        const double ours = best(count, change, [&]() {
            reads.count(parameters);
            reads.pull(page(parameters, 0));
        });
        print(qPrintable(QStringLiteral("lookup \"%1\" and page %2").arg(lookup, what)), baseline, ours);
    };
    const auto execute = [&](const QString& statement) {
        reads.execute(statement.arg(++number));
    };
    measureAfter(
        "with nothing in memory", [&]() { reads.forget(); }, firstUseRuns);
    reads.count(view(QStringLiteral("another view")));
    reads.waitForWords();
    measureAfter(
        "after a new rating", [&]() { execute(QStringLiteral("UPDATE MetaData1 SET rating=%1 WHERE id=77")); });
    measureAfter("after a new description",
        [&]() { execute(QStringLiteral("UPDATE MetaData1 SET description='4242 %1' WHERE id=77")); });
    measureAfter("after a row has gone", [&]() { execute(QStringLiteral("DELETE FROM MetaData1 WHERE id=%1")); });
    measureAfter("after a new row", [&]() {
        execute(QStringLiteral("INSERT INTO MetaData1 (filePath, fileName, fileType, description) "
                               "VALUES ('/new/%1', '', '', 'New')"));
    });
}

void readPages(const QVariantMap& parameters, const std::function<void(const QVariantMap&)>& pull, int rows)
{
    for (int offset = 0; offset < rows; offset += exportedPageSize)
        pull(page(parameters, offset, exportedPageSize));
}

// All pages of an export, beside the pages by OFFSET, which take minutes, once, and beside one pass, in turn with it.
void measureExport(Reads& reads, const char* what, const QVariantMap& parameters)
{
    const int rows = parameters.value(QStringLiteral("lookup")).toString().isEmpty()
        ? reads.countByStatement(parameters)
        : reads.count(parameters);
    const double byOffset = milliseconds([&]() {
        readPages(
            parameters, [&](const QVariantMap& range) { reads.pullByStatement(range); }, rows);
    });
    double pass = std::numeric_limits<double>::max();
    double ours = pass;
    for (int round = 0; round < exportRounds; ++round) {
        pass = std::min(pass, milliseconds([&]() { reads.readAll(parameters); }));
        ours = std::min(ours, milliseconds([&]() {
            readPages(
                parameters, [&](const QVariantMap& range) { reads.pull(range); }, rows);
        }));
    }
    print(qPrintable(QStringLiteral("%1, beside pages by OFFSET").arg(QLatin1String(what))), byOffset, ours);
    print(qPrintable(QStringLiteral("%1, beside one pass").arg(QLatin1String(what))), pass, ours);
}

void measure(const QSqlDatabase& connection, int rows, bool isBrief)
{
    Reads reads(connection);
    std::printf("| %-50s | %13s | %13s | %8s |\n|---|---|---|---|\n", qPrintable(QStringLiteral("%1 rows").arg(rows)),
        "statements", "here", "ratio");
    measureLookups(reads);
    measureLookup(reads, "lookup \"part 42\" in file paths too", QStringLiteral("part 42"), true);
    std::printf("| bytes held: %zu\n", reads.bytes());
    measurePlaces(reads, rows);
    if (!isBrief) {
        measureExport(reads, "export", view(QString()));
        measureExport(reads, "export of the lookup \"sound\"", view(QStringLiteral("sound")));
    }
    int number = 100;
    measureFreshness(reads, "4242", number);
    measureFreshness(reads, "sound", number);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const int rows = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : BenchCatalogue::largeRows;
    const QTemporaryDir folder;
    {
        QSqlDatabase connection = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"));
        connection.setDatabaseName(folder.filePath(QStringLiteral("bench.dat")));
        if (rows <= 0 || !connection.open())
            qFatal("Cannot begin");
        applyPragmas(connection);
        connection.exec(QStringLiteral("PRAGMA synchronous=OFF"));
        installSchema(connection);
        connection.transaction();
        BenchCatalogue::fillTable(connection, tableId,
            QString::fromLatin1(fillStatement).arg(metaDataTableName(tableId), QString::number(rows)));
        connection.commit();
        measure(connection, rows, application.arguments().contains(QStringLiteral("brief")));
        connection.close();
    }
    QSqlDatabase::removeDatabase(QLatin1String(QSqlDatabase::defaultConnection));
    return 0;
}
