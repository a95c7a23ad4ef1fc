// SPDX-License-Identifier: GPL-3.0-or-later
#include "browse/advanceditemdelegate.h"

#include "browse/advanceditemview.h"
#include "browse/metadatamodel.h"
#include "tests/support/picture.h"

#include <QHeaderView>
#include <QStandardItemModel>
#include <QtTest>

using TestSupport::lighter;
using TestSupport::Picture;

namespace {

const QColor red(255, 0, 0);
const QColor green(0, 255, 0);
const QColor line(224, 224, 224);

// Colours that cannot be mistaken for one another, light text on dark ground or the other way round.
QPalette testPalette(bool isDark)
{
    QPalette palette;
    palette.setColor(QPalette::Base, isDark ? QColor(40, 44, 50) : QColor(200, 204, 210));
    palette.setColor(QPalette::Text, isDark ? QColor(230, 240, 250) : QColor(10, 0, 20));
    palette.setColor(QPalette::Highlight, QColor(30, 60, 160));
    palette.setColor(QPalette::HighlightedText, QColor(250, 230, 120));
    return palette;
}

} // namespace

/// What the cells look like, on whatever scale the test is run.
class AdvancedItemDelegateTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void oddRowsAreShaded_data();
    void oddRowsAreShaded();
    void selectedRowsAreHighlighted();
    void rowsHaveALineBelow();
    void columnsHaveALineAtTheRight();
    void noLineAtTheRightEdgeOfTheTable();
    void linesAreEquallyThick();
    void textWithoutAColourIsReadable_data();
    void textWithoutAColourIsReadable();
    void textHasTheColourOfItsCell();
    void selectedTextIsReadable();
    void lookupWordsAreMarked_data();
    void lookupWordsAreMarked();
    void lookupWordsInASelectedRowAreGreen();
    void onlyTheWordIsMarked();
    void markedTextStandsWhereUnmarkedDoes();
    void wordBehindTheEllipsisIsNotMarked();
    void fadedTextIsHalfWay();
    void secondTextStandsAtTheRightEnd();
    void textEndsBeforeTheSecondText();
    void longTextKeepsTheMargin();
    void textStandsLeftAndCentred();
    void textFollowsItsAlignment();
    void endlessTextIsCutOff();
    void columnFitsItsLongestText();
    void delegateWithoutAViewHasTheUsualMargins();
    void rolesAreThoseOfTheModel();

private:
    void setText(const QString& text, const QVariant& words = QVariant());
    QModelIndex cell(int row = 0, int column = 0) const { return m_model->index(row, column); }
    QRect areaOf(const QModelIndex& index) const { return m_view->visualRect(index); }
    // Inside the lines.
    QRect insideOf(const QModelIndex& index) const { return areaOf(index).adjusted(0, 0, -2, -2); }
    Picture picture() const { return Picture(*m_view->viewport()); }

    std::unique_ptr<QStandardItemModel> m_model;
    std::unique_ptr<AdvancedItemView> m_view;
};

void AdvancedItemDelegateTest::initTestCase()
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(20);
    QApplication::setFont(font);
}

void AdvancedItemDelegateTest::init()
{
    m_model = std::make_unique<QStandardItemModel>(4, 3);
    m_view = std::make_unique<AdvancedItemView>();
    m_view->setModel(m_model.get());
    m_view->setFrameShape(QFrame::NoFrame);
    m_view->setPalette(testPalette(false));
    m_view->setColumnWidth(0, 240);
    m_view->resize(500, 300);
}

void AdvancedItemDelegateTest::cleanup()
{
    m_view.reset();
    m_model.reset();
}

void AdvancedItemDelegateTest::setText(const QString& text, const QVariant& words)
{
    m_model->setData(cell(), text);
    m_model->setData(cell(), words, AdvancedItemDelegate::HighlightedWordsRole);
}

void AdvancedItemDelegateTest::oddRowsAreShaded_data()
{
    QTest::addColumn<bool>("isDark");

    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void AdvancedItemDelegateTest::oddRowsAreShaded()
{
    QFETCH(bool, isDark);
    m_view->setPalette(testPalette(isDark));
    const QColor base = testPalette(isDark).color(QPalette::Base);

    const Picture seen = picture();

    QCOMPARE(seen.at(areaOf(cell(0)).center()), base);
    QCOMPARE(seen.at(areaOf(cell(1)).center()), lighter(base, 106));
    QCOMPARE(seen.at(areaOf(cell(2)).center()), base);
    QCOMPARE(seen.at(areaOf(cell(3, 2)).topLeft()), lighter(base, 106));
}

void AdvancedItemDelegateTest::selectedRowsAreHighlighted()
{
    m_view->selectRow(1);

    const Picture seen = picture();

    QCOMPARE(seen.at(areaOf(cell(1, 0)).topLeft()), testPalette(false).color(QPalette::Highlight));
    QCOMPARE(seen.at(areaOf(cell(1, 2)).center()), testPalette(false).color(QPalette::Highlight));
    QCOMPARE(seen.at(areaOf(cell(2, 0)).center()), testPalette(false).color(QPalette::Base));
}

void AdvancedItemDelegateTest::rowsHaveALineBelow()
{
    m_view->selectRow(1);

    const Picture seen = picture();

    for (int row = 0; row < 3; ++row) {
        const QRect area = areaOf(cell(row, 1));
        QVERIFY(seen.isTouchedBy(line, { area.center().x(), area.bottom() }));
        QVERIFY(seen.at(area.center().x(), area.bottom() - 1) != line);
        QVERIFY(seen.at(area.center().x(), area.bottom() + 1) != line);
    }
}

void AdvancedItemDelegateTest::columnsHaveALineAtTheRight()
{
    const Picture seen = picture();

    for (int column = 0; column < 3; ++column) {
        const QRect area = areaOf(cell(1, column));
        QVERIFY(seen.isTouchedBy(line, { area.right(), area.center().y() }));
        QVERIFY(seen.at(area.right() - 1, area.center().y()) != line);
        QVERIFY(seen.at(area.right() + 1, area.center().y()) != line);
    }
}

void AdvancedItemDelegateTest::noLineAtTheRightEdgeOfTheTable()
{
    m_view->horizontalHeader()->setStretchLastSection(true);
    m_view->show();

    const QRect area = areaOf(cell(1, 2));
    QCOMPARE(area.right(), m_view->viewport()->width() - 1);
    QVERIFY(picture().at(area.right(), area.center().y()) != line);
}

void AdvancedItemDelegateTest::linesAreEquallyThick()
{
    const QImage image = picture().image();
    const int x = int(areaOf(cell(0, 1)).center().x() * image.devicePixelRatio());
    QVector<int> thicknesses;
    for (int y = 1; y < image.height(); ++y) {
        if (image.pixelColor(x, y) != line)
            continue;
        if (image.pixelColor(x, y - 1) != line)
            thicknesses.append(0);
        ++thicknesses.last();
    }

    QVERIFY(thicknesses.size() >= 4);
    QCOMPARE(thicknesses, QVector<int>(thicknesses.size(), int(image.devicePixelRatio())));
}

void AdvancedItemDelegateTest::textWithoutAColourIsReadable_data()
{
    oddRowsAreShaded_data();
}

void AdvancedItemDelegateTest::textWithoutAColourIsReadable()
{
    QFETCH(bool, isDark);
    m_view->setPalette(testPalette(isDark));
    setText("HHHH");

    QVERIFY(picture().has(testPalette(isDark).color(QPalette::Text), insideOf(cell())));
    QVERIFY(!picture().has(testPalette(!isDark).color(QPalette::Text), insideOf(cell()), 15));
}

void AdvancedItemDelegateTest::textHasTheColourOfItsCell()
{
    setText("HHHH");
    m_model->setData(cell(), QColor(0, 120, 200), Qt::ForegroundRole);

    QVERIFY(picture().has(QColor(0, 120, 200), insideOf(cell())));
    QVERIFY(!picture().has(testPalette(false).color(QPalette::Text), insideOf(cell())));
}

void AdvancedItemDelegateTest::selectedTextIsReadable()
{
    setText("HHHH");
    m_model->setData(cell(), QColor(0, 120, 200), Qt::ForegroundRole);
    m_view->selectRow(0);

    QVERIFY(picture().has(testPalette(false).color(QPalette::HighlightedText), insideOf(cell())));
    QVERIFY(!picture().has(QColor(0, 120, 200), insideOf(cell())));
}

void AdvancedItemDelegateTest::lookupWordsAreMarked_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<bool>("isMarked");

    QTest::newRow("the word as it stands") << QStringList{ "Hill" } << true;
    QTest::newRow("in capitals") << QStringList{ "HILL" } << true;
    QTest::newRow("in small letters") << QStringList{ "hill" } << true;
    QTest::newRow("part of the word") << QStringList{ "il" } << true;
    QTest::newRow("second of two words") << QStringList{ "valley", "hill" } << true;
    QTest::newRow("another word") << QStringList{ "valley" } << false;
    QTest::newRow("excluded word") << QStringList{ "!hill" } << false;
    QTest::newRow("empty word") << QStringList{ "" } << false;
    QTest::newRow("word longer than the text") << QStringList{ "Hillside" } << false;
}

void AdvancedItemDelegateTest::lookupWordsAreMarked()
{
    QFETCH(QStringList, words);
    QFETCH(bool, isMarked);
    setText("Hill", words);

    QCOMPARE(picture().has(red, insideOf(cell()), 90), isMarked);
    QVERIFY(!picture().has(green, insideOf(cell()), 90));
}

void AdvancedItemDelegateTest::lookupWordsInASelectedRowAreGreen()
{
    setText("Hill", QStringList{ "hill" });
    m_view->selectRow(0);

    QVERIFY(picture().has(green, insideOf(cell()), 90));
    QVERIFY(!picture().has(red, insideOf(cell()), 90));
}

void AdvancedItemDelegateTest::onlyTheWordIsMarked()
{
    setText("HHH III HHH III", QStringList{ "iii" });
    const QFontMetrics metrics(QApplication::font());
    const int start = 6 + metrics.horizontalAdvance("HHH ");
    const int end = start + metrics.horizontalAdvance("III");

    const QRect marked = picture().extentOf(red, QRect(0, 0, end + 10, 30), 90);

    QVERIFY(qAbs(marked.left() - start) <= 4);
    QVERIFY(qAbs(marked.right() - end) <= 4);
    QVERIFY(picture().has(testPalette(false).color(QPalette::Text), QRect(0, 0, start - 3, 30)));
    QVERIFY(picture().has(testPalette(false).color(QPalette::Text), QRect(end + 3, 0, 40, 30)));
    QVERIFY(picture().has(red, QRect(end + metrics.horizontalAdvance(" HHH"), 0, 40, 30), 90));
}

void AdvancedItemDelegateTest::markedTextStandsWhereUnmarkedDoes()
{
    const QColor ink = testPalette(false).color(QPalette::Text);
    setText("HHH III HHH");
    const QRect plain = picture().extentOf(ink, insideOf(cell()));

    setText("HHH III HHH", QStringList{ "iii" });
    const QRect marked = picture().extentOf(ink, insideOf(cell()));

    QCOMPARE(marked.topLeft(), plain.topLeft());
    QCOMPARE(marked.bottom(), plain.bottom());
    QVERIFY(qAbs(marked.right() - plain.right()) <= 1);
}

void AdvancedItemDelegateTest::wordBehindTheEllipsisIsNotMarked()
{
    const QString filler(40, 'H');

    setText(filler + " hill", QStringList{ "hill" });
    QVERIFY(!picture().has(red, insideOf(cell()), 90));

    setText("hill " + filler, QStringList{ "hill" });
    QVERIFY(picture().has(red, insideOf(cell()), 90));
}

void AdvancedItemDelegateTest::fadedTextIsHalfWay()
{
    setText("HHHH");
    m_model->setData(cell(), 0.5, AdvancedItemDelegate::OpacityRole);
    const QColor base = testPalette(false).color(QPalette::Base);
    const QColor ink = testPalette(false).color(QPalette::Text);
    const QColor halfWay(
        (base.red() + ink.red()) / 2, (base.green() + ink.green()) / 2, (base.blue() + ink.blue()) / 2);

    const Picture seen = picture();

    QVERIFY(seen.has(halfWay, insideOf(cell()), 12));
    QVERIFY(!seen.has(ink, insideOf(cell())));
    // Neither the line nor the next cell fades.
    QVERIFY(seen.isTouchedBy(line, { areaOf(cell()).center().x(), areaOf(cell()).bottom() }));
    m_model->setData(cell(0, 1), "HHHH");
    QVERIFY(picture().has(ink, insideOf(cell(0, 1))));
}

void AdvancedItemDelegateTest::secondTextStandsAtTheRightEnd()
{
    m_model->setData(cell(), QStringLiteral("\u25CF"), AdvancedItemDelegate::TrailingTextRole);
    const QColor ink = testPalette(false).color(QPalette::Text);
    const int width = QFontMetrics(QApplication::font()).horizontalAdvance(QChar(0x25CF));
    const QRect area = areaOf(cell());

    const QRect mark = picture().extentOf(ink, insideOf(cell()));

    QVERIFY(mark.left() >= area.right() - 12 - width);
    QVERIFY(mark.right() <= area.right() - 12);
    QVERIFY(qAbs(mark.center().y() - area.center().y()) <= 4);
}

void AdvancedItemDelegateTest::textEndsBeforeTheSecondText()
{
    setText(QString(60, 'H'));
    m_model->setData(cell(), QStringLiteral("\u25CF"), AdvancedItemDelegate::TrailingTextRole);
    const int markWidth = QFontMetrics(QApplication::font()).horizontalAdvance(QChar(0x25CF));
    const QRect area = areaOf(cell());
    const QColor base = testPalette(false).color(QPalette::Base);

    // Between the two is the right margin, empty.
    const QRect gap(area.right() - 12 - markWidth - 12, area.top(), 11, area.height() - 3);
    const Picture seen = picture();

    for (int x = gap.left(); x <= gap.right(); ++x) {
        for (int y = gap.top(); y <= gap.bottom(); ++y)
            QCOMPARE(seen.at(x, y), base);
    }
    QVERIFY(seen.has(testPalette(false).color(QPalette::Text), gap.translated(-40, 0)));
}

void AdvancedItemDelegateTest::longTextKeepsTheMargin()
{
    setText(QString(60, 'H'));
    const QColor ink = testPalette(false).color(QPalette::Text);

    const QRect text = picture().extentOf(ink, insideOf(cell()), 90);

    QVERIFY(text.left() >= 6);
    QVERIFY(text.right() <= areaOf(cell()).right() - 12);
    QVERIFY(text.right() >= areaOf(cell()).right() - 40);
}

void AdvancedItemDelegateTest::textStandsLeftAndCentred()
{
    setText("HH");

    const QRect text = picture().extentOf(testPalette(false).color(QPalette::Text), insideOf(cell()));

    QVERIFY(text.left() >= 6 && text.left() <= 10);
    QVERIFY(qAbs(text.center().y() - areaOf(cell()).center().y()) <= 3);
}

void AdvancedItemDelegateTest::textFollowsItsAlignment()
{
    setText("HH");
    m_model->setData(cell(), int(Qt::AlignRight | Qt::AlignVCenter), Qt::TextAlignmentRole);

    const QRect text = picture().extentOf(testPalette(false).color(QPalette::Text), insideOf(cell()));

    QVERIFY(text.right() <= areaOf(cell()).right() - 12);
    QVERIFY(text.right() >= areaOf(cell()).right() - 18);
}

void AdvancedItemDelegateTest::endlessTextIsCutOff()
{
    setText(QString(20 * 1000 * 1000, 'H'), QStringList{ "h" });
    QVERIFY(picture().has(red, insideOf(cell()), 90));

    QVERIFY(m_view->itemDelegate()->sizeHint(QStyleOptionViewItem(), cell()).width() < 500000);
}

void AdvancedItemDelegateTest::columnFitsItsLongestText()
{
    setText("A text of some length");
    m_model->setData(cell(), QStringLiteral("\u25CF"), AdvancedItemDelegate::TrailingTextRole);
    m_view->setColumnWidth(0, 400);
    const QImage wide = picture().image();
    const int height = areaOf(cell()).height();

    m_view->resizeColumnToContents(0);

    QVERIFY(m_view->columnWidth(0) < 400);
    const QFontMetrics metrics(QApplication::font());
    const int expected = 6 + metrics.horizontalAdvance("A text of some length") + 12
        + metrics.horizontalAdvance(QChar(0x25CF)) + 12 + 1;
    QCOMPARE(m_view->columnWidth(0), expected);
    const qreal ratio = wide.devicePixelRatio();
    const QRect textArea(0, 0, int((expected - 60) * ratio), int((height - 2) * ratio));
    QCOMPARE(picture().image().copy(textArea), wide.copy(textArea));
}

void AdvancedItemDelegateTest::delegateWithoutAViewHasTheUsualMargins()
{
    setText("HHHH");
    const Picture expected = picture();
    AdvancedItemDelegate delegate(nullptr);

    m_view->setItemDelegate(&delegate);

    QCOMPARE(picture().image(), expected.image());
    m_view->setItemDelegate(nullptr);
}

void AdvancedItemDelegateTest::rolesAreThoseOfTheModel()
{
    QCOMPARE(int(AdvancedItemDelegate::HighlightedWordsRole), int(MetaDataModel::HighlightedWordsRole));
    QCOMPARE(int(AdvancedItemDelegate::OpacityRole), int(MetaDataModel::OpacityRole));
    QCOMPARE(int(AdvancedItemDelegate::TrailingTextRole), int(MetaDataModel::TrailingTextRole));
}

QTEST_MAIN(AdvancedItemDelegateTest)

#include "tst_advanceditemdelegate.moc"
