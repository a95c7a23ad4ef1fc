// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/metadatamodel.h"

#include "tests/browse/browsefixture.h"

#include <QMimeData>
#include <QtTest>

using TestSupport::fillTable;
using TestSupport::sampleRecord;
using TestSupport::settledModel;
using TestSupport::settles;
using TestSupport::textAt;

namespace {

// The tables of the store that all tests read.
constexpr int valuesTable = 1;
constexpr int thirtyRowsTable = 2;
constexpr int fiftyRowsTable = 3;
constexpr int thousandRowsTable = 4;
constexpr int emptyTable = 5;

MetaData plainRecord()
{
    MetaData record = sampleRecord("/sounds/b plain.WAV");
    record.setDescription("Plain");
    return record;
}

MetaData fullRecord()
{
    MetaData record = sampleRecord("/sounds/a full.aif");
    record.setLibrary("Drums");
    record.setDescription("A drum");
    record.setDuration(125.2);
    record.setRating(3);
    record.setPlaylist(1);
    record.setArtist("Somebody");
    return record;
}

} // namespace

class MetaDataModelTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void signalsAndSlotsStandInOrder();
    void headersNameTheColumns_data();
    void headersNameTheColumns();
    void otherHeadersAreInvalid();
    void withoutAStoreNothingIsRequested();
    void thirtyRowsNeedNoCount();
    void fiftyRowsAreCounted();
    void aThousandRowsAreResetTwice();
    void emptyTableIsKnownAfterTheFirstPage();
    void unknownCountIsRequestedByTheView();
    void itemsBelowARowDoNotExist();
    void cellsShowTheirTexts_data();
    void cellsShowTheirTexts();
    void cellsCarryTheWholeRecord();
    void lookupWordsGoWithTheSearchedColumns_data();
    void lookupWordsGoWithTheSearchedColumns();
    void undefinedLibraryIsFaint();
    void playlistIsMarkedBehindTheRating();
    void otherRolesAreInvalid();
    void filesMayBeDroppedAnywhere();
    void droppedDataIsNotInserted();
    void settersRequeryOnChangeOnly();
    void storeTableAndSortAlwaysRequery();
    void changesOfTheTableAreAnnounced();
    void requeriedComesInsideTheReset();
    void queryParametersTellTheView();
    void filtersNarrowTheRows();
    void sortingOrdersTheRows();
    void lookupSearchesPathsOnlyWhenAsked();
    void storeMayBeTakenAway();

private:
    std::unique_ptr<TestSupport::StoreFixture> m_store;
};

void MetaDataModelTest::initTestCase()
{
    m_store = std::make_unique<TestSupport::StoreFixture>();
    m_store->open();
    m_store->insert(valuesTable, { plainRecord() }, 1000);
    m_store->insert(valuesTable, { fullRecord() }, 2000);
    fillTable(*m_store, thirtyRowsTable, 30);
    fillTable(*m_store, fiftyRowsTable, 50);
    fillTable(*m_store, thousandRowsTable, 1000);
}

void MetaDataModelTest::cleanupTestCase()
{
    m_store.reset();
}

void MetaDataModelTest::signalsAndSlotsStandInOrder()
{
    QCOMPARE(TestSupport::ownMethods(MetaDataModel::staticMetaObject),
        QStringList({ "actualRowsCountChanged()", "processingStarted()", "processingFinished()",
            "rangeVisibilityCheck(int,int,bool&)", "tableChaged()", "requeried()", "fieldsCollectionContextsReleased()",
            "requery()", "requestRowsCount()", "handleRowsCountReply()", "requestPages()", "handleModelPageReply()",
            "cleanInvalidPages()", "handleFieldsCollectionPageReply()", "releaseFieldsCollectionContext()" }));
}

void MetaDataModelTest::headersNameTheColumns_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("field");
    QTest::addColumn<bool>("hideable");

    QTest::newRow("path") << 0 << "File Path"
                          << "filePath" << true;
    QTest::newRow("name") << 1 << "File Name"
                          << "fileName" << true;
    QTest::newRow("type") << 2 << "Type"
                          << "fileType" << true;
    QTest::newRow("library") << 3 << "Library"
                             << "library" << true;
    QTest::newRow("description") << 4 << "Description"
                                 << "description" << false;
    QTest::newRow("duration") << 5 << "Duration"
                              << "duration" << true;
    QTest::newRow("rating") << 6 << "Rating"
                            << "rating" << true;
}

void MetaDataModelTest::headersNameTheColumns()
{
    QFETCH(int, column);
    QFETCH(QString, title);
    QFETCH(QString, field);
    QFETCH(bool, hideable);

    const MetaDataModel model;

    QCOMPARE(model.columnCount(), 7);
    QCOMPARE(model.headerData(column, Qt::Horizontal), QVariant(title));
    QCOMPARE(model.headerData(column, Qt::Horizontal, 257), QVariant(field));
    QCOMPARE(model.headerData(column, Qt::Horizontal, Qt::TextAlignmentRole), QVariant(129));
    QCOMPARE(model.headerData(column, Qt::Horizontal, 259), QVariant(hideable));
}

void MetaDataModelTest::otherHeadersAreInvalid()
{
    const MetaDataModel model;

    for (const int role : { 0, 7, 257, 259 }) {
        QVERIFY(!model.headerData(-1, Qt::Horizontal, role).isValid());
        QVERIFY(!model.headerData(7, Qt::Horizontal, role).isValid());
        QVERIFY(!model.headerData(0, Qt::Vertical, role).isValid());
    }
    for (const int role : { int(Qt::ToolTipRole), int(Qt::DecorationRole), 256, 258, 260 })
        QVERIFY(!model.headerData(0, Qt::Horizontal, role).isValid());
}

void MetaDataModelTest::withoutAStoreNothingIsRequested()
{
    MetaDataModel model;
    QSignalSpy started(&model, &MetaDataModel::processingStarted);

    model.sort(MetaDataModel::RatingColumn, Qt::DescendingOrder);
    model.setTableId(3);
    model.setLookup("kick");
    model.requestRowsCount();
    model.requestPages();
    model.cleanInvalidPages();

    QCOMPARE(model.rowCount(), 0);
    QCOMPARE(model.rowsCount(), -1);
    QCOMPARE(model.tableId(), 3);
    QVERIFY(!model.isProcessing());
    QVERIFY(!model.isRequeryPending());
    QVERIFY(!model.lookupRow(1));
    QVERIFY(!model.data(model.index(0, 0)).isValid());
    QVERIFY(started.isEmpty());
}

void MetaDataModelTest::thirtyRowsNeedNoCount()
{
    MetaDataModel model;
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    QSignalSpy counts(&model, &MetaDataModel::actualRowsCountChanged);

    model.setDatabase(&m_store->database(), thirtyRowsTable);
    QVERIFY(counts.wait());

    QCOMPARE(model.rowCount(), 30);
    QVERIFY(model.isRowsCountActual());
    QVERIFY(!model.isProcessing());
    QCOMPARE(resets.count(), 1);
}

void MetaDataModelTest::fiftyRowsAreCounted()
{
    MetaDataModel model;
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    QSignalSpy counts(&model, &MetaDataModel::actualRowsCountChanged);
    model.setDatabase(&m_store->database(), fiftyRowsTable);

    QVERIFY(counts.wait());
    QCOMPARE(model.rowCount(), 50);
    QVERIFY(!model.isRowsCountActual());
    QVERIFY(model.isProcessing());

    QVERIFY(counts.wait());
    QCOMPARE(model.rowCount(), 50);
    QVERIFY(model.isRowsCountActual());
    QCOMPARE(resets.count(), 1);
}

void MetaDataModelTest::aThousandRowsAreResetTwice()
{
    MetaDataModel model;
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    model.setDatabase(&m_store->database(), thousandRowsTable);

    QVERIFY(resets.wait());
    QCOMPARE(model.rowCount(), 50);
    QVERIFY(!model.isRowsCountActual());

    QVERIFY(settles(model));
    QCOMPARE(model.rowCount(), 1000);
    QCOMPARE(resets.count(), 2);
}

void MetaDataModelTest::emptyTableIsKnownAfterTheFirstPage()
{
    MetaDataModel model;
    QSignalSpy counts(&model, &MetaDataModel::actualRowsCountChanged);
    QCOMPARE(model.rowsCount(), -1);

    model.setDatabase(&m_store->database(), emptyTable);
    QVERIFY(counts.wait());

    QCOMPARE(model.rowsCount(), 0);
    QVERIFY(model.isRowsCountActual());
    QVERIFY(!model.isProcessing());
}

void MetaDataModelTest::unknownCountIsRequestedByTheView()
{
    TestSupport::StoreHold hold(*m_store);
    MetaDataModel model;
    model.setDatabase(&m_store->database(), thousandRowsTable);

    QCOMPARE(model.rowCount(), 0);
    hold.release();

    QVERIFY(settles(model));
    QCOMPARE(model.rowCount(), 1000);
}

void MetaDataModelTest::itemsBelowARowDoNotExist()
{
    const auto model = settledModel(*m_store, thirtyRowsTable);

    const QModelIndex row = model->index(0, 0);

    QCOMPARE(model->rowCount(row), 0);
    QCOMPARE(model->columnCount(row), 0);
}

void MetaDataModelTest::cellsShowTheirTexts_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QStringList>("texts");

    QTest::newRow("full") << 0
                          << QStringList{ "/sounds/a full.aif", "a full.aif", "aif", "Drums", "A drum", "02:06",
                                 "3.0" };
    QTest::newRow("plain") << 1
                           << QStringList{ "/sounds/b plain.WAV", "b plain.WAV", "WAV", "Undefined", "Plain", "00:01",
                                  "1.0" };
}

void MetaDataModelTest::cellsShowTheirTexts()
{
    QFETCH(int, row);
    QFETCH(QStringList, texts);

    const auto model = settledModel(*m_store, valuesTable);

    for (int column = 0; column < model->columnCount(); ++column)
        QCOMPARE(textAt(*model, row, column), texts.at(column));
}

void MetaDataModelTest::cellsCarryTheWholeRecord()
{
    const auto model = settledModel(*m_store, valuesTable);
    MetaData expected = fullRecord();
    expected.setId(2);
    expected.setScanTimestamp(2000);

    for (int column = 0; column < model->columnCount(); ++column) {
        const auto record = model->index(0, column).data(258).value<MetaData>();
        QCOMPARE(record.toVariantMap(), expected.toVariantMap());
    }
}

void MetaDataModelTest::lookupWordsGoWithTheSearchedColumns_data()
{
    QTest::addColumn<bool>("withPaths");
    QTest::addColumn<QList<int>>("columns");

    QTest::newRow("texts only") << false << QList<int>{ 3, 4 };
    QTest::newRow("with paths") << true << QList<int>{ 0, 1, 3, 4 };
}

void MetaDataModelTest::lookupWordsGoWithTheSearchedColumns()
{
    QFETCH(bool, withPaths);
    QFETCH(QList<int>, columns);
    const auto model = settledModel(*m_store, valuesTable);

    model->setFilePathLookupEnabled(withPaths);
    model->setLookup("  drum A ");
    QVERIFY(settles(*model));

    QCOMPARE(model->rowCount(), 1);
    for (int column = 0; column < model->columnCount(); ++column) {
        const QVariant words = model->index(0, column).data(358);
        QCOMPARE(words.isValid(), columns.contains(column));
        if (words.isValid())
            QCOMPARE(words.toStringList(), QStringList({ "drum", "A" }));
    }
}

void MetaDataModelTest::undefinedLibraryIsFaint()
{
    const auto model = settledModel(*m_store, valuesTable);

    for (int column = 0; column < model->columnCount(); ++column) {
        QVERIFY(!model->index(0, column).data(359).isValid());
        QCOMPARE(model->index(1, column).data(359), column == 3 ? QVariant(0.5) : QVariant());
    }
}

void MetaDataModelTest::playlistIsMarkedBehindTheRating()
{
    const auto model = settledModel(*m_store, valuesTable);

    for (int column = 0; column < model->columnCount(); ++column) {
        QCOMPARE(model->index(0, column).data(360), column == 6 ? QVariant(QString(QChar(0x25CF))) : QVariant());
        QVERIFY(!model->index(1, column).data(360).isValid());
    }
}

void MetaDataModelTest::otherRolesAreInvalid()
{
    const auto model = settledModel(*m_store, valuesTable);

    for (const int role : { int(Qt::EditRole), int(Qt::DecorationRole), int(Qt::ToolTipRole), 257, 259, 357, 361 })
        QVERIFY(!model->index(0, 4).data(role).isValid());
    QVERIFY(!model->data(QModelIndex()).isValid());
}

void MetaDataModelTest::filesMayBeDroppedAnywhere()
{
    const auto model = settledModel(*m_store, valuesTable);

    QCOMPARE(model->mimeTypes(), QStringList{ "text/uri-list" });
    QVERIFY(model->flags(QModelIndex()) & Qt::ItemIsDropEnabled);
    const Qt::ItemFlags flags = model->flags(model->index(0, 0));
    QVERIFY(flags & Qt::ItemIsDropEnabled);
    QVERIFY(flags & Qt::ItemIsSelectable);
    QVERIFY(flags & Qt::ItemIsEnabled);
    QVERIFY(!(flags & Qt::ItemIsEditable));
    QVERIFY(flags & Qt::ItemIsDragEnabled);
}

void MetaDataModelTest::droppedDataIsNotInserted()
{
    const auto model = settledModel(*m_store, valuesTable);
    QMimeData data;
    data.setUrls({ QUrl::fromLocalFile("/sounds") });

    QVERIFY(!model->dropMimeData(&data, Qt::CopyAction, -1, -1, QModelIndex()));
    QVERIFY(!model->dropMimeData(&data, Qt::CopyAction, 0, 0, model->index(0, 0)));

    QCOMPARE(model->rowCount(), 2);
}

void MetaDataModelTest::settersRequeryOnChangeOnly()
{
    const auto model = settledModel(*m_store, thirtyRowsTable);
    const auto requeries = [&](auto change) {
        change();
        const bool isPending = model->isRequeryPending();
        if (!settles(*model))
            qFatal("The model does not settle");
        return isPending;
    };

    QVERIFY(!requeries([&]() { model->setLookup(""); }));
    QVERIFY(requeries([&]() { model->setLookup("sound"); }));
    QVERIFY(!requeries([&]() { model->setLookup("sound"); }));
    QVERIFY(!requeries([&]() { model->setFilePathLookupEnabled(false); }));
    QVERIFY(requeries([&]() { model->setFilePathLookupEnabled(true); }));
    QVERIFY(!requeries([&]() { model->setFilePathLookupEnabled(true); }));
    QVERIFY(!requeries([&]() { model->setFilters(false, false); }));
    QVERIFY(requeries([&]() { model->setFilters(true, false); }));
    QVERIFY(!requeries([&]() { model->setFilters(true, false); }));
    QVERIFY(requeries([&]() { model->setFilters(true, true); }));
    QVERIFY(requeries([&]() { model->setFilters(false, false); }));
}

void MetaDataModelTest::storeTableAndSortAlwaysRequery()
{
    const auto model = settledModel(*m_store, thirtyRowsTable);
    QSignalSpy requeried(model.get(), &MetaDataModel::requeried);

    model->setDatabase(&m_store->database(), thirtyRowsTable);
    QVERIFY(settles(*model));
    QCOMPARE(requeried.count(), 1);

    model->setTableId(thirtyRowsTable);
    QVERIFY(settles(*model));
    QCOMPARE(requeried.count(), 2);

    model->sort(MetaDataModel::FilePathColumn, Qt::AscendingOrder);
    QVERIFY(settles(*model));
    QCOMPARE(requeried.count(), 3);
}

void MetaDataModelTest::changesOfTheTableAreAnnounced()
{
    MetaDataModel model;
    QSignalSpy changes(&model, &MetaDataModel::tableChaged);

    model.setDatabase(&m_store->database(), thirtyRowsTable);
    QCOMPARE(changes.count(), 1);
    QCOMPARE(model.tableId(), thirtyRowsTable);
    QCOMPARE(model.database(), &m_store->database());

    model.setTableId(fiftyRowsTable);
    QCOMPARE(changes.count(), 2);
    QCOMPARE(model.tableId(), fiftyRowsTable);

    model.requery();
    QCOMPARE(changes.count(), 2);
}

void MetaDataModelTest::requeriedComesInsideTheReset()
{
    MetaDataModel model;
    QStringList events;
    connect(&model, &QAbstractItemModel::modelAboutToBeReset, &model, [&]() { events << "begin"; });
    connect(&model, &MetaDataModel::requeried, &model, [&]() { events << "requeried"; });
    connect(&model, &QAbstractItemModel::modelReset, &model, [&]() { events << "reset"; });
    connect(&model, &MetaDataModel::actualRowsCountChanged, &model, [&]() { events << "count"; });

    model.setDatabase(&m_store->database(), thousandRowsTable);
    QVERIFY(settles(model));

    QCOMPARE(events, QStringList({ "begin", "requeried", "reset", "count", "begin", "reset", "count" }));
}

void MetaDataModelTest::queryParametersTellTheView()
{
    MetaDataModel model;
    QVariantMap expected{ { "lastScannedOnly", false }, { "playlistOnly", false }, { "lookup", "" },
        { "lookupFields", QStringList{ "library", "description" } }, { "sortField", "filePath" }, { "sortOrder", 0 } };
    QCOMPARE(model.queryParameters(), expected);

    model.setLookup("kick !loop");
    model.setFilePathLookupEnabled(true);
    model.setFilters(true, true);
    model.sort(MetaDataModel::DurationColumn, Qt::DescendingOrder);

    expected = { { "lastScannedOnly", true }, { "playlistOnly", true }, { "lookup", "kick !loop" },
        { "lookupFields", QStringList{ "library", "description", "filePath" } }, { "sortField", "duration" },
        { "sortOrder", 1 } };
    QCOMPARE(model.queryParameters(), expected);
}

void MetaDataModelTest::filtersNarrowTheRows()
{
    const auto model = settledModel(*m_store, valuesTable);
    QCOMPARE(model->rowCount(), 2);

    model->setFilters(true, false);
    QVERIFY(settles(*model));
    QCOMPARE(model->rowCount(), 1);
    QCOMPARE(textAt(*model, 0, MetaDataModel::DescriptionColumn), QString("A drum"));

    model->setFilters(false, true);
    QVERIFY(settles(*model));
    QCOMPARE(model->rowCount(), 1);

    model->setFilters(false, false);
    QVERIFY(settles(*model));
    QCOMPARE(model->rowCount(), 2);
}

void MetaDataModelTest::sortingOrdersTheRows()
{
    const auto model = settledModel(*m_store, valuesTable);

    model->sort(MetaDataModel::FileNameColumn, Qt::DescendingOrder);
    QVERIFY(settles(*model));
    QCOMPARE(textAt(*model, 0, MetaDataModel::FileNameColumn), QString("b plain.WAV"));

    model->sort(MetaDataModel::RatingColumn, Qt::DescendingOrder);
    QVERIFY(settles(*model));
    QCOMPARE(textAt(*model, 0, MetaDataModel::FileNameColumn), QString("a full.aif"));
}

void MetaDataModelTest::lookupSearchesPathsOnlyWhenAsked()
{
    const auto model = settledModel(*m_store, valuesTable);

    model->setLookup("sounds");
    QVERIFY(settles(*model));
    QCOMPARE(model->rowCount(), 0);

    model->setFilePathLookupEnabled(true);
    QVERIFY(settles(*model));
    QCOMPARE(model->rowCount(), 2);
}

void MetaDataModelTest::storeMayBeTakenAway()
{
    const auto model = settledModel(*m_store, thirtyRowsTable);
    TestSupport::StoreHold hold(*m_store);
    model->requery();

    model->setDatabase(nullptr, thirtyRowsTable);
    QCOMPARE(model->rowCount(), 0);
    QCOMPARE(model->rowsCount(), -1);
    hold.release();

    QTRY_VERIFY(!model->isProcessing());
    QCOMPARE(model->rowsCount(), -1);
    QCOMPARE(model->rowCount(), 0);
}

QTEST_MAIN(MetaDataModelTest)

#include "tst_metadatamodel.moc"
