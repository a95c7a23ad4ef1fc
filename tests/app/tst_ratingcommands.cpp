// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/commandhelpers.h"
#include "tests/app/windowfixture.h"

#include "browse/metadatamodel.h"
#include "tests/support/storefixture.h"

#include <QMenu>
#include <QSignalSpy>
#include <QtTest>

// The rating keys, in the window, with the database file read beside it.

using namespace CommandHelpers;

namespace {

using Follow = void (*)(WindowFixture& fixture);

void showNothing(WindowFixture& fixture)
{
    fixture.view().setLookup(QStringLiteral("no such words"), true);
}

void openAnotherTable(WindowFixture& fixture)
{
    fixture.child<QAction>("openTableAction")->menu()->actions().at(2)->trigger();
}

void evaluateLibraries(WindowFixture& fixture)
{
    answer(fixture, QMessageBox::Information, QMessageBox::Ok);
    fixture.child<QAction>("evaluateLibrariesAction")->trigger();
}

void closeWindow(WindowFixture& fixture)
{
    fixture.close();
}

} // namespace

Q_DECLARE_METATYPE(Follow)

class RatingCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void plusAndMinusStepTheRating();
    void everyQuickPressCounts();
    void ratingStopsAtItsEnds_data();
    void ratingStopsAtItsEnds();
    void ratedRecordStaysCurrentWhenSortedByRating();
    void recordMovedToAfterARatingStaysCurrent_data();
    void recordMovedToAfterARatingStaysCurrent();
    void moveWhileTheRatedRecordIsLookedUpStays();
    void ratingSelectsNothingInAnotherTable();
    void pressWhileRowsAreAwaitedIsNeverLost_data();
    void pressWhileRowsAreAwaitedIsNeverLost();
    void pressAfterAFailedWriteStartsFromWhatIsStored_data();
    void pressAfterAFailedWriteStartsFromWhatIsStored();
    void ratingKeysWithoutARecordDoNothing();

private:
    void start();
    Database& store() { return *m_fixture->view().metaDataModel()->database(); }
    void waitUntilReturned();

    std::unique_ptr<WindowFixture> m_fixture;
};

void RatingCommandsTest::init()
{
    m_fixture = std::make_unique<WindowFixture>();
}

void RatingCommandsTest::cleanup()
{
    m_fixture.reset();
}

void RatingCommandsTest::start()
{
    m_fixture->start();
    QTRY_VERIFY(isIdle(*m_fixture));
    m_fixture->view().setFocus();
}

// Long enough for all that follows a rating: one more requery, and an answer after it.
void RatingCommandsTest::waitUntilReturned()
{
    QTRY_VERIFY(isIdle(*m_fixture));
    QSignalSpy processed(&m_fixture->view(), &MetaDataView::processingFinished);
    m_fixture->window().requeryLater();
    QTRY_VERIFY(processed.count() > 0 && isIdle(*m_fixture));
    QVERIFY(!TestSupport::await(store().getRowsCount(1, {}))->hasError());
}

void RatingCommandsTest::plusAndMinusStepTheRating()
{
    start();
    selectRows(*m_fixture, 2, 2);
    const qint64 id = currentId(*m_fixture);
    const QVariantMap before
        = m_fixture->view().currentIndex().data(MetaDataModel::RecordRole).value<MetaData>().toVariantMap();

    QTest::keyClick(&m_fixture->view(), Qt::Key_Plus);
    QTRY_COMPARE(rating(*m_fixture, id), 2.0);
    QTRY_VERIFY(isIdle(*m_fixture));
    QTest::keyClick(&m_fixture->view(), Qt::Key_Minus);
    QTRY_COMPARE(rating(*m_fixture, id), 1.0);

    QTRY_VERIFY(isIdle(*m_fixture));
    QCOMPARE(currentId(*m_fixture), id);
    QCOMPARE(m_fixture->view().currentIndex().data(MetaDataModel::RecordRole).value<MetaData>().toVariantMap(), before);
}

void RatingCommandsTest::everyQuickPressCounts()
{
    start();
    selectRows(*m_fixture, 0, 0);
    const qint64 first = currentId(*m_fixture);

    for (int press = 0; press < 7; ++press)
        QTest::keyClick(&m_fixture->view(), Qt::Key_Plus);
    // On another record, before the answers to the first are there.
    QTest::keyClick(&m_fixture->view(), Qt::Key_Down);
    const qint64 second = currentId(*m_fixture);
    for (int press = 0; press < 3; ++press)
        QTest::keyClick(&m_fixture->view(), Qt::Key_Plus);

    QVERIFY(first != second);
    QTRY_COMPARE(rating(*m_fixture, first), 8.0);
    QTRY_COMPARE(rating(*m_fixture, second), 4.0);
}

void RatingCommandsTest::ratingStopsAtItsEnds_data()
{
    QTest::addColumn<double>("before");
    QTest::addColumn<int>("key");
    QTest::addColumn<double>("after");
    QTest::newRow("top") << 100.0 << int(Qt::Key_Plus) << 100.0;
    QTest::newRow("just below the top") << 99.5 << int(Qt::Key_Plus) << 100.0;
    QTest::newRow("bottom") << 0.0 << int(Qt::Key_Minus) << 0.0;
    QTest::newRow("just above the bottom") << 0.5 << int(Qt::Key_Minus) << 0.0;
}

void RatingCommandsTest::ratingStopsAtItsEnds()
{
    QFETCH(double, before);
    QFETCH(int, key);
    QFETCH(double, after);
    column(*m_fixture, QStringLiteral("UPDATE MetaData1 SET rating=%1").arg(before));
    start();
    selectRows(*m_fixture, 0, 0);
    const qint64 id = currentId(*m_fixture);

    QTest::keyClick(&m_fixture->view(), Qt::Key(key));
    QTest::keyClick(&m_fixture->view(), Qt::Key(key));

    QTRY_COMPARE(rating(*m_fixture, id), after);
    QTRY_VERIFY(isIdle(*m_fixture));
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1 WHERE rating=%1").arg(before)).toInt(),
        before == after ? sampleRows : sampleRows - 1);
}

void RatingCommandsTest::ratedRecordStaysCurrentWhenSortedByRating()
{
    start();
    m_fixture->view().sortByColumn(MetaDataModel::RatingColumn, Qt::DescendingOrder);
    QTRY_VERIFY(isIdle(*m_fixture));
    selectRows(*m_fixture, 30, 30);
    const qint64 id = currentId(*m_fixture);

    QTest::keyClick(&m_fixture->view(), Qt::Key_Plus);

    QTRY_COMPARE(idAt(*m_fixture, 0), id);
    QTRY_COMPARE(m_fixture->view().currentIndex().row(), 0);
    QCOMPARE(m_fixture->view().selectedRowsCount(), 1);
}

void RatingCommandsTest::recordMovedToAfterARatingStaysCurrent_data()
{
    QTest::addColumn<int>("sortColumn");
    QTest::addColumn<int>("key");
    QTest::newRow("down") << int(MetaDataModel::FilePathColumn) << int(Qt::Key_Down);
    QTest::newRow("up") << int(MetaDataModel::FilePathColumn) << int(Qt::Key_Up);
    // The rated record comes to the top and pushes the others down.
    QTest::newRow("down, by rating") << int(MetaDataModel::RatingColumn) << int(Qt::Key_Down);
    QTest::newRow("up, by rating") << int(MetaDataModel::RatingColumn) << int(Qt::Key_Up);
}

void RatingCommandsTest::recordMovedToAfterARatingStaysCurrent()
{
    QFETCH(int, sortColumn);
    QFETCH(int, key);
    start();
    m_fixture->view().sortByColumn(sortColumn, Qt::DescendingOrder);
    QTRY_VERIFY(isIdle(*m_fixture));
    selectRows(*m_fixture, 4, 4);
    const qint64 rated = currentId(*m_fixture);
    TestSupport::StoreHold hold(store());
    QTest::keyClick(&m_fixture->view(), Qt::Key_Plus);
    QTest::keyClick(&m_fixture->view(), Qt::Key(key));
    const qint64 movedTo = currentId(*m_fixture);
    QVERIFY(movedTo != rated);

    hold.release();
    QTRY_COMPARE(rating(*m_fixture, rated), 2.0);
    waitUntilReturned();

    QCOMPARE(currentId(*m_fixture), movedTo);
    QCOMPARE(m_fixture->view().selectedRowsCount(), 1);
}

// The rows have been read again; only where the rated record stands has not been answered yet.
void RatingCommandsTest::moveWhileTheRatedRecordIsLookedUpStays()
{
    start();
    selectRows(*m_fixture, 4, 4);
    std::unique_ptr<TestSupport::StoreHold> hold;
    const auto holding = connect(&m_fixture->view(), &MetaDataView::requeried, this,
        [this, &hold] { hold = std::make_unique<TestSupport::StoreHold>(store()); });
    QSignalSpy processed(&m_fixture->view(), &MetaDataView::processingFinished);
    QTest::keyClick(&m_fixture->view(), Qt::Key_Plus);
    QTRY_VERIFY(hold && processed.count() > 0);
    disconnect(holding);

    selectRows(*m_fixture, 5, 8);
    hold->release();
    waitUntilReturned();

    QCOMPARE(m_fixture->view().currentIndex().row(), 5);
    QCOMPARE(m_fixture->view().selectedRowsCount(), 4);
}

void RatingCommandsTest::ratingSelectsNothingInAnotherTable()
{
    start();
    selectRows(*m_fixture, 0, 0);
    const qint64 id = currentId(*m_fixture);
    // There is a record of this id, too.
    QVERIFY(id <= rowsOfTable3);
    TestSupport::StoreHold hold(store());
    QTest::keyClick(&m_fixture->view(), Qt::Key_Plus);

    m_fixture->view().setTableId(3);
    hold.release();
    QTRY_COMPARE(m_fixture->view().model()->rowCount(), rowsOfTable3);
    waitUntilReturned();

    QCOMPARE(rating(*m_fixture, id), 2.0);
    QVERIFY(!m_fixture->view().selectionModel()->hasSelection());
}

void RatingCommandsTest::pressWhileRowsAreAwaitedIsNeverLost_data()
{
    QTest::addColumn<Follow>("follow");
    QTest::newRow("its record leaves the view") << Follow(showNothing);
    QTest::newRow("another table is opened") << Follow(openAnotherTable);
    QTest::newRow("a command begins") << Follow(evaluateLibraries);
    QTest::newRow("the window is closed") << Follow(closeWindow);
}

void RatingCommandsTest::pressWhileRowsAreAwaitedIsNeverLost()
{
    QFETCH(Follow, follow);
    start();
    selectRows(*m_fixture, 2, 2);
    const qint64 id = currentId(*m_fixture);
    TestSupport::StoreHold hold(store());
    m_fixture->window().requery();
    QTest::keyClick(&m_fixture->view(), Qt::Key_Plus);
    QTest::keyClick(&m_fixture->view(), Qt::Key_Plus);

    // Whoever waits for the store does it in an event loop.
    QTimer::singleShot(0, this, [&hold] { hold.release(); });
    follow(*m_fixture);

    QTRY_COMPARE(rating(*m_fixture, id), 3.0);
    QCOMPARE(
        value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData1 WHERE rating=1")).toInt(), sampleRows - 1);
    QCOMPARE(value(*m_fixture, QStringLiteral("SELECT COUNT(*) FROM MetaData3 WHERE rating=1")).toInt(), rowsOfTable3);
}

void RatingCommandsTest::pressAfterAFailedWriteStartsFromWhatIsStored_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<double>("after");
    QTest::newRow("up again") << int(Qt::Key_Plus) << 2.0;
    QTest::newRow("down") << int(Qt::Key_Minus) << 0.0;
}

void RatingCommandsTest::pressAfterAFailedWriteStartsFromWhatIsStored()
{
    QFETCH(int, key);
    QFETCH(double, after);
    start();
    selectRows(*m_fixture, 2, 2);
    const qint64 id = currentId(*m_fixture);
    const auto shownRating = [this] {
        return m_fixture->view().currentIndex().data(MetaDataModel::RecordRole).value<MetaData>().rating();
    };
    {
        const WriteLock lock(*m_fixture);
        QTest::keyClick(&m_fixture->view(), Qt::Key_Plus);
        QCOMPARE(shownRating(), 2.0);
        QTRY_COMPARE_WITH_TIMEOUT(shownRating(), 1.0, patienceWithALock);
        QTRY_VERIFY(isIdle(*m_fixture));
    }

    QTest::keyClick(&m_fixture->view(), Qt::Key(key));

    QTRY_COMPARE(rating(*m_fixture, id), after);
    QTRY_VERIFY(isIdle(*m_fixture));
    QCOMPARE(shownRating(), after);
}

void RatingCommandsTest::ratingKeysWithoutARecordDoNothing()
{
    start();
    m_fixture->view().clearSelection();
    m_fixture->view().setCurrentIndex(QModelIndex());

    m_fixture->window().increaseCurrentMetaDataRating();
    m_fixture->window().decreaseCurrentMetaDataRating();

    QVERIFY(isIdle(*m_fixture));
}

QTEST_MAIN(RatingCommandsTest)
#include "tst_ratingcommands.moc"
