// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/metadataview.h"

#include "browse/metadatamodel.h"
#include "store/operationreply.h"
#include "tests/browse/browsefixture.h"

#include <QAction>
#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>
#include <QtTest>

using TestSupport::fillTable;
using TestSupport::isWholeDelay;
using TestSupport::reaches;
using TestSupport::settles;

namespace {

constexpr int tableId = 1;
constexpr int otherTable = 2;

QAction* columnAction(const MetaDataView& view, const QString& title)
{
    const QList<QAction*> actions = view.columnsMenu()->actions();
    const auto found = std::find_if(
        actions.begin(), actions.end(), [&title](const QAction* action) { return action->text() == title; });
    return found == actions.end() ? nullptr : *found;
}

void press(MetaDataView& view, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, bool isRepeat = false)
{
    QKeyEvent event(QEvent::KeyPress, key, modifiers, QString(), isRepeat);
    QCoreApplication::sendEvent(&view, &event);
}

QString lookupOf(const MetaDataView& view)
{
    return view.metaDataModel()->queryParameters().value("lookup").toString();
}

} // namespace

class MetaDataViewTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void signalsAndSlotsStandInOrder();
    void keysBecomeSignals_data();
    void keysBecomeSignals();
    void heldKeyIsOnePress();
    void arrowKeysMoveTheCurrentRowAlsoWhenHeld();
    void typedLettersDoNothing();
    void typedLookupIsAskedForOnce();
    void typingOnRestartsTheDelayOfTheLookup();
    void lookupAtOnceCancelsTheDelayedOne();
    void sameLookupAsksNothing();
    void filePathLookupReachesTheModel();
    void storeTableAndFiltersReachTheModel();
    void modelSignalsAreForwarded();
    void columnMenuNamesTheColumns();
    void uncheckedColumnIsHidden();
    void descriptionCannotBeUnchecked();
    void restoredHeaderFitsTheFixedColumnsToTheFont();
    void restoredHeaderNeverHidesTheDescription();
    void restoredHeaderChecksTheMenu();
    void unusableHeaderStateChangesNothing();
    void restoredHeaderSortsTheModel();
    void firstOrderIsByPathAscending();
    void clickOnAHeaderSorts();
    void columnsHaveTheirWidths();
    void headerAndRowsAreSetUp();
    void rangesOnScreenAreVisible_data();
    void rangesOnScreenAreVisible();
    void visibilityIsNeverTakenBack();
    void scrolledViewShowsTheRowsItNeeds();
    void viewMayGoWhileAnswersAreOnTheirWay();

private:
    std::unique_ptr<TestSupport::StoreFixture> m_store;
    std::unique_ptr<MetaDataView> m_view;
};

void MetaDataViewTest::initTestCase()
{
    m_store = std::make_unique<TestSupport::StoreFixture>();
    m_store->open();
    fillTable(*m_store, tableId, 3000);
    fillTable(*m_store, otherTable, 40);
}

void MetaDataViewTest::init()
{
    m_view = std::make_unique<MetaDataView>();
    m_view->resize(1200, 400);
    QSignalSpy finished(m_view.get(), &MetaDataView::processingFinished);
    m_view->setDatabase(&m_store->database(), tableId);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    QVERIFY(settles(*m_view->metaDataModel()));
    QTRY_VERIFY(!finished.isEmpty());
}

void MetaDataViewTest::cleanup()
{
    m_view.reset();
}

void MetaDataViewTest::cleanupTestCase()
{
    m_store.reset();
}

void MetaDataViewTest::signalsAndSlotsStandInOrder()
{
    QCOMPARE(TestSupport::ownMethods(MetaDataView::staticMetaObject),
        QStringList({ "processingStarted()", "processingFinished()", "actualRowsCountChanged()",
            "scanRequested(QStringList)", "returnPressed()", "plusPressed()", "minusPressed()", "deletePressed()",
            "spacePressed()", "tableChaged()", "requeried()", "requery(bool)", "requery()", "setLookup(QString,bool)",
            "setLookup(QString)", "setFilePathLookupEnabled(bool)", "handleRequeried()", "restoreSavedSelection()",
            "requestPendingScan()", "checkRangeVisibility(int,int,bool&)", "applyLookup()", "toggledColumnVisibility()",
            "updateColumnsVisibility()" }));
}

void MetaDataViewTest::keysBecomeSignals_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<QString>("expected");

    QTest::newRow("return") << int(Qt::Key_Return) << 0 << "return";
    QTest::newRow("keypad enter") << int(Qt::Key_Enter) << int(Qt::KeypadModifier) << "";
    QTest::newRow("plus") << int(Qt::Key_Plus) << int(Qt::ShiftModifier) << "plus";
    QTest::newRow("equal") << int(Qt::Key_Equal) << 0 << "plus";
    QTest::newRow("keypad plus") << int(Qt::Key_Plus) << int(Qt::KeypadModifier) << "plus";
    QTest::newRow("minus") << int(Qt::Key_Minus) << 0 << "minus";
    QTest::newRow("underscore") << int(Qt::Key_Underscore) << int(Qt::ShiftModifier) << "minus";
    QTest::newRow("delete") << int(Qt::Key_Delete) << 0 << "delete";
    QTest::newRow("backspace") << int(Qt::Key_Backspace) << 0 << "delete";
    QTest::newRow("space") << int(Qt::Key_Space) << 0 << "space";
    QTest::newRow("letter") << int(Qt::Key_A) << 0 << "";
    QTest::newRow("down") << int(Qt::Key_Down) << 0 << "";
}

void MetaDataViewTest::keysBecomeSignals()
{
    QFETCH(int, key);
    QFETCH(int, modifiers);
    QFETCH(QString, expected);
    QString emitted;
    connect(m_view.get(), &MetaDataView::returnPressed, m_view.get(), [&]() { emitted += "return"; });
    connect(m_view.get(), &MetaDataView::plusPressed, m_view.get(), [&]() { emitted += "plus"; });
    connect(m_view.get(), &MetaDataView::minusPressed, m_view.get(), [&]() { emitted += "minus"; });
    connect(m_view.get(), &MetaDataView::deletePressed, m_view.get(), [&]() { emitted += "delete"; });
    connect(m_view.get(), &MetaDataView::spacePressed, m_view.get(), [&]() { emitted += "space"; });

    press(*m_view, key, Qt::KeyboardModifiers(modifiers));
    QCOMPARE(emitted, expected);

    press(*m_view, key, Qt::KeyboardModifiers(modifiers), true);
    QCOMPARE(emitted, expected);
}

void MetaDataViewTest::heldKeyIsOnePress()
{
    QSignalSpy plus(m_view.get(), &MetaDataView::plusPressed);

    press(*m_view, Qt::Key_Plus);
    for (int repeat = 0; repeat < 10; ++repeat)
        press(*m_view, Qt::Key_Plus, Qt::NoModifier, true);

    QCOMPARE(plus.count(), 1);
}

void MetaDataViewTest::arrowKeysMoveTheCurrentRowAlsoWhenHeld()
{
    m_view->setCurrentIndex(m_view->model()->index(3, 0));

    press(*m_view, Qt::Key_Down);
    QCOMPARE(m_view->currentIndex().row(), 4);

    press(*m_view, Qt::Key_Down, Qt::NoModifier, true);
    QCOMPARE(m_view->currentIndex().row(), 5);
}

void MetaDataViewTest::typedLettersDoNothing()
{
    m_view->setCurrentIndex(m_view->model()->index(3, 0));
    QSignalSpy started(m_view.get(), &MetaDataView::processingStarted);

    QTest::keyClicks(m_view.get(), "/table100002999");

    QCOMPARE(m_view->currentIndex().row(), 3);
    QVERIFY(started.isEmpty());
}

void MetaDataViewTest::typedLookupIsAskedForOnce()
{
    QSignalSpy requeried(m_view.get(), &MetaDataView::requeried);

    for (const char* text : { "s", "so", "sou", "soun", "sound 12" }) {
        m_view->setLookup(text);
        QCOMPARE(lookupOf(*m_view), QString());
        QVERIFY(!m_view->metaDataModel()->isRequeryPending());
    }

    QVERIFY(requeried.wait());
    QCOMPARE(lookupOf(*m_view), QString("sound 12"));
    QVERIFY(settles(*m_view->metaDataModel()));
    QCOMPARE(requeried.count(), 1);
}

void MetaDataViewTest::typingOnRestartsTheDelayOfTheLookup()
{
    QElapsedTimer sinceTyping;
    sinceTyping.start();
    m_view->setLookup("sound");
    QVERIFY(reaches(sinceTyping, 250));

    sinceTyping.start();
    m_view->setLookup("sound 12");
    QTRY_COMPARE(lookupOf(*m_view), QString("sound 12"));
    const qint64 waited = sinceTyping.elapsed();

    QVERIFY2(isWholeDelay(waited, 500), qPrintable(QString::number(waited)));
}

void MetaDataViewTest::lookupAtOnceCancelsTheDelayedOne()
{
    MetaDataView clock;
    m_view->setLookup("a");
    m_view->setLookup("b", true);
    QCOMPARE(lookupOf(*m_view), QString("b"));
    QVERIFY(m_view->metaDataModel()->isRequeryPending());

    m_view->metaDataModel()->setLookup("c");
    // Started later with the same delay: when it is through, the other one would be, too.
    clock.setLookup("through");
    QTRY_COMPARE(lookupOf(clock), QString("through"));

    QCOMPARE(lookupOf(*m_view), QString("c"));
}

void MetaDataViewTest::sameLookupAsksNothing()
{
    m_view->setLookup("sound", true);
    QVERIFY(settles(*m_view->metaDataModel()));

    m_view->setLookup("sound", true);

    QVERIFY(!m_view->metaDataModel()->isRequeryPending());
}

void MetaDataViewTest::filePathLookupReachesTheModel()
{
    m_view->setFilePathLookupEnabled(true);

    QCOMPARE(m_view->metaDataModel()->queryParameters().value("lookupFields").toStringList(),
        QStringList({ "library", "description", "filePath" }));
    QVERIFY(m_view->metaDataModel()->isRequeryPending());
}

void MetaDataViewTest::storeTableAndFiltersReachTheModel()
{
    QCOMPARE(m_view->metaDataModel()->database(), &m_store->database());
    QCOMPARE(m_view->tableId(), tableId);

    m_view->setTableId(otherTable);
    m_view->setFilters(true, true);

    QCOMPARE(m_view->tableId(), otherTable);
    QCOMPARE(m_view->metaDataModel()->tableId(), otherTable);
    QCOMPARE(m_view->metaDataModel()->queryParameters().value("lastScannedOnly"), QVariant(true));
    QCOMPARE(m_view->metaDataModel()->queryParameters().value("playlistOnly"), QVariant(true));
}

void MetaDataViewTest::modelSignalsAreForwarded()
{
    QSignalSpy started(m_view.get(), &MetaDataView::processingStarted);
    QSignalSpy finished(m_view.get(), &MetaDataView::processingFinished);
    QSignalSpy counts(m_view.get(), &MetaDataView::actualRowsCountChanged);
    QSignalSpy tables(m_view.get(), &MetaDataView::tableChaged);
    QSignalSpy requeried(m_view.get(), &MetaDataView::requeried);

    m_view->setTableId(otherTable);
    QVERIFY(settles(*m_view->metaDataModel()));
    QTRY_COMPARE(finished.count(), started.count());

    QVERIFY(started.count() >= 1);
    QCOMPARE(counts.count(), 2);
    QCOMPARE(tables.count(), 1);
    QCOMPARE(requeried.count(), 1);
}

void MetaDataViewTest::columnMenuNamesTheColumns()
{
    const QList<QAction*> actions = m_view->columnsMenu()->actions();

    QStringList titles;
    for (int column = 0; column < actions.size(); ++column) {
        titles << actions.at(column)->text();
        QCOMPARE(actions.at(column)->property("columnLogicalIndex"), QVariant(column));
        QVERIFY(actions.at(column)->isCheckable());
        QVERIFY(actions.at(column)->isChecked());
        QCOMPARE(actions.at(column)->isEnabled(), column != MetaDataModel::DescriptionColumn);
    }
    QCOMPARE(titles, QStringList({ "File Path", "File Name", "Type", "Library", "Description", "Duration", "Rating" }));
    QCOMPARE(m_view->columnsMenu()->parent(), static_cast<QObject*>(m_view.get()));
}

void MetaDataViewTest::uncheckedColumnIsHidden()
{
    QAction* duration = columnAction(*m_view, "Duration");

    duration->setChecked(false);
    QVERIFY(m_view->isColumnHidden(MetaDataModel::DurationColumn));

    duration->setChecked(true);
    QVERIFY(!m_view->isColumnHidden(MetaDataModel::DurationColumn));
}

void MetaDataViewTest::descriptionCannotBeUnchecked()
{
    QMenu* menu = m_view->columnsMenu();
    QAction* description = columnAction(*m_view, "Description");
    const auto click = [menu](QAction* action) {
        menu->popup(QPoint(0, 0));
        QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, menu->actionGeometry(action).center());
        menu->close();
    };

    click(columnAction(*m_view, "Library"));
    QVERIFY(m_view->isColumnHidden(MetaDataModel::LibraryColumn));

    click(description);
    QVERIFY(description->isChecked());
    QVERIFY(!m_view->isColumnHidden(MetaDataModel::DescriptionColumn));
}

void MetaDataViewTest::restoredHeaderChecksTheMenu()
{
    MetaDataView saved;
    saved.setColumnHidden(MetaDataModel::TypeColumn, true);
    saved.horizontalHeader()->moveSection(0, 3);
    columnAction(*m_view, "Rating")->setChecked(false);
    QSignalSpy restored(m_view.get(), &AdvancedItemView::headerStateRestored);

    m_view->restoreHeaderState(saved.saveHeaderState());

    QCOMPARE(restored.count(), 1);
    QVERIFY(m_view->isColumnHidden(MetaDataModel::TypeColumn));
    QVERIFY(!columnAction(*m_view, "Type")->isChecked());
    QVERIFY(!m_view->isColumnHidden(MetaDataModel::RatingColumn));
    QVERIFY(columnAction(*m_view, "Rating")->isChecked());
    QCOMPARE(m_view->horizontalHeader()->visualIndex(0), 3);
}

void MetaDataViewTest::restoredHeaderFitsTheFixedColumnsToTheFont()
{
    const QList<int> fixedColumns{ MetaDataModel::TypeColumn, MetaDataModel::DurationColumn,
        MetaDataModel::RatingColumn };
    QList<int> widths;
    for (const int column : fixedColumns)
        widths.append(m_view->columnWidth(column));
    const QFont font = QApplication::font();
    QFont smallFont = font;
    smallFont.setPointSizeF(font.pointSizeF() / 2);
    QApplication::setFont(smallFont);
    MetaDataView saved;
    QApplication::setFont(font);
    QVERIFY(saved.horizontalHeader()->sectionSize(MetaDataModel::TypeColumn) < widths.first());
    saved.horizontalHeader()->setSectionResizeMode(MetaDataModel::RatingColumn, QHeaderView::Interactive);
    saved.setColumnHidden(MetaDataModel::DurationColumn, true);
    saved.setColumnWidth(MetaDataModel::LibraryColumn, 77);

    m_view->restoreHeaderState(saved.saveHeaderState());

    QVERIFY(m_view->isColumnHidden(MetaDataModel::DurationColumn));
    m_view->setColumnHidden(MetaDataModel::DurationColumn, false);
    for (int position = 0; position < fixedColumns.size(); ++position) {
        QCOMPARE(m_view->columnWidth(fixedColumns.at(position)), widths.at(position));
        QCOMPARE(m_view->horizontalHeader()->sectionResizeMode(fixedColumns.at(position)), QHeaderView::Fixed);
    }
    QCOMPARE(m_view->columnWidth(MetaDataModel::LibraryColumn), 77);
}

void MetaDataViewTest::restoredHeaderNeverHidesTheDescription()
{
    MetaDataView saved;
    saved.setColumnHidden(MetaDataModel::DescriptionColumn, true);

    m_view->restoreHeaderState(saved.saveHeaderState());

    QVERIFY(!m_view->isColumnHidden(MetaDataModel::DescriptionColumn));
    QVERIFY(columnAction(*m_view, "Description")->isChecked());
}

void MetaDataViewTest::unusableHeaderStateChangesNothing()
{
    columnAction(*m_view, "Type")->setChecked(false);

    m_view->restoreHeaderState("no header state");
    m_view->restoreHeaderState(QByteArray());

    QVERIFY(m_view->isColumnHidden(MetaDataModel::TypeColumn));
    QVERIFY(!columnAction(*m_view, "Type")->isChecked());
    QVERIFY(columnAction(*m_view, "Rating")->isChecked());
}

void MetaDataViewTest::restoredHeaderSortsTheModel()
{
    MetaDataView saved;
    saved.sortByColumn(MetaDataModel::RatingColumn, Qt::DescendingOrder);

    m_view->restoreHeaderState(saved.saveHeaderState());

    QCOMPARE(m_view->metaDataModel()->queryParameters().value("sortField"), QVariant("rating"));
    QCOMPARE(m_view->metaDataModel()->queryParameters().value("sortOrder"), QVariant(1));
}

void MetaDataViewTest::firstOrderIsByPathAscending()
{
    QCOMPARE(m_view->horizontalHeader()->sortIndicatorSection(), 0);
    QCOMPARE(m_view->horizontalHeader()->sortIndicatorOrder(), Qt::AscendingOrder);
    QCOMPARE(m_view->metaDataModel()->queryParameters().value("sortField"), QVariant("filePath"));
    QCOMPARE(m_view->metaDataModel()->queryParameters().value("sortOrder"), QVariant(0));
}

void MetaDataViewTest::clickOnAHeaderSorts()
{
    QHeaderView* header = m_view->horizontalHeader();
    const int position = header->sectionViewportPosition(MetaDataModel::FileNameColumn);
    const QPoint point(position + header->sectionSize(MetaDataModel::FileNameColumn) / 2, header->height() / 2);

    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, point);
    QCOMPARE(m_view->metaDataModel()->queryParameters().value("sortField"), QVariant("fileName"));
    const int order = m_view->metaDataModel()->queryParameters().value("sortOrder").toInt();

    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, point);
    QCOMPARE(m_view->metaDataModel()->queryParameters().value("sortOrder"), QVariant(1 - order));
}

void MetaDataViewTest::columnsHaveTheirWidths()
{
    const QFontMetrics metrics = m_view->fontMetrics();
    const int margins = 19;
    const int text = 5 * metrics.horizontalAdvance("ABCD") + margins;

    QCOMPARE(m_view->columnWidth(0), text);
    QCOMPARE(m_view->columnWidth(1), text);
    QCOMPARE(m_view->columnWidth(2), metrics.horizontalAdvance("ABCDE") + margins);
    QCOMPARE(m_view->columnWidth(3), text);
    QCOMPARE(m_view->columnWidth(5), metrics.horizontalAdvance("000:00WW") + margins);
    QCOMPARE(m_view->columnWidth(6), metrics.horizontalAdvance("00.0WWW") + margins);
    const QHeaderView* header = m_view->horizontalHeader();
    QCOMPARE(header->length(), header->viewport()->width());
    for (const int column : { 0, 1, 3 })
        QCOMPARE(header->sectionResizeMode(column), QHeaderView::Interactive);
    for (const int column : { 2, 5, 6 })
        QCOMPARE(header->sectionResizeMode(column), QHeaderView::Fixed);
    QCOMPARE(header->sectionResizeMode(4), QHeaderView::Stretch);
}

void MetaDataViewTest::headerAndRowsAreSetUp()
{
    const QHeaderView* header = m_view->horizontalHeader();
    QVERIFY(header->isVisible());
    QVERIFY(header->sectionsMovable());
    QVERIFY(header->sectionsClickable());
    QVERIFY(!header->highlightSections());
    QVERIFY(header->isSortIndicatorShown());
    QVERIFY(!header->stretchLastSection());
    QCOMPARE(m_view->selectionMode(), QAbstractItemView::ExtendedSelection);
    QCOMPARE(m_view->selectionBehavior(), QAbstractItemView::SelectRows);
    QVERIFY(m_view->isSortingEnabled());
    QVERIFY(m_view->dragEnabled());
    QVERIFY(m_view->viewport()->acceptDrops());
    QVERIFY(!m_view->showDropIndicator());
    QCOMPARE(m_view->QTableView::rowHeight(0), m_view->AdvancedItemView::rowHeight());
    QCOMPARE(m_view->model(), static_cast<QAbstractItemModel*>(m_view->metaDataModel()));
}

void MetaDataViewTest::rangesOnScreenAreVisible_data()
{
    QTest::addColumn<int>("scrolledTo");

    QTest::newRow("top") << 0;
    QTest::newRow("row 1") << 1;
    QTest::newRow("row 777") << 777;
}

void MetaDataViewTest::rangesOnScreenAreVisible()
{
    QFETCH(int, scrolledTo);
    m_view->verticalScrollBar()->setValue(scrolledTo);
    const int height = m_view->viewport()->height() - 1;
    const int rowHeight = m_view->AdvancedItemView::rowHeight();
    const int last = scrolledTo + (height + rowHeight) / rowHeight;
    const auto isVisible = [&](int topRow, int bottomRow) {
        bool visible = false;
        m_view->checkRangeVisibility(topRow, bottomRow, visible);
        return visible;
    };

    QVERIFY(isVisible(scrolledTo, scrolledTo + 49));
    QVERIFY(isVisible(last, last + 49));
    QVERIFY(!isVisible(last + 1, last + 50));
    QVERIFY(isVisible(scrolledTo - 49, scrolledTo));
    QVERIFY(!isVisible(scrolledTo - 50, scrolledTo - 1));
    QVERIFY(isVisible(0, 3000));
}

void MetaDataViewTest::visibilityIsNeverTakenBack()
{
    bool visible = true;
    m_view->checkRangeVisibility(2000, 2049, visible);
    QVERIFY(visible);

    visible = false;
    m_view->setDatabase(nullptr, tableId);
    m_view->checkRangeVisibility(0, 49, visible);
    QVERIFY(visible);
}

void MetaDataViewTest::scrolledViewShowsTheRowsItNeeds()
{
    const QModelIndex wanted = m_view->model()->index(2222, 0);

    m_view->scrollTo(wanted, QAbstractItemView::PositionAtTop);

    QTRY_COMPARE(wanted.data().toString(), TestSupport::filledPath(tableId, 2222));
    QCOMPARE(m_view->rowAt(0), 2222);
}

void MetaDataViewTest::viewMayGoWhileAnswersAreOnTheirWay()
{
    MetaDataModel* model = m_view->metaDataModel();
    m_view->setCurrentIndex(model->index(5, 0));
    m_view->requery(true);
    model->requestRowsCount();
    const std::unique_ptr<OperationReply> collection(model->collectFields({ model->index(2999, 0) }, "id"));
    // All is answered now, but nothing of it delivered.
    QCOMPARE(m_store->execute("SELECT 1"), QString());

    m_view.reset();

    QVERIFY(collection->isFinishedDelivered());
    QCOMPARE(collection->errorString(), QString("Canceled"));
}

QTEST_MAIN(MetaDataViewTest)

#include "tst_metadataview.moc"
