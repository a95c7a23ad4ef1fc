// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/metadatamodel.h"
#include "browse/metadataview.h"
#include "tests/browse/browsefixture.h"

#include <QDrag>
#include <QMimeData>
#include <QWindow>
#include <QtTest>

#include <functional>

using TestSupport::filledPath;
using TestSupport::fillTable;
using TestSupport::settles;

namespace {

constexpr int tableId = 1;
constexpr int rowsInTable = 3000;

/// Sees the drags that a widget starts; on this platform each is over at once.
class DragWatcher final : public QObject
{
    Q_OBJECT

public:
    explicit DragWatcher(QObject* source) { source->installEventFilter(this); }

    QList<QList<QUrl>> drags() const { return m_drags; }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::ChildAdded)
            static_cast<QChildEvent*>(event)->child()->installEventFilter(this);
        const auto* drag = qobject_cast<QDrag*>(watched);
        if (drag && event->type() == QEvent::DeferredDelete)
            m_drags.append(drag->mimeData()->urls());
        return false;
    }

private:
    QList<QList<QUrl>> m_drags;
};

QList<QUrl> addressesOf(std::initializer_list<int> rows)
{
    QList<QUrl> addresses;
    for (const int row : rows)
        addresses.append(QUrl::fromLocalFile(filledPath(tableId, row)));
    return addresses;
}

} // namespace

Q_DECLARE_METATYPE(std::function<void(MetaDataView&)>)

class MetaDataViewDragsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void selectedRowsAreDraggedInTheirOrder();
    void rowThatWasNotSelectedIsDraggedAlone();
    void nothingIsDraggedFromTheEmptySpace();
    void rowsNotLoadedAreFetchedFirst();
    void rowsFarApartAreFetchedFirst();
    void rowsOfAnEarlierQueryAreNotFetched_data();
    void rowsOfAnEarlierQueryAreNotFetched();
    void whoLetsGoWhileRowsAreFetchedDragsNothing();
    void movingWhileRowsAreFetchedSelectsNothing();
    void viewMayGoWhileRowsAreFetched();
    void rowsAreOnlyEverCopied();
    void pathsWithOddCharactersArrive();

private:
    QPoint placeOf(int row) const;
    void pressOn(int row);
    void moveAway();
    void release();
    void dragFrom(int row);

    std::unique_ptr<TestSupport::StoreFixture> m_store;
    std::unique_ptr<MetaDataView> m_view;
    std::unique_ptr<DragWatcher> m_watcher;
};

void MetaDataViewDragsTest::initTestCase()
{
    m_store = std::make_unique<TestSupport::StoreFixture>();
    m_store->open();
    fillTable(*m_store, tableId, rowsInTable);
}

void MetaDataViewDragsTest::init()
{
    m_view = std::make_unique<MetaDataView>();
    m_view->resize(1000, 400);
    m_view->setDatabase(&m_store->database(), tableId);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    QVERIFY(settles(*m_view->metaDataModel()));
    m_watcher = std::make_unique<DragWatcher>(m_view.get());
}

void MetaDataViewDragsTest::cleanup()
{
    if (m_view)
        release();
    m_view.reset();
    m_watcher.reset();
}

void MetaDataViewDragsTest::cleanupTestCase()
{
    m_store.reset();
}

QPoint MetaDataViewDragsTest::placeOf(int row) const
{
    const QRect area = m_view->visualRect(m_view->model()->index(row, 1));
    return m_view->viewport()->mapTo(m_view.get(), area.center());
}

// By the window, so that the application, too, knows which buttons are held.
void MetaDataViewDragsTest::pressOn(int row)
{
    QTest::mousePress(m_view->windowHandle(), Qt::LeftButton, Qt::NoModifier, placeOf(row));
}

void MetaDataViewDragsTest::moveAway()
{
    for (int step = 1; step < 5; ++step)
        QTest::mouseMove(m_view->windowHandle(), placeOf(4) + QPoint(0, 12 * step));
}

void MetaDataViewDragsTest::release()
{
    QTest::mouseRelease(m_view->windowHandle(), Qt::LeftButton, Qt::NoModifier, placeOf(0));
}

void MetaDataViewDragsTest::dragFrom(int row)
{
    pressOn(row);
    moveAway();
}

void MetaDataViewDragsTest::selectedRowsAreDraggedInTheirOrder()
{
    for (const int row : { 5, 1, 2 }) {
        m_view->selectionModel()->select(
            m_view->model()->index(row, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }

    dragFrom(2);

    QTRY_COMPARE(m_watcher->drags().size(), 1);
    QCOMPARE(m_watcher->drags().first(), addressesOf({ 1, 2, 5 }));
}

void MetaDataViewDragsTest::rowThatWasNotSelectedIsDraggedAlone()
{
    m_view->selectRow(0);

    dragFrom(3);

    QTRY_COMPARE(m_watcher->drags().size(), 1);
    QCOMPARE(m_watcher->drags().first(), addressesOf({ 3 }));
}

void MetaDataViewDragsTest::nothingIsDraggedFromTheEmptySpace()
{
    m_view->setLookup("Sound 2999", true);
    QVERIFY(settles(*m_view->metaDataModel()));
    QCOMPARE(m_view->model()->rowCount(), 1);
    const QPoint below(50, m_view->height() - 20);

    QTest::mousePress(m_view->windowHandle(), Qt::LeftButton, Qt::NoModifier, below);
    for (int step = 1; step < 5; ++step)
        QTest::mouseMove(m_view->windowHandle(), below - QPoint(0, 12 * step));
    release();
    dragFrom(0);

    QTRY_COMPARE(m_watcher->drags().size(), 1);
    QCOMPARE(m_watcher->drags().first(), addressesOf({ 2999 }));
}

void MetaDataViewDragsTest::rowsNotLoadedAreFetchedFirst()
{
    m_view->selectAll();

    dragFrom(1);

    QTRY_COMPARE(m_watcher->drags().size(), 1);
    const QList<QUrl> urls = m_watcher->drags().first();
    QCOMPARE(urls.size(), rowsInTable);
    for (int row = 0; row < rowsInTable; ++row)
        QCOMPARE(urls.at(row), addressesOf({ row }).first());
}

void MetaDataViewDragsTest::rowsFarApartAreFetchedFirst()
{
    for (const int row : { 2, 1234, 2998 }) {
        m_view->selectionModel()->select(
            m_view->model()->index(row, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }

    dragFrom(2);

    QTRY_COMPARE(m_watcher->drags().size(), 1);
    QCOMPARE(m_watcher->drags().first(), addressesOf({ 2, 1234, 2998 }));
}

void MetaDataViewDragsTest::rowsOfAnEarlierQueryAreNotFetched_data()
{
    using Change = std::function<void(MetaDataView&)>;
    QTest::addColumn<Change>("change");

    QTest::newRow("order") << Change(
        [](MetaDataView& view) { view.sortByColumn(MetaDataModel::FilePathColumn, Qt::DescendingOrder); });
    QTest::newRow("lookup") << Change([](MetaDataView& view) { view.setLookup("Sound 2", true); });
    QTest::newRow("filter") << Change([](MetaDataView& view) { view.setFilters(false, true); });
    QTest::newRow("same query again") << Change([](MetaDataView& view) { view.requery(true); });
}

void MetaDataViewDragsTest::rowsOfAnEarlierQueryAreNotFetched()
{
    QFETCH(std::function<void(MetaDataView&)>, change);
    const MetaDataModel& model = *m_view->metaDataModel();
    QSignalSpy fetched(&model, &MetaDataModel::fieldsCollectionContextsReleased);
    m_view->selectAll();
    TestSupport::StoreHold hold(*m_store);

    change(*m_view);
    QVERIFY(model.isRequeryPending());
    dragFrom(1);
    moveAway();
    QCOMPARE(m_view->selectedRowsCount(), rowsInTable);
    hold.release();
    QVERIFY(settles(model));
    release();
    // What was being fetched would be given up now.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    QVERIFY(fetched.isEmpty());
    QVERIFY(m_watcher->drags().isEmpty());
}

void MetaDataViewDragsTest::whoLetsGoWhileRowsAreFetchedDragsNothing()
{
    QSignalSpy ended(m_view->metaDataModel(), &MetaDataModel::fieldsCollectionContextsReleased);
    m_view->selectAll();
    {
        TestSupport::StoreHold hold(*m_store);
        dragFrom(1);
        release();
    }
    QTRY_VERIFY(!ended.isEmpty());
    m_view->clearSelection();
    dragFrom(3);

    QTRY_COMPARE(m_watcher->drags().size(), 1);
    QCOMPARE(m_watcher->drags().first(), addressesOf({ 3 }));
}

void MetaDataViewDragsTest::movingWhileRowsAreFetchedSelectsNothing()
{
    m_view->selectAll();
    TestSupport::StoreHold hold(*m_store);

    dragFrom(1);
    moveAway();

    QCOMPARE(m_view->selectedRowsCount(), rowsInTable);
    hold.release();
    QTRY_COMPARE(m_watcher->drags().size(), 1);
    QCOMPARE(m_watcher->drags().first().size(), rowsInTable);
}

void MetaDataViewDragsTest::viewMayGoWhileRowsAreFetched()
{
    m_view->selectAll();
    TestSupport::StoreHold hold(*m_store);
    dragFrom(1);
    release();
    dragFrom(1);

    hold.release();
    m_view.reset();

    QVERIFY(m_watcher->drags().isEmpty());
}

void MetaDataViewDragsTest::rowsAreOnlyEverCopied()
{
    QCOMPARE(m_view->model()->supportedDragActions(), Qt::DropActions(Qt::CopyAction));
    QVERIFY(m_view->model()->flags(m_view->model()->index(0, 0)).testFlag(Qt::ItemIsDragEnabled));
    QVERIFY(!m_view->model()->flags(QModelIndex()).testFlag(Qt::ItemIsDragEnabled));
    QVERIFY(m_view->dragEnabled());
}

void MetaDataViewDragsTest::pathsWithOddCharactersArrive()
{
    const int otherTable = 3;
    const QString path = QString::fromUtf8("/Klänge/a b#1 100%25 \"q\".wav");
    m_store->insert(otherTable, { TestSupport::sampleRecord(path) });
    m_view->setTableId(otherTable);
    QVERIFY(settles(*m_view->metaDataModel()));

    dragFrom(0);

    QTRY_COMPARE(m_watcher->drags().size(), 1);
    QCOMPARE(m_watcher->drags().first().size(), 1);
    QCOMPARE(m_watcher->drags().first().first().toLocalFile(), path);
}

QTEST_MAIN(MetaDataViewDragsTest)

#include "tst_metadataviewdrags.moc"
