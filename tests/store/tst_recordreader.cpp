// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/recordreader.h"
#include "tests/store/connectionfixture.h"

#include <QSqlQuery>
#include <QtTest>

namespace {

// A row with a value of its own in every column.
const char* const insertRow
    = "INSERT INTO MetaData4 VALUES (6000000001, '/sounds/Kick.wav', 'Kick.wav', 'wav', 'Drums', 'a kick', 1.25, 42.5, "
      "44100, 2, 24, 'X17', 'Ann', 'Kick', 'One', 'loud', 'Techno', '1999', '320', 1, 1700000000123)";

QVariantMap rowValues()
{
    return { { "id", Q_INT64_C(6000000001) }, { "filePath", "/sounds/Kick.wav" }, { "fileName", "Kick.wav" },
        { "fileType", "wav" }, { "error", QString() }, { "library", "Drums" }, { "description", "a kick" },
        { "duration", 1.25 }, { "rating", 42.5 }, { "sampleRate", 44100 }, { "channelsCount", 2 },
        { "bitsPerSample", 24 }, { "originReference", "X17" }, { "artist", "Ann" }, { "title", "Kick" },
        { "album", "One" }, { "comments", "loud" }, { "genre", "Techno" }, { "year", "1999" }, { "bitrate", "320" },
        { "playlist", 1 }, { "scanTimestamp", Q_INT64_C(1700000000123) } };
}

} // namespace

class RecordReaderTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void rowFillsEveryField();
    void columnsThatAreNotFieldsAreIgnored();
    void missingColumnsGiveDefaults();
    void nullColumnsGiveDefaults();
    void everyRowGivesARecordOfItsOwn();
    void recordIsFetchedById();
    void unknownIdGivesANullRecord();
    void unknownTableGivesANullRecord();

private:
    std::unique_ptr<ConnectionFixture> m_fixture;
};

void RecordReaderTest::init()
{
    m_fixture = std::make_unique<ConnectionFixture>();
    QCOMPARE(m_fixture->execute(insertRow), QString());
}

void RecordReaderTest::cleanup()
{
    m_fixture.reset();
}

void RecordReaderTest::rowFillsEveryField()
{
    QSqlQuery query("SELECT * FROM MetaData4", m_fixture->connection());
    QVERIFY(query.next());

    QCOMPARE(RecordReader(query).read().toVariantMap(), rowValues());
}

void RecordReaderTest::columnsThatAreNotFieldsAreIgnored()
{
    QSqlQuery query("SELECT 5 AS other, title, title AS Artist FROM MetaData4", m_fixture->connection());
    QVERIFY(query.next());

    const MetaData record = RecordReader(query).read();

    QCOMPARE(record.title(), QStringLiteral("Kick"));
    QVERIFY(record.artist().isEmpty());
}

void RecordReaderTest::missingColumnsGiveDefaults()
{
    QSqlQuery query("SELECT filePath FROM MetaData4", m_fixture->connection());
    QVERIFY(query.next());

    const MetaData record = RecordReader(query).read();

    QVERIFY(!record.isNull());
    QCOMPARE(record.filePath(), QStringLiteral("/sounds/Kick.wav"));
    QCOMPARE(record.duration(), 0.0);
    QCOMPARE(record.id(), Q_INT64_C(0));
}

void RecordReaderTest::nullColumnsGiveDefaults()
{
    QCOMPARE(m_fixture->execute("UPDATE MetaData4 SET rating=NULL, sampleRate=NULL, artist=NULL"), QString());
    QSqlQuery query("SELECT * FROM MetaData4", m_fixture->connection());
    QVERIFY(query.next());

    const MetaData record = RecordReader(query).read();

    QCOMPARE(record.rating(), 0.0);
    QCOMPARE(record.sampleRate(), 0);
    QVERIFY(record.artist().isEmpty());
}

void RecordReaderTest::everyRowGivesARecordOfItsOwn()
{
    QCOMPARE(m_fixture->execute("INSERT INTO MetaData4 (filePath, fileName, fileType, description, artist) "
                                "VALUES ('/sounds/snare.wav', 'snare.wav', 'wav', '', 'Bob')"),
        QString());
    QSqlQuery query("SELECT * FROM MetaData4 ORDER BY id", m_fixture->connection());
    const RecordReader reader(query);

    MetaDataList records;
    while (query.next())
        records.append(reader.read());

    QCOMPARE(records.size(), 2);
    QCOMPARE(records.at(0).toVariantMap(), rowValues());
    QCOMPARE(records.at(1).artist(), QStringLiteral("Bob"));
    QCOMPARE(records.at(1).rating(), 1.0);
}

void RecordReaderTest::recordIsFetchedById()
{
    QCOMPARE(fetchMetaData(m_fixture->connection(), 4, 6000000001).toVariantMap(), rowValues());
}

void RecordReaderTest::unknownIdGivesANullRecord()
{
    QVERIFY(fetchMetaData(m_fixture->connection(), 4, 1).isNull());
    QVERIFY(fetchMetaData(m_fixture->connection(), 5, 6000000001).isNull());
}

void RecordReaderTest::unknownTableGivesANullRecord()
{
    QVERIFY(fetchMetaData(m_fixture->connection(), 16, 1).isNull());
}

QTEST_GUILESS_MAIN(RecordReaderTest)

#include "tst_recordreader.moc"
