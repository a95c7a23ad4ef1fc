// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/advanceditemview.h"

#include <QHeaderView>
#include <QStandardItemModel>
#include <QtTest>

namespace {

void fill(QStandardItemModel& model, const QString& text)
{
    for (int row = 0; row < model.rowCount(); ++row) {
        for (int column = 0; column < model.columnCount(); ++column)
            model.setItem(row, column, std::make_unique<QStandardItem>(text).release());
    }
}

// What the first cell looks like.
QImage pictureOf(const QString& text)
{
    QStandardItemModel model(1, 1);
    fill(model, text);
    AdvancedItemView view;
    view.setModel(&model);
    view.setColumnWidth(0, 300);
    view.resize(320, 200);
    return view.viewport()->grab(view.visualRect(model.index(0, 0))).toImage();
}

} // namespace

class AdvancedItemViewTest : public QObject
{
    Q_OBJECT

private slots:
    void rowsAreTallerThanTheFont();
    void cellsHaveMargins();
    void tableIsReadOnlyAndWithoutGrid();
    void headerIsFlatAndFixed();
    void headerStateIsSavedAndRestored();
    void unusableHeaderStateIsAnnouncedToo();
    void clickSelectsTheWholeRow();
    void textWithLineBreaksStaysOnOneLine_data();
    void textWithLineBreaksStaysOnOneLine();
};

void AdvancedItemViewTest::rowsAreTallerThanTheFont()
{
    QStandardItemModel model(3, 2);
    AdvancedItemView view;
    view.setModel(&model);

    const int expected = int(QFontMetrics(QApplication::font()).height() * 1.75);

    QCOMPARE(view.rowHeight(), expected);
    QCOMPARE(view.rowHeight(), view.QTableView::rowHeight(1));
}

void AdvancedItemViewTest::cellsHaveMargins()
{
    const AdvancedItemView view;

    QCOMPARE(view.cellMargins(), QMargins(6, 6, 12, 6));
}

void AdvancedItemViewTest::tableIsReadOnlyAndWithoutGrid()
{
    const AdvancedItemView view;

    QVERIFY(!view.showGrid());
    QVERIFY(!view.wordWrap());
    QCOMPARE(view.textElideMode(), Qt::ElideRight);
    QCOMPARE(view.verticalScrollMode(), QAbstractItemView::ScrollPerItem);
    QCOMPARE(view.editTriggers(), QAbstractItemView::EditTriggers(QAbstractItemView::NoEditTriggers));
    QCOMPARE(view.selectionBehavior(), QAbstractItemView::SelectRows);
}

void AdvancedItemViewTest::headerIsFlatAndFixed()
{
    const AdvancedItemView view;

    QVERIFY(view.verticalHeader()->isHidden());
    QVERIFY(!view.horizontalHeader()->isHidden());
    QVERIFY(!view.horizontalHeader()->sectionsMovable());
    QCOMPARE(view.horizontalHeader()->font().toString(), QApplication::font().toString());
}

void AdvancedItemViewTest::headerStateIsSavedAndRestored()
{
    QStandardItemModel model(1, 3);
    AdvancedItemView source;
    source.setModel(&model);
    source.horizontalHeader()->resizeSection(1, 77);
    source.horizontalHeader()->hideSection(2);
    AdvancedItemView target;
    target.setModel(&model);
    QSignalSpy restored(&target, &AdvancedItemView::headerStateRestored);

    target.restoreHeaderState(source.saveHeaderState());

    QCOMPARE(restored.count(), 1);
    QCOMPARE(target.horizontalHeader()->sectionSize(1), 77);
    QVERIFY(target.horizontalHeader()->isSectionHidden(2));
}

void AdvancedItemViewTest::unusableHeaderStateIsAnnouncedToo()
{
    QStandardItemModel model(1, 3);
    AdvancedItemView view;
    view.setModel(&model);
    view.horizontalHeader()->resizeSection(1, 77);
    QSignalSpy restored(&view, &AdvancedItemView::headerStateRestored);

    view.restoreHeaderState("not a header state");
    view.restoreHeaderState({});

    QCOMPARE(restored.count(), 2);
    QCOMPARE(view.horizontalHeader()->sectionSize(1), 77);
}

void AdvancedItemViewTest::clickSelectsTheWholeRow()
{
    QStandardItemModel model(3, 2);
    fill(model, "text");
    AdvancedItemView view;
    view.setModel(&model);
    view.resize(400, 300);
    view.show();

    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, view.visualRect(model.index(1, 0)).center());

    QVERIFY(view.selectionModel()->isRowSelected(1, QModelIndex()));
    QCOMPARE(view.selectionModel()->selectedRows().size(), 1);
}

void AdvancedItemViewTest::textWithLineBreaksStaysOnOneLine_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("line feed") << "one\ntwo";
    QTest::newRow("carriage return") << "one\rtwo";
    QTest::newRow("line separator") << QStringLiteral("one\u2028two");
    QTest::newRow("paragraph separator") << QStringLiteral("one\u2029two");
}

void AdvancedItemViewTest::textWithLineBreaksStaysOnOneLine()
{
    QFETCH(QString, text);

    QCOMPARE(pictureOf(text), pictureOf("one two"));
    QVERIFY(pictureOf(text) != pictureOf("one"));
}

QTEST_MAIN(AdvancedItemViewTest)

#include "tst_advanceditemview.moc"
