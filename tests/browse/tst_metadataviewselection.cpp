// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/metadatamodel.h"
#include "browse/metadataview.h"
#include "tests/browse/browsefixture.h"
#include "tests/support/messagerecorder.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QtTest>

#include <algorithm>
#include <functional>

using TestSupport::fillTable;
using TestSupport::settles;

namespace {

constexpr int tableId = 1;
constexpr int otherTable = 2;
constexpr int nextPage = -1; // stands for the row that Page Down leads to

using Change = std::function<void(MetaDataView&)>;

void select(MetaDataView& view, int firstRow, int lastRow)
{
    const QItemSelection rows(view.model()->index(firstRow, 0), view.model()->index(lastRow, 0));
    view.selectionModel()->select(rows, QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

QList<int> selectedRows(const MetaDataView& view)
{
    QList<int> rows;
    const QModelIndexList indexes = view.selectionModel()->selectedRows();
    for (const QModelIndex& index : indexes)
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

// Until the model is at rest and all that it queued for the view has been delivered.
bool comesToRest(const MetaDataView& view)
{
    if (!settles(*view.metaDataModel()))
        return false;
    QCoreApplication::sendPostedEvents();
    return settles(*view.metaDataModel());
}

} // namespace

Q_DECLARE_METATYPE(Change)

class MetaDataViewSelectionTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void requeryKeepsTheCurrentRow();
    void rowThatOnlyHasTheFocusIsNotSelectedByARequery();
    void requeryKeepsTheSelectedRowsWhenAsked();
    void selectionSurvivesAChangedCount();
    void vanishedRowsAreNotSelected();
    void vanishedCurrentRowIsNotCurrent();
    void restoredRowIsForgottenOnceTheCountIsKnown();
    void failedRequeryForgetsTheSavedRow();
    void secondRequeryKeepsWhatTheFirstSaved();
    void restoringIsToldApartFromTheUser();
    void requeryWithoutACurrentRowScrollsToTheTop();
    void requeryWithACurrentRowKeepsThePosition();
    void lookupScrollsToTheTop();
    void rowsChosenBeforeTheCountIsKnownStayChosen_data();
    void rowsChosenBeforeTheCountIsKnownStayChosen();
    void rowsClearedBeforeTheCountIsKnownDoNotComeBack();
    void countLeavesAScrolledViewWhereItIs();
    void storeTakenAwayForgetsTheSelection();
    void rowSavedForAnotherQueryIsNotSelected_data();
    void rowSavedForAnotherQueryIsNotSelected();
    void rowOfAnotherQueryIsNotSaved();
    void failedLookupLeavesNoSavedRow();
    void selectionByKeysSurvivesARequery_data();
    void selectionByKeysSurvivesARequery();
    void shiftSelectionGrowsOnAfterARequery_data();
    void shiftSelectionGrowsOnAfterARequery();
    void selectedRowsAreCountedByRanges();

private:
    void deleteRowsFrom(int firstRow);
    // Keeps the store from counting once the next first page has come; holds nothing before.
    std::shared_ptr<std::unique_ptr<TestSupport::StoreHold>> holdTheNextCount();

    std::unique_ptr<TestSupport::StoreFixture> m_store;
    std::unique_ptr<MetaDataView> m_view;
};

void MetaDataViewSelectionTest::initTestCase()
{
    m_store = std::make_unique<TestSupport::StoreFixture>();
    m_store->open();
    fillTable(*m_store, otherTable, 1000);
}

void MetaDataViewSelectionTest::init()
{
    fillTable(*m_store, tableId, 1000);
    m_view = std::make_unique<MetaDataView>();
    m_view->resize(1000, 400);
    m_view->show();
    // A view that gets the focus makes its first row the current one, which is not to happen in the midst of a test.
    QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
    m_view->setDatabase(&m_store->database(), tableId);
    QVERIFY(comesToRest(*m_view));
    QTRY_VERIFY(m_view->verticalScrollBar()->maximum() > 0);
}

void MetaDataViewSelectionTest::cleanup()
{
    m_view.reset();
    QCOMPARE(m_store->execute("DELETE FROM MetaData1"), QString());
}

void MetaDataViewSelectionTest::cleanupTestCase()
{
    m_store.reset();
}

void MetaDataViewSelectionTest::deleteRowsFrom(int firstRow)
{
    const QString statement = QStringLiteral("DELETE FROM MetaData1 WHERE description IN (SELECT description FROM "
                                             "MetaData1 ORDER BY filePath LIMIT -1 OFFSET %1)");
    QCOMPARE(m_store->execute(statement.arg(firstRow)), QString());
}

std::shared_ptr<std::unique_ptr<TestSupport::StoreHold>> MetaDataViewSelectionTest::holdTheNextCount()
{
    auto hold = std::make_shared<std::unique_ptr<TestSupport::StoreHold>>();
    auto connection = std::make_shared<QMetaObject::Connection>();
    *connection = connect(m_view.get(), &MetaDataView::requeried, m_view.get(), [this, hold, connection]() {
        disconnect(*connection);
        *hold = std::make_unique<TestSupport::StoreHold>(*m_store);
    });
    return hold;
}

void MetaDataViewSelectionTest::requeryKeepsTheCurrentRow()
{
    m_view->setCurrentIndex(m_view->model()->index(700, 2));
    select(*m_view, 10, 12);

    m_view->requery();
    QVERIFY(comesToRest(*m_view));

    QCOMPARE(m_view->currentIndex(), m_view->model()->index(700, 2));
    QCOMPARE(selectedRows(*m_view), QList<int>{ 700 });
}

void MetaDataViewSelectionTest::rowThatOnlyHasTheFocusIsNotSelectedByARequery()
{
    m_view->clearSelection();
    m_view->selectionModel()->setCurrentIndex(m_view->model()->index(0, 0), QItemSelectionModel::NoUpdate);

    m_view->requery(true);
    QVERIFY(comesToRest(*m_view));

    QCOMPARE(m_view->currentIndex().row(), 0);
    QCOMPARE(selectedRows(*m_view), QList<int>());
}

void MetaDataViewSelectionTest::requeryKeepsTheSelectedRowsWhenAsked()
{
    m_view->setCurrentIndex(m_view->model()->index(12, 0));
    select(*m_view, 10, 12);
    select(*m_view, 500, 501);

    m_view->requery(true);
    QVERIFY(comesToRest(*m_view));

    QCOMPARE(m_view->currentIndex().row(), 12);
    QCOMPARE(selectedRows(*m_view), QList<int>({ 10, 11, 12, 500, 501 }));
}

void MetaDataViewSelectionTest::selectionSurvivesAChangedCount()
{
    QSignalSpy resets(m_view->model(), &QAbstractItemModel::modelReset);
    m_view->setCurrentIndex(m_view->model()->index(101, 0));
    select(*m_view, 100, 102);

    deleteRowsFrom(900);
    m_view->requery(true);
    QVERIFY(comesToRest(*m_view));

    QCOMPARE(resets.count(), 2);
    QCOMPARE(m_view->model()->rowCount(), 900);
    QCOMPARE(m_view->currentIndex().row(), 101);
    QCOMPARE(selectedRows(*m_view), QList<int>({ 100, 101, 102 }));
}

void MetaDataViewSelectionTest::vanishedRowsAreNotSelected()
{
    m_view->setCurrentIndex(m_view->model()->index(97, 0));
    select(*m_view, 97, 102);
    select(*m_view, 800, 810);

    deleteRowsFrom(100);
    m_view->requery(true);
    QVERIFY(comesToRest(*m_view));

    QCOMPARE(m_view->model()->rowCount(), 100);
    QCOMPARE(m_view->currentIndex().row(), 97);
    QCOMPARE(selectedRows(*m_view), QList<int>({ 97, 98, 99 }));
}

void MetaDataViewSelectionTest::vanishedCurrentRowIsNotCurrent()
{
    m_view->setCurrentIndex(m_view->model()->index(800, 0));

    deleteRowsFrom(10);
    m_view->requery(true);
    QVERIFY(comesToRest(*m_view));

    QCOMPARE(m_view->model()->rowCount(), 10);
    QVERIFY(!m_view->currentIndex().isValid());
    QCOMPARE(selectedRows(*m_view), QList<int>());
}

void MetaDataViewSelectionTest::restoredRowIsForgottenOnceTheCountIsKnown()
{
    m_view->setCurrentIndex(m_view->model()->index(700, 0));
    m_view->requery(true);
    QVERIFY(comesToRest(*m_view));
    m_view->setCurrentIndex(m_view->model()->index(3, 0));

    m_view->sortByColumn(MetaDataModel::FileNameColumn, Qt::AscendingOrder);
    QVERIFY(comesToRest(*m_view));

    QVERIFY(!m_view->currentIndex().isValid());
    QCOMPARE(m_view->verticalScrollBar()->value(), 0);
}

void MetaDataViewSelectionTest::failedRequeryForgetsTheSavedRow()
{
    m_view->setLookup("a\"b", true);
    QVERIFY(comesToRest(*m_view));
    m_view->setCurrentIndex(m_view->model()->index(700, 0));
    QSignalSpy finished(m_view.get(), &MetaDataView::processingFinished);
    m_view->requery(true);
    QVERIFY(finished.wait());
    QVERIFY(comesToRest(*m_view));

    m_view->setLookup("sound", true);
    QVERIFY(comesToRest(*m_view));

    QCOMPARE(m_view->model()->rowCount(), 1000);
    QVERIFY(!m_view->currentIndex().isValid());
}

void MetaDataViewSelectionTest::secondRequeryKeepsWhatTheFirstSaved()
{
    m_view->setCurrentIndex(m_view->model()->index(11, 0));
    select(*m_view, 10, 12);
    TestSupport::StoreHold hold(*m_store);

    m_view->requery(true);
    m_view->requery(false);
    hold.release();
    QVERIFY(comesToRest(*m_view));

    QCOMPARE(m_view->currentIndex().row(), 11);
    QCOMPARE(selectedRows(*m_view), QList<int>({ 10, 11, 12 }));
}

void MetaDataViewSelectionTest::restoringIsToldApartFromTheUser()
{
    QList<bool> restoring;
    connect(m_view->selectionModel(), &QItemSelectionModel::currentRowChanged, m_view.get(),
        [&]() { restoring.append(m_view->isRestoringSelection()); });

    m_view->setCurrentIndex(m_view->model()->index(11, 0));
    QCOMPARE(restoring, QList<bool>{ false });
    m_view->requery(true);
    QVERIFY(comesToRest(*m_view));

    QCOMPARE(m_view->currentIndex().row(), 11);
    QCOMPARE(restoring.count(false), 1);
    QVERIFY(restoring.contains(true));
    QVERIFY(!m_view->isRestoringSelection());
}

void MetaDataViewSelectionTest::requeryWithoutACurrentRowScrollsToTheTop()
{
    m_view->verticalScrollBar()->setValue(500);

    m_view->requery();
    QVERIFY(comesToRest(*m_view));

    QCOMPARE(m_view->verticalScrollBar()->value(), 0);
}

void MetaDataViewSelectionTest::requeryWithACurrentRowKeepsThePosition()
{
    m_view->setCurrentIndex(m_view->model()->index(500, 0));
    m_view->verticalScrollBar()->setValue(495);

    m_view->requery();
    QVERIFY(comesToRest(*m_view));

    QCOMPARE(m_view->verticalScrollBar()->value(), 495);
}

void MetaDataViewSelectionTest::lookupScrollsToTheTop()
{
    m_view->setCurrentIndex(m_view->model()->index(500, 0));
    QVERIFY(m_view->verticalScrollBar()->value() > 0);

    m_view->setLookup("sound", true);
    QVERIFY(comesToRest(*m_view));

    QCOMPARE(m_view->verticalScrollBar()->value(), 0);
    QVERIFY(!m_view->currentIndex().isValid());
}

void MetaDataViewSelectionTest::rowsChosenBeforeTheCountIsKnownStayChosen_data()
{
    QTest::addColumn<bool>("withSavedRow");

    QTest::newRow("after a lookup") << false;
    QTest::newRow("after a requery that saved another row") << true;
}

void MetaDataViewSelectionTest::rowsChosenBeforeTheCountIsKnownStayChosen()
{
    QFETCH(bool, withSavedRow);
    const auto hold = holdTheNextCount();
    if (withSavedRow) {
        m_view->setCurrentIndex(m_view->model()->index(80, 0));
        deleteRowsFrom(900);
        m_view->requery(true);
    } else {
        m_view->setLookup("sound 1", true);
    }
    QTRY_VERIFY(*hold);
    QCoreApplication::sendPostedEvents();
    QVERIFY(!m_view->metaDataModel()->isRowsCountActual());

    m_view->setCurrentIndex(m_view->model()->index(3, 1));
    select(*m_view, 5, 6);
    (*hold)->release();
    QVERIFY(comesToRest(*m_view));

    QVERIFY(m_view->model()->rowCount() < 1000);
    QCOMPARE(m_view->currentIndex(), m_view->model()->index(3, 1));
    QCOMPARE(selectedRows(*m_view), QList<int>({ 3, 5, 6 }));
}

void MetaDataViewSelectionTest::rowsClearedBeforeTheCountIsKnownDoNotComeBack()
{
    const auto hold = holdTheNextCount();
    m_view->setCurrentIndex(m_view->model()->index(11, 0));
    select(*m_view, 10, 12);
    deleteRowsFrom(900);
    m_view->requery(true);
    QTRY_VERIFY(*hold);
    QCoreApplication::sendPostedEvents();
    QCOMPARE(selectedRows(*m_view), QList<int>({ 10, 11, 12 }));

    m_view->clearSelection();
    (*hold)->release();
    QVERIFY(comesToRest(*m_view));

    QCOMPARE(m_view->model()->rowCount(), 900);
    QCOMPARE(m_view->currentIndex().row(), 11);
    QCOMPARE(selectedRows(*m_view), QList<int>());
}

void MetaDataViewSelectionTest::countLeavesAScrolledViewWhereItIs()
{
    const auto hold = holdTheNextCount();
    m_view->setCurrentIndex(m_view->model()->index(3, 0));
    deleteRowsFrom(900);
    m_view->requery();
    QTRY_VERIFY(*hold);
    QCoreApplication::sendPostedEvents();

    m_view->verticalScrollBar()->setValue(300);
    (*hold)->release();
    QVERIFY(comesToRest(*m_view));

    QCOMPARE(m_view->model()->rowCount(), 900);
    QCOMPARE(m_view->currentIndex().row(), 3);
    QCOMPARE(m_view->verticalScrollBar()->value(), 300);
}

void MetaDataViewSelectionTest::storeTakenAwayForgetsTheSelection()
{
    m_view->setCurrentIndex(m_view->model()->index(3, 0));

    m_view->setDatabase(nullptr, tableId);
    QCoreApplication::sendPostedEvents();
    QVERIFY(!m_view->currentIndex().isValid());
    m_view->setDatabase(&m_store->database(), tableId);
    QVERIFY(comesToRest(*m_view));

    QVERIFY(!m_view->currentIndex().isValid());
}

void MetaDataViewSelectionTest::rowSavedForAnotherQueryIsNotSelected_data()
{
    QTest::addColumn<Change>("change");

    QTest::newRow("table") << Change([](MetaDataView& view) { view.setTableId(otherTable); });
    QTest::newRow("store") << Change(
        [](MetaDataView& view) { view.setDatabase(view.metaDataModel()->database(), otherTable); });
    QTest::newRow("filter") << Change([](MetaDataView& view) { view.setFilters(true, false); });
    QTest::newRow("lookup") << Change([](MetaDataView& view) { view.setLookup("sound", true); });
    QTest::newRow("lookup in paths") << Change([](MetaDataView& view) { view.setFilePathLookupEnabled(true); });
    QTest::newRow("order") << Change([](MetaDataView& view) {
        const QHeaderView& header = *view.horizontalHeader();
        const int x = header.sectionViewportPosition(MetaDataModel::FileNameColumn) + 20;
        QTest::mouseClick(header.viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(x, header.height() / 2));
    });
}

void MetaDataViewSelectionTest::rowSavedForAnotherQueryIsNotSelected()
{
    QFETCH(Change, change);
    const auto hold = holdTheNextCount();
    m_view->setCurrentIndex(m_view->model()->index(700, 0));
    select(*m_view, 10, 12);
    m_view->requery(true);
    QTRY_VERIFY(*hold);
    QCoreApplication::sendPostedEvents();
    QCOMPARE(selectedRows(*m_view), QList<int>({ 10, 11, 12, 700 }));
    QVERIFY(!m_view->metaDataModel()->isRowsCountActual());

    change(*m_view);
    (*hold)->release();
    QVERIFY(comesToRest(*m_view));

    QCOMPARE(m_view->model()->rowCount(), 1000);
    QVERIFY(!m_view->currentIndex().isValid());
    QCOMPARE(selectedRows(*m_view), QList<int>());
    QCOMPARE(m_view->verticalScrollBar()->value(), 0);
}

void MetaDataViewSelectionTest::rowOfAnotherQueryIsNotSaved()
{
    m_view->setCurrentIndex(m_view->model()->index(700, 0));
    TestSupport::StoreHold hold(*m_store);

    m_view->setLookup("sound", true);
    m_view->requery(true);
    m_view->requery();
    hold.release();
    QVERIFY(comesToRest(*m_view));

    QVERIFY(!m_view->currentIndex().isValid());
    QCOMPARE(selectedRows(*m_view), QList<int>());
    QCOMPARE(m_view->verticalScrollBar()->value(), 0);
}

void MetaDataViewSelectionTest::failedLookupLeavesNoSavedRow()
{
    const auto hold = holdTheNextCount();
    m_view->setCurrentIndex(m_view->model()->index(700, 0));
    deleteRowsFrom(900);
    m_view->requery(true);
    QTRY_VERIFY(*hold);
    QCoreApplication::sendPostedEvents();
    const TestSupport::MessageRecorder log;

    m_view->setLookup("\"", true);
    (*hold)->release();
    QVERIFY(comesToRest(*m_view));
    QCOMPARE(log.messages().size(), 1);
    QCOMPARE(m_view->model()->rowCount(), 900);
    QCOMPARE(selectedRows(*m_view), QList<int>{ 700 });

    m_view->setLookup("sound", true);
    QVERIFY(comesToRest(*m_view));
    QVERIFY(!m_view->currentIndex().isValid());
    QCOMPARE(selectedRows(*m_view), QList<int>());
}

void MetaDataViewSelectionTest::selectionByKeysSurvivesARequery_data()
{
    QTest::addColumn<QKeySequence>("keys");
    QTest::addColumn<int>("currentRow");
    QTest::addColumn<int>("currentColumn");
    QTest::addColumn<int>("firstSelected");
    QTest::addColumn<int>("lastSelected");

    QTest::newRow("Page Down") << QKeySequence("PgDown") << nextPage << 2 << nextPage << nextPage;
    QTest::newRow("Shift+Down") << QKeySequence("Shift+Down") << 501 << 2 << 500 << 501;
    QTest::newRow("Shift+Page Down") << QKeySequence("Shift+PgDown") << nextPage << 2 << 500 << nextPage;
    QTest::newRow("End") << QKeySequence("End") << 500 << 6 << 500 << 500;
    QTest::newRow("Home") << QKeySequence("Home") << 500 << 0 << 500 << 500;
    // With Ctrl only the current row moves.
    QTest::newRow("Ctrl+End") << QKeySequence("Ctrl+End") << 999 << 6 << 500 << 500;
    QTest::newRow("Ctrl+Home") << QKeySequence("Ctrl+Home") << 0 << 0 << 500 << 500;
    QTest::newRow("Ctrl+A") << QKeySequence("Ctrl+A") << 500 << 2 << 0 << 999;
}

void MetaDataViewSelectionTest::selectionByKeysSurvivesARequery()
{
    QFETCH(QKeySequence, keys);
    m_view->setCurrentIndex(m_view->model()->index(500, 2));

    QTest::keySequence(m_view.get(), keys);
    const auto compareWithExpected = [this]() {
        const int pageRows = m_view->viewport()->height() / m_view->rowHeight();
        const auto expected = [pageRows](int row) {
            return row == nextPage ? 500 + pageRows : row;
        };
        QFETCH(int, currentRow);
        QFETCH(int, currentColumn);
        QFETCH(int, firstSelected);
        QFETCH(int, lastSelected);
        QCOMPARE(m_view->currentIndex(), m_view->model()->index(expected(currentRow), currentColumn));
        const QList<int> rows = selectedRows(*m_view);
        QCOMPARE(rows.size(), expected(lastSelected) - expected(firstSelected) + 1);
        QCOMPARE(rows.first(), expected(firstSelected));
        QCOMPARE(rows.last(), expected(lastSelected));
    };
    compareWithExpected();
    m_view->requery(true);
    QVERIFY(comesToRest(*m_view));

    compareWithExpected();
}

void MetaDataViewSelectionTest::shiftSelectionGrowsOnAfterARequery_data()
{
    QTest::addColumn<QKeySequence>("keys");
    QTest::addColumn<QList<int>>("before");
    QTest::addColumn<QList<int>>("after");

    QTest::newRow("down") << QKeySequence("Shift+Down") << QList<int>{ 30, 31, 32 } << QList<int>{ 30, 31, 32, 33 };
    QTest::newRow("up") << QKeySequence("Shift+Up") << QList<int>{ 28, 29, 30 } << QList<int>{ 27, 28, 29, 30 };
}

void MetaDataViewSelectionTest::shiftSelectionGrowsOnAfterARequery()
{
    QFETCH(QKeySequence, keys);
    QFETCH(QList<int>, before);
    QFETCH(QList<int>, after);
    m_view->setCurrentIndex(m_view->model()->index(30, 2));
    QTest::keySequence(m_view.get(), keys);
    QTest::keySequence(m_view.get(), keys);
    QCOMPARE(selectedRows(*m_view), before);
    const QModelIndex current = m_view->currentIndex();
    QSignalSpy currentRows(m_view->selectionModel(), &QItemSelectionModel::currentRowChanged);
    QSignalSpy selections(m_view->selectionModel(), &QItemSelectionModel::selectionChanged);

    m_view->requery(true);
    QVERIFY(comesToRest(*m_view));
    QCOMPARE(selectedRows(*m_view), before);
    QCOMPARE(m_view->currentIndex(), current);
    QCOMPARE(currentRows.count(), 1);
    QCOMPARE(selections.count(), 1);

    QTest::keySequence(m_view.get(), keys);
    QCOMPARE(selectedRows(*m_view), after);
}

void MetaDataViewSelectionTest::selectedRowsAreCountedByRanges()
{
    QCOMPARE(m_view->selectedRowsCount(), 0);

    select(*m_view, 10, 12);
    select(*m_view, 500, 599);
    QCOMPARE(m_view->selectedRowsCount(), 103);

    m_view->selectAll();
    QCOMPARE(m_view->selectedRowsCount(), 1000);
}

QTEST_MAIN(MetaDataViewSelectionTest)

#include "tst_metadataviewselection.moc"
