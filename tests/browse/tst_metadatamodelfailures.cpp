// SPDX-License-Identifier: GPL-3.0-or-later
// Queries, pages and counts that the store refuses.
#include "browse/metadatamodel.h"
#include "tests/browse/browsefixture.h"
#include "tests/support/messagerecorder.h"

#include <QtTest>

using TestSupport::filledPath;
using TestSupport::fillTable;
using TestSupport::isShown;
using TestSupport::Screen;
using TestSupport::settledModel;
using TestSupport::settles;
using TestSupport::StoreHold;
using TestSupport::textAt;

namespace {

constexpr int bigTable = 1;
constexpr int otherTable = 2;
constexpr int rowsOfBigTable = 3030;

} // namespace

class MetaDataModelFailuresTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void failedPageIsLoggedAndTheNextWorks();
    void failedCountIsLoggedAndTheNextWorks();
    void rowsThatAFailedQueryLeavesAreCounted();
    void failedQueryIsToldUntilAnotherIsAsked();
    void failedRequeryOfTheShownRowsIsNoFailedQuery();
    void noPagesOfAFailedQueryAreAskedFor();
    void tableThatCannotBeReadHasNoRows();
    void storeThatClosesEndsTheRequests();

private:
    std::unique_ptr<TestSupport::StoreFixture> m_store;
};

void MetaDataModelFailuresTest::initTestCase()
{
    m_store = std::make_unique<TestSupport::StoreFixture>();
    m_store->open();
    fillTable(*m_store, bigTable, rowsOfBigTable);
    fillTable(*m_store, otherTable, 2000);
}

void MetaDataModelFailuresTest::cleanupTestCase()
{
    m_store.reset();
}

void MetaDataModelFailuresTest::failedPageIsLoggedAndTheNextWorks()
{
    const auto model = settledModel(*m_store, bigTable);
    Screen screen(*model);
    const TestSupport::MessageRecorder log;

    model->setLookup("a\"b");
    QTRY_VERIFY(!model->isRequeryPending());
    QCOMPARE(log.messages(QtCriticalMsg).size(), 1);
    QVERIFY(log.messages(QtCriticalMsg).first().startsWith("Page request failed: Unable to select MetaData: "));
    QTRY_VERIFY(!model->isProcessing());
    QCOMPARE(textAt(*model, 0, 0), filledPath(bigTable, 0));

    model->setLookup("sound 2999");
    QVERIFY(settles(*model));
    QCOMPARE(model->rowCount(), 1);
    QCOMPARE(log.messages().size(), 1);
}

void MetaDataModelFailuresTest::failedCountIsLoggedAndTheNextWorks()
{
    const auto model = settledModel(*m_store, bigTable);
    const TestSupport::MessageRecorder log;
    model->setLookup("a\"b");

    model->requestRowsCount();
    QTRY_COMPARE(log.messages(QtCriticalMsg).size(), 2);
    QVERIFY(log.messages(QtCriticalMsg).last().startsWith("Rows count reply error: Unable to get rows count: "));
    QVERIFY(!model->isProcessing());

    model->setLookup("sound 1");
    QVERIFY(settles(*model));
    QVERIFY(model->isRowsCountActual());
    QVERIFY(model->rowCount() > 1000 && model->rowCount() < rowsOfBigTable);
}

void MetaDataModelFailuresTest::rowsThatAFailedQueryLeavesAreCounted()
{
    const auto model = settledModel(*m_store, bigTable);
    std::unique_ptr<StoreHold> hold;
    connect(model.get(), &MetaDataModel::requeried, model.get(),
        [this, &hold]() { hold = std::make_unique<StoreHold>(*m_store); });
    const TestSupport::MessageRecorder log;

    model->setLookup("sound 1");
    QTRY_VERIFY(hold);
    QVERIFY(!model->isRowsCountActual());
    const QVariantMap shownQuery = model->queryParameters();
    model->setLookup("a\"b");
    QVERIFY(!model->isQueryShown());
    hold->release();
    QTRY_VERIFY(model->isRowsCountActual());

    const auto count = TestSupport::await(m_store->database().getRowsCount(bigTable, shownQuery));
    QVERIFY(count->result("rowsCount").toInt() > 1000);
    QCOMPARE(QVariant(model->rowCount()), count->result("rowsCount"));
    QVERIFY(!model->isRequeryPending() && !model->isQueryShown());
    model->requestRowsCount();
    QVERIFY(settles(*model));
    QCOMPARE(QVariant(model->rowCount()), count->result("rowsCount"));
    QCOMPARE(log.messages().size(), 1);
    QVERIFY(log.messages().first().startsWith("Page request failed: "));
}

void MetaDataModelFailuresTest::failedQueryIsToldUntilAnotherIsAsked()
{
    const auto model = settledModel(*m_store, bigTable);
    const TestSupport::MessageRecorder log;
    QStringList told;
    connect(
        model.get(), &MetaDataModel::actualRowsCountChanged, model.get(), [&]() { told.append(model->queryError()); });
    const QString reason = "Unable to select MetaData: unexpected double quote in the lookup";

    model->setLookup("12\"");
    QCOMPARE(model->queryError(), QString());
    QTRY_VERIFY(!model->isRequeryPending());
    QCOMPARE(told, QStringList{ reason });
    model->requery();
    QCOMPARE(model->queryError(), reason);
    QTRY_VERIFY(!model->isRequeryPending());
    QCOMPARE(told, QStringList({ reason, reason }));

    model->setLookup("sound 2999");
    QCOMPARE(model->queryError(), QString());
    QVERIFY(settles(*model));
    QCOMPARE(told.last(), QString());
    QCOMPARE(log.messages().size(), 2);
}

void MetaDataModelFailuresTest::failedRequeryOfTheShownRowsIsNoFailedQuery()
{
    const auto model = settledModel(*m_store, bigTable);
    Screen screen(*model);
    const TestSupport::MessageRecorder log;

    m_store->database().close();
    model->requery();
    QTRY_VERIFY(!model->isRequeryPending());
    QCOMPARE(model->queryError(), QString());
    m_store->open();

    QVERIFY(!isShown(*model, 100));
    QTRY_VERIFY(isShown(*model, 100));
    QCOMPARE(log.messages().size(), 1);
}

void MetaDataModelFailuresTest::noPagesOfAFailedQueryAreAskedFor()
{
    const auto model = settledModel(*m_store, bigTable);
    Screen screen(*model);
    const TestSupport::MessageRecorder log;
    model->setLookup("12\"");
    QTRY_VERIFY(!model->isRequeryPending());
    QSignalSpy started(model.get(), &MetaDataModel::processingStarted);

    QVERIFY(!isShown(*model, 100));
    model->requestPages();
    QTRY_VERIFY(!model->isProcessing());
    QVERIFY(started.isEmpty());
    QVERIFY(screen.asked.isEmpty());
    QCOMPARE(log.messages().size(), 1);

    model->setLookup(QString());
    QVERIFY(settles(*model));
    QVERIFY(!isShown(*model, 100));
    QTRY_VERIFY(isShown(*model, 100));
}

void MetaDataModelFailuresTest::tableThatCannotBeReadHasNoRows()
{
    const auto model = settledModel(*m_store, bigTable);
    const TestSupport::MessageRecorder log;
    model->setLookup("12\"");
    QTRY_VERIFY(!model->isRequeryPending());
    QCOMPARE(model->rowCount(), rowsOfBigTable);
    QSignalSpy counted(model.get(), &MetaDataModel::actualRowsCountChanged);

    model->setTableId(otherTable);
    QVERIFY(!model->isRowsCountActual());
    QTRY_VERIFY(!model->isRequeryPending());
    QCOMPARE(model->rowCount(), 0);
    QVERIFY(!model->isRowsCountActual());
    QCOMPARE(counted.count(), 1);
    QTRY_VERIFY(!model->isProcessing());
    QCOMPARE(log.messages().size(), 2);

    model->setLookup(QString());
    QVERIFY(settles(*model));
    QCOMPARE(model->rowCount(), 2000);
}

void MetaDataModelFailuresTest::storeThatClosesEndsTheRequests()
{
    const auto model = settledModel(*m_store, bigTable);
    const TestSupport::MessageRecorder log;

    m_store->database().close();
    model->requery();
    QTRY_VERIFY(!model->isProcessing());
    QCOMPARE(log.messages(), QStringList{ "Page request failed: Database is not opened" });
    QCOMPARE(model->rowCount(), rowsOfBigTable);

    m_store->open();
    model->requery();
    QVERIFY(settles(*model));
    QCOMPARE(log.messages().size(), 1);
}

QTEST_MAIN(MetaDataModelFailuresTest)

#include "tst_metadatamodelfailures.moc"
