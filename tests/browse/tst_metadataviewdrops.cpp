// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/metadatamodel.h"
#include "browse/metadataview.h"
#include "tests/browse/browsefixture.h"

#include <QDropEvent>
#include <QMimeData>
#include <QtTest>

using TestSupport::fillTable;
using TestSupport::isWholeDelay;
using TestSupport::reaches;
using TestSupport::settles;

namespace {

constexpr int tableId = 1;
constexpr int emptyTable = 2;
const QPoint onARow(20, 20);

// Drags these data over the view and lets them go there, as the platform does: enter, move, drop.
struct Drag
{
    explicit Drag(const QList<QUrl>& urls) { data.setUrls(urls); }

    void enter(const MetaDataView& view)
    {
        QDragEnterEvent event(position, actions, &data, Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(view.viewport(), &event);
        isEntered = event.isAccepted();
        actionOffered = event.dropAction();
    }

    void move(const MetaDataView& view)
    {
        QDragMoveEvent event(position, actions, &data, Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(view.viewport(), &event);
        isMoved = event.isAccepted();
        actionOffered = event.dropAction();
    }

    void drop(const MetaDataView& view)
    {
        QDropEvent event(position, actions, &data, Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(view.viewport(), &event);
        isDropped = event.isAccepted();
        actionTaken = event.dropAction();
    }

    void run(const MetaDataView& view)
    {
        enter(view);
        move(view);
        drop(view);
    }

    QMimeData data;
    QPoint position = onARow;
    Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
    Qt::KeyboardModifiers modifiers = Qt::NoModifier;
    bool isEntered = false;
    bool isMoved = false;
    bool isDropped = false;
    Qt::DropAction actionOffered = Qt::IgnoreAction;
    Qt::DropAction actionTaken = Qt::IgnoreAction;
};

QUrl local(const char* path)
{
    return QUrl::fromLocalFile(QString::fromUtf8(path));
}

} // namespace

class MetaDataViewDropsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void droppedFilesAndFoldersRequestAScan();
    void twoDropsInABurstRequestOneScan();
    void anotherDropRestartsTheDelayOfTheScan();
    void laterDropRequestsAnotherScan();
    void webAddressesAreSkipped();
    void onlyWebAddressesRequestAnEmptyScan();
    void emptyTableTakesDropsToo();
    void placeBelowTheLastRowTakesDropsToo();
    void dataWithoutAddressesAreRefused();
    void dropIsACopyWhateverIsProposed_data();
    void dropIsACopyWhateverIsProposed();
    void dropChangesNoRow();

private:
    QStringList scannedPaths(int request) const { return m_scans->at(request).first().toStringList(); }

    std::unique_ptr<TestSupport::StoreFixture> m_store;
    std::unique_ptr<MetaDataView> m_view;
    std::unique_ptr<QSignalSpy> m_scans;
};

void MetaDataViewDropsTest::initTestCase()
{
    m_store = std::make_unique<TestSupport::StoreFixture>();
    m_store->open();
    fillTable(*m_store, tableId, 5);
}

void MetaDataViewDropsTest::init()
{
    m_view = std::make_unique<MetaDataView>();
    m_view->resize(1000, 400);
    m_view->setDatabase(&m_store->database(), tableId);
    m_view->show();
    QVERIFY(settles(*m_view->metaDataModel()));
    m_scans = std::make_unique<QSignalSpy>(m_view.get(), &MetaDataView::scanRequested);
}

void MetaDataViewDropsTest::cleanup()
{
    m_scans.reset();
    m_view.reset();
}

void MetaDataViewDropsTest::cleanupTestCase()
{
    m_store.reset();
}

void MetaDataViewDropsTest::droppedFilesAndFoldersRequestAScan()
{
    Drag drag({ local("/sounds/a b#1.wav"), local("/sounds/Größe"), local("/sounds/c.aif") });

    drag.run(*m_view);
    QVERIFY(drag.isEntered);
    QVERIFY(drag.isMoved);
    QVERIFY(drag.isDropped);
    QVERIFY(m_scans->isEmpty());

    QVERIFY(m_scans->wait());
    QCOMPARE(
        scannedPaths(0), QStringList({ "/sounds/a b#1.wav", QString::fromUtf8("/sounds/Größe"), "/sounds/c.aif" }));
}

void MetaDataViewDropsTest::twoDropsInABurstRequestOneScan()
{
    Drag first({ local("/sounds/z.wav"), local("/sounds/b.wav") });
    Drag second({ local("/sounds/a.wav") });

    first.run(*m_view);
    second.run(*m_view);

    QVERIFY(m_scans->wait());
    QCOMPARE(scannedPaths(0), QStringList({ "/sounds/z.wav", "/sounds/b.wav", "/sounds/a.wav" }));
    QVERIFY(settles(*m_view->metaDataModel()));
    QCOMPARE(m_scans->count(), 1);
}

void MetaDataViewDropsTest::anotherDropRestartsTheDelayOfTheScan()
{
    Drag first({ local("/sounds/a.wav") });
    Drag second({ local("/sounds/b.wav") });
    QElapsedTimer sinceDrop;
    qint64 waited = -1;
    connect(m_view.get(), &MetaDataView::scanRequested, m_view.get(), [&](const QStringList& paths) {
        if (paths.contains("/sounds/b.wav"))
            waited = sinceDrop.elapsed();
    });

    sinceDrop.start();
    first.run(*m_view);
    QVERIFY(reaches(sinceDrop, 60));
    sinceDrop.start();
    second.run(*m_view);

    QTRY_VERIFY(waited >= 0);
    QVERIFY2(isWholeDelay(waited, 100), qPrintable(QString::number(waited)));
}

void MetaDataViewDropsTest::laterDropRequestsAnotherScan()
{
    Drag first({ local("/sounds/a.wav") });
    Drag second({ local("/sounds/b.wav") });

    first.run(*m_view);
    QVERIFY(m_scans->wait());
    second.run(*m_view);
    QVERIFY(m_scans->wait());

    QCOMPARE(m_scans->count(), 2);
    QCOMPARE(scannedPaths(0), QStringList{ "/sounds/a.wav" });
    QCOMPARE(scannedPaths(1), QStringList{ "/sounds/b.wav" });
}

void MetaDataViewDropsTest::webAddressesAreSkipped()
{
    Drag drag({ QUrl("https://example.org/a.wav"), local("/sounds/a.wav"), QUrl("ftp://example.org/b.wav") });

    drag.run(*m_view);

    QVERIFY(m_scans->wait());
    QCOMPARE(scannedPaths(0), QStringList{ "/sounds/a.wav" });
}

void MetaDataViewDropsTest::onlyWebAddressesRequestAnEmptyScan()
{
    Drag drag({ QUrl("https://example.org/a.wav") });

    drag.run(*m_view);
    QVERIFY(drag.isDropped);

    QVERIFY(m_scans->wait());
    QCOMPARE(scannedPaths(0), QStringList());
    QCOMPARE(m_scans->count(), 1);
}

void MetaDataViewDropsTest::emptyTableTakesDropsToo()
{
    m_view->setTableId(emptyTable);
    QVERIFY(settles(*m_view->metaDataModel()));
    QCOMPARE(m_view->model()->rowCount(), 0);
    Drag drag({ local("/sounds/a.wav") });

    drag.run(*m_view);

    QVERIFY(drag.isEntered && drag.isMoved && drag.isDropped);
    QVERIFY(m_scans->wait());
}

void MetaDataViewDropsTest::placeBelowTheLastRowTakesDropsToo()
{
    Drag drag({ local("/sounds/a.wav") });
    drag.position = QPoint(20, m_view->viewport()->height() - 5);
    QVERIFY(!m_view->indexAt(drag.position).isValid());

    drag.run(*m_view);

    QVERIFY(drag.isEntered && drag.isMoved && drag.isDropped);
    QVERIFY(m_scans->wait());
}

void MetaDataViewDropsTest::dataWithoutAddressesAreRefused()
{
    Drag drag({});
    drag.data.clear();
    drag.data.setText("/sounds/a.wav");
    Drag sentinel({ local("/sounds/b.wav") });

    drag.run(*m_view);
    QVERIFY(!drag.isEntered);
    QVERIFY(!drag.isMoved);

    // The later drop would bring the paths of the first with it.
    sentinel.run(*m_view);
    QVERIFY(m_scans->wait());
    QCOMPARE(scannedPaths(0), QStringList{ "/sounds/b.wav" });
}

void MetaDataViewDropsTest::dropIsACopyWhateverIsProposed_data()
{
    QTest::addColumn<int>("modifiers");

    QTest::newRow("nothing held") << int(Qt::NoModifier);
    QTest::newRow("shift held, which proposes a move") << int(Qt::ShiftModifier);
    QTest::newRow("control held, which proposes a copy") << int(Qt::ControlModifier);
    QTest::newRow("both held, which proposes a link") << int(Qt::ControlModifier | Qt::ShiftModifier);
}

void MetaDataViewDropsTest::dropIsACopyWhateverIsProposed()
{
    QFETCH(int, modifiers);
    Drag drag({ local("/sounds/a.wav") });
    drag.modifiers = Qt::KeyboardModifiers(modifiers);

    drag.enter(*m_view);
    QVERIFY(drag.isEntered);
    QCOMPARE(drag.actionOffered, Qt::CopyAction);

    drag.move(*m_view);
    QVERIFY(drag.isMoved);
    QCOMPARE(drag.actionOffered, Qt::CopyAction);

    drag.drop(*m_view);
    QVERIFY(drag.isDropped);
    QCOMPARE(drag.actionTaken, Qt::CopyAction);
}

void MetaDataViewDropsTest::dropChangesNoRow()
{
    QSignalSpy inserted(m_view->model(), &QAbstractItemModel::rowsInserted);
    Drag drag({ local("/sounds/a.wav") });

    drag.run(*m_view);

    QVERIFY(inserted.isEmpty());
    QCOMPARE(m_view->model()->rowCount(), 5);
    QVERIFY(!m_view->metaDataModel()->isRequeryPending());
}

QTEST_MAIN(MetaDataViewDropsTest)

#include "tst_metadataviewdrops.moc"
