// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/rowset.h"

#include <QtTest>

class RowSetTest : public QObject
{
    Q_OBJECT

private slots:
    void rowsComeAndGo();
    void setsAreCombined();
    void includedRowsAreThoseOfTheRangeOnly();
    void appendedRowsAreInTheSet();
    void rowsMayBeRemovedWhileTheyAreVisited();
};

namespace {

RowSet setOf(size_t size, const std::vector<size_t>& rows)
{
    RowSet set(size);
    for (const size_t row : rows)
        set.insert(row);
    return set;
}

std::vector<size_t> rowsOf(const RowSet& set)
{
    std::vector<size_t> rows;
    set.forEach([&rows](size_t row) { rows.push_back(row); });
    return rows;
}

} // namespace

void RowSetTest::rowsComeAndGo()
{
    RowSet set = setOf(130, { 0, 63, 64, 129 });

    set.remove(63);

    QVERIFY(set.contains(64));
    QVERIFY(!set.contains(63));
    QCOMPARE(set.count(), 3);
    QVERIFY(rowsOf(set) == (std::vector<size_t>{ 0, 64, 129 }));
}

void RowSetTest::setsAreCombined()
{
    const RowSet other = setOf(100, { 1, 70, 80 });
    RowSet both = setOf(100, { 1, 2, 80 });
    RowSet either = both;
    RowSet rest = both;

    both.intersect(other);
    either.unite(other);
    rest.subtract(other, { 0, rest.size() });

    QVERIFY(rowsOf(both) == (std::vector<size_t>{ 1, 80 }));
    QVERIFY(rowsOf(either) == (std::vector<size_t>{ 1, 2, 70, 80 }));
    QVERIFY(rowsOf(rest) == std::vector<size_t>{ 2 });
}

void RowSetTest::includedRowsAreThoseOfTheRangeOnly()
{
    const RowSet set = setOf(200, { 3, 70, 130 });
    const RowSet other = setOf(200, { 3, 131 });

    QVERIFY(set.includes(other, { 0, 128 }));
    QVERIFY(!set.includes(other, { 128, 200 }));
    QVERIFY(!other.includes(set, { 64, 128 }));
    QVERIFY(set.includes(set, { 0, 200 }));
}

void RowSetTest::appendedRowsAreInTheSet()
{
    RowSet set(63);
    for (int i = 0; i < 3; ++i)
        set.append();

    QCOMPARE(set.size(), size_t(66));
    QVERIFY(rowsOf(set) == (std::vector<size_t>{ 63, 64, 65 }));
}

void RowSetTest::rowsMayBeRemovedWhileTheyAreVisited()
{
    RowSet set = setOf(200, { 3, 5, 150, 199 });

    set.forEach([&set](size_t row) {
        if (row % 2 == 1)
            set.remove(row);
    });

    QVERIFY(rowsOf(set) == std::vector<size_t>{ 150 });
}

QTEST_GUILESS_MAIN(RowSetTest)

#include "tst_rowset.moc"
