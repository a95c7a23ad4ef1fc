// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/fieldcatalogue.h"
#include "store/metadatafields.h"
#include "store/querycomposer.h"
#include "store/recordwriter.h"
#include "tests/store/connectionfixture.h"
#include "tests/store/literalwriter.h"
#include "tests/support/storefixture.h"

#include <QRandomGenerator>
#include <QtTest>

#include <limits>

namespace {

constexpr int ownTable = 1;
constexpr int literalTable = 2;

// The texts that two rows may differ by as little as possible.
const QStringList& texts()
{
    static const QStringList values{ QString(), "", " ", "a", "A", "ä", "Ä", "a'b", "50%", "a_b", "\"", "0", "0.0",
        QString(QStringLiteral("a\0b")), "a\n", QString(QChar(0xd800)), "ﬀ 🎵" };
    return values;
}

QVariantList numbers(const QString& field)
{
    if (field == QLatin1String("duration") || field == QLatin1String("rating"))
        return { 1.0, 1.5, 0.1 + 0.2, 0.3, 0.0, -0.0, -1.0, 1e300, std::numeric_limits<double>::quiet_NaN() };
    return { 1, 2, 44100, 0, -1 };
}

class Records
{
public:
    explicit Records(quint32 seed)
        : m_random(seed)
    {
    }

    // Few paths, so that most are found again, in another case too.
    MetaDataList make(int count)
    {
        MetaDataList records;
        for (int index = 0; index < count; ++index)
            records.append(make());
        return records;
    }
    // The same records, every second of them with one field that may be another.
    MetaDataList varied(MetaDataList records)
    {
        for (MetaData& record : records) {
            if (m_random.bounded(2) == 0)
                vary(record, allFieldNames().at(2 + m_random.bounded(18)));
        }
        return records;
    }

private:
    MetaData make()
    {
        MetaData record = TestSupport::sampleRecord(
            QStringLiteral("%1/s/%2.wav").arg(m_random.bounded(5) == 0 ? "/X" : "/x").arg(m_random.bounded(60)));
        for (int changes = m_random.bounded(4); changes > 0; --changes)
            vary(record, allFieldNames().at(2 + m_random.bounded(18)));
        return record;
    }
    void vary(MetaData& record, const QString& field)
    {
        const MetaDataField* access = findMetaDataField(field);
        const bool isText = access->read(record).userType() == QMetaType::QString;
        const QVariantList values = isText ? QVariantList() : numbers(field);
        access->write(record,
            isText ? QVariant(texts().at(m_random.bounded(texts().size())))
                   : values.at(m_random.bounded(values.size())));
    }

    QRandomGenerator m_random;
};

QStringList errorsOf(const MetaDataList& records)
{
    QStringList errors;
    for (const MetaData& record : records)
        errors.append(record.error());
    return errors;
}

} // namespace

/// The record writer saves what it can of the plain statements; the table must be as they leave it.
class RecordWriterEquivalenceTest : public QObject
{
    Q_OBJECT

private slots:
    void tablesAreEqualAfterRandomScans_data();
    void tablesAreEqualAfterRandomScans();
    void tablesAreEqualAfterScansOfManyRows();
    void unchangedRowIsOnlyTouched();

private:
    static QVariantList rows(const ConnectionFixture& fixture, int tableId);
};

// Every row as one text that tells types apart.
QVariantList RecordWriterEquivalenceTest::rows(const ConnectionFixture& fixture, int tableId)
{
    QStringList parts;
    for (const QString& field : allFieldNames())
        parts.append(QStringLiteral("typeof(%1) || hex(%1) || quote(%1)").arg(field));
    return fixture.column(QStringLiteral("SELECT %1 FROM %2 ORDER BY id")
                              .arg(parts.join(QStringLiteral(" || ';' || ")), metaDataTableName(tableId)));
}

void RecordWriterEquivalenceTest::tablesAreEqualAfterRandomScans_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 8; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void RecordWriterEquivalenceTest::tablesAreEqualAfterRandomScans()
{
    QFETCH(quint32, seed);
    const ConnectionFixture fixture;
    Records source(seed);
    MetaDataList records = source.make(50);

    for (int scan = 1; scan <= 12; ++scan) {
        const MetaDataList failed = writeMetaData(fixture.connection(), ownTable, records, scan, true);
        QStringList errors = LiteralWriter(fixture.connection(), literalTable, scan).write(records);
        errors.removeAll(QString());

        QCOMPARE(errorsOf(failed), errors);
        QCOMPARE(rows(fixture, ownTable), rows(fixture, literalTable));
        records = source.varied(records);
        records.append(source.make(5));
    }
}

// In a transaction and of so many rows that indexes are made anew.
void RecordWriterEquivalenceTest::tablesAreEqualAfterScansOfManyRows()
{
    const ConnectionFixture fixture;
    MetaDataList records;
    for (int number = 0; number < 2000; ++number)
        records.append(TestSupport::sampleRecord(QStringLiteral("/x/s/%1.wav").arg(number)));
    const QString place = QStringLiteral("SELECT rowid FROM sqlite_master WHERE name='MetaData1_scanTimestamp_rating'");
    const int placeBefore = fixture.value(place).toInt();
    Records source(1);

    for (int scan = 1; scan <= 3; ++scan) {
        QCOMPARE(fixture.execute("BEGIN TRANSACTION"), QString());
        const MetaDataList failed = writeMetaData(fixture.connection(), ownTable, records, scan, true);
        QStringList errors = LiteralWriter(fixture.connection(), literalTable, scan).write(records);
        errors.removeAll(QString());
        QCOMPARE(fixture.execute("COMMIT"), QString());

        QCOMPARE(errorsOf(failed), errors);
        QCOMPARE(rows(fixture, ownTable), rows(fixture, literalTable));
        records = source.varied(records);
        records.append(source.make(5));
    }

    QVERIFY(fixture.value(place).toInt() > placeBefore);
    QCOMPARE(fixture.value("PRAGMA integrity_check").toString(), QStringLiteral("ok"));
}

void RecordWriterEquivalenceTest::unchangedRowIsOnlyTouched()
{
    const ConnectionFixture fixture;
    const MetaDataList records{ TestSupport::sampleRecord("/x/s/1.wav") };
    writeMetaData(fixture.connection(), ownTable, records, 1, true);
    QCOMPARE(fixture.execute("CREATE TABLE writes (what TEXT)"), QString());
    QCOMPARE(fixture.execute("CREATE TRIGGER watch AFTER UPDATE OF rating ON MetaData1 BEGIN "
                             "INSERT INTO writes VALUES ('whole row'); END"),
        QString());

    QVERIFY(writeMetaData(fixture.connection(), ownTable, records, 2, true).isEmpty());

    QCOMPARE(fixture.value("SELECT COUNT(*) FROM writes").toInt(), 0);
    QCOMPARE(fixture.value("SELECT scanTimestamp FROM MetaData1").toInt(), 2);
}

QTEST_GUILESS_MAIN(RecordWriterEquivalenceTest)

#include "tst_recordwriterequivalence.moc"
