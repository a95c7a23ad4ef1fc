// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/fieldcatalogue.h"
#include "store/metadata.h"
#include "store/metatypes.h"

#include <QThread>
#include <QtTest>

namespace {

// Every field with a value that no other field has.
QVariantMap distinctValues()
{
    return { { "id", Q_INT64_C(5000000001) }, { "filePath", "/sounds/kick.wav" }, { "fileName", "kick.wav" },
        { "fileType", "wav" }, { "error", "broken" }, { "library", "Drums" }, { "description", "a kick" },
        { "duration", 1.25 }, { "rating", 42.5 }, { "sampleRate", 44100 }, { "channelsCount", 2 },
        { "bitsPerSample", 24 }, { "originReference", "X17" }, { "artist", "Ann" }, { "title", "Kick" },
        { "album", "One" }, { "comments", "loud" }, { "genre", "Techno" }, { "year", "1999" }, { "bitrate", "320" },
        { "playlist", 1 }, { "scanTimestamp", Q_INT64_C(1700000000123) } };
}

// Receives records through queued calls.
class Receiver : public QObject
{
    Q_OBJECT

public slots:
    void receive(const MetaData& record, const MetaDataList& records)
    {
        m_record = record;
        m_records = records;
    }

public:
    MetaData m_record;
    MetaDataList m_records;
};

} // namespace

class MetaDataTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void defaultRecordIsNullAndHasAnEmptyMap();
    void recordOfAnEmptyMapHasAllKeys();
    void mapValuesHaveTheFieldTypes_data();
    void mapValuesHaveTheFieldTypes();
    void missingKeysGiveEmptyTextsAndZeros();
    void everyFieldSurvivesTheMapForm();
    void gettersReturnWhatTheMapHeld();
    void settersFillTheMapForm();
    void otherTypesAreConverted();
    void nullRecordReadsAsDefaults();
    void settingAFieldMakesANullRecordOne();
    void changingACopyLeavesTheOriginal();
    void movedRecordKeepsItsData();
    void listIsAnOrderedListOfItsOwnClass();
    void recordsTravelThroughAQueuedCall();
};

void MetaDataTest::initTestCase()
{
    registerStoreMetaTypes();
}

void MetaDataTest::defaultRecordIsNullAndHasAnEmptyMap()
{
    const MetaData record;

    QVERIFY(record.isNull());
    QVERIFY(record.toVariantMap().isEmpty());
}

void MetaDataTest::recordOfAnEmptyMapHasAllKeys()
{
    const MetaData record{ QVariantMap() };

    QVERIFY(!record.isNull());
    QCOMPARE(record.toVariantMap().size(), 22);
    for (const QString& name : allFieldNames())
        QVERIFY2(record.toVariantMap().contains(name), qPrintable(name));
    QVERIFY(record.toVariantMap().contains("error"));
}

void MetaDataTest::mapValuesHaveTheFieldTypes_data()
{
    QTest::addColumn<QString>("fieldName");
    QTest::addColumn<int>("type");

    const QMap<QString, int> numberTypes{ { "id", QMetaType::LongLong }, { "scanTimestamp", QMetaType::LongLong },
        { "duration", QMetaType::Double }, { "rating", QMetaType::Double }, { "sampleRate", QMetaType::Int },
        { "channelsCount", QMetaType::Int }, { "bitsPerSample", QMetaType::Int }, { "playlist", QMetaType::Int } };
    for (const QString& name : allFieldNames() + QStringList{ "error" })
        QTest::newRow(qPrintable(name)) << name << numberTypes.value(name, QMetaType::QString);
}

void MetaDataTest::mapValuesHaveTheFieldTypes()
{
    QFETCH(QString, fieldName);
    QFETCH(int, type);

    QCOMPARE(MetaData(QVariantMap()).toVariantMap().value(fieldName).userType(), type);
    QCOMPARE(MetaData(distinctValues()).toVariantMap().value(fieldName).userType(), type);
}

void MetaDataTest::missingKeysGiveEmptyTextsAndZeros()
{
    const MetaData record({ { "filePath", "/sounds/kick.wav" } });

    QCOMPARE(record.filePath(), QStringLiteral("/sounds/kick.wav"));
    QCOMPARE(record.duration(), 0.0);
    QCOMPARE(record.rating(), 0.0);
    QCOMPARE(record.sampleRate(), 0);
    QCOMPARE(record.id(), Q_INT64_C(0));
    QCOMPARE(record.scanTimestamp(), Q_INT64_C(0));
    QVERIFY(record.library().isEmpty());
    QVERIFY(record.error().isEmpty());
}

void MetaDataTest::everyFieldSurvivesTheMapForm()
{
    QCOMPARE(MetaData(distinctValues()).toVariantMap(), distinctValues());
}

void MetaDataTest::gettersReturnWhatTheMapHeld()
{
    const MetaData record(distinctValues());

    const QVariantMap read{ { "id", record.id() }, { "filePath", record.filePath() }, { "fileName", record.fileName() },
        { "fileType", record.fileType() }, { "error", record.error() }, { "library", record.library() },
        { "description", record.description() }, { "duration", record.duration() }, { "rating", record.rating() },
        { "sampleRate", record.sampleRate() }, { "channelsCount", record.channelsCount() },
        { "bitsPerSample", record.bitsPerSample() }, { "originReference", record.originReference() },
        { "artist", record.artist() }, { "title", record.title() }, { "album", record.album() },
        { "comments", record.comments() }, { "genre", record.genre() }, { "year", record.year() },
        { "bitrate", record.bitrate() }, { "playlist", record.playlist() },
        { "scanTimestamp", record.scanTimestamp() } };
    QCOMPARE(read, distinctValues());
}

void MetaDataTest::settersFillTheMapForm()
{
    MetaData record;
    record.setId(5000000001);
    record.setFilePath("/sounds/kick.wav");
    record.setFileName("kick.wav");
    record.setFileType("wav");
    record.setError("broken");
    record.setLibrary("Drums");
    record.setDescription("a kick");
    record.setDuration(1.25);
    record.setRating(42.5);
    record.setSampleRate(44100);
    record.setChannelsCount(2);
    record.setBitsPerSample(24);
    record.setOriginReference("X17");
    record.setArtist("Ann");
    record.setTitle("Kick");
    record.setAlbum("One");
    record.setComments("loud");
    record.setGenre("Techno");
    record.setYear("1999");
    record.setBitrate("320");
    record.setPlaylist(1);
    record.setScanTimestamp(1700000000123);

    QCOMPARE(record.toVariantMap(), distinctValues());
}

void MetaDataTest::otherTypesAreConverted()
{
    const MetaData record({ { "duration", "1.5" }, { "year", 1999 }, { "sampleRate", "48000" }, { "id", "7" },
        { "playlist", true }, { "scanTimestamp", 12.0 } });

    QCOMPARE(record.duration(), 1.5);
    QCOMPARE(record.year(), QStringLiteral("1999"));
    QCOMPARE(record.sampleRate(), 48000);
    QCOMPARE(record.id(), Q_INT64_C(7));
    QCOMPARE(record.playlist(), 1);
    QCOMPARE(record.scanTimestamp(), Q_INT64_C(12));
}

void MetaDataTest::nullRecordReadsAsDefaults()
{
    const MetaData record;

    QVERIFY(record.filePath().isEmpty());
    QCOMPARE(record.duration(), 0.0);
    QCOMPARE(record.id(), Q_INT64_C(0));
    QVERIFY(record.isNull());
}

void MetaDataTest::settingAFieldMakesANullRecordOne()
{
    MetaData record;

    record.setRating(0.0);

    QVERIFY(!record.isNull());
    QCOMPARE(record.toVariantMap(), MetaData(QVariantMap()).toVariantMap());
}

void MetaDataTest::changingACopyLeavesTheOriginal()
{
    static_assert(sizeof(MetaData) == sizeof(void*), "a copy is a pointer to what it shares");
    MetaData original;
    original.setTitle("before");
    MetaData copy = original;

    copy.setTitle("after");

    QCOMPARE(original.title(), QStringLiteral("before"));
    QCOMPARE(copy.title(), QStringLiteral("after"));
}

void MetaDataTest::movedRecordKeepsItsData()
{
    MetaData original(distinctValues());

    const MetaData moved = std::move(original);
    MetaData assigned;
    assigned = MetaData(moved);

    QCOMPARE(moved.toVariantMap(), distinctValues());
    QCOMPARE(assigned.toVariantMap(), distinctValues());
}

void MetaDataTest::listIsAnOrderedListOfItsOwnClass()
{
    MetaDataList list;
    list.append(MetaData({ { "title", "first" } }));
    list << MetaData({ { "title", "second" } });

    QStringList titles;
    for (const MetaData& record : qAsConst(list))
        titles.append(record.title());

    QCOMPARE(list.size(), 2);
    QCOMPARE(list.at(1).title(), QStringLiteral("second"));
    QCOMPARE(titles, QStringList({ "first", "second" }));
    QVERIFY(QMetaType::type("MetaDataList") != qMetaTypeId<QList<MetaData>>());
}

void MetaDataTest::recordsTravelThroughAQueuedCall()
{
    QVERIFY(QMetaType::type("MetaData") != QMetaType::UnknownType);
    QVERIFY(QMetaType::type("MetaDataList") != QMetaType::UnknownType);
    QThread thread;
    Receiver receiver;
    receiver.moveToThread(&thread);
    thread.start();
    const MetaData record(distinctValues());

    const bool isQueued = QMetaObject::invokeMethod(&receiver, "receive", Qt::QueuedConnection, Q_ARG(MetaData, record),
        Q_ARG(MetaDataList, MetaDataList({ record, MetaData() })));
    QMetaObject::invokeMethod(
        &receiver, [&thread]() { thread.quit(); }, Qt::QueuedConnection);
    thread.wait();

    QVERIFY(isQueued);
    QCOMPARE(receiver.m_record.toVariantMap(), distinctValues());
    QCOMPARE(receiver.m_records.size(), 2);
    QVERIFY(receiver.m_records.at(1).isNull());
}

QTEST_GUILESS_MAIN(MetaDataTest)

#include "tst_metadata.moc"
