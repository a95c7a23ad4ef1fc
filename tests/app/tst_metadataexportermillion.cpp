// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/metadataexporter.h"

#include "store/operationreply.h"
#include "tests/browse/browsefixture.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

constexpr int tableId = 1;
constexpr int rows = 1000000;
constexpr int dumpTimeout = 300000; // milliseconds

// The same rows as another program reads them from the same file.
void dump(const QString& databaseFile, const QString& target)
{
    const QString statement = QStringLiteral(
        "SELECT 'filePath', 'library', 'description', 'duration', 'rating', 'scanTimestamp'; "
        "SELECT filePath, library, description, printf('%02d:%02d', CAST(duration AS INTEGER) / 60, "
        "CAST(duration AS INTEGER) % 60), CAST(rating AS INTEGER), scanTimestamp FROM MetaData1 ORDER BY library, id");
    QProcess process;
    process.setStandardOutputFile(target);
    process.start(QStringLiteral("sqlite3"), { "-batch", "-separator", "\t", databaseFile, statement });
    if (!process.waitForFinished(dumpTimeout) || process.exitCode() != 0)
        qFatal("Cannot dump: %s", process.readAllStandardError().constData());
}

bool areEqual(const QString& firstPath, const QString& secondPath)
{
    QFile first(firstPath);
    QFile second(secondPath);
    if (!first.open(QIODevice::ReadOnly) || !second.open(QIODevice::ReadOnly))
        return false;
    constexpr qint64 blockSize = 1 << 20;
    while (!first.atEnd()) {
        if (first.read(blockSize) != second.read(blockSize))
            return false;
    }
    return second.atEnd() && first.size() > qint64(rows) * 30;
}

} // namespace

class MetaDataExporterMillionTest : public QObject
{
    Q_OBJECT

private slots:
    void recordsOfAMillionEqualAPlainDump();
};

void MetaDataExporterMillionTest::recordsOfAMillionEqualAPlainDump()
{
    TestSupport::StoreFixture store;
    store.open();
    TestSupport::fillTable(store, tableId, rows);
    const QTemporaryDir folder;
    MetaDataExporter exporter;
    exporter.setDatabase(&store.database(), tableId);
    exporter.setQueryParameters({ { "sortField", "library" }, { "sortOrder", 0 } });
    exporter.setExportFields({ "filePath", "library", "description", "duration", "rating", "scanTimestamp" });
    exporter.setFilePath(folder.filePath(QStringLiteral("export.tsv")));

    const std::unique_ptr<OperationReply> reply(exporter.start());
    reply->waitForFinished();

    QCOMPARE(reply->errorString(), QString());
    const QString expected = folder.filePath(QStringLiteral("dump.tsv"));
    dump(store.filePath(), expected);
    QVERIFY(areEqual(folder.filePath(QStringLiteral("export.tsv")), expected));
}

QTEST_GUILESS_MAIN(MetaDataExporterMillionTest)
#include "tst_metadataexportermillion.moc"
