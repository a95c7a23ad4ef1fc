// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/metadatamodel.h"
#include "store/operationreply.h"
#include "tests/browse/browsefixture.h"

#include <QtTest>

#include <algorithm>

using TestSupport::await;
using TestSupport::filledPath;
using TestSupport::fillTable;
using TestSupport::settles;
using TestSupport::StoreHold;

namespace {

constexpr int tableId = 1;
constexpr int rowsOfTable = 3030;

QModelIndexList indexesOf(const MetaDataModel& model, const QList<int>& rows)
{
    QModelIndexList indexes;
    for (const int row : rows) {
        for (int column = 0; column < model.columnCount(); ++column)
            indexes.append(model.index(row, column));
    }
    return indexes;
}

QList<int> rowsFrom(int first, int count)
{
    QList<int> rows;
    for (int row = first; row < first + count; ++row)
        rows.append(row);
    return rows;
}

QStringList sortedItems(const OperationReply& reply)
{
    QStringList items;
    const QVariantList values = reply.result("items").toList();
    for (const QVariant& value : values)
        items.append(value.toString());
    items.sort();
    return items;
}

} // namespace

class MetaDataModelCollectionsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void emptyListIsRefused();
    void collectionWithoutAStoreIsRefused();
    void fieldOfEachRowIsCollectedOnce();
    void progressCountsTheWantedRows();
    void pagesOfManyRowsAreATenthOfThem();
    void valuesBelongToTheRowsOfTheView();
    void canceledCollectionEndsAsCanceled();
    void failedPageEndsTheCollection();
    void requeryEndsTheCollection();
    void tableSwitchEndsTheCollection();
    void lastReleaseIsAnnounced();
    void collectionIsReleasedWithItsReply();
    void pageOfADeletedReplyReachesNoOtherCollection();
    void destroyedModelCancelsItsCollections();
    void destroyedModelDoesNotNeedTheStore();
    void rowOfARecordIsLookedUpInTheView_data();
    void rowOfARecordIsLookedUpInTheView();

private:
    OperationReply* collect(const QList<int>& rows, const QString& field = QStringLiteral("filePath"))
    {
        return m_model->collectFields(indexesOf(*m_model, rows), field);
    }

    std::unique_ptr<TestSupport::StoreFixture> m_store;
    std::unique_ptr<MetaDataModel> m_model;
};

void MetaDataModelCollectionsTest::initTestCase()
{
    m_store = std::make_unique<TestSupport::StoreFixture>();
    m_store->open();
    fillTable(*m_store, tableId, rowsOfTable);
    fillTable(*m_store, 2, rowsOfTable);
}

void MetaDataModelCollectionsTest::init()
{
    m_model = std::make_unique<MetaDataModel>();
    m_model->setDatabase(&m_store->database(), tableId);
    QVERIFY(settles(*m_model));
}

void MetaDataModelCollectionsTest::cleanup()
{
    m_model.reset();
}

void MetaDataModelCollectionsTest::cleanupTestCase()
{
    m_store.reset();
}

void MetaDataModelCollectionsTest::emptyListIsRefused()
{
    QSignalSpy released(m_model.get(), &MetaDataModel::fieldsCollectionContextsReleased);

    const auto reply = await(m_model->collectFields({}, "id"));

    QCOMPARE(reply->errorString(), QString("Index list is empty"));
    QVERIFY(released.isEmpty());
}

void MetaDataModelCollectionsTest::collectionWithoutAStoreIsRefused()
{
    const QModelIndexList indexes = indexesOf(*m_model, { 1 });
    m_model->setDatabase(nullptr, tableId);

    const auto reply = await(m_model->collectFields(indexes, "id"));

    QCOMPARE(reply->errorString(), QString("Database is not opened"));
}

void MetaDataModelCollectionsTest::fieldOfEachRowIsCollectedOnce()
{
    const auto reply = await(collect({ 2000, 0, 49, 50 }));

    QCOMPARE(reply->errorString(), QString());
    QCOMPARE(reply->result("items").userType(), int(QMetaType::QVariantList));
    QCOMPARE(sortedItems(*reply),
        QStringList(
            { filledPath(tableId, 0), filledPath(tableId, 49), filledPath(tableId, 50), filledPath(tableId, 2000) }));
}

void MetaDataModelCollectionsTest::progressCountsTheWantedRows()
{
    std::unique_ptr<OperationReply> reply(collect({ 3, 4, 5, 1000, 2000, 2001 }));
    QStringList steps;
    connect(reply.get(), &OperationReply::progress, reply.get(),
        [&steps](int value, int total) { steps << QStringLiteral("%1/%2").arg(value).arg(total); });

    reply = await(reply.release());

    QCOMPARE(steps, QStringList({ "0/6", "3/6", "4/6", "6/6" }));
}

void MetaDataModelCollectionsTest::pagesOfManyRowsAreATenthOfThem()
{
    std::unique_ptr<OperationReply> reply(collect(rowsFrom(0, 3000)));
    QSignalSpy progress(reply.get(), &OperationReply::progress);

    reply = await(reply.release());

    QCOMPARE(reply->result("items").toList().size(), 3000);
    QCOMPARE(progress.count(), 11);
    QCOMPARE(progress.at(1), QVariantList({ 300, 3000 }));
}

void MetaDataModelCollectionsTest::valuesBelongToTheRowsOfTheView()
{
    m_model->setFilters(false, true);
    m_model->setLookup("sound");
    m_model->sort(MetaDataModel::FilePathColumn, Qt::DescendingOrder);
    QVERIFY(settles(*m_model));
    QCOMPARE(m_model->rowCount(), 4);

    const auto reply = await(collect({ 0, 2 }));

    QCOMPARE(sortedItems(*reply), QStringList({ filledPath(tableId, 1000), filledPath(tableId, 3000) }));
}

void MetaDataModelCollectionsTest::canceledCollectionEndsAsCanceled()
{
    StoreHold hold(*m_store);
    OperationReply* reply = collect({ 0, 1000, 2000 });

    reply->cancel();
    hold.release();
    const auto ended = await(reply);

    QCOMPARE(ended->errorString(), QString("Canceled"));
    QVERIFY(!ended->result("items").isValid());
}

void MetaDataModelCollectionsTest::failedPageEndsTheCollection()
{
    const auto reply = await(collect({ 0 }, "nope"));

    QCOMPARE(reply->errorString(), QString("Unable to receive MetaData page"));
}

void MetaDataModelCollectionsTest::requeryEndsTheCollection()
{
    StoreHold hold(*m_store);
    OperationReply* reply = collect({ 0, 1000, 2000 }, "id");

    m_model->requery();
    hold.release();
    const auto ended = await(reply);

    QCOMPARE(ended->errorString(), QString("Unable to receive MetaData page"));
    QVERIFY(!ended->result("items").isValid());
}

void MetaDataModelCollectionsTest::tableSwitchEndsTheCollection()
{
    StoreHold hold(*m_store);
    OperationReply* reply = collect({ 0, 1000, 2000 }, "id");

    m_model->setTableId(2);
    hold.release();
    const auto ended = await(reply);

    QCOMPARE(ended->errorString(), QString("Unable to receive MetaData page"));
}

void MetaDataModelCollectionsTest::lastReleaseIsAnnounced()
{
    QSignalSpy released(m_model.get(), &MetaDataModel::fieldsCollectionContextsReleased);
    OperationReply* first = collect({ 0 });
    OperationReply* second = collect({ 1, 1000 });

    const auto firstEnded = await(first);
    QVERIFY(released.isEmpty());
    const auto secondEnded = await(second);

    QCOMPARE(released.count(), 1);
    QCOMPARE(sortedItems(*firstEnded), QStringList{ filledPath(tableId, 0) });
    QCOMPARE(sortedItems(*secondEnded), QStringList({ filledPath(tableId, 1), filledPath(tableId, 1000) }));
}

void MetaDataModelCollectionsTest::collectionIsReleasedWithItsReply()
{
    QSignalSpy released(m_model.get(), &MetaDataModel::fieldsCollectionContextsReleased);
    const std::unique_ptr<OperationReply> kept(collect({ 0, 1000 }));
    std::unique_ptr<OperationReply> deleted(collect({ 0, 1000, 2000 }));

    deleted.reset();
    QVERIFY(released.isEmpty());
    kept->waitForFinished();

    QCOMPARE(released.count(), 1);
}

void MetaDataModelCollectionsTest::pageOfADeletedReplyReachesNoOtherCollection()
{
    StoreHold hold(*m_store);
    // The allocator likes to give the place of the deleted reply to the next one.
    for (int attempt = 0; attempt < 20; ++attempt)
        delete collect({ attempt });
    OperationReply* reply = collect({ 2000 });

    hold.release();
    const auto ended = await(reply);

    QCOMPARE(sortedItems(*ended), QStringList{ filledPath(tableId, 2000) });
}

void MetaDataModelCollectionsTest::destroyedModelCancelsItsCollections()
{
    const std::unique_ptr<OperationReply> first(collect({ 0, 1000 }));
    const std::unique_ptr<OperationReply> second(collect(rowsFrom(0, 2000)));

    m_model.reset();

    for (const auto* reply : { first.get(), second.get() }) {
        QVERIFY(reply->isFinishedDelivered());
        QVERIFY(reply->isCanceled());
        QCOMPARE(reply->errorString(), QString("Canceled"));
    }
}

void MetaDataModelCollectionsTest::destroyedModelDoesNotNeedTheStore()
{
    StoreHold hold(*m_store);
    const std::unique_ptr<OperationReply> reply(collect({ 0, 1000 }));

    m_model.reset();

    QVERIFY(reply->isFinishedDelivered());
}

void MetaDataModelCollectionsTest::rowOfARecordIsLookedUpInTheView_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<Qt::SortOrder>("order");
    QTest::addColumn<QString>("lookup");

    QTest::newRow("path up") << 0 << Qt::AscendingOrder << "";
    QTest::newRow("path down") << 0 << Qt::DescendingOrder << "";
    QTest::newRow("library down") << 3 << Qt::DescendingOrder << "sound 2";
    QTest::newRow("duration up") << 5 << Qt::AscendingOrder << "!12";
    QTest::newRow("rating down") << 6 << Qt::DescendingOrder << "library";
}

void MetaDataModelCollectionsTest::rowOfARecordIsLookedUpInTheView()
{
    QFETCH(int, column);
    QFETCH(Qt::SortOrder, order);
    QFETCH(QString, lookup);
    m_model->sort(column, order);
    m_model->setLookup(lookup);
    QVERIFY(settles(*m_model));

    for (const int row : { 0, 1, 17, 49 }) {
        const auto record = m_model->index(row, 0).data(MetaDataModel::RecordRole).value<MetaData>();
        QVERIFY(!record.isNull());
        const auto reply = await(m_model->lookupRow(record.id()));
        QCOMPARE(reply->errorString(), QString());
        QCOMPARE(reply->result("row"), QVariant(row));
    }
    QCOMPARE(await(m_model->lookupRow(123456789))->errorString(), QString("Unable to find MetaData"));
}

QTEST_MAIN(MetaDataModelCollectionsTest)

#include "tst_metadatamodelcollections.moc"
