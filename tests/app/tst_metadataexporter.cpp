// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/metadataexporter.h"

#include "store/fieldcatalogue.h"
#include "store/operationreply.h"
#include "tests/browse/browsefixture.h"
#include "tests/scan/permissions.h"
#include "tests/support/smalldisk.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using TestSupport::fillTable;
using TestSupport::SmallDisk;
using TestSupport::StoreFixture;

using TestSupport::contents;

namespace {

constexpr int bigTable = 1;
constexpr int smallTable = 2;
constexpr int emptyTable = 3;
constexpr int rowsOfBigTable = 25000;

QStringList namesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

// What another program reads from the same file.
QByteArray dump(const QString& databaseFile, const QString& statement)
{
    QProcess process;
    process.start(QStringLiteral("sqlite3"), { "-batch", "-separator", "\t", databaseFile, statement });
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        qFatal("Cannot dump: %s", process.readAllStandardError().constData());
    return process.readAllStandardOutput();
}

// A record whose texts are awkward for a table of tabs.
MetaData awkwardRecord()
{
    MetaData record = TestSupport::sampleRecord(QStringLiteral("/sounds/Müller\t50%1.wav"));
    record.setDescription(QStringLiteral("first\tline\nsecond \"line\""));
    record.setLibrary(QStringLiteral("日本"));
    record.setDuration(125.2);
    record.setRating(2.5);
    return record;
}

} // namespace

class MetaDataExporterTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void recordsEqualAPlainDump_data();
    void recordsEqualAPlainDump();
    void awkwardTextsAreWrittenAsLines();
    void valuesAreWrittenAsText();
    void durationIsRoundedUpToSeconds_data();
    void durationIsRoundedUpToSeconds();
    void unknownFieldsAreDropped();
    void emptyResultIsAHeader();
    void existingFileIsReplaced();
    void relativePathIsRefused_data();
    void relativePathIsRefused();
    void fileThatCannotBeOpenedIsAnError_data();
    void fileThatCannotBeOpenedIsAnError();
    void catalogueIsNeverOverwritten_data();
    void catalogueIsNeverOverwritten();
    void writableFileInAReadOnlyFolderIsWrittenInPlace();
    void fullDiskIsAnErrorAndKeepsTheEarlierFile_data();
    void fullDiskIsAnErrorAndKeepsTheEarlierFile();
    void lastByteThatDoesNotFitIsAnError();
    void cancelAtEachPageKeepsTheEarlierFile_data();
    void cancelAtEachPageKeepsTheEarlierFile();
    void cancelLeavesNoNewFile();
    void exporterDestroyedDuringTheRunLeavesNoFile();
    void fileIsWholeWhenTheEndIsTold();

private:
    QString exportTo(const QString& path);
    QString target() const { return m_folder->filePath(QStringLiteral("out.tsv")); }

    StoreFixture m_store;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<MetaDataExporter> m_exporter;
};

void MetaDataExporterTest::initTestCase()
{
    m_store.open();
    fillTable(m_store, bigTable, rowsOfBigTable);
    m_store.insert(smallTable, MetaDataList{ awkwardRecord() });
}

void MetaDataExporterTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_exporter = std::make_unique<MetaDataExporter>();
    m_exporter->setDatabase(&m_store.database(), bigTable);
    m_exporter->setExportFields({ "filePath", "fileName", "library", "description", "duration" });
    m_exporter->setFilePath(target());
}

void MetaDataExporterTest::cleanup()
{
    m_exporter.reset();
    m_folder.reset();
}

// The error text of the whole run.
QString MetaDataExporterTest::exportTo(const QString& path)
{
    m_exporter->setFilePath(path);
    return TestSupport::await(m_exporter->start())->errorString();
}

void MetaDataExporterTest::recordsEqualAPlainDump_data()
{
    QTest::addColumn<QVariantMap>("parameters");
    QTest::addColumn<QString>("ending");
    QTest::newRow("whole table by path") << QVariantMap{ { "sortField", "filePath" } } << "ORDER BY filePath, id";
    QTest::newRow("by library, from the last")
        << QVariantMap{ { "sortField", "library" }, { "sortOrder", 1 } } << "ORDER BY library DESC, id DESC";
    QTest::newRow("playlist") << QVariantMap{ { "playlistOnly", true }, { "sortField", "filePath" } }
                              << "WHERE playlist=1 ORDER BY filePath, id";
    QTest::newRow("lookup") << QVariantMap{ { "lookup", "9 !12" }, { "lookupFields", QStringList{ "description" } },
        { "sortField", "duration" } }
                            << "WHERE description LIKE '%9%' AND description NOT LIKE '%12%' ORDER BY duration, id";
}

void MetaDataExporterTest::recordsEqualAPlainDump()
{
    QFETCH(QVariantMap, parameters);
    QFETCH(QString, ending);
    m_exporter->setQueryParameters(parameters);

    QCOMPARE(exportTo(target()), QString());

    const QByteArray rows = dump(m_store.filePath(),
        QStringLiteral("SELECT filePath, fileName, library, description, printf('%02d:%02d', CAST(duration AS INTEGER) "
                       "/ 60, CAST(duration AS INTEGER) % 60) FROM MetaData1 ")
            + ending);
    QVERIFY(rows.count('\n') > 20);
    QVERIFY(contents(target()) == "filePath\tfileName\tlibrary\tdescription\tduration\n" + rows);
    QCOMPARE(namesIn(m_folder->path()), QStringList({ "out.tsv" }));
}

void MetaDataExporterTest::awkwardTextsAreWrittenAsLines()
{
    m_exporter->setDatabase(&m_store.database(), smallTable);
    m_exporter->setExportFields({ "fileName", "description", "library", "duration" });

    QCOMPARE(exportTo(target()), QString());

    QCOMPARE(contents(target()),
        QStringLiteral("fileName\tdescription\tlibrary\tduration\n"
                       "Müller 50%1.wav\tfirst line\nsecond \"line\"\t日本\t02:06\n")
            .toUtf8());
}

void MetaDataExporterTest::valuesAreWrittenAsText()
{
    m_exporter->setDatabase(&m_store.database(), smallTable);
    m_exporter->setExportFields({ "rating", "sampleRate", "channelsCount", "artist", "bitsPerSample" });
    QLocale::setDefault(QLocale(QLocale::German));

    const QString errorText = exportTo(target());
    QLocale::setDefault(QLocale::c());

    QCOMPARE(errorText, QString());
    QCOMPARE(contents(target()),
        QByteArray("rating\tsampleRate\tchannelsCount\tartist\tbitsPerSample\n2.5\t48000\t2\t\t16\n"));
}

void MetaDataExporterTest::durationIsRoundedUpToSeconds_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("just above a whole minute less a second") << 59.01 << QByteArray("01:00");
    QTest::newRow("more than an hour") << 3725.0 << QByteArray("62:05");
    QTest::newRow("a part of a second") << 0.001 << QByteArray("00:01");
}

void MetaDataExporterTest::durationIsRoundedUpToSeconds()
{
    QFETCH(double, seconds);
    QFETCH(QByteArray, text);
    MetaData record = TestSupport::sampleRecord(QStringLiteral("/duration.wav"));
    record.setDuration(seconds);
    QCOMPARE(m_store.execute(QStringLiteral("DELETE FROM MetaData4")), QString());
    m_store.insert(4, MetaDataList{ record });
    m_exporter->setDatabase(&m_store.database(), 4);
    m_exporter->setExportFields({ "duration" });

    QCOMPARE(exportTo(target()), QString());

    QCOMPARE(contents(target()), QByteArray("duration\n") + text + '\n');
}

void MetaDataExporterTest::unknownFieldsAreDropped()
{
    m_exporter->setExportFields({ "year", "error", "fileName", "FileName", "", "artist" });

    QCOMPARE(m_exporter->exportFields(), QStringList({ "year", "fileName", "artist" }));
}

void MetaDataExporterTest::emptyResultIsAHeader()
{
    m_exporter->setDatabase(&m_store.database(), emptyTable);
    m_exporter->setExportFields(allFieldNames());

    QCOMPARE(exportTo(target()), QString());

    QCOMPARE(contents(target()), (allFieldNames().join('\t') + '\n').toUtf8());
}

void MetaDataExporterTest::existingFileIsReplaced()
{
    TestSupport::writeFile(target(), QByteArray(10000000, 'x'));

    QCOMPARE(exportTo(target()), QString());

    QCOMPARE(contents(target()).count('\n'), rowsOfBigTable + 1);
    QVERIFY(!contents(target()).endsWith('x'));
}

void MetaDataExporterTest::relativePathIsRefused_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("name") << "out.tsv";
    QTest::newRow("name with a place holder") << "out%1.tsv";
    QTest::newRow("folder above") << "../out.tsv";
    QTest::newRow("nothing") << "";
}

void MetaDataExporterTest::relativePathIsRefused()
{
    QFETCH(QString, path);
    QCOMPARE(exportTo(path), QStringLiteral("Invalid file name: ") + path);
    QVERIFY(!QFileInfo::exists(QStringLiteral("out.tsv")));
}

void MetaDataExporterTest::fileThatCannotBeOpenedIsAnError_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("in a missing folder") << "missing/out.tsv";
    QTest::newRow("a folder") << QDir::tempPath();
    QTest::newRow("a device") << "/dev/full";
    QTest::newRow("in a read-only folder") << "closed/out.tsv";
}

void MetaDataExporterTest::fileThatCannotBeOpenedIsAnError()
{
    QFETCH(QString, path);
    path = QDir(m_folder->path()).filePath(path);
    const QString closed = m_folder->filePath(QStringLiteral("closed"));
    QVERIFY(QDir().mkpath(closed));
    QVERIFY(QFile::setPermissions(closed, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    const PermissionsCount permissionsCount;

    QCOMPARE(exportTo(path), QStringLiteral("Unable to open file: ") + path);

    QVERIFY(namesIn(closed).isEmpty());
    QVERIFY(QFileInfo::exists(QStringLiteral("/dev/full")));
}

void MetaDataExporterTest::catalogueIsNeverOverwritten_data()
{
    QTest::addColumn<QString>("kind");
    for (const char* kind : { "its path", "a link", "its journal" })
        QTest::newRow(kind) << kind;
}

void MetaDataExporterTest::catalogueIsNeverOverwritten()
{
    QFETCH(QString, kind);
    QString path = m_store.filePath();
    if (kind == QLatin1String("its journal"))
        path += QLatin1String("-journal");
    if (kind == QLatin1String("a link")) {
        path = target();
        QVERIFY(QFile::link(m_store.filePath(), path));
    }

    QCOMPARE(exportTo(path), QStringLiteral("Unable to open file: ") + path);

    QCOMPARE(m_store.records(bigTable).size(), rowsOfBigTable);
    QCOMPARE(namesIn(m_store.folderPath()), QStringList({ "VellumcastDB.dat" }));
    QCOMPARE(TestSupport::firstValue(m_store.filePath(), QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(),
        rowsOfBigTable);
}

void MetaDataExporterTest::writableFileInAReadOnlyFolderIsWrittenInPlace()
{
    TestSupport::writeFile(target(), "old");
    QVERIFY(QFile::setPermissions(m_folder->path(), QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    QString errorText;
    {
        const PermissionsCount permissionsCount;
        errorText = exportTo(target());
    }
    QVERIFY(QFile::setPermissions(
        m_folder->path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner));

    QCOMPARE(errorText, QString());
    QCOMPARE(contents(target()).count('\n'), rowsOfBigTable + 1);
}

void MetaDataExporterTest::fullDiskIsAnErrorAndKeepsTheEarlierFile_data()
{
    QTest::addColumn<int>("percent");
    QTest::newRow("full at the first page") << 10;
    QTest::newRow("full at the second page") << 60;
    QTest::newRow("full at the last page") << 95;
}

void MetaDataExporterTest::fullDiskIsAnErrorAndKeepsTheEarlierFile()
{
    QFETCH(int, percent);
    QCOMPARE(exportTo(target()), QString());
    const SmallDisk disk(QFileInfo(target()).size() * percent / 100);
    const QString path = disk.filePath(QStringLiteral("out.tsv"));
    TestSupport::writeFile(path, "earlier");

    QCOMPARE(exportTo(path), QStringLiteral("Unable to write file: ") + path);

    QCOMPARE(contents(path), QByteArray("earlier"));
    QCOMPARE(namesIn(disk.path()), QStringList({ "out.tsv" }));
}

void MetaDataExporterTest::lastByteThatDoesNotFitIsAnError()
{
    QCOMPARE(exportTo(target()), QString());
    const qint64 pageBytes = 4096;
    const qint64 pages = QFileInfo(target()).size() / pageBytes;
    const SmallDisk disk(pages * pageBytes);
    const QString path = disk.filePath(QStringLiteral("out.tsv"));

    QCOMPARE(exportTo(path), QStringLiteral("Unable to write file: ") + path);

    QVERIFY(namesIn(disk.path()).isEmpty());
}

void MetaDataExporterTest::cancelAtEachPageKeepsTheEarlierFile_data()
{
    QTest::addColumn<int>("handledRecords");
    for (const int records : { 0, 10000, 20000 })
        QTest::addRow("after %d records", records) << records;
}

void MetaDataExporterTest::cancelAtEachPageKeepsTheEarlierFile()
{
    QFETCH(int, handledRecords);
    TestSupport::writeFile(target(), "earlier");
    OperationReply* reply = m_exporter->start();
    connect(reply, &OperationReply::progress, reply, [&](int value, int total) {
        if (total > 0 && value == handledRecords)
            reply->cancel();
    });

    const auto ended = TestSupport::await(reply);

    QCOMPARE(ended->errorString(), QStringLiteral("Canceled"));
    QCOMPARE(contents(target()), QByteArray("earlier"));
    QCOMPARE(namesIn(m_folder->path()), QStringList({ "out.tsv" }));
}

void MetaDataExporterTest::cancelLeavesNoNewFile()
{
    OperationReply* reply = m_exporter->start();
    reply->cancel();

    QCOMPARE(TestSupport::await(reply)->errorString(), QStringLiteral("Canceled"));

    QVERIFY(namesIn(m_folder->path()).isEmpty());
}

void MetaDataExporterTest::exporterDestroyedDuringTheRunLeavesNoFile()
{
    OperationReply* reply = m_exporter->start();
    connect(reply, &OperationReply::progress, m_exporter.get(), [this](int value, int) {
        if (value == 10000)
            m_exporter.reset();
    });

    QCOMPARE(TestSupport::await(reply)->errorString(), QStringLiteral("Canceled"));

    QVERIFY(namesIn(m_folder->path()).isEmpty());
}

void MetaDataExporterTest::fileIsWholeWhenTheEndIsTold()
{
    OperationReply* reply = m_exporter->start();
    QByteArray seen;
    connect(reply, &OperationReply::finished, reply, [&]() { seen = contents(target()); });

    const auto ended = TestSupport::await(reply);

    QVERIFY(!ended->hasError());
    QCOMPARE(seen.count('\n'), rowsOfBigTable + 1);
    QVERIFY(seen.endsWith('\n'));
}

QTEST_GUILESS_MAIN(MetaDataExporterTest)
#include "tst_metadataexporter.moc"
