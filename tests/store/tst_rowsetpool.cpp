// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/rowsetpool.h"

#include "store/rowranges.h"

#include <QThread>
#include <QtTest>

#include <memory>

class RowSetPoolTest : public QObject
{
    Q_OBJECT

private slots:
    void whatAllThreadsInsertIsThere();
    void rowsAreAddedToOthersOfALargerSet();
    void threadsWaitForASet();
};

void RowSetPoolTest::whatAllThreadsInsertIsThere()
{
    constexpr size_t rows = 500000;
    RowSetPool pool(rows);

    // Threads visit the rows from both ends, so that they meet in each part of the sets.
    forEachRowRange(rows, [&](const RowRange& range) {
        const RowSetPool::Loan loan(pool);
        for (size_t row = range.begin; row < range.end; ++row)
            loan.rows().insert(row % 2 == 0 ? row : rows - row);
    });

    RowSet all(rows);
    pool.uniteInto(all);
    QCOMPARE(size_t(all.count()), rows);
}

void RowSetPoolTest::rowsAreAddedToOthersOfALargerSet()
{
    RowSetPool pool(100);
    {
        const RowSetPool::Loan loan(pool);
        loan.rows().insert(7);
    }
    RowSet all(1000);
    all.insert(8);
    all.insert(900);

    pool.uniteInto(all);

    QCOMPARE(all.count(), 3);
    QVERIFY(all.contains(7));
}

void RowSetPoolTest::threadsWaitForASet()
{
    RowSetPool pool(100);
    std::vector<std::unique_ptr<RowSetPool::Loan>> loans;
    for (int i = 0; i < QThread::idealThreadCount(); ++i)
        loans.push_back(std::make_unique<RowSetPool::Loan>(pool));
    const std::unique_ptr<QThread> waiting(QThread::create([&pool]() { RowSetPool::Loan(pool).rows().insert(7); }));
    waiting->start();
    QVERIFY(!waiting->wait(100));

    loans.pop_back();

    QVERIFY(waiting->wait(30000));
    loans.clear();
    RowSet all(100);
    pool.uniteInto(all);
    QVERIFY(all.contains(7));
}

QTEST_GUILESS_MAIN(RowSetPoolTest)
#include "tst_rowsetpool.moc"
