// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/scan/corpus.h"
#include "tests/support/storefixture.h"
#include "tests/support/testsupport.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

using TestSupport::StoreFixture;

namespace {

constexpr int tableId = 1;
constexpr int filesCount = 2000;
constexpr int batchSize = 40;
constexpr int scanTimeout = 60000; // milliseconds
constexpr int longestMoment = 60; // milliseconds

/// A scan in a process of its own.
class ScanProcess
{
public:
    ScanProcess(const QString& databasePath, const QString& folder)
    {
        m_process.start(QStringLiteral(VELLUMCAST_SCAN_PROGRAM), { databasePath, folder });
    }

    /// Reads the output until so many files are done or the process has ended; false after a minute.
    bool waitForProgress(int value)
    {
        while (m_progress < value && !m_hasEnded) {
            if (!m_process.canReadLine() && !m_process.waitForReadyRead(scanTimeout))
                return m_process.state() == QProcess::NotRunning;
            readLines();
        }
        return true;
    }

    /// Ends it at once, wherever it stands.
    bool kill()
    {
        m_process.kill();
        const bool hasEnded = m_process.waitForFinished(scanTimeout);
        readLines();
        return hasEnded;
    }

    /// Waits for the end, but no longer than this; true when it has ended.
    bool waitForEnd(int milliseconds) { return m_process.waitForFinished(milliseconds); }
    bool waitForEnd() { return waitForProgress(filesCount) && m_process.waitForFinished(scanTimeout); }

    int progress() const { return m_progress; }

private:
    void readLines()
    {
        while (m_process.canReadLine()) {
            const QList<QByteArray> words = m_process.readLine().trimmed().split(' ');
            if (words.first() == "progress")
                m_progress = words.at(1).toInt();
            m_hasEnded = m_hasEnded || words.first() == "finished" || words.first() == "error";
        }
    }

    QProcess m_process;
    int m_progress = -1;
    bool m_hasEnded = false;
};

} // namespace

class ScanKillTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void killedScanLeavesNoRow();
    void killedRescanGivesAllRowsTheTimestampOrNone();

private:
    void compareButTimestamps(const MetaDataList& records, const MetaDataList& earlier);
    MetaDataList storedRecords();

    QTemporaryDir m_folder;
    StoreFixture m_store;
    QString m_earlierFolder;
    QString m_folderToKill;
};

void ScanKillTest::initTestCase()
{
    m_earlierFolder = m_folder.filePath(QStringLiteral("earlier"));
    m_folderToKill = m_folder.filePath(QStringLiteral("killed"));
    const QStringList options{ QStringLiteral("--plain"), QStringLiteral("--max-bytes"), QStringLiteral("8192") };
    Corpus::generate(m_earlierFolder, 200, 0.0, options);
    Corpus::generate(m_folderToKill, filesCount, 0.0, options);

    ScanProcess process(m_store.filePath(), m_earlierFolder);
    QVERIFY(process.waitForEnd());
    QCOMPARE(process.progress(), 200);
}

// What a fresh start of the program finds.
MetaDataList ScanKillTest::storedRecords()
{
    m_store.open();
    MetaDataList records = m_store.records(tableId);
    m_store.database().close();
    return records;
}

void ScanKillTest::killedScanLeavesNoRow()
{
    const quint32 seed = QRandomGenerator::system()->generate();
    qInfo("Seed of the moments: %u", seed);
    QRandomGenerator random(seed);
    const MetaDataList earlier = storedRecords();
    QCOMPARE(earlier.size(), 200);

    for (int round = 0; round < 20; ++round) {
        ScanProcess process(m_store.filePath(), m_folderToKill);
        // Not behind the last batch, where the scan may have been committed already.
        const int moment = random.bounded(filesCount - 5 * batchSize);
        QVERIFY(process.waitForProgress(moment));
        QVERIFY(process.kill());
        QVERIFY2(process.progress() < filesCount, "The scan was not killed in time");

        const MetaDataList records = storedRecords();
        QCOMPARE(records.size(), earlier.size());
        for (int row = 0; row < records.size(); ++row)
            QCOMPARE(records.at(row).toVariantMap(), earlier.at(row).toVariantMap());
        QCOMPARE(TestSupport::firstValue(m_store.filePath(), QStringLiteral("PRAGMA integrity_check")).toString(),
            QStringLiteral("ok"));
    }
}

void ScanKillTest::compareButTimestamps(const MetaDataList& records, const MetaDataList& earlier)
{
    QCOMPARE(records.size(), earlier.size());
    for (int row = 0; row < records.size(); ++row) {
        QVariantMap expected = earlier.at(row).toVariantMap();
        expected.insert(QStringLiteral("scanTimestamp"), records.first().scanTimestamp());
        QCOMPARE(records.at(row).toVariantMap(), expected);
    }
    const QString integrity = QStringLiteral("PRAGMA integrity_check");
    QCOMPARE(TestSupport::firstValue(m_store.filePath(), integrity).toString(), QStringLiteral("ok"));
}

// Killed after the last file: while rows get the time stamp, indexes are made or all is committed.
void ScanKillTest::killedRescanGivesAllRowsTheTimestampOrNone()
{
    const QString indexes = QStringLiteral(
        "SELECT group_concat(name) FROM (SELECT name FROM sqlite_master WHERE tbl_name='MetaData1' ORDER BY rowid)");
    // Rows of other folders would keep their time stamp.
    m_store.open();
    QCOMPARE(m_store.execute(QStringLiteral("DELETE FROM MetaData1")), QString());
    m_store.database().close();
    ScanProcess first(m_store.filePath(), m_folderToKill);
    QVERIFY(first.waitForEnd());
    const MetaDataList earlier = storedRecords();
    QCOMPARE(earlier.size(), filesCount);
    const QString earlierIndexes = TestSupport::firstValue(m_store.filePath(), indexes).toString();
    const quint32 seed = QRandomGenerator::system()->generate();
    qInfo("Seed of the moments: %u", seed);
    QRandomGenerator random(seed);
    int killedCount = 0;

    for (int round = 0; round < 20; ++round) {
        ScanProcess process(m_store.filePath(), m_folderToKill);
        QVERIFY(process.waitForProgress(filesCount));
        if (!process.waitForEnd(random.bounded(longestMoment)) && process.kill())
            ++killedCount;

        compareButTimestamps(storedRecords(), earlier);
        QCOMPARE(TestSupport::firstValue(m_store.filePath(), indexes).toString(), earlierIndexes);
    }
    qInfo("Killed in time: %d of 20", killedCount);
    QVERIFY(killedCount > 0);
}

QTEST_GUILESS_MAIN(ScanKillTest)
#include "tst_scankill.moc"
