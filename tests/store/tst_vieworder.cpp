// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/vieworder.h"

#include <QtTest>

#include <algorithm>
#include <numeric>
#include <random>

namespace {

constexpr size_t tableRows = 10000;

// All rows of a table in some order.
std::vector<quint32> shuffledRows()
{
    std::vector<quint32> rows(tableRows);
    std::iota(rows.begin(), rows.end(), 0);
    std::shuffle(rows.begin(), rows.end(), std::mt19937(5));
    return rows;
}

RowSet everyNthRow(size_t n)
{
    RowSet rows(tableRows);
    for (size_t row = 0; row < tableRows; row += n)
        rows.insert(row);
    return rows;
}

std::vector<quint32> expectedRows(const std::vector<quint32>& order, const RowSet& view, bool isDescending)
{
    std::vector<quint32> rows;
    std::copy_if(order.begin(), order.end(), std::back_inserter(rows), [&](quint32 row) { return view.contains(row); });
    if (isDescending)
        std::reverse(rows.begin(), rows.end());
    return rows;
}

} // namespace

class ViewOrderTest : public QObject
{
    Q_OBJECT

private slots:
    void rowsComeInTheOrderOfTheTable_data();
    void rowsComeInTheOrderOfTheTable();
    void fewRowsAreLookedAtForTheFirstPage();
    void sortedRowsAreTakenInTheDirectionOfTheView();
    void newOrderBeginsEmpty();
    void clearedOrderIsOfNoView();
};

void ViewOrderTest::rowsComeInTheOrderOfTheTable_data()
{
    QTest::addColumn<size_t>("everyNth");
    QTest::addColumn<bool>("isDescending");
    for (const size_t everyNth : { size_t(1), size_t(2), size_t(997), size_t(2 * tableRows) }) {
        QTest::addRow("every %zuth row, ascending", everyNth) << everyNth << false;
        QTest::addRow("every %zuth row, descending", everyNth) << everyNth << true;
    }
}

void ViewOrderTest::rowsComeInTheOrderOfTheTable()
{
    QFETCH(size_t, everyNth);
    QFETCH(bool, isDescending);
    const std::vector<quint32> order = shuffledRows();
    const RowSet view = everyNthRow(everyNth);
    const std::vector<quint32> expected = expectedRows(order, view, isDescending);
    ViewOrder tested;
    tested.begin(QStringLiteral("rating"), isDescending);

    for (const size_t count : { size_t(1), size_t(50), size_t(60), size_t(3000), tableRows, 2 * tableRows }) {
        tested.extend(order, view, count);

        const std::vector<quint32>& rows = tested.rows();
        QVERIFY(rows.size() >= std::min(count, expected.size()));
        QVERIFY(std::equal(rows.begin(), rows.end(), expected.begin(), expected.begin() + std::ptrdiff_t(rows.size())));
    }
}

void ViewOrderTest::fewRowsAreLookedAtForTheFirstPage()
{
    ViewOrder tested;
    tested.begin(QStringLiteral("rating"), false);

    tested.extend(shuffledRows(), everyNthRow(1), 50);

    QVERIFY(tested.rows().size() < tableRows / 2);
}

void ViewOrderTest::sortedRowsAreTakenInTheDirectionOfTheView()
{
    ViewOrder tested;
    tested.begin(QStringLiteral("rating"), false);
    tested.set({ 7, 3, 5 });
    QVERIFY(tested.rows() == (std::vector<quint32>{ 7, 3, 5 }));

    tested.begin(QStringLiteral("rating"), true);
    tested.set({ 7, 3, 5 });
    QVERIFY(tested.rows() == (std::vector<quint32>{ 5, 3, 7 }));
}

void ViewOrderTest::newOrderBeginsEmpty()
{
    ViewOrder tested;
    tested.begin(QStringLiteral("rating"), false);
    tested.extend(shuffledRows(), everyNthRow(1), 50);

    tested.begin(QStringLiteral("rating"), true);

    QVERIFY(tested.rows().empty());
    QVERIFY(tested.isOf(QStringLiteral("rating"), true));
    QVERIFY(!tested.isOf(QStringLiteral("rating"), false));
    QVERIFY(!tested.isOf(QStringLiteral("library"), true));
}

void ViewOrderTest::clearedOrderIsOfNoView()
{
    ViewOrder tested;
    QVERIFY(!tested.isOf(QString(), false));
    tested.begin(QStringLiteral("rating"), false);
    tested.extend(shuffledRows(), everyNthRow(1), 50);

    tested.clear();

    QVERIFY(!tested.isOf(QStringLiteral("rating"), false));
    QVERIFY(tested.rows().empty());
    QCOMPARE(tested.bytes(), size_t(0));
}

QTEST_GUILESS_MAIN(ViewOrderTest)

#include "tst_vieworder.moc"
