// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/recordreader.h"
#include "store/recordwriter.h"
#include "tests/store/connectionfixture.h"
#include "tests/support/storefixture.h"

#include <QtTest>

using TestSupport::sampleRecord;

namespace {

constexpr qint64 earlierScan = 1600000000000;
constexpr qint64 laterScan = 1700000000123;

// Sets every field that is stored, save the id and the time stamp.
MetaData fullRecord()
{
    MetaData record = sampleRecord("/sounds/Kick.wav");
    record.setLibrary("Drums");
    record.setDescription("a kick");
    record.setDuration(1.25);
    record.setRating(42.5);
    record.setOriginReference("X17");
    record.setArtist("Ann");
    record.setTitle("Kick");
    record.setAlbum("One");
    record.setComments("loud");
    record.setGenre("Techno");
    record.setYear("1999");
    record.setBitrate("320");
    record.setPlaylist(1);
    return record;
}

} // namespace

class RecordWriterTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void newRecordIsInsertedWithTheTimeStamp();
    void recordWithAnIdIsUpdatedAndKeepsItsTimeStamp();
    void updateOfAnUnknownIdWritesNothing();
    void knownPathIsUpdatedAndTouched();
    void unchangedRecordIsTouchedInTheEnd();
    void recordThatCannotBeTouchedIsReturned();
    void allRecordsAreReturnedWhenTheTransactionIsLost();
    void unknownPathIsInserted();
    void idComesBeforeThePath();
    void pathInAnotherCaseIsTheSameRecord();
    void pathInAnotherCaseIsRefusedWithoutLookup();
    void refusedRecords_data();
    void refusedRecords();
    void missingLibraryIsWrittenAsEmpty();
    void missingTagsAreWrittenAsNull();
    void recordWithAnErrorIsReturnedAsItIs();
    void failedRecordsAreReturnedInOrderAndOthersWritten();
    void brokenTableIsAnUnknownError();
    void writerOpensNoTransaction();
    void nothingIsWrittenAfterTheTransactionIsLost();
    void nothingIsWrittenAfterATriggerHasRolledBack();

private:
    MetaDataList write(const MetaDataList& items, qint64 scanTimestamp = laterScan, bool lookupByFilePath = false)
    {
        return writeMetaData(m_fixture->connection(), 2, items, scanTimestamp, lookupByFilePath);
    }
    MetaData stored(qint64 id) const { return fetchMetaData(m_fixture->connection(), 2, id); }
    int rowsCount() const { return m_fixture->value("SELECT COUNT(*) FROM MetaData2").toInt(); }

    std::unique_ptr<ConnectionFixture> m_fixture;
};

void RecordWriterTest::init()
{
    m_fixture = std::make_unique<ConnectionFixture>();
}

void RecordWriterTest::cleanup()
{
    m_fixture.reset();
}

void RecordWriterTest::newRecordIsInsertedWithTheTimeStamp()
{
    QVERIFY(write({ fullRecord() }).isEmpty());

    MetaData expected = fullRecord();
    expected.setId(1);
    expected.setScanTimestamp(laterScan);
    QCOMPARE(stored(1).toVariantMap(), expected.toVariantMap());
    QCOMPARE(rowsCount(), 1);
}

void RecordWriterTest::recordWithAnIdIsUpdatedAndKeepsItsTimeStamp()
{
    write({ sampleRecord("/sounds/other.wav") }, earlierScan);
    MetaData record = fullRecord();
    record.setId(1);
    record.setScanTimestamp(5);

    QVERIFY(write({ record }, laterScan, true).isEmpty());

    record.setScanTimestamp(earlierScan);
    QCOMPARE(stored(1).toVariantMap(), record.toVariantMap());
    QCOMPARE(rowsCount(), 1);
}

void RecordWriterTest::updateOfAnUnknownIdWritesNothing()
{
    MetaData record = fullRecord();
    record.setId(99);

    QVERIFY(write({ record }).isEmpty());

    QCOMPARE(rowsCount(), 0);
}

void RecordWriterTest::knownPathIsUpdatedAndTouched()
{
    write({ fullRecord() }, earlierScan);
    MetaData record = fullRecord();
    record.setRating(1.0);
    record.setLibrary(QString());
    record.setPlaylist(0);

    QVERIFY(write({ record }, laterScan, true).isEmpty());

    QCOMPARE(rowsCount(), 1);
    QCOMPARE(stored(1).scanTimestamp(), laterScan);
    QCOMPARE(stored(1).rating(), 1.0);
    QCOMPARE(stored(1).library(), QString());
    QCOMPARE(stored(1).playlist(), 0);
}

void RecordWriterTest::unchangedRecordIsTouchedInTheEnd()
{
    write({ fullRecord(), sampleRecord("/other.wav") }, earlierScan);
    RecordWriter writer(m_fixture->connection(), 2, laterScan, true);

    QVERIFY(writer.write(MetaDataList{ fullRecord() }).isEmpty());
    QCOMPARE(stored(1).scanTimestamp(), earlierScan);
    QVERIFY(writer.finish().isEmpty());

    QCOMPARE(writer.finishError(), QString());
    QCOMPARE(stored(1).scanTimestamp(), laterScan);
    QCOMPARE(stored(2).scanTimestamp(), earlierScan);
}

void RecordWriterTest::recordThatCannotBeTouchedIsReturned()
{
    write({ fullRecord(), sampleRecord("/other.wav") }, earlierScan);
    QCOMPARE(m_fixture->execute("CREATE TRIGGER refuse BEFORE UPDATE ON MetaData2 WHEN OLD.id=1 BEGIN "
                                "SELECT RAISE(ABORT, 'refused'); END"),
        QString());

    const MetaDataList failedItems = write({ fullRecord(), sampleRecord("/other.wav") }, laterScan, true);

    QCOMPARE(failedItems.size(), 1);
    QCOMPARE(failedItems.first().filePath(), fullRecord().filePath());
    QCOMPARE(failedItems.first().error(), QStringLiteral("Database constraint violation"));
    QCOMPARE(stored(1).scanTimestamp(), earlierScan);
    QCOMPARE(stored(2).scanTimestamp(), laterScan);
}

void RecordWriterTest::allRecordsAreReturnedWhenTheTransactionIsLost()
{
    write({ fullRecord(), sampleRecord("/other.wav") }, earlierScan);
    QCOMPARE(m_fixture->execute("CREATE TRIGGER refuse BEFORE UPDATE ON MetaData2 WHEN OLD.id=1 BEGIN "
                                "SELECT RAISE(ROLLBACK, 'refused'); END"),
        QString());
    QCOMPARE(m_fixture->execute("BEGIN TRANSACTION"), QString());

    const MetaDataList failedItems = write({ fullRecord(), sampleRecord("/other.wav") }, laterScan, true);

    QCOMPARE(failedItems.size(), 2);
    QCOMPARE(failedItems.last().error(), QStringLiteral("Unknown database error"));
    QCOMPARE(stored(1).scanTimestamp(), earlierScan);
    QCOMPARE(stored(2).scanTimestamp(), earlierScan);
}

void RecordWriterTest::unknownPathIsInserted()
{
    QVERIFY(write({ fullRecord() }, laterScan, true).isEmpty());

    QCOMPARE(stored(1).filePath(), fullRecord().filePath());
    QCOMPARE(stored(1).scanTimestamp(), laterScan);
}

void RecordWriterTest::idComesBeforeThePath()
{
    write({ sampleRecord("/a.wav"), sampleRecord("/b.wav") }, earlierScan);
    MetaData record = sampleRecord("/b.wav");
    record.setId(1);

    const MetaDataList failedItems = write({ record }, laterScan, true);

    QCOMPARE(failedItems.size(), 1);
    QCOMPARE(failedItems.first().error(), QStringLiteral("Database constraint violation"));
    QCOMPARE(stored(1).filePath(), QStringLiteral("/a.wav"));
}

void RecordWriterTest::pathInAnotherCaseIsTheSameRecord()
{
    write({ sampleRecord("/sounds/Kick.wav") }, earlierScan);

    QVERIFY(write({ sampleRecord("/SOUNDS/kick.WAV") }, laterScan, true).isEmpty());

    QCOMPARE(rowsCount(), 1);
    QCOMPARE(stored(1).filePath(), QStringLiteral("/SOUNDS/kick.WAV"));
}

void RecordWriterTest::pathInAnotherCaseIsRefusedWithoutLookup()
{
    write({ sampleRecord("/sounds/Kick.wav") });

    const MetaDataList failedItems = write({ sampleRecord("/SOUNDS/kick.WAV") });

    QCOMPARE(failedItems.size(), 1);
    QCOMPARE(failedItems.first().error(), QStringLiteral("Database constraint violation"));
    QCOMPARE(failedItems.first().filePath(), QStringLiteral("/SOUNDS/kick.WAV"));
    QCOMPARE(rowsCount(), 1);
}

void RecordWriterTest::refusedRecords_data()
{
    QTest::addColumn<QString>("fieldName");
    QTest::addColumn<QVariant>("value");

    QTest::newRow("no duration") << "duration" << QVariant(0.0);
    QTest::newRow("negative duration") << "duration" << QVariant(-1.5);
    QTest::newRow("no sample rate") << "sampleRate" << QVariant(0);
    QTest::newRow("no channels") << "channelsCount" << QVariant(0);
    QTest::newRow("no bits") << "bitsPerSample" << QVariant(0);
    QTest::newRow("no path") << "filePath" << QVariant(QString());
    QTest::newRow("no name") << "fileName" << QVariant(QString());
    QTest::newRow("no type") << "fileType" << QVariant(QString());
    QTest::newRow("no description") << "description" << QVariant(QString());
}

void RecordWriterTest::refusedRecords()
{
    QFETCH(QString, fieldName);
    QFETCH(QVariant, value);
    QVariantMap values = fullRecord().toVariantMap();
    values.insert(fieldName, value);

    const MetaDataList failedItems = write({ MetaData(values) });

    QCOMPARE(failedItems.size(), 1);
    QCOMPARE(failedItems.first().error(), QStringLiteral("Database constraint violation"));
    QCOMPARE(rowsCount(), 0);
}

void RecordWriterTest::missingLibraryIsWrittenAsEmpty()
{
    MetaData record = sampleRecord("/a.wav");
    record.setLibrary(QString());

    QVERIFY(write({ record }).isEmpty());

    QCOMPARE(m_fixture->value("SELECT library='' FROM MetaData2").toInt(), 1);
}

void RecordWriterTest::missingTagsAreWrittenAsNull()
{
    MetaData record = sampleRecord("/a.wav");
    record.setTitle("");

    QVERIFY(write({ record }).isEmpty());

    QCOMPARE(m_fixture->value("SELECT artist IS NULL AND genre IS NULL AND title='' FROM MetaData2").toInt(), 1);
}

void RecordWriterTest::recordWithAnErrorIsReturnedAsItIs()
{
    MetaData record = fullRecord();
    record.setError("Unable to open input");

    const MetaDataList failedItems = write({ record }, laterScan, true);

    QCOMPARE(failedItems.size(), 1);
    QCOMPARE(failedItems.first().toVariantMap(), record.toVariantMap());
    QCOMPARE(rowsCount(), 0);
}

void RecordWriterTest::failedRecordsAreReturnedInOrderAndOthersWritten()
{
    MetaData unreadable = sampleRecord("/2.wav");
    unreadable.setError("unreadable");
    MetaData refused = sampleRecord("/3.wav");
    refused.setDuration(0);

    const MetaDataList failedItems
        = write({ sampleRecord("/1.wav"), unreadable, refused, sampleRecord("/4.wav"), sampleRecord("/1.wav") });

    QStringList failures;
    for (const MetaData& item : failedItems)
        failures.append(item.filePath() + ' ' + item.error());
    QCOMPARE(failures,
        QStringList(
            { "/2.wav unreadable", "/3.wav Database constraint violation", "/1.wav Database constraint violation" }));
    QCOMPARE(m_fixture->column("SELECT filePath FROM MetaData2 ORDER BY id"), QVariantList({ "/1.wav", "/4.wav" }));
}

void RecordWriterTest::brokenTableIsAnUnknownError()
{
    QCOMPARE(m_fixture->execute("DROP TABLE MetaData2"), QString());

    const MetaDataList failedItems = write({ fullRecord() }, laterScan, true);

    QCOMPARE(failedItems.size(), 1);
    QCOMPARE(failedItems.first().error(), QStringLiteral("Unknown database error"));
}

void RecordWriterTest::writerOpensNoTransaction()
{
    write({ fullRecord() }, laterScan, true);

    QCOMPARE(m_fixture->execute("BEGIN TRANSACTION"), QString());
    write({ sampleRecord("/a.wav") }, laterScan, true);
    QCOMPARE(m_fixture->execute("ROLLBACK"), QString());

    QCOMPARE(rowsCount(), 1);
}

// To SQLite that is a violated constraint.
void RecordWriterTest::nothingIsWrittenAfterATriggerHasRolledBack()
{
    QCOMPARE(m_fixture->execute("CREATE TRIGGER refuse BEFORE INSERT ON MetaData2 WHEN NEW.filePath='/b.wav' BEGIN "
                                "SELECT RAISE(ROLLBACK, 'refused'); END"),
        QString());
    QCOMPARE(m_fixture->execute("BEGIN TRANSACTION"), QString());

    const MetaDataList failedItems = write({ sampleRecord("/a.wav"), sampleRecord("/b.wav"), sampleRecord("/c.wav") });

    QCOMPARE(failedItems.size(), 2);
    QCOMPARE(failedItems.last().error(), QStringLiteral("Database constraint violation"));
    QCOMPARE(rowsCount(), 0);
}

// SQLite gives up the transaction when the disk is full; what is written then would stay although the operation fails.
void RecordWriterTest::nothingIsWrittenAfterTheTransactionIsLost()
{
    MetaData huge = sampleRecord("/huge.wav");
    huge.setDescription(QString(1000000, 'x'));
    const int pageCount = m_fixture->value("PRAGMA page_count").toInt();
    QCOMPARE(m_fixture->execute("PRAGMA max_page_count=" + QString::number(pageCount + 5)), QString());
    QCOMPARE(m_fixture->execute("BEGIN TRANSACTION"), QString());

    const MetaDataList failedItems = write({ sampleRecord("/a.wav"), huge, sampleRecord("/b.wav") });

    QCOMPARE(failedItems.size(), 2);
    QCOMPARE(failedItems.first().error(), QStringLiteral("Unknown database error"));
    QCOMPARE(failedItems.last().error(), QStringLiteral("Unknown database error"));
    QCOMPARE(rowsCount(), 0);
}

QTEST_GUILESS_MAIN(RecordWriterTest)

#include "tst_recordwriter.moc"
