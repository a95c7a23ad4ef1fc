// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/lightground.h"

#include "tests/ui/controltest.h"

#include <QPlainTextEdit>
#include <QtTest>

class LightGroundTest : public QObject
{
    Q_OBJECT

private slots:
    void lightPaletteStaysAsItIs();
    void darkPaletteGetsALightGround();
};

void LightGroundTest::lightPaletteStaysAsItIs()
{
    QPlainTextEdit editor;
    QPalette light(QColor(240, 240, 240));
    light.setColor(QPalette::Base, QColor(255, 255, 250));
    editor.setPalette(light);

    giveLightGround(&editor);

    QCOMPARE(editor.palette().color(QPalette::Base), light.color(QPalette::Base));
    QCOMPARE(editor.palette().color(QPalette::Text), light.color(QPalette::Text));
}

void LightGroundTest::darkPaletteGetsALightGround()
{
    QPlainTextEdit editor;
    editor.setPalette(TestSupport::controlPalette(true));

    giveLightGround(&editor);

    const QColor ground = editor.palette().color(QPalette::Base);
    for (const QColor& text : { editor.palette().color(QPalette::Text), QColor("green"), QColor(0x80, 0, 0) })
        QVERIFY2(TestSupport::contrastOf(ground, text) >= 4.5,
            qPrintable(text.name() + QStringLiteral(" on ") + ground.name()));
}

QTEST_MAIN(LightGroundTest)
#include "tst_lightground.moc"
