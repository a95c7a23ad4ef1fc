// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/rowranges.h"

#include "store/rowset.h"

#include <QMutex>
#include <QMutexLocker>
#include <QtTest>

#include <algorithm>
#include <vector>

class RowRangesTest : public QObject
{
    Q_OBJECT

private slots:
    void rangesMakeUpAllRows_data();
    void rangesMakeUpAllRows();
};

void RowRangesTest::rangesMakeUpAllRows_data()
{
    QTest::addColumn<int>("rows");

    QTest::newRow("none") << 0;
    QTest::newRow("one") << 1;
    QTest::newRow("few") << 1000;
    QTest::newRow("one range") << 4 * 1024;
    QTest::newRow("one more row") << 4 * 1024 + 1;
    QTest::newRow("the most for one thread") << 7 * 4 * 1024;
    QTest::newRow("many") << 1234567;
}

void RowRangesTest::rangesMakeUpAllRows()
{
    QFETCH(int, rows);
    QMutex mutex;
    std::vector<RowRange> ranges;

    forEachRowRange(size_t(rows), [&](const RowRange& range) {
        const QMutexLocker locker(&mutex);
        ranges.push_back(range);
    });

    std::sort(ranges.begin(), ranges.end(), [](const RowRange& a, const RowRange& b) { return a.begin < b.begin; });
    size_t end = 0;
    for (const RowRange& range : ranges) {
        QCOMPARE(range.begin, end);
        QCOMPARE(range.begin % RowSet::bitsInWord, size_t(0));
        QVERIFY(range.end > range.begin);
        end = range.end;
    }
    QCOMPARE(end, size_t(rows));
}

QTEST_GUILESS_MAIN(RowRangesTest)
#include "tst_rowranges.moc"
