// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/metadatamodel.h"
#include "tests/browse/browsefixture.h"
#include "tests/support/messagerecorder.h"

#include <QAbstractItemModelTester>
#include <QtTest>

using TestSupport::filledPath;
using TestSupport::fillTable;
using TestSupport::isShown;
using TestSupport::isWholeDelay;
using TestSupport::reaches;
using TestSupport::Screen;
using TestSupport::settledModel;
using TestSupport::settles;
using TestSupport::StoreHold;
using TestSupport::textAt;

namespace {

constexpr int bigTable = 1;
constexpr int otherTable = 2;
constexpr int smallTable = 3;
constexpr int rowsOfBigTable = 3030;

} // namespace

class MetaDataModelPagingTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void missedRowIsEmptyAndAskedForOnce();
    void onlyVisiblePagesAreRequested();
    void lastMissedPageIsRequestedFirst();
    void quickScrollingRequestsWhatIsStillVisible();
    void anotherMissRestartsTheDelayOfTheRequest();
    void anotherRequeryRestartsTheDelayOfTheCleaning();
    void eleventhPageEvictsTheLeastRecentlyUsedOne();
    void cachedPageIsNotAskedForAgain();
    void lastPageIsShort();
    void processingSignalsAlternate();
    void staleRowsAreShownUntilTheyAreCleaned();
    void visibleStalePageIsRefreshed();
    void oldRowsStayUntilTheFirstPageComes();
    void lastOfTwoRequeriesWins();
    void requeryDuringThePendingFirstPageIsNotLost();
    void pageOfAnOlderQueryIsDropped();
    void countOfAnOlderQueryIsDropped();
    void tableSwitchShowsNoOldRecord();
    void pageOfTheOldTableIsDropped();
    void shrunkenTableNamesNoRowPastTheEnd();
    void answerAfterTheModelIsGoneIsHarmless();
    void modelIsConsistentThroughout();

private:
    std::unique_ptr<TestSupport::StoreFixture> m_store;
};

void MetaDataModelPagingTest::initTestCase()
{
    m_store = std::make_unique<TestSupport::StoreFixture>();
    m_store->open();
    fillTable(*m_store, bigTable, rowsOfBigTable);
    fillTable(*m_store, otherTable, 2000);
    fillTable(*m_store, smallTable, 30);
}

void MetaDataModelPagingTest::cleanupTestCase()
{
    m_store.reset();
}

void MetaDataModelPagingTest::missedRowIsEmptyAndAskedForOnce()
{
    const auto model = settledModel(*m_store, bigTable);
    Screen screen(*model);

    for (const int role : { 0, 258, 358, 359, 360 }) {
        for (int row = 100; row < 150; ++row)
            QVERIFY(!model->index(row, 3).data(role).isValid());
    }
    QVERIFY(screen.asked.isEmpty());

    QTRY_VERIFY(isShown(*model, 100));
    QCOMPARE(screen.asked, QList<int>{ 100 });
    QCOMPARE(screen.changed, QList<int>{ 100 });
    QVERIFY(screen.rangesAreWholePages);
    QCOMPARE(textAt(*model, 100, 0), filledPath(bigTable, 100));
    QCOMPARE(textAt(*model, 149, 0), filledPath(bigTable, 149));
}

void MetaDataModelPagingTest::onlyVisiblePagesAreRequested()
{
    const auto model = settledModel(*m_store, bigTable);
    Screen screen(*model);
    screen.firstRow = 520;
    screen.lastRow = 540;

    QVERIFY(!isShown(*model, 300));
    QVERIFY(!isShown(*model, 530));
    QTRY_VERIFY(isShown(*model, 530));

    QCOMPARE(screen.asked, QList<int>({ 300, 500 }));
    QVERIFY(settles(*model));
    QCOMPARE(screen.changed, QList<int>{ 500 });
}

void MetaDataModelPagingTest::lastMissedPageIsRequestedFirst()
{
    const auto model = settledModel(*m_store, bigTable);
    Screen screen(*model);

    for (const int row : { 1010, 2020, 510 })
        QVERIFY(!isShown(*model, row));

    QTRY_COMPARE(screen.changed.size(), 3);
    QCOMPARE(screen.asked, QList<int>({ 1000, 2000, 500 }));
    QCOMPARE(screen.changed, QList<int>({ 500, 2000, 1000 }));
}

void MetaDataModelPagingTest::quickScrollingRequestsWhatIsStillVisible()
{
    const auto model = settledModel(*m_store, bigTable);
    Screen screen(*model);

    for (int row = 100; row < 1600; ++row)
        QVERIFY(!isShown(*model, row));
    screen.firstRow = 1549;
    screen.lastRow = 1570;

    QTRY_VERIFY(isShown(*model, 1570) && isShown(*model, 1549));
    QCOMPARE(screen.asked.size(), 30);
    QCOMPARE(screen.changed, QList<int>({ 1550, 1500 }));
}

void MetaDataModelPagingTest::anotherMissRestartsTheDelayOfTheRequest()
{
    const auto model = settledModel(*m_store, bigTable);
    QElapsedTimer sinceMiss;
    qint64 waited = -1;
    connect(model.get(), &MetaDataModel::rangeVisibilityCheck, model.get(), [&](int topRow) {
        if (topRow == 200)
            waited = sinceMiss.elapsed();
    });

    sinceMiss.start();
    QVERIFY(!isShown(*model, 100));
    QVERIFY(reaches(sinceMiss, 60));
    sinceMiss.start();
    QVERIFY(!isShown(*model, 200));

    QTRY_VERIFY(waited >= 0);
    QVERIFY2(isWholeDelay(waited, 100), qPrintable(QString::number(waited)));
}

void MetaDataModelPagingTest::anotherRequeryRestartsTheDelayOfTheCleaning()
{
    const auto model = settledModel(*m_store, bigTable);
    Screen screen(*model);
    QVERIFY(!isShown(*model, 100));
    QTRY_VERIFY(isShown(*model, 100));
    screen.changed.clear();
    QElapsedTimer sinceFirstPage;
    qint64 waited = -1;
    QSignalSpy requeried(model.get(), &MetaDataModel::requeried);
    // The reset begins before the delay does.
    connect(model.get(), &QAbstractItemModel::modelAboutToBeReset, model.get(), [&]() { sinceFirstPage.start(); });
    connect(model.get(), &QAbstractItemModel::dataChanged, model.get(), [&]() { waited = sinceFirstPage.elapsed(); });

    model->requery();
    QVERIFY(requeried.wait());
    QVERIFY(reaches(sinceFirstPage, 60));
    model->requery();

    QTRY_COMPARE(screen.changed, QList<int>{ 100 });
    QVERIFY2(isWholeDelay(waited, 100), qPrintable(QString::number(waited)));
}

void MetaDataModelPagingTest::eleventhPageEvictsTheLeastRecentlyUsedOne()
{
    const auto model = settledModel(*m_store, bigTable);
    Screen screen(*model);

    for (int page = 1; page <= 10; ++page) {
        QVERIFY(!isShown(*model, page * 50));
        QTRY_VERIFY(isShown(*model, page * 50));
    }

    QVERIFY(model->isRowFresh(50));
    QVERIFY(!model->isRowFresh(0));
    QVERIFY(!isShown(*model, 0));
    QTRY_VERIFY(isShown(*model, 0));
    QVERIFY(!model->isRowFresh(50));
}

void MetaDataModelPagingTest::cachedPageIsNotAskedForAgain()
{
    const auto model = settledModel(*m_store, bigTable);
    Screen screen(*model);
    QVERIFY(!isShown(*model, 100));
    QTRY_VERIFY(isShown(*model, 100));

    for (int row = 100; row < 150; ++row)
        QVERIFY(isShown(*model, row));
    QVERIFY(!isShown(*model, 200));
    QTRY_VERIFY(isShown(*model, 200));

    QCOMPARE(screen.asked, QList<int>({ 100, 200 }));
}

void MetaDataModelPagingTest::lastPageIsShort()
{
    const auto model = settledModel(*m_store, bigTable);
    Screen screen(*model);

    QVERIFY(!isShown(*model, rowsOfBigTable - 1));
    QTRY_VERIFY(isShown(*model, rowsOfBigTable - 1));

    QCOMPARE(textAt(*model, rowsOfBigTable - 1, 0), filledPath(bigTable, rowsOfBigTable - 1));
    QVERIFY(screen.changesAreValid);
}

void MetaDataModelPagingTest::processingSignalsAlternate()
{
    const auto model = settledModel(*m_store, bigTable);
    Screen screen(*model);
    QString signalsInOrder;
    connect(model.get(), &MetaDataModel::processingStarted, model.get(), [&]() { signalsInOrder += "("; });
    connect(model.get(), &MetaDataModel::processingFinished, model.get(), [&]() { signalsInOrder += ")"; });

    for (const int row : { 1010, 2020, 510 })
        QVERIFY(!isShown(*model, row));
    model->requery();
    model->requery();
    QCOMPARE(signalsInOrder, QString("("));
    QTRY_VERIFY(isShown(*model, 1010) && isShown(*model, 2020) && isShown(*model, 510));
    model->setTableId(otherTable);
    QVERIFY(settles(*model));

    QTRY_VERIFY(signalsInOrder.endsWith(")"));
    QCOMPARE(QString(signalsInOrder).remove("()"), QString());
}

void MetaDataModelPagingTest::staleRowsAreShownUntilTheyAreCleaned()
{
    const auto model = settledModel(*m_store, bigTable);
    Screen screen(*model);
    QVERIFY(!isShown(*model, 100));
    QTRY_VERIFY(isShown(*model, 100));
    QSignalSpy requeried(model.get(), &MetaDataModel::requeried);

    model->requery();
    QVERIFY(requeried.wait());

    QVERIFY(model->isRowFresh(0));
    QVERIFY(!model->isRowFresh(100));
    screen.changed.clear();
    QTRY_COMPARE(screen.changed, QList<int>{ 100 });
    QVERIFY(!isShown(*model, 100));
}

void MetaDataModelPagingTest::visibleStalePageIsRefreshed()
{
    const auto model = settledModel(*m_store, bigTable);
    Screen screen(*model);
    QVERIFY(!isShown(*model, 100));
    QTRY_VERIFY(isShown(*model, 100));
    QSignalSpy requeried(model.get(), &MetaDataModel::requeried);

    model->sort(MetaDataModel::FilePathColumn, Qt::DescendingOrder);
    QVERIFY(requeried.wait());

    QCOMPARE(textAt(*model, 100, 0), filledPath(bigTable, 100));
    QTRY_COMPARE(textAt(*model, 100, 0), filledPath(bigTable, rowsOfBigTable - 101));
    QVERIFY(model->isRowFresh(100));
}

void MetaDataModelPagingTest::oldRowsStayUntilTheFirstPageComes()
{
    const auto model = settledModel(*m_store, bigTable);
    StoreHold hold(*m_store);

    model->setLookup("sound 7");
    QCOMPARE(textAt(*model, 0, 0), filledPath(bigTable, 0));
    QCOMPARE(model->rowCount(), rowsOfBigTable);
    hold.release();

    QVERIFY(settles(*model));
    QCOMPARE(textAt(*model, 0, 0), filledPath(bigTable, 7));
    QVERIFY(model->rowCount() < rowsOfBigTable);
}

void MetaDataModelPagingTest::lastOfTwoRequeriesWins()
{
    const auto model = settledModel(*m_store, bigTable);

    model->setLookup("sound 123");
    model->setLookup("sound 2999");
    QVERIFY(settles(*model));

    QCOMPARE(model->rowCount(), 1);
    QCOMPARE(textAt(*model, 0, 0), filledPath(bigTable, 2999));
}

void MetaDataModelPagingTest::requeryDuringThePendingFirstPageIsNotLost()
{
    StoreHold hold(*m_store);
    MetaDataModel model;
    QSignalSpy requeried(&model, &MetaDataModel::requeried);
    model.setDatabase(&m_store->database(), bigTable);

    model.setLookup("sound 2999");
    model.sort(MetaDataModel::RatingColumn, Qt::DescendingOrder);
    hold.release();

    QVERIFY(settles(model));
    QCOMPARE(model.rowCount(), 1);
    QCOMPARE(textAt(model, 0, 0), filledPath(bigTable, 2999));
    QCOMPARE(requeried.count(), 1);
}

void MetaDataModelPagingTest::pageOfAnOlderQueryIsDropped()
{
    const auto model = settledModel(*m_store, bigTable);
    Screen screen(*model);
    StoreHold hold(*m_store);
    QVERIFY(!isShown(*model, 100));
    QTRY_COMPARE(screen.asked, QList<int>{ 100 });
    QVERIFY(model->isProcessing());

    model->sort(MetaDataModel::FilePathColumn, Qt::DescendingOrder);
    hold.release();
    QVERIFY(settles(*model));

    QVERIFY(screen.changed.isEmpty());
    QVERIFY(!isShown(*model, 100));
    QTRY_VERIFY(isShown(*model, 100));
    QCOMPARE(textAt(*model, 100, 0), filledPath(bigTable, rowsOfBigTable - 101));
}

void MetaDataModelPagingTest::countOfAnOlderQueryIsDropped()
{
    const auto model = settledModel(*m_store, bigTable);
    QSet<int> counts;
    connect(model.get(), &QAbstractItemModel::modelReset, model.get(), [&]() { counts.insert(model->rowsCount()); });
    StoreHold hold(*m_store);

    model->setLookup("sound 1");
    model->requestRowsCount();
    model->setTableId(otherTable);
    hold.release();
    QVERIFY(settles(*model));

    const auto expected = TestSupport::await(m_store->database().getRowsCount(otherTable, model->queryParameters()));
    const int rowsCount = expected->result("rowsCount").toInt();
    QVERIFY(rowsCount > 0);
    QCOMPARE(model->rowCount(), rowsCount);
    QCOMPARE(counts, QSet<int>({ rowsOfBigTable, rowsCount }));
}

void MetaDataModelPagingTest::tableSwitchShowsNoOldRecord()
{
    const auto model = settledModel(*m_store, bigTable);
    Screen screen(*model);
    QVERIFY(!isShown(*model, 100));
    QTRY_VERIFY(isShown(*model, 100));
    StoreHold hold(*m_store);

    model->setTableId(otherTable);
    for (int row = 0; row < model->rowCount(); ++row)
        QVERIFY(!model->index(row, 0).data(MetaDataModel::RecordRole).isValid());
    hold.release();

    QTRY_VERIFY(isShown(*model, 0));
    QCOMPARE(textAt(*model, 0, 0), filledPath(otherTable, 0));
    QVERIFY(settles(*model));
    QCOMPARE(model->rowCount(), 2000);
}

void MetaDataModelPagingTest::pageOfTheOldTableIsDropped()
{
    const auto model = settledModel(*m_store, bigTable);
    Screen screen(*model);
    StoreHold hold(*m_store);
    QVERIFY(!isShown(*model, 100));
    QTRY_COMPARE(screen.asked, QList<int>{ 100 });

    model->setTableId(otherTable);
    hold.release();
    QVERIFY(settles(*model));

    QVERIFY(!isShown(*model, 100));
    QTRY_VERIFY(isShown(*model, 100));
    QCOMPARE(textAt(*model, 100, 0), filledPath(otherTable, 100));
}

void MetaDataModelPagingTest::shrunkenTableNamesNoRowPastTheEnd()
{
    fillTable(*m_store, 4, 1040);
    const auto model = settledModel(*m_store, 4);
    Screen screen(*model);
    for (const int row : { 1039, 500, 60 }) {
        QVERIFY(!isShown(*model, row));
        QTRY_VERIFY(isShown(*model, row));
    }

    QCOMPARE(m_store->execute("DELETE FROM MetaData4 WHERE id > 70"), QString());
    model->requery();
    QVERIFY(settles(*model));
    screen.changed.clear();
    QTRY_COMPARE(screen.changed, QList<int>{ 50 });

    QVERIFY(screen.changesAreValid);
    QCOMPARE(model->rowCount(), 70);
    QVERIFY(!isShown(*model, 60));
    QTRY_COMPARE(textAt(*model, 60, 0), filledPath(4, 60));
}

void MetaDataModelPagingTest::answerAfterTheModelIsGoneIsHarmless()
{
    const TestSupport::MessageRecorder log;
    auto model = settledModel(*m_store, bigTable);
    StoreHold hold(*m_store);
    model->requery();
    model->requestRowsCount();

    model.reset();
    hold.release();
    const auto next = TestSupport::await(m_store->database().getRowsCount(smallTable, {}));

    QCOMPARE(next->result("rowsCount"), QVariant(30));
    QCOMPARE(log.messages(), QStringList());
}

void MetaDataModelPagingTest::modelIsConsistentThroughout()
{
    MetaDataModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    Screen screen(model);

    model.setDatabase(&m_store->database(), bigTable);
    QVERIFY(settles(model));
    for (int row = 0; row < model.rowCount(); row += 300) {
        isShown(model, row);
        QTRY_VERIFY(isShown(model, row));
    }
    for (const int tableId : { smallTable, otherTable, bigTable }) {
        model.setTableId(tableId);
        QVERIFY(settles(model));
    }
    model.sort(MetaDataModel::RatingColumn, Qt::DescendingOrder);
    model.setLookup("sound 1");
    QVERIFY(settles(model));
    model.setDatabase(nullptr, bigTable);

    QVERIFY(screen.changesAreValid);
}

QTEST_MAIN(MetaDataModelPagingTest)

#include "tst_metadatamodelpaging.moc"
