// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/rowbatches.h"
#include "tests/store/connectionfixture.h"

#include <QtTest>

namespace {

constexpr int tableId = 1;

} // namespace

class RowBatchesTest : public QObject
{
    Q_OBJECT

private slots:
    void batchIsATenthOfTheRows_data();
    void batchIsATenthOfTheRows();
    void rowsComeInTheOrderOfTheirIds();
    void onlyRowsOfTheViewCome();
    void rowsThatLeaveTheViewDoNotHideOthers();
    void rowsThatCameInTheMeantimeDoNotProlongTheWalk();
    void lookupWithADoubleQuoteFails();
    void missingTableFails();

private:
    // Its descriptions are "Sound 1" and so on.
    static std::unique_ptr<ConnectionFixture> tableOf(int rows);
    static QVector<qint64> walk(
        RowBatches& batches, const std::function<void()>& afterBatch = []() {});
};

std::unique_ptr<ConnectionFixture> RowBatchesTest::tableOf(int rows)
{
    auto fixture = std::make_unique<ConnectionFixture>();
    const QString error = fixture->execute(
        QStringLiteral("INSERT INTO MetaData1 (filePath, fileName, fileType, description) WITH RECURSIVE n(i) AS "
                       "(SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<%1) SELECT i, i, '', 'Sound ' || i FROM n")
            .arg(rows));
    return error.isEmpty() ? std::move(fixture) : nullptr;
}

QVector<qint64> RowBatchesTest::walk(RowBatches& batches, const std::function<void()>& afterBatch)
{
    QVector<qint64> ids;
    while (!batches.atEnd()) {
        QVector<RowBatches::Row> rows;
        if (!batches.next("id, description", rows))
            return {};
        for (const RowBatches::Row& row : rows)
            ids.append(row.first().toLongLong());
        afterBatch();
    }
    return ids;
}

void RowBatchesTest::batchIsATenthOfTheRows_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("batchSize");
    QTest::newRow("at least 50") << 120 << 50;
    QTest::newRow("just 50") << 509 << 50;
    QTest::newRow("a tenth") << 3000 << 300;
    QTest::newRow("rounded down") << 3019 << 301;
    QTest::newRow("at most 10,000") << 110000 << 10000;
}

void RowBatchesTest::batchIsATenthOfTheRows()
{
    QFETCH(int, rows);
    const auto table = tableOf(rows);
    QVERIFY(table);
    RowBatches batches(table->connection(), tableId, {});

    QVERIFY(batches.count());

    QCOMPARE(batches.rowsCount(), rows);
    QTEST(batches.batchSize(), "batchSize");
    QVector<RowBatches::Row> first;
    QVERIFY(batches.next("id", first));
    QCOMPARE(first.size(), batches.batchSize());
}

void RowBatchesTest::rowsComeInTheOrderOfTheirIds()
{
    const auto table = tableOf(730);
    QCOMPARE(table->execute("DELETE FROM MetaData1 WHERE id%3=0"), QString());
    RowBatches batches(table->connection(), tableId, { { "sortField", "description" }, { "sortOrder", 1 } });
    QVERIFY(batches.count());

    const QVector<qint64> ids = walk(batches);

    QVector<qint64> expected;
    for (const QVariant& id : table->column("SELECT id FROM MetaData1 ORDER BY id"))
        expected.append(id.toLongLong());
    QCOMPARE(ids, expected);
    QCOMPARE(batches.processedCount(), expected.size());
}

void RowBatchesTest::onlyRowsOfTheViewCome()
{
    const auto table = tableOf(200);
    RowBatches batches(table->connection(), tableId,
        { { "lookup", "77" }, { "lookupFields", QStringList{ "description" } }, { "limit", 1 }, { "offset", 5 } });
    QVERIFY(batches.count());

    QCOMPARE(batches.rowsCount(), 2);
    QCOMPARE(walk(batches), QVector<qint64>({ 77, 177 }));
}

void RowBatchesTest::rowsThatLeaveTheViewDoNotHideOthers()
{
    const auto table = tableOf(200);
    RowBatches batches(
        table->connection(), tableId, { { "lookup", "sound" }, { "lookupFields", QStringList{ "description" } } });
    QVERIFY(batches.count());

    const QVector<qint64> ids
        = walk(batches, [&]() { table->execute("UPDATE MetaData1 SET description='x' WHERE id<=50"); });

    QCOMPARE(ids.size(), 200);
}

void RowBatchesTest::rowsThatCameInTheMeantimeDoNotProlongTheWalk()
{
    const auto table = tableOf(100);
    RowBatches batches(table->connection(), tableId, {});
    QVERIFY(batches.count());

    const QVector<qint64> ids = walk(batches, [&]() {
        table->execute("INSERT INTO MetaData1 (filePath, fileName, fileType) "
                       "SELECT 'new' || COUNT(*), '', '' FROM MetaData1");
    });

    QCOMPARE(ids.size(), 100);
}

void RowBatchesTest::lookupWithADoubleQuoteFails()
{
    const auto table = tableOf(10);
    RowBatches batches(table->connection(), tableId,
        { { "lookup", "d%\"))--" }, { "lookupFields", QStringList{ "library", "description" } } });

    QVERIFY(!batches.count());
    QVERIFY(!batches.errorText().isEmpty());
}

void RowBatchesTest::missingTableFails()
{
    const auto table = tableOf(10);
    RowBatches batches(table->connection(), 16, {});

    QVERIFY(!batches.count());
    QVERIFY(batches.errorText().contains("MetaData16"));
    QVector<RowBatches::Row> rows;
    QVERIFY(!batches.next("id", rows));
}

QTEST_GUILESS_MAIN(RowBatchesTest)

#include "tst_rowbatches.moc"
