// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/libraryevaluationrulesdialog.h"

#include "resources/resources.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QFontInfo>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextBlock>
#include <QTextLayout>
#include <QTimer>
#include <QtTest>

namespace {

QPlainTextEdit* editor(const QWidget& dialog)
{
    return dialog.findChild<QPlainTextEdit*>("rulesEdit");
}

QPushButton* button(const QWidget& dialog, QDialogButtonBox::StandardButton which)
{
    return dialog.findChild<QDialogButtonBox*>("buttonBox")->button(which);
}

// The texts of a line that are coloured.
QStringList greenTexts(const QTextBlock& block)
{
    QStringList texts;
    const auto formats = block.layout()->formats();
    for (const QTextLayout::FormatRange& range : formats) {
        if (range.format.foreground().color() == QColor("green"))
            texts.append(block.text().mid(range.start, range.length));
    }
    return texts;
}

int runAndPress(LibraryEvaluationRulesDialog& dialog, QDialogButtonBox::StandardButton which)
{
    QTimer::singleShot(0, &dialog, [&dialog, which] { button(dialog, which)->click(); });
    return dialog.exec();
}

} // namespace

class LibraryEvaluationRulesDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void formHasItsTexts();
    void editorHasAFixedWidthFont();
    void patternsAreGreen_data();
    void patternsAreGreen();
    void resetBringsTheGivenRulesBack();
    void noBreakSpacesStay();
    void lineBegunWithShiftAndReturnIsARuleOfItsOwn();
    void saveAsksForNoEvaluation();
    void saveAllAsksForAnEvaluation();
    void flagIsClearedOnShow();
    void cancelRejects();
    void cursorIsAtTheStart();
    void shippedRulesAreShownWhole();
};

void LibraryEvaluationRulesDialogTest::formHasItsTexts()
{
    const LibraryEvaluationRulesDialog dialog;

    QCOMPARE(dialog.windowTitle(), QString("Library Evaluation Rules"));
    QCOMPARE(editor(dialog)->placeholderText(), QString("<Library Name>: <File Name Regular Expression>"));
    QCOMPARE(button(dialog, QDialogButtonBox::SaveAll)->text(), QString("  Save and (Re)Evaluate Libraries  "));
    for (const auto which : { QDialogButtonBox::Save, QDialogButtonBox::Cancel, QDialogButtonBox::Reset })
        QVERIFY(button(dialog, which));
    const QSize panel = dialog.findChild<QWidget*>("panel")->minimumSize();
    QCOMPARE(panel, QSize(600, 500));
}

void LibraryEvaluationRulesDialogTest::editorHasAFixedWidthFont()
{
    const LibraryEvaluationRulesDialog dialog;

    const QFontInfo font(editor(dialog)->font());
    QVERIFY2(font.fixedPitch(), qPrintable(font.family()));
    QCOMPARE(editor(dialog)->font().pointSizeF(), dialog.font().pointSizeF());
}

void LibraryEvaluationRulesDialogTest::patternsAreGreen_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("green");
    QTest::newRow("rule") << "Rain Works: ^RW_" << QStringList(" ^RW_");
    QTest::newRow("colon in the pattern") << "A: x:y" << QStringList(" x:y");
    QTest::newRow("no colon") << "a remark" << QStringList();
    QTest::newRow("begins with a colon") << ": x" << QStringList();
    QTest::newRow("empty") << "" << QStringList();
    QTest::newRow("empty pattern") << "A:" << QStringList();
}

void LibraryEvaluationRulesDialogTest::patternsAreGreen()
{
    QFETCH(QString, line);
    LibraryEvaluationRulesDialog dialog;

    dialog.setRules("First: 1\n" + line + "\nLast: 2");
    dialog.show();

    QTRY_COMPARE(greenTexts(editor(dialog)->document()->findBlockByNumber(2)), QStringList(" 2"));
    QTEST(greenTexts(editor(dialog)->document()->findBlockByNumber(1)), "green");
}

void LibraryEvaluationRulesDialogTest::resetBringsTheGivenRulesBack()
{
    LibraryEvaluationRulesDialog dialog;
    dialog.setRules("A: 1\r\nB: 2");
    editor(dialog)->setPlainText("something else");

    button(dialog, QDialogButtonBox::Reset)->click();

    QCOMPARE(dialog.rules(), QString("A: 1\nB: 2"));
}

void LibraryEvaluationRulesDialogTest::noBreakSpacesStay()
{
    LibraryEvaluationRulesDialog dialog;
    const QString rules = QString("A%1B: x").arg(QChar(QChar::Nbsp));

    dialog.setRules(rules);

    QCOMPARE(dialog.rules(), rules);
}

void LibraryEvaluationRulesDialogTest::lineBegunWithShiftAndReturnIsARuleOfItsOwn()
{
    const LibraryEvaluationRulesDialog dialog;
    QTest::keyClicks(editor(dialog), "A: a");
    QTest::keyClick(editor(dialog), Qt::Key_Return, Qt::ShiftModifier);
    QTest::keyClicks(editor(dialog), "B: b");

    QCOMPARE(dialog.rules(), QString("A: a\nB: b"));
}

void LibraryEvaluationRulesDialogTest::saveAsksForNoEvaluation()
{
    LibraryEvaluationRulesDialog dialog;

    QCOMPARE(runAndPress(dialog, QDialogButtonBox::Save), int(QDialog::Accepted));
    QVERIFY(!dialog.isEvaluationRequested());
}

void LibraryEvaluationRulesDialogTest::saveAllAsksForAnEvaluation()
{
    LibraryEvaluationRulesDialog dialog;

    QCOMPARE(runAndPress(dialog, QDialogButtonBox::SaveAll), int(QDialog::Accepted));
    QVERIFY(dialog.isEvaluationRequested());
}

void LibraryEvaluationRulesDialogTest::flagIsClearedOnShow()
{
    LibraryEvaluationRulesDialog dialog;
    runAndPress(dialog, QDialogButtonBox::SaveAll);

    QCOMPARE(runAndPress(dialog, QDialogButtonBox::Save), int(QDialog::Accepted));

    QVERIFY(!dialog.isEvaluationRequested());
}

void LibraryEvaluationRulesDialogTest::cancelRejects()
{
    LibraryEvaluationRulesDialog dialog;

    QCOMPARE(runAndPress(dialog, QDialogButtonBox::Cancel), int(QDialog::Rejected));
}

void LibraryEvaluationRulesDialogTest::cursorIsAtTheStart()
{
    LibraryEvaluationRulesDialog dialog;
    dialog.setRules("A: 1\nB: 2");
    editor(dialog)->moveCursor(QTextCursor::End);

    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));

    QVERIFY(editor(dialog)->textCursor().atStart());
    QVERIFY(editor(dialog)->hasFocus());
}

void LibraryEvaluationRulesDialogTest::shippedRulesAreShownWhole()
{
    initialiseResources();
    QFile file(":/Resources/LibraryEvaluationRules.txt");
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString rules = QString::fromUtf8(file.readAll()).remove("\r");
    LibraryEvaluationRulesDialog dialog;

    dialog.setRules(rules);

    QCOMPARE(dialog.rules(), rules);
}

QTEST_MAIN(LibraryEvaluationRulesDialogTest)
#include "tst_libraryevaluationrulesdialog.moc"
