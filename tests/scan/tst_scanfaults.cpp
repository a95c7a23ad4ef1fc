// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/scan/corpus.h"
#include "tests/support/storefixture.h"
#include "tests/support/testsupport.h"

#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using TestSupport::StoreFixture;

namespace {

constexpr int tableId = 1;
constexpr int scanTimeout = 100000; // milliseconds

// How a scan in a process of its own ended.
struct Outcome
{
    bool hasEnded = false;
    QStringList warnings;
    QString ending;
};

Outcome run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    Outcome outcome;
    outcome.hasEnded = process.waitForFinished(scanTimeout) && process.exitStatus() == QProcess::NormalExit;
    const QStringList lines = QString::fromUtf8(process.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
    outcome.warnings = lines.filter(QRegularExpression(QStringLiteral("^warning ")));
    outcome.ending = lines.value(lines.size() - 1);
    return outcome;
}

Outcome runScan(const QStringList& arguments)
{
    return run(QStringLiteral(VELLUMCAST_SCAN_PROGRAM), arguments);
}

} // namespace

class ScanFaultsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void limitedFileSizeKeepsTheEarlierRows_data();
    void limitedFileSizeKeepsTheEarlierRows();
    void limitedFileSizeKeepsUnchangedRows();
    void fullDiskKeepsTheEarlierRows_data();
    void fullDiskKeepsTheEarlierRows();
    void readOnlyFolderKeepsTheEarlierRows();

private:
    void compareWithEarlierRows();
    void compareFault(const Outcome& outcome);

    QTemporaryDir m_folder;
    QString m_sounds;
    std::unique_ptr<StoreFixture> m_store;
    MetaDataList m_earlier;
};

void ScanFaultsTest::initTestCase()
{
    m_sounds = m_folder.filePath(QStringLiteral("sounds"));
    Corpus::generate(m_sounds, 2000, 0.0, { "--plain", "--max-bytes", "8192" });
}

void ScanFaultsTest::init()
{
    m_store = std::make_unique<StoreFixture>();
    m_store->open();
    MetaDataList records;
    for (int number = 0; number < 100; ++number)
        records.append(TestSupport::sampleRecord(QStringLiteral("/earlier/%1.wav").arg(number)));
    m_store->insert(tableId, records, 1);
    m_earlier = m_store->records(tableId);
    m_store->database().close();
}

void ScanFaultsTest::cleanup()
{
    m_store.reset();
}

void ScanFaultsTest::compareWithEarlierRows()
{
    m_store->open();
    const MetaDataList records = m_store->records(tableId);
    QCOMPARE(records.size(), m_earlier.size());
    for (int row = 0; row < records.size(); ++row)
        QCOMPARE(records.at(row).toVariantMap(), m_earlier.at(row).toVariantMap());
    QCOMPARE(TestSupport::firstValue(m_store->filePath(), QStringLiteral("PRAGMA integrity_check")).toString(),
        QStringLiteral("ok"));
}

// The scan said that it could not write, and ended by itself.
void ScanFaultsTest::compareFault(const Outcome& outcome)
{
    QVERIFY(outcome.hasEnded);
    const bool hasUnknownError = !outcome.warnings.filter(QStringLiteral("warning Unknown database error: ")).isEmpty();
    const QRegularExpression transactionError(QStringLiteral("^error Unable to (begin|finalize) scan transaction: "));
    const bool hasTransactionError = transactionError.match(outcome.ending).hasMatch();
    QVERIFY2(hasUnknownError || hasTransactionError, qPrintable(outcome.ending));
}

void ScanFaultsTest::limitedFileSizeKeepsTheEarlierRows_data()
{
    QTest::addColumn<int>("pages");
    QTest::newRow("no room at all") << 0;
    QTest::newRow("room for one page") << 1;
    QTest::newRow("room for ten pages") << 10;
}

void ScanFaultsTest::limitedFileSizeKeepsTheEarlierRows()
{
    QFETCH(int, pages);
    const qint64 size = QFileInfo(m_store->filePath()).size() + pages * 65536;

    const Outcome outcome = runScan({ m_store->filePath(), m_sounds, QString::number(size) });

    compareFault(outcome);
    compareWithEarlierRows();
}

// All files are known: the room for the journal ends while their rows get the time stamp.
void ScanFaultsTest::limitedFileSizeKeepsUnchangedRows()
{
    QCOMPARE(runScan({ m_store->filePath(), m_sounds }).ending, QStringLiteral("finished"));
    m_store->open();
    m_earlier = m_store->records(tableId);
    m_store->database().close();
    QVERIFY(m_earlier.size() > 2000);

    const Outcome outcome = runScan({ m_store->filePath(), m_sounds, QString::number(3 * 65536) });

    QVERIFY2(outcome.ending.startsWith(QLatin1String("error Unable to finalize scan transaction: ")),
        qPrintable(outcome.ending));
    compareFault(outcome);
    compareWithEarlierRows();
}

void ScanFaultsTest::fullDiskKeepsTheEarlierRows_data()
{
    QTest::addColumn<int>("pages");
    QTest::newRow("full at the first change") << 5;
    QTest::newRow("full at the commit") << 25;
}

void ScanFaultsTest::fullDiskKeepsTheEarlierRows()
{
    QFETCH(int, pages);
    const QString disk = m_folder.filePath(QStringLiteral("disk"));
    QVERIFY(QDir().mkpath(disk));
    const qint64 size = QFileInfo(m_store->filePath()).size() + pages * 65536;
    // A small disk of the scan's own, seen by nobody else; the database is copied there and back.
    const QString script = QStringLiteral("mount -t tmpfs -o size=%1 tmpfs \"$1\" || exit 99\n"
                                          "cp \"$2\" \"$1/db\"; \"$3\" \"$1/db\" \"$4\"; result=$?\n"
                                          "cp \"$1\"/db* \"$(dirname \"$2\")\" && mv \"$(dirname \"$2\")/db\" \"$2\"\n"
                                          "exit $result\n")
                               .arg(size);
    Outcome outcome = run(QStringLiteral("unshare"),
        { "-m", "sh", "-c", script, "sh", disk, m_store->filePath(), VELLUMCAST_SCAN_PROGRAM, m_sounds });
    // Where nobody may mount, a limit on the size of files takes its place.
    if (outcome.ending.isEmpty())
        outcome = runScan({ m_store->filePath(), m_sounds, QString::number(size) });

    compareFault(outcome);
    // SQLite gives the whole transaction up when it finds no room, so the scan goes no further than its batch.
    QVERIFY(outcome.warnings.size() <= 40);
    compareWithEarlierRows();
}

void ScanFaultsTest::readOnlyFolderKeepsTheEarlierRows()
{
    const auto readable = QFileDevice::ReadOwner;
    QVERIFY(QFile::setPermissions(m_store->filePath(), readable));
    QVERIFY(QFile::setPermissions(m_store->folderPath(), readable | QFileDevice::ExeOwner));

    const Outcome outcome = runScan({ m_store->filePath(), m_sounds });
    QVERIFY(QFile::setPermissions(m_store->folderPath(), readable | QFileDevice::WriteOwner | QFileDevice::ExeOwner));
    QVERIFY(QFile::setPermissions(m_store->filePath(), readable | QFileDevice::WriteOwner));

    compareFault(outcome);
    compareWithEarlierRows();
}

QTEST_GUILESS_MAIN(ScanFaultsTest)
#include "tst_scanfaults.moc"
