// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/panelwidget.h"

#include "tests/ui/controltest.h"
#include "ui/mutedlabel.h"

#include <QtTest>

using namespace TestSupport;

/// The ground of the controls, and the quiet words on it.
class PanelWidgetTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void groundIsTheWindowsAndClosedByALine_data();
    void groundIsTheWindowsAndClosedByALine();
    void mutedTextIsTakenBackAndLegible_data();
    void mutedTextIsTakenBackAndLegible();
    void disabledMutedTextIsLegible_data();
    void disabledMutedTextIsLegible();
    void mutedTextShowsMarkupAsItIs();
    void longMutedTextIsElided();
};

void PanelWidgetTest::initTestCase()
{
    useFixedFont();
}

void PanelWidgetTest::groundIsTheWindowsAndClosedByALine_data()
{
    addPalettes();
}

void PanelWidgetTest::groundIsTheWindowsAndClosedByALine()
{
    QFETCH(bool, isDark);
    PanelWidget panel;
    panel.setPalette(controlPalette(isDark));
    panel.resize(100, 40);
    const QColor ground = controlPalette(isDark).color(QPalette::Window);

    const Picture seen(panel);

    QCOMPARE(seen.at(50, 0), ground);
    QCOMPARE(seen.at(50, 38), ground);
    QVERIFY(seen.at(50, 39).lightness() < ground.lightness());
}

void PanelWidgetTest::mutedTextIsTakenBackAndLegible_data()
{
    addPalettes();
}

void PanelWidgetTest::mutedTextIsTakenBackAndLegible()
{
    QFETCH(bool, isDark);
    MutedLabel label;
    label.setPalette(controlPalette(isDark));
    label.setText(blockText);
    const QPalette palette = controlPalette(isDark);

    const QColor seen = Picture(label).at(8, label.height() / 2);

    const double contrast = contrastOf(seen, palette.color(QPalette::Window));
    QVERIFY2(contrast >= 4.5, qPrintable(QString::number(contrast)));
    QVERIFY(contrast < contrastOf(palette.color(QPalette::WindowText), palette.color(QPalette::Window)) * 0.8);
}

void PanelWidgetTest::disabledMutedTextIsLegible_data()
{
    addPalettes();
}

void PanelWidgetTest::disabledMutedTextIsLegible()
{
    QFETCH(bool, isDark);
    MutedLabel label;
    label.setPalette(controlPalette(isDark));
    label.setText(blockText);
    const QColor enabled = Picture(label).at(8, label.height() / 2);

    label.setEnabled(false);
    const QColor disabled = Picture(label).at(8, label.height() / 2);

    const QColor ground = controlPalette(isDark).color(QPalette::Window);
    QVERIFY(contrastOf(disabled, ground) > 2.5);
    QVERIFY(contrastOf(disabled, ground) < contrastOf(enabled, ground));
}

void PanelWidgetTest::mutedTextShowsMarkupAsItIs()
{
    MutedLabel marked;
    marked.setText("<b></b>");
    MutedLabel empty;
    empty.resize(marked.sizeHint());
    marked.resize(marked.sizeHint());

    QVERIFY(Picture(marked).image() != Picture(empty).image());
}

void PanelWidgetTest::longMutedTextIsElided()
{
    const QString text = "Found Records: 100000 (99999 selected)";
    MutedLabel label;
    MutedLabel expected;
    label.setText(text);
    expected.setText(label.fontMetrics().elidedText(text, Qt::ElideRight, 120));
    for (MutedLabel* one : { &label, &expected })
        one->resize(120, 20);

    QCOMPARE(Picture(label).image(), Picture(expected).image());
    QVERIFY(expected.text() != text);
}

QTEST_MAIN(PanelWidgetTest)

#include "tst_panelwidget.moc"
