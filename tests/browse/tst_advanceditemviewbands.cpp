// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/advanceditemview.h"

#include "tests/support/picture.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QtTest>

using TestSupport::lighter;
using TestSupport::Picture;

namespace {

const QColor line(224, 224, 224);
const QColor base(180, 190, 200);

} // namespace

/// The ruled space below the last row.
class AdvancedItemViewBandsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void bandsGoOnBelowTheLastRow_data();
    void bandsGoOnBelowTheLastRow();
    void tableWithoutColumnsHasBandsToo();
    void columnLinesGoDownToTheBottom();
    void hiddenColumnsHaveNoLine();
    void hiddenFirstColumnLeavesTheRowsAlone();
    void rowsThatFillTheTableAreLeftAlone();
    void partsArePaintedAsTheWhole_data();
    void partsArePaintedAsTheWhole();
    void scrollingSidewaysKeepsTheLines();
    void whiteGroundStillShowsTheShade();
    void shadeCanBeSeenOnEveryGround_data();
    void shadeCanBeSeenOnEveryGround();
    void colourOfTheTablesOwnIsKept();
    void groundFollowsTheApplicationsPalette();
    void groundFollowsTheWindowsPalette();

private:
    Picture picture() const { return Picture(*m_view->viewport()); }
    QRect band(int row) const;
    // Of an empty place in the band.
    QColor groundOf(const Picture& seen, int row) const { return seen.at(290, band(row).center().y()); }

    std::unique_ptr<QStandardItemModel> m_model;
    std::unique_ptr<AdvancedItemView> m_view;
};

void AdvancedItemViewBandsTest::init()
{
    m_model = std::make_unique<QStandardItemModel>(0, 3);
    m_view = std::make_unique<AdvancedItemView>();
    QPalette palette;
    palette.setColor(QPalette::Base, base);
    m_view->setPalette(palette);
    m_view->setFrameShape(QFrame::NoFrame);
    m_view->setModel(m_model.get());
    for (int column = 0; column < 3; ++column)
        m_view->setColumnWidth(column, 80);
    m_view->resize(300, 400);
    m_view->show();
}

void AdvancedItemViewBandsTest::cleanup()
{
    m_view.reset();
    m_model.reset();
}

QRect AdvancedItemViewBandsTest::band(int row) const
{
    return { 0, row * m_view->rowHeight(), m_view->viewport()->width(), m_view->rowHeight() };
}

void AdvancedItemViewBandsTest::bandsGoOnBelowTheLastRow_data()
{
    QTest::addColumn<int>("rows");

    QTest::newRow("empty table") << 0;
    QTest::newRow("one row") << 1;
    QTest::newRow("even number of rows") << 2;
    QTest::newRow("odd number of rows") << 5;
}

void AdvancedItemViewBandsTest::bandsGoOnBelowTheLastRow()
{
    QFETCH(int, rows);
    m_model->setRowCount(rows);

    const Picture seen = picture();

    const int wholeBands = m_view->viewport()->height() / m_view->rowHeight();
    QVERIFY(wholeBands > 5);
    for (int row = rows; row < wholeBands; ++row) {
        QCOMPARE(groundOf(seen, row), row % 2 == 1 ? lighter(base, 106) : base);
        QVERIFY(seen.isTouchedBy(line, { 290, band(row).bottom() }));
    }
    // The rows themselves end with the columns.
    for (int row = 0; row < rows; ++row)
        QCOMPARE(groundOf(seen, row), base);
}

void AdvancedItemViewBandsTest::tableWithoutColumnsHasBandsToo()
{
    m_model->setColumnCount(0);

    QCOMPARE(groundOf(picture(), 1), lighter(base, 106));
    QVERIFY(picture().isTouchedBy(line, { 10, band(0).bottom() }));
}

void AdvancedItemViewBandsTest::columnLinesGoDownToTheBottom()
{
    m_model->setRowCount(2);

    const Picture seen = picture();

    for (const int x : { 79, 159, 239 }) {
        for (int y = band(2).top(); y < m_view->viewport()->height(); ++y)
            QVERIFY(seen.isTouchedBy(line, { x, y }));
        QVERIFY(seen.at(x - 1, band(2).center().y()) != line);
        QVERIFY(seen.at(x + 1, band(2).center().y()) != line);
    }
}

void AdvancedItemViewBandsTest::hiddenColumnsHaveNoLine()
{
    m_view->horizontalHeader()->hideSection(1);

    const Picture seen = picture();

    QVERIFY(seen.isTouchedBy(line, { 79, band(2).center().y() }));
    QVERIFY(seen.isTouchedBy(line, { 159, band(2).center().y() }));
    QVERIFY(seen.at(239, band(2).center().y()) != line);
}

void AdvancedItemViewBandsTest::hiddenFirstColumnLeavesTheRowsAlone()
{
    m_model->setRowCount(3);
    m_view->horizontalHeader()->hideSection(0);
    m_view->selectRow(1);

    const Picture seen = picture();

    QCOMPARE(seen.at(40, band(1).center().y()), m_view->palette().color(QPalette::Highlight));
    QCOMPARE(groundOf(seen, 3), lighter(base, 106));
}

void AdvancedItemViewBandsTest::rowsThatFillTheTableAreLeftAlone()
{
    m_model->setRowCount(100);
    m_view->scrollToBottom();

    const Picture seen = picture();

    for (int y = 0; y < m_view->viewport()->height(); ++y)
        QVERIFY(seen.at(270, y) == base);
}

void AdvancedItemViewBandsTest::partsArePaintedAsTheWhole_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<QRect>("part");

    QTest::newRow("empty table, from the middle of a band") << 0 << QRect(10, 37, 200, 50);
    QTest::newRow("empty table, small part") << 0 << QRect(70, 60, 20, 5);
    QTest::newRow("below the rows") << 3 << QRect(0, 130, 300, 83);
    QTest::newRow("across the last row") << 3 << QRect(30, 50, 100, 91);
}

void AdvancedItemViewBandsTest::partsArePaintedAsTheWhole()
{
    QFETCH(int, rows);
    QFETCH(QRect, part);
    m_model->setRowCount(rows);
    const QPixmap whole = m_view->viewport()->grab();

    const QPixmap seen = m_view->viewport()->grab(part);

    const qreal ratio = whole.devicePixelRatioF();
    const QRect devicePart(QPoint(int(part.x() * ratio), int(part.y() * ratio)), seen.size());
    if (ratio == int(ratio))
        QCOMPARE(seen.toImage(), whole.copy(devicePart).toImage());
    const QPoint centre = part.center();
    QCOMPARE(Picture(seen.toImage()).at(centre - part.topLeft()), Picture(whole.toImage()).at(centre));
}

void AdvancedItemViewBandsTest::scrollingSidewaysKeepsTheLines()
{
    m_view->resize(160, 400);
    m_model->setRowCount(2);
    QCOMPARE(m_view->viewport()->width(), 160);

    m_view->horizontalScrollBar()->setValue(m_view->horizontalScrollBar()->maximum());
    const int x = m_view->columnViewportPosition(1) + 79;
    QVERIFY(x < 159);

    QVERIFY(picture().isTouchedBy(line, { x, band(0).center().y() }));
    QVERIFY(picture().isTouchedBy(line, { x, band(4).center().y() }));
}

void AdvancedItemViewBandsTest::whiteGroundStillShowsTheShade()
{
    QPalette white;
    white.setColor(QPalette::Base, Qt::white);
    const QPalette before = QApplication::palette();

    QApplication::setPalette(white);
    AdvancedItemView view;
    view.resize(300, 400);
    const Picture seen(*view.viewport());
    QApplication::setPalette(before);

    const QColor ground = seen.at(290, 5);
    QVERIFY(ground != QColor(Qt::white));
    QCOMPARE(seen.at(290, view.rowHeight() + 5), lighter(ground, 106));
    QCOMPARE(seen.at(290, view.rowHeight() + 5), QColor(Qt::white));
    QCOMPARE(ground, view.viewport()->palette().color(QPalette::Base));
    QVERIFY(ground.lightness() > 240);
}

void AdvancedItemViewBandsTest::shadeCanBeSeenOnEveryGround_data()
{
    QTest::addColumn<QColor>("base");
    QTest::addColumn<QColor>("ground");

    QTest::newRow("white") << QColor(255, 255, 255) << QColor(248, 248, 248);
    QTest::newRow("nearly white") << QColor(252, 252, 252) << QColor(248, 248, 248);
    QTest::newRow("light") << base << base;
    QTest::newRow("middle grey") << QColor(128, 128, 128) << QColor(128, 128, 128);
    QTest::newRow("usual dark") << QColor(35, 38, 41) << QColor(30, 33, 36);
    QTest::newRow("dark blue") << QColor(0, 0, 40) << QColor(0, 0, 35);
    QTest::newRow("nearly black") << QColor(4, 4, 4) << QColor(11, 11, 11);
    QTest::newRow("black") << QColor(0, 0, 0) << QColor(7, 7, 7);
}

void AdvancedItemViewBandsTest::shadeCanBeSeenOnEveryGround()
{
    QFETCH(QColor, base);
    QPalette palette;
    palette.setColor(QPalette::Base, base);
    QWidget window;
    window.setPalette(palette);
    AdvancedItemView view(&window);
    m_model->setRowCount(2);
    view.setModel(m_model.get());
    view.setFrameShape(QFrame::NoFrame);
    view.resize(300, 400);

    const Picture seen(*view.viewport());

    for (int row = 0; row < 6; ++row) {
        const QColor colour = seen.at(20, row * view.rowHeight() + 5);
        if (row % 2 == 1)
            QCOMPARE(colour, lighter(base, 106));
        else
            QTEST(colour, "ground");
    }
    QVERIFY(!Picture::isNear(seen.at(20, 5), seen.at(20, view.rowHeight() + 5), 6));
}

void AdvancedItemViewBandsTest::colourOfTheTablesOwnIsKept()
{
    QPalette white;
    white.setColor(QPalette::Base, Qt::white);

    m_view->setPalette(white);

    QCOMPARE(groundOf(picture(), 0), QColor(Qt::white));
}

void AdvancedItemViewBandsTest::groundFollowsTheApplicationsPalette()
{
    AdvancedItemView view;
    const QPalette before = QApplication::palette();
    QPalette dark;
    dark.setColor(QPalette::Base, QColor(40, 40, 40));

    QApplication::setPalette(dark);
    const QColor darkGround = view.palette().color(QPalette::Base);
    QApplication::setPalette(before);

    QCOMPARE(darkGround, QColor(40, 40, 40));
    QVERIFY(view.palette().color(QPalette::Base).lightness() > 240);
}

void AdvancedItemViewBandsTest::groundFollowsTheWindowsPalette()
{
    QWidget window;
    const AdvancedItemView view(&window);
    QPalette dark;
    dark.setColor(QPalette::Base, QColor(40, 40, 40));
    dark.setColor(QPalette::Text, Qt::white);

    window.setPalette(dark);
    QCOMPARE(view.palette().color(QPalette::Base), QColor(40, 40, 40));
    QCOMPARE(view.viewport()->palette().color(QPalette::Base), QColor(35, 35, 35));

    window.setPalette(QPalette());
    QVERIFY(view.palette().color(QPalette::Base).lightness() > 240);

    QPalette grey;
    grey.setColor(QPalette::Base, base);
    window.setPalette(grey);
    QCOMPARE(view.viewport()->palette().color(QPalette::Base), base);
}

QTEST_MAIN(AdvancedItemViewBandsTest)

#include "tst_advanceditemviewbands.moc"
