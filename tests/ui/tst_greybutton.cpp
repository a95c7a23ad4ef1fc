// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/greybutton.h"

#include "tests/ui/controltest.h"
#include "ui/greybuttonstyle.h"

#include <QStyleOptionButton>
#include <QtTest>

using namespace TestSupport;

namespace {

const QRect area(4, 4, 80, 30);
const QColor white(250, 250, 250);

} // namespace

class GreyButtonTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void textIsWhiteAndLegible_data();
    void textIsWhiteAndLegible();
    void everyStateLooksDifferent_data();
    void everyStateLooksDifferent();
    void focusIsARing();
    void disabledTextIsLegible_data();
    void disabledTextIsLegible();
    void cornersAreRound();
    void heightIsThatOfTheOtherControls();

private:
    Picture paint(QStyle::State state, const QPalette& palette) const;
};

void GreyButtonTest::initTestCase()
{
    useFixedFont();
}

Picture GreyButtonTest::paint(QStyle::State state, const QPalette& palette) const
{
    QStyleOptionButton option;
    option.rect = area;
    option.state = state;
    option.palette = palette;
    option.text = blockText;
    return paintControl(GreyButtonStyle(), QStyle::CE_PushButton, option);
}

void GreyButtonTest::textIsWhiteAndLegible_data()
{
    QTest::addColumn<QPalette>("palette");
    QTest::addColumn<int>("state");

    QPalette coloured = controlPalette(false);
    coloured.setColor(QPalette::Button, QColor(255, 250, 0));
    const QVector<QPair<const char*, QPalette>> palettes{ { "light", controlPalette(false) },
        { "dark", controlPalette(true) }, { "coloured", coloured } };
    for (const auto& [name, palette] : palettes) {
        QTest::addRow("%s, resting", name) << palette << int(QStyle::State_Enabled);
        QTest::addRow("%s, hovered", name) << palette << int(QStyle::State_Enabled | QStyle::State_MouseOver);
        QTest::addRow("%s, pressed", name) << palette << int(QStyle::State_Enabled | QStyle::State_Sunken);
        QTest::addRow("%s, focused", name) << palette << int(QStyle::State_Enabled | QStyle::State_HasFocus);
    }
}

void GreyButtonTest::textIsWhiteAndLegible()
{
    QFETCH(QPalette, palette);
    QFETCH(int, state);

    const Picture seen = paint(QStyle::State(state), palette);

    QCOMPARE(seen.at(area.center()), white);
    const double contrast = contrastOf(white, seen.at(besideText(area)));
    QVERIFY2(contrast >= 4.5, qPrintable(QString::number(contrast)));
}

void GreyButtonTest::everyStateLooksDifferent_data()
{
    addPalettes();
}

void GreyButtonTest::everyStateLooksDifferent()
{
    QFETCH(bool, isDark);
    const QStyle::State enabled = QStyle::State_Enabled;
    const QVector<QStyle::State> states{ enabled, enabled | QStyle::State_MouseOver,
        enabled | QStyle::State_MouseOver | QStyle::State_Sunken, enabled | QStyle::State_HasFocus,
        QStyle::State_None };

    for (int one = 0; one < states.size(); ++one) {
        for (int other = 0; other < one; ++other)
            QVERIFY(paint(states.at(one), controlPalette(isDark)).image()
                != paint(states.at(other), controlPalette(isDark)).image());
    }
}

void GreyButtonTest::focusIsARing()
{
    const QPalette palette = controlPalette(false);

    const Picture seen = paint(QStyle::State_Enabled | QStyle::State_HasFocus, palette);

    QVERIFY(Picture::isNear(seen.at(area.left(), area.center().y()), palette.color(QPalette::Highlight), 1));
    QVERIFY(Picture::isNear(seen.at(area.left() + 2, area.center().y()), white, 1));
}

void GreyButtonTest::disabledTextIsLegible_data()
{
    addPalettes();
}

void GreyButtonTest::disabledTextIsLegible()
{
    QFETCH(bool, isDark);

    const Picture disabled = paint(QStyle::State_None, controlPalette(isDark));
    const Picture enabled = paint(QStyle::State_Enabled, controlPalette(isDark));

    const double contrast = contrastOf(disabled.at(area.center()), disabled.at(besideText(area)));
    QVERIFY2(contrast > 2.0, qPrintable(QString::number(contrast)));
    QVERIFY(contrast < contrastOf(enabled.at(area.center()), enabled.at(besideText(area))));
}

void GreyButtonTest::cornersAreRound()
{
    const Picture seen = paint(QStyle::State_Enabled, controlPalette(false));

    const QColor ground = controlPalette(false).color(QPalette::Window);
    for (const QPoint& corner : { area.topLeft(), area.topRight(), area.bottomLeft(), area.bottomRight() })
        QVERIFY(contrastOf(seen.at(corner), ground) < 1.5);
}

void GreyButtonTest::heightIsThatOfTheOtherControls()
{
    const GreyButton button;

    QCOMPARE(button.sizeHint().height(), qRound(button.fontMetrics().height() * 1.9));
}

QTEST_MAIN(GreyButtonTest)

#include "tst_greybutton.moc"
