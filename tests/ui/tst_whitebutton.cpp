// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/whitebutton.h"

#include "tests/ui/controltest.h"
#include "ui/controllook.h"
#include "ui/whitebuttonstyle.h"

#include <QHBoxLayout>
#include <QStyleOptionButton>
#include <QtTest>

using namespace TestSupport;

namespace {

const QRect area(4, 4, 80, 30);

} // namespace

class WhiteButtonTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void restingButtonIsLightOnItsBorder_data();
    void restingButtonIsLightOnItsBorder();
    void everyStateLooksDifferent_data();
    void everyStateLooksDifferent();
    void pressedButtonIsDarker();
    void checkedButtonHasTheHighlight_data();
    void checkedButtonHasTheHighlight();
    void focusIsARing_data();
    void focusIsARing();
    void disabledTextIsLegible_data();
    void disabledTextIsLegible();
    void disabledButtonShowsNeitherFocusNorPointer();
    void freeCornersAreRound();
    void joinedCornersAreSquare();
    void joinedNeighboursShareAHairline();
    void changedSideIsPaintedAtOnce();
    void leftButtonIsJoinedOnTheRight();
    void heightFollowsTheFont_data();
    void heightFollowsTheFont();
    void textFits_data();
    void textFits();
    void shrinkableButtonCutsOffItsText();
    void pointerChangesTheButton();
    void keyboardPressesIt();

private:
    Picture paint(QStyle::State state, bool isDark = false) const;
};

void WhiteButtonTest::initTestCase()
{
    useFixedFont();
}

Picture WhiteButtonTest::paint(QStyle::State state, bool isDark) const
{
    QStyleOptionButton option;
    option.rect = area;
    option.state = state;
    option.palette = controlPalette(isDark);
    option.text = blockText;
    return paintControl(WhiteButtonStyle(), QStyle::CE_PushButton, option);
}

void WhiteButtonTest::restingButtonIsLightOnItsBorder_data()
{
    addPalettes();
}

void WhiteButtonTest::restingButtonIsLightOnItsBorder()
{
    QFETCH(bool, isDark);
    const QColor button = controlPalette(isDark).color(QPalette::Button);

    const Picture seen = paint(QStyle::State_Enabled, isDark);

    QVERIFY(Picture::isNear(seen.at(besideText(area)), lighter(button, 105), 1));
    QVERIFY(Picture::isNear(seen.at(area.left(), area.center().y()), darker(button, 130), 1));
    QVERIFY(Picture::isNear(seen.at(area.right(), area.center().y()), darker(button, 130), 1));
    QVERIFY(Picture::isNear(seen.at(area.center().x(), area.bottom()), darker(button, 130), 1));
    QVERIFY(Picture::isNear(seen.at(area.center()), controlPalette(isDark).color(QPalette::ButtonText), 1));
}

void WhiteButtonTest::everyStateLooksDifferent_data()
{
    addPalettes();
}

void WhiteButtonTest::everyStateLooksDifferent()
{
    QFETCH(bool, isDark);
    const QStyle::State enabled = QStyle::State_Enabled;
    const QVector<QStyle::State> states{ enabled, enabled | QStyle::State_MouseOver,
        enabled | QStyle::State_MouseOver | QStyle::State_Sunken, enabled | QStyle::State_HasFocus,
        enabled | QStyle::State_On, enabled | QStyle::State_On | QStyle::State_MouseOver,
        enabled | QStyle::State_On | QStyle::State_MouseOver | QStyle::State_Sunken,
        enabled | QStyle::State_On | QStyle::State_HasFocus, QStyle::State_None, QStyle::State_On };

    for (int one = 0; one < states.size(); ++one) {
        for (int other = 0; other < one; ++other)
            QVERIFY2(paint(states.at(one), isDark).image() != paint(states.at(other), isDark).image(),
                qPrintable(QString("%1 and %2").arg(QString::number(one), QString::number(other))));
    }
}

void WhiteButtonTest::pressedButtonIsDarker()
{
    const QColor resting = paint(QStyle::State_Enabled).at(besideText(area));
    const QColor hovered = paint(QStyle::State_Enabled | QStyle::State_MouseOver).at(besideText(area));
    const QColor pressed = paint(QStyle::State_Enabled | QStyle::State_Sunken).at(besideText(area));

    QVERIFY(hovered.lightness() > resting.lightness());
    QVERIFY(pressed.lightness() < resting.lightness());
}

void WhiteButtonTest::checkedButtonHasTheHighlight_data()
{
    addPalettes();
}

void WhiteButtonTest::checkedButtonHasTheHighlight()
{
    QFETCH(bool, isDark);

    const Picture seen = paint(QStyle::State_Enabled | QStyle::State_On, isDark);

    QVERIFY(Picture::isNear(seen.at(besideText(area)), controlPalette(isDark).color(QPalette::Highlight), 1));
    QVERIFY(Picture::isNear(seen.at(area.center()), controlPalette(isDark).color(QPalette::HighlightedText), 1));
}

void WhiteButtonTest::focusIsARing_data()
{
    addPalettes();
}

void WhiteButtonTest::focusIsARing()
{
    QFETCH(bool, isDark);
    const QPalette palette = controlPalette(isDark);
    const Picture focused = paint(QStyle::State_Enabled | QStyle::State_HasFocus, isDark);
    const Picture checked = paint(QStyle::State_Enabled | QStyle::State_On | QStyle::State_HasFocus, isDark);

    for (int depth = 0; depth < 2; ++depth) {
        QVERIFY(
            Picture::isNear(focused.at(area.left() + depth, area.center().y()), palette.color(QPalette::Highlight), 1));
        QVERIFY(Picture::isNear(
            focused.at(area.center().x(), area.bottom() - depth), palette.color(QPalette::Highlight), 1));
    }
    // On the highlight itself the ring is one of the text's colour.
    QVERIFY(
        Picture::isNear(checked.at(area.left() + 2, area.center().y()), palette.color(QPalette::HighlightedText), 1));
}

void WhiteButtonTest::disabledTextIsLegible_data()
{
    addPalettes();
}

void WhiteButtonTest::disabledTextIsLegible()
{
    QFETCH(bool, isDark);

    for (const QStyle::State state : { QStyle::State_None, QStyle::State_On }) {
        const Picture disabled = paint(state, isDark);
        const Picture enabled = paint(state | QStyle::State_Enabled, isDark);
        const double contrast = contrastOf(disabled.at(area.center()), disabled.at(besideText(area)));
        QVERIFY2(contrast > 2.0, qPrintable(QString::number(contrast)));
        QVERIFY(contrast < contrastOf(enabled.at(area.center()), enabled.at(besideText(area))));
    }
}

void WhiteButtonTest::disabledButtonShowsNeitherFocusNorPointer()
{
    QCOMPARE(paint(QStyle::State_HasFocus | QStyle::State_MouseOver | QStyle::State_Sunken).image(),
        paint(QStyle::State_None).image());
}

void WhiteButtonTest::freeCornersAreRound()
{
    WhiteButton button;
    button.setPalette(controlPalette(false));
    button.resize(80, 30);

    const Picture seen(button);

    const QColor ground = controlPalette(false).color(QPalette::Window);
    for (const QPoint& corner : { QPoint(0, 0), QPoint(79, 0), QPoint(0, 29), QPoint(79, 29) })
        QVERIFY(Picture::isNear(seen.at(corner), ground, 20));
}

void WhiteButtonTest::joinedCornersAreSquare()
{
    WhiteButton button;
    button.setPalette(controlPalette(false));
    button.setProperty("leftSideType", 1);
    button.setProperty("rightSideType", 1);
    button.resize(80, 30);

    const Picture seen(button);

    const QColor border = darker(controlPalette(false).color(QPalette::Button), 130);
    for (const QPoint& corner : { QPoint(0, 0), QPoint(79, 0), QPoint(0, 29), QPoint(79, 29) })
        QVERIFY(Picture::isNear(seen.at(corner), border, 1));
}

void WhiteButtonTest::joinedNeighboursShareAHairline()
{
    QWidget row;
    row.setPalette(controlPalette(false));
    auto* left = new WhiteLeftButton(&row);
    auto* right = new WhiteButton(&row);
    right->setProperty("leftSideType", 1);
    left->setGeometry(0, 0, 60, 30);
    right->setGeometry(60, 0, 60, 30);
    row.resize(120, 30);

    const Picture seen(row);

    const QColor border = darker(controlPalette(false).color(QPalette::Button), 130);
    QVERIFY(Picture::isNear(seen.at(59, 15), border, 1));
    for (const int x : { 58, 60 })
        QVERIFY(Picture::isNear(seen.at(x, 15), lighter(controlPalette(false).color(QPalette::Button), 105), 1));
}

void WhiteButtonTest::changedSideIsPaintedAtOnce()
{
    WhiteButton button;
    button.resize(80, 30);
    button.show();
    QVERIFY(QTest::qWaitForWindowExposed(&button));
    PaintCounter paints(button);

    button.setProperty("rightSideType", 1);

    QTRY_VERIFY(paints.count() > 0);
}

void WhiteButtonTest::leftButtonIsJoinedOnTheRight()
{
    const WhiteLeftButton button;

    QCOMPARE(button.property("rightSideType").toInt(), 1);
    QCOMPARE(button.property("leftSideType").toInt(), 0);
}

void WhiteButtonTest::heightFollowsTheFont_data()
{
    QTest::addColumn<int>("pixelSize");

    QTest::newRow("small") << 9;
    QTest::newRow("usual") << 13;
    QTest::newRow("large") << 30;
}

void WhiteButtonTest::heightFollowsTheFont()
{
    QFETCH(int, pixelSize);
    WhiteButton button;
    QFont font = button.font();
    font.setPixelSize(pixelSize);
    button.setFont(font);

    QCOMPARE(button.sizeHint().height(), qRound(QFontMetrics(font).height() * 1.9));
    QCOMPARE(button.minimumSizeHint(), button.sizeHint());
}

void WhiteButtonTest::textFits_data()
{
    QTest::addColumn<int>("narrowing");
    QTest::addColumn<int>("leastRoom");
    QTest::addColumn<int>("mostRoom");

    QTest::newRow("usual") << 0 << 16 << 30;
    QTest::newRow("narrowed") << 8 << 10 << 18;
    QTest::newRow("as narrow as can be") << 100 << 8 << 10;
}

void WhiteButtonTest::textFits()
{
    QFETCH(int, narrowing);
    QFETCH(int, leastRoom);
    QFETCH(int, mostRoom);
    WhiteButton button;
    button.setText("Remove from Playlist");

    button.setNarrowing(narrowing);

    const int room = button.sizeHint().width() - button.fontMetrics().horizontalAdvance(button.text());
    QVERIFY2(room >= leastRoom && room <= mostRoom, qPrintable(QString::number(room)));
}

void WhiteButtonTest::shrinkableButtonCutsOffItsText()
{
    QWidget row;
    auto* layout = new QHBoxLayout(&row);
    auto* button = new WhiteButton;
    button->setText(QStringLiteral("Remove from Playlist"));
    layout->addWidget(button);
    const QSize whole = button->sizeHint();
    QCOMPARE(button->minimumSizeHint(), whole);
    QCOMPARE(layout->minimumSize().width() - layout->contentsMargins().left() - layout->contentsMargins().right(),
        whole.width());

    button->setShrinkable(true);

    QCOMPARE(button->sizeHint(), whole);
    QVERIFY(button->minimumSizeHint().width() < whole.width() / 2);
    QCOMPARE(button->minimumSizeHint().height(), whole.height());
    QVERIFY(layout->minimumSize().width() < whole.width());
    QCOMPARE(button->toolTip(), button->text());
    WhiteButton other;
    other.setText(button->fontMetrics().elidedText(button->text(), Qt::ElideRight, 92));
    layout->removeWidget(button);
    button->resize(100, whole.height());
    other.resize(button->size());
    QVERIFY(other.text().endsWith(QChar(0x2026)));
    const auto picture = [](QWidget& widget) {
        return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
    };
    QCOMPARE(picture(*button), picture(other));
}

void WhiteButtonTest::pointerChangesTheButton()
{
    QWidget window;
    WhiteButton button(&window);
    button.setGeometry(20, 20, 80, 30);
    window.resize(200, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QImage resting = Picture(button).image();

    QTest::mouseMove(window.windowHandle(), QPoint(5, 5));
    QTest::mouseMove(window.windowHandle(), QPoint(60, 35));

    QTRY_VERIFY(button.underMouse());
    QVERIFY(Picture(button).image() != resting);
}

void WhiteButtonTest::keyboardPressesIt()
{
    WhiteButton button;
    QSignalSpy clicked(&button, &QPushButton::clicked);
    button.show();
    button.setFocus();
    const QImage resting = Picture(button).image();

    QTest::keyPress(&button, Qt::Key_Space);
    QVERIFY(Picture(button).image() != resting);
    QTest::keyRelease(&button, Qt::Key_Space);

    QCOMPARE(clicked.count(), 1);
}

QTEST_MAIN(WhiteButtonTest)

#include "tst_whitebutton.moc"
