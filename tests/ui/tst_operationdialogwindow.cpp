// SPDX-License-Identifier: GPL-3.0-or-later
// The dialog's window on a real display: its form, its size, its colours, mouse and keyboard.
#include "operationdialogdriver.h"
#include "tests/ui/controltest.h"

#include <QApplication>
#include <QLayout>
#include <QWindow>

#include <algorithm>
using namespace OperationDialogDriver;

namespace {

QColor ground(const QPlainTextEdit* console)
{
    const QImage image = console->viewport()->grab().toImage();
    return image.pixelColor(image.width() - 3, image.height() / 2);
}

} // namespace

class OperationDialogWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void formHasItsMeasures();
    void firstWarningShowsTheConsoleAndGrowsTheDialog();
    void thousandsOfWarningsKeepTheSize();
    void sizeCannotBeChanged();
    void dialogIsModalAndTakesTheKeyboard();
    void mouseOnTheButtonCancels();
    void warningsAreReadable_data();
    void warningsAreReadable();
};

void OperationDialogWindowTest::formHasItsMeasures()
{
    OperationDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));

    const QWidget* panel = bar(dialog)->parentWidget();
    QVERIFY(panel->width() >= 650);
    QCOMPARE(panel->layout()->contentsMargins(), QMargins(12, 12, 12, 12));
    QCOMPARE(panel->layout()->spacing(), 9);
    QVERIFY(console(dialog)->isHidden());
    QCOMPARE(console(dialog)->minimumHeight(), 120);
    QCOMPARE(console(dialog)->maximumHeight(), 120);
    QVERIFY(console(dialog)->isReadOnly());
    QCOMPARE(console(dialog)->lineWrapMode(), QPlainTextEdit::NoWrap);
    QCOMPARE(console(dialog)->styleSheet(), QString("#warningsConsole\n{\n    color: #800000;\n}"));
    QCOMPARE(dialog.findChild<QLabel*>("elapsedTimeLabel")->alignment(), Qt::AlignRight | Qt::AlignVCenter);
    QCOMPARE(dialog.findChild<QDialogButtonBox*>("buttonBox")->standardButtons(), QDialogButtonBox::Cancel);
}

void OperationDialogWindowTest::firstWarningShowsTheConsoleAndGrowsTheDialog()
{
    OperationDialog dialog;
    OperationReply reply;

    runWhile(dialog, &reply, [&] {
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        const int before = dialog.height();
        reply.addWarning("Unable to open input: /a.wav");
        QTRY_VERIFY(console(dialog)->isVisible());
        QVERIFY(dialog.minimumHeight() >= before + 120);
        QTRY_COMPARE(dialog.size(), dialog.sizeHint());
        reply.addWarnings({ "Unable to open input: /b.wav", "Unable to open input: /c.wav" });
        QTRY_COMPARE(console(dialog)->toPlainText().split('\n').size(), 3);
        reply.cancel();
        reply.setError("Canceled");
    });
}

void OperationDialogWindowTest::thousandsOfWarningsKeepTheSize()
{
    OperationDialog dialog;
    OperationReply reply;
    const QString line = "Unable to open input: /sounds/" + QString(400, 'x') + ".wav";

    runWhile(dialog, &reply, [&] {
        reply.addWarning("first");
        QTRY_VERIFY(console(dialog)->isVisible());
        const QSize size = dialog.minimumSize();
        for (int index = 0; index < 100; ++index)
            reply.addWarnings(QStringList(QVector<QString>(50, line).toList()));
        QTRY_COMPARE(console(dialog)->blockCount(), 5001);
        QTRY_COMPARE(dialog.size(), size);
        QCOMPARE(dialog.sizeHint(), size);
        reply.cancel();
        reply.setError("Canceled");
    });
}

void OperationDialogWindowTest::sizeCannotBeChanged()
{
    OperationDialog dialog;
    OperationReply reply;

    runWhile(dialog, &reply, [&] {
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QCOMPARE(dialog.minimumSize(), dialog.maximumSize());
        QCOMPARE(dialog.size(), dialog.sizeHint());
        reply.finish();
    });
}

void OperationDialogWindowTest::dialogIsModalAndTakesTheKeyboard()
{
    QWidget parent;
    parent.resize(900, 500);
    parent.show();
    QVERIFY(QTest::qWaitForWindowActive(&parent));
    OperationDialog dialog(&parent);
    OperationReply reply;

    runWhile(dialog, &reply, [&] {
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QVERIFY(dialog.isModal());
        QTest::keyClick(dialog.windowHandle(), Qt::Key_Escape);
        QTRY_VERIFY(reply.isCanceled());
        reply.setError("Canceled");
    });
}

void OperationDialogWindowTest::mouseOnTheButtonCancels()
{
    OperationDialog dialog;
    OperationReply reply;

    runWhile(dialog, &reply, [&] {
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        const QPoint point = button(dialog)->mapTo(&dialog, button(dialog)->rect().center());
        QTest::mouseClick(dialog.windowHandle(), Qt::LeftButton, Qt::NoModifier, point);
        QTRY_VERIFY(reply.isCanceled());
        reply.setError("Canceled");
    });
}

void OperationDialogWindowTest::warningsAreReadable_data()
{
    QTest::addColumn<QPalette>("palette");

    QTest::newRow("light") << QApplication::palette();
    QTest::newRow("dark") << TestSupport::controlPalette(true);
}

void OperationDialogWindowTest::warningsAreReadable()
{
    QFETCH(QPalette, palette);
    const QPalette before = QApplication::palette();
    QApplication::setPalette(palette);
    OperationDialog dialog;
    OperationReply reply;

    runWhile(dialog, &reply, [&] {
        reply.addWarning("Unable to open input: /a.wav");
        QTRY_VERIFY(console(dialog)->isVisible());
        QCOMPARE(console(dialog)->palette().color(QPalette::Text), QColor(0x80, 0, 0));
        const QColor paper = ground(console(dialog));
        QVERIFY2(TestSupport::contrastOf(paper, QColor(0x80, 0, 0)) >= 7, qPrintable(paper.name()));
        reply.cancel();
        reply.setError("Canceled");
    });
    QApplication::setPalette(before);
}

QTEST_MAIN(OperationDialogWindowTest)
#include "tst_operationdialogwindow.moc"
