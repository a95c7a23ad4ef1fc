// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/plaintext.h"

#include <QPlainTextEdit>
#include <QtTest>

class PlainTextTest : public QObject
{
    Q_OBJECT

private slots:
    void textIsThatOfTheEditor_data();
    void textIsThatOfTheEditor();
    void lineBegunWithShiftAndReturnIsALine();
};

void PlainTextTest::textIsThatOfTheEditor_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << "";
    QTest::newRow("one line") << "Rain on tin";
    QTest::newRow("lines") << "Rain\non\n\ntin";
    QTest::newRow("line feed at the end") << "Rain\n";
    QTest::newRow("no-break space") << QString("Gare%1: train").arg(QChar(QChar::Nbsp));
}

void PlainTextTest::textIsThatOfTheEditor()
{
    QFETCH(QString, text);
    const QPlainTextEdit editor(text);

    QCOMPARE(plainTextOf(*editor.document()), text);
}

void PlainTextTest::lineBegunWithShiftAndReturnIsALine()
{
    QPlainTextEdit editor;
    QTest::keyClicks(&editor, "A: a");
    QTest::keyClick(&editor, Qt::Key_Return, Qt::ShiftModifier);
    QTest::keyClicks(&editor, "B: b");

    QCOMPARE(plainTextOf(*editor.document()), QString("A: a\nB: b"));
}

QTEST_MAIN(PlainTextTest)
#include "tst_plaintext.moc"
