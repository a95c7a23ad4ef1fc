// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/metadatamodel.h"
#include "browse/metadataview.h"
#include "store/operationreply.h"
#include "tests/browse/browsefixture.h"

#include <QScrollBar>
#include <QtTest>

using TestSupport::await;
using TestSupport::filledPath;
using TestSupport::settles;
using TestSupport::textAt;

namespace {

constexpr int tableId = 1;
constexpr int rowsOfTable = 1000000;
constexpr int patience = 30000; // milliseconds

} // namespace

/// The table with a million records. They are written once, which takes some seconds.
class MetaDataViewMillionTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void allRowsAreCounted();
    void anyRowCanBeScrolledTo();
    void scrollBarWalksOnlyAskForWhatIsSeen();
    void lookupFindsOneOfAMillion();
    void fieldsOfFarRowsAreCollected();
    void endKeyShowsTheLastRow();

private:
    QString pathShownAt(int row) const { return textAt(*m_view->metaDataModel(), row, MetaDataModel::FilePathColumn); }

    std::unique_ptr<TestSupport::StoreFixture> m_store;
    std::unique_ptr<MetaDataView> m_view;
};

void MetaDataViewMillionTest::initTestCase()
{
    m_store = std::make_unique<TestSupport::StoreFixture>();
    m_store->open();
    TestSupport::fillTable(*m_store, tableId, rowsOfTable);
}

void MetaDataViewMillionTest::init()
{
    m_view = std::make_unique<MetaDataView>();
    m_view->resize(1000, 400);
    m_view->setDatabase(&m_store->database(), tableId);
    m_view->show();
    QVERIFY(settles(*m_view->metaDataModel()));
}

void MetaDataViewMillionTest::cleanup()
{
    m_view.reset();
}

void MetaDataViewMillionTest::cleanupTestCase()
{
    m_store.reset();
}

void MetaDataViewMillionTest::allRowsAreCounted()
{
    QCOMPARE(m_view->metaDataModel()->rowsCount(), rowsOfTable);
    QCOMPARE(pathShownAt(0), filledPath(tableId, 0));
}

void MetaDataViewMillionTest::anyRowCanBeScrolledTo()
{
    for (const int row : { 999999, 0, 500000, 123456, 876543 }) {
        m_view->scrollTo(m_view->model()->index(row, 0), QAbstractItemView::PositionAtCenter);
        QTRY_COMPARE_WITH_TIMEOUT(pathShownAt(row), filledPath(tableId, row), patience);
    }
}

void MetaDataViewMillionTest::scrollBarWalksOnlyAskForWhatIsSeen()
{
    MetaDataModel& model = *m_view->metaDataModel();
    QSet<int> changedPages;
    connect(&model, &QAbstractItemModel::dataChanged, &model,
        [&](const QModelIndex& first) { changedPages.insert(first.row() / 50); });

    for (int row = 0; row < rowsOfTable; row += 5000) {
        m_view->verticalScrollBar()->setValue(row);
        m_view->viewport()->grab();
    }
    const int row = m_view->rowAt(0);
    QTRY_COMPARE_WITH_TIMEOUT(pathShownAt(row), filledPath(tableId, row), patience);
    QVERIFY(settles(model));

    QVERIFY(changedPages.contains(row / 50));
    QVERIFY2(changedPages.size() <= 2, qPrintable(QString::number(changedPages.size())));
}

void MetaDataViewMillionTest::lookupFindsOneOfAMillion()
{
    m_view->setLookup("sound 987654", true);
    QVERIFY(settles(*m_view->metaDataModel()));

    QCOMPARE(m_view->metaDataModel()->rowCount(), 1);
    QCOMPARE(pathShownAt(0), filledPath(tableId, 987654));
}

void MetaDataViewMillionTest::fieldsOfFarRowsAreCollected()
{
    MetaDataModel& model = *m_view->metaDataModel();
    QModelIndexList indexes;
    for (int row = 999000; row < rowsOfTable; ++row)
        indexes.append(model.index(row, 0));

    const auto reply = await(model.collectFields(indexes, "id"));

    QCOMPARE(reply->errorString(), QString());
    const QVariantList items = reply->result("items").toList();
    QCOMPARE(items.size(), 1000);
    QVERIFY(items.contains(rowsOfTable));
    QVERIFY(!items.contains(999000));
}

void MetaDataViewMillionTest::endKeyShowsTheLastRow()
{
    m_view->setCurrentIndex(m_view->model()->index(0, 0));

    QTest::keyClick(m_view.get(), Qt::Key_End, Qt::ControlModifier);

    QCOMPARE(m_view->currentIndex().row(), rowsOfTable - 1);
    QTRY_COMPARE_WITH_TIMEOUT(pathShownAt(rowsOfTable - 1), filledPath(tableId, rowsOfTable - 1), patience);
}

QTEST_MAIN(MetaDataViewMillionTest)

#include "tst_metadataviewmillion.moc"
