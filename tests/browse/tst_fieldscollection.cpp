// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/fieldscollection.h"

#include "store/operationreply.h"

#include <QStandardItemModel>
#include <QtTest>

namespace {

QSet<int> rowsFrom(int first, int count)
{
    QSet<int> rows;
    for (int row = first; row < first + count; ++row)
        rows.insert(row);
    return rows;
}

// Row n has the value n.
QVariantList pageFrom(int firstRow, int count)
{
    QVariantList values;
    for (int row = firstRow; row < firstRow + count; ++row)
        values.append(row);
    return values;
}

} // namespace

class FieldsCollectionTest : public QObject
{
    Q_OBJECT

private slots:
    void pageSizeIsATenthOfTheRowsWithinLimits_data();
    void pageSizeIsATenthOfTheRowsWithinLimits();
    void parametersNameFieldAndPage();
    void onlyPagesWithWantedRowsAreAskedFor();
    void onlyWantedRowsAreKept();
    void shortPageGivesFewerValues();
    void severalIndexesOfOneRowCountOnce();
    void deletedReplyIsForgotten();
};

void FieldsCollectionTest::pageSizeIsATenthOfTheRowsWithinLimits_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("pageSize");

    QTest::newRow("one") << 1 << 50;
    QTest::newRow("500") << 500 << 50;
    QTest::newRow("509") << 509 << 50;
    QTest::newRow("510") << 510 << 51;
    QTest::newRow("12,345") << 12345 << 1234;
    QTest::newRow("200,000") << 200000 << 20000;
    QTest::newRow("300,000") << 300000 << 20000;
}

void FieldsCollectionTest::pageSizeIsATenthOfTheRowsWithinLimits()
{
    QFETCH(int, rows);
    QFETCH(int, pageSize);
    OperationReply reply;

    FieldsCollection collection(&reply, rowsFrom(0, rows), {}, "id");

    QCOMPARE(collection.pageSize(), pageSize);
    QCOMPARE(collection.wantedRows(), rows);
    QCOMPARE(collection.takeNextPageParameters().value("limit"), QVariant(pageSize));
}

void FieldsCollectionTest::parametersNameFieldAndPage()
{
    OperationReply reply;
    const QVariantMap view{ { "lookup", "kick" }, { "sortField", "rating" }, { "sortOrder", 1 } };

    FieldsCollection collection(&reply, { 120 }, view, "filePath");

    QVariantMap expected = view;
    expected.insert("singleField", "filePath");
    expected.insert("offset", 100);
    expected.insert("limit", 50);
    QCOMPARE(collection.takeNextPageParameters(), expected);
}

void FieldsCollectionTest::onlyPagesWithWantedRowsAreAskedFor()
{
    OperationReply reply;
    FieldsCollection collection(&reply, { 0, 49, 200, 1000049, 3 }, {}, "id");

    QList<int> offsets;
    while (collection.hasNextPage())
        offsets.append(collection.takeNextPageParameters().value("offset").toInt());

    std::sort(offsets.begin(), offsets.end());
    QCOMPARE(offsets, QList<int>({ 0, 200, 1000000 }));
}

void FieldsCollectionTest::onlyWantedRowsAreKept()
{
    OperationReply reply;
    FieldsCollection collection(&reply, { 2, 49, 51 }, {}, "id");

    while (collection.hasNextPage())
        collection.addPage(pageFrom(collection.takeNextPageParameters().value("offset").toInt(), 50));

    QCOMPARE(collection.items().size(), 3);
    for (const int row : { 2, 49, 51 })
        QVERIFY(collection.items().contains(row));
}

void FieldsCollectionTest::shortPageGivesFewerValues()
{
    OperationReply reply;
    FieldsCollection collection(&reply, { 2, 40 }, {}, "id");

    collection.takeNextPageParameters();
    collection.addPage(pageFrom(0, 10));

    QCOMPARE(collection.items(), QVariantList{ 2 });
    QVERIFY(!collection.hasNextPage());
}

void FieldsCollectionTest::severalIndexesOfOneRowCountOnce()
{
    const QStandardItemModel model(5, 7);
    QModelIndexList indexes;
    for (int column = 0; column < 7; ++column)
        indexes << model.index(1, column) << model.index(4, column);

    QCOMPARE(FieldsCollection::distinctRows(indexes), QSet<int>({ 1, 4 }));
    QVERIFY(FieldsCollection::distinctRows({}).isEmpty());
}

void FieldsCollectionTest::deletedReplyIsForgotten()
{
    auto reply = std::make_unique<OperationReply>();
    const FieldsCollection collection(reply.get(), { 1 }, {}, "id");
    QCOMPARE(collection.reply(), reply.get());

    reply.reset();

    QVERIFY(!collection.reply());
}

QTEST_GUILESS_MAIN(FieldsCollectionTest)

#include "tst_fieldscollection.moc"
