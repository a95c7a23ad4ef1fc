// SPDX-License-Identifier: GPL-3.0-or-later
#include "operationdialogdriver.h"

using namespace OperationDialogDriver;

class OperationDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void successReturnsOne();
    void failureReturnsZeroAndStaysOpen();
    void failureWithACloseOnSuccessDialogStaysOpen();
    void unknownTotalShowsTheWaitText();
    void waitTextIsThePreparingTextUnlessSet();
    void totalOfZeroLeavesTheBarBusy();
    void progressFillsTheBarAndTheStatusLine();
    void formatIsFilledIn_data();
    void formatIsFilledIn();
    void warningsAreCountedInTheStatusLine();
    void cancelWaitsForTheEndOfTheOperation();
    void progressAfterCancelDoesNotMoveTheBusyBar();
    void progressAfterCancelMovesTheBarWhenItStaysUseful();
    void cancelWhileTheTotalIsUnknownWorks();
    void canceledOperationWithoutErrorReturnsOne();
    void canceledOperationClosesDespiteWarnings();
    void successWithWarningsStaysOpen();
    void successStaysOpenWhenClosingIsNotWanted();
    void finalTextIsShownAfterASuccess();
    void lastStatusLineStaysWithoutAFinalText();
    void escapeActsLikeTheButton();
    void closingTheWindowActsLikeTheButton();
    void operationThatCannotBeCanceledIgnoresEveryWayOut();
    void operationThatCannotBeCanceledStillFinishes();
    void markupInTextsIsShownAsItIs();
    void firstStatusLineDoesNotChangeTheSize();
};

void OperationDialogTest::successReturnsOne()
{
    OperationDialog dialog;
    OperationReply reply;

    const int result = runWhile(dialog, &reply, [&] { reply.finish(); });

    QCOMPARE(result, 1);
    QVERIFY(!dialog.isVisible());
}

void OperationDialogTest::failureReturnsZeroAndStaysOpen()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setCloseOnSuccess(false);

    const int result = runWhile(dialog, &reply, [&] {
        reply.setError("The disk is full");
        QTRY_COMPARE(button(dialog)->text(), QString("Finish"));
        QVERIFY(dialog.isVisible());
        QVERIFY(button(dialog)->isEnabled());
        QCOMPARE(status(dialog), QString("Operation failed"));
        QVERIFY(console(dialog)->isVisible());
        QCOMPARE(console(dialog)->toPlainText(), QString("The disk is full"));
        QCOMPARE(bar(dialog)->value(), 1);
        QCOMPARE(bar(dialog)->maximum(), 1);
        button(dialog)->click();
    });

    QCOMPARE(result, 0);
}

void OperationDialogTest::failureWithACloseOnSuccessDialogStaysOpen()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setFinalText("Done");

    const int result = runWhile(dialog, &reply, [&] {
        reply.addWarning("first.wav");
        reply.setError("The disk is full");
        QTRY_COMPARE(status(dialog), QString("Operation failed"));
        QCOMPARE(console(dialog)->toPlainText(), QString("first.wav\nThe disk is full"));
        QVERIFY(dialog.isVisible());
        button(dialog)->click();
    });

    QCOMPARE(result, 0);
}

void OperationDialogTest::unknownTotalShowsTheWaitText()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setWaitText("Looking for files...");
    dialog.setProgressFormat("Files scanned: %v of %m");

    runWhile(dialog, &reply, [&] {
        reply.setProgress(5, 10);
        QTRY_COMPARE(bar(dialog)->maximum(), 10);
        reply.setProgress(0, -1);
        QTRY_COMPARE(status(dialog), QString("Looking for files..."));
        QVERIFY(isBusy(dialog));
        reply.finish();
    });
}

void OperationDialogTest::waitTextIsThePreparingTextUnlessSet()
{
    OperationDialog dialog;
    OperationReply reply;

    runWhile(dialog, &reply, [&] {
        QCOMPARE(status(dialog), QString());
        QVERIFY(isBusy(dialog));
        reply.setProgress(0, -1);
        QTRY_COMPARE(status(dialog), QString("Preparing..."));
        reply.finish();
    });
}

void OperationDialogTest::totalOfZeroLeavesTheBarBusy()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setProgressFormat("Rows: %v of %m (%p)");

    runWhile(dialog, &reply, [&] {
        reply.setProgress(0, 0);
        QTRY_COMPARE(status(dialog), QString("Rows: 0 of 0 (0)"));
        QVERIFY(isBusy(dialog));
        reply.finish();
    });
}

void OperationDialogTest::progressFillsTheBarAndTheStatusLine()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setProgressFormat("Files scanned: %v of %m");

    runWhile(dialog, &reply, [&] {
        reply.setProgress(40, 41);
        QTRY_COMPARE(status(dialog), QString("Files scanned: 40 of 41"));
        QCOMPARE(bar(dialog)->maximum(), 41);
        QCOMPARE(bar(dialog)->value(), 40);
        QVERIFY(!bar(dialog)->isTextVisible());
        reply.finish();
    });
}

void OperationDialogTest::formatIsFilledIn_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("total");
    QTest::addColumn<QString>("line");

    QTest::newRow("numbers") << "%v of %m" << 3 << 10 << "3 of 10";
    QTest::newRow("quotient stays 0") << "Part %p" << 3 << 10 << "Part 0";
    QTest::newRow("quotient just before the end") << "Part %p" << 9 << 10 << "Part 0";
    QTest::newRow("quotient reaches 1") << "Part %p" << 10 << 10 << "Part 1";
    QTest::newRow("bytes") << "%sv of %sm" << 512 << 2048 << "512 B of 2.00 KB";
    QTest::newRow("larger units") << "%sv of %sm" << 1572864 << 1610612736 << "1.50 MB of 1.50 GB";
    QTest::newRow("one below a step") << "%sv of %sm" << 1023 << 1024 << "1023 B of 1.00 KB";
    QTest::newRow("every place") << "%v %m %p %sv %sm %v" << 2 << 4 << "2 4 0 2 B 4 B 2";
    QTest::newRow("case counts") << "%V %M %P %SV %v" << 2 << 4 << "%V %M %P %SV 2";
    QTest::newRow("other percent signs") << "100% %x %1 %v" << 2 << 4 << "100% %x %1 2";
    QTest::newRow("no place") << "Working" << 2 << 4 << "Working";
    QTest::newRow("empty") << QString() << 2 << 4 << QString();
}

void OperationDialogTest::formatIsFilledIn()
{
    QFETCH(QString, format);
    QFETCH(int, value);
    QFETCH(int, total);
    QFETCH(QString, line);
    OperationDialog dialog;
    OperationReply reply;
    dialog.setProgressFormat(format);

    runWhile(dialog, &reply, [&] {
        reply.setProgress(value, total);
        QTRY_COMPARE(bar(dialog)->maximum(), total);
        QCOMPARE(status(dialog), line);
        reply.finish();
    });
}

void OperationDialogTest::warningsAreCountedInTheStatusLine()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setProgressFormat("%v of %m");

    runWhile(dialog, &reply, [&] {
        reply.addWarnings({ "a", "b" });
        reply.setProgress(1, 3);
        QTRY_COMPARE(status(dialog), QString("1 of 3 (warnings: 2)"));
        reply.addWarning("c");
        reply.setProgress(2, 3);
        QTRY_COMPARE(status(dialog), QString("2 of 3 (warnings: 3)"));
        reply.finish();
        QTRY_COMPARE(button(dialog)->text(), QString("Finish"));
        button(dialog)->click();
    });
}

void OperationDialogTest::cancelWaitsForTheEndOfTheOperation()
{
    OperationDialog dialog;
    OperationReply reply;

    const int result = runWhile(dialog, &reply, [&] {
        reply.setProgress(1, 3);
        QTRY_COMPARE(bar(dialog)->value(), 1);
        button(dialog)->click();
        QVERIFY(reply.isCanceled());
        QCOMPARE(status(dialog), QString("Canceling..."));
        QVERIFY(isBusy(dialog));
        deliver();
        QVERIFY(dialog.isVisible());
        reply.setError("Canceled");
    });

    QCOMPARE(result, 0);
}

void OperationDialogTest::progressAfterCancelDoesNotMoveTheBusyBar()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setProgressFormat("%v of %m");

    runWhile(dialog, &reply, [&] {
        button(dialog)->click();
        reply.setProgress(2, 3);
        reply.setProgress(0, -1);
        deliver();
        QVERIFY(isBusy(dialog));
        QCOMPARE(status(dialog), QString("Canceling..."));
        reply.setError("Canceled");
    });
}

void OperationDialogTest::progressAfterCancelMovesTheBarWhenItStaysUseful()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setProgressFormat("%v of %m");
    dialog.setBusyOnCancel(false);

    runWhile(dialog, &reply, [&] {
        reply.setProgress(1, 3);
        QTRY_COMPARE(bar(dialog)->value(), 1);
        button(dialog)->click();
        QVERIFY(!isBusy(dialog));
        reply.setProgress(2, 3);
        QTRY_COMPARE(bar(dialog)->value(), 2);
        QCOMPARE(status(dialog), QString("Canceling..."));
        reply.setError("Canceled");
    });
}

void OperationDialogTest::cancelWhileTheTotalIsUnknownWorks()
{
    OperationDialog dialog;
    OperationReply reply;

    runWhile(dialog, &reply, [&] {
        reply.setProgress(0, -1);
        QTRY_COMPARE(status(dialog), QString("Preparing..."));
        button(dialog)->click();
        QVERIFY(reply.isCanceled());
        QCOMPARE(status(dialog), QString("Canceling..."));
        reply.setError("Canceled");
    });

    QVERIFY(!dialog.isVisible());
}

void OperationDialogTest::canceledOperationWithoutErrorReturnsOne()
{
    OperationDialog dialog;
    OperationReply reply;

    const int result = runWhile(dialog, &reply, [&] {
        button(dialog)->click();
        reply.finish();
    });

    QCOMPARE(result, 1);
}

void OperationDialogTest::canceledOperationClosesDespiteWarnings()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setCloseOnSuccess(false);

    // An operation may also cancel itself, for example when it finds nothing to do.
    const int result = runWhile(dialog, &reply, [&] {
        reply.addWarning("a");
        reply.cancel();
        reply.setError("Canceled");
    });

    QCOMPARE(result, 0);
}

void OperationDialogTest::successWithWarningsStaysOpen()
{
    OperationDialog dialog;
    OperationReply reply;

    const int result = runWhile(dialog, &reply, [&] {
        reply.addWarning("Unable to open input: /a.wav");
        reply.finish();
        QTRY_COMPARE(button(dialog)->text(), QString("Finish"));
        deliver();
        QVERIFY(dialog.isVisible());
        QCOMPARE(console(dialog)->toPlainText(), QString("Unable to open input: /a.wav"));
        button(dialog)->click();
    });

    QCOMPARE(result, 1);
}

void OperationDialogTest::successStaysOpenWhenClosingIsNotWanted()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setCloseOnSuccess(false);

    const int result = runWhile(dialog, &reply, [&] {
        reply.finish();
        QTRY_COMPARE(button(dialog)->text(), QString("Finish"));
        deliver();
        QVERIFY(dialog.isVisible());
        QVERIFY(console(dialog)->isHidden());
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });

    QCOMPARE(result, 1);
}

void OperationDialogTest::finalTextIsShownAfterASuccess()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setCloseOnSuccess(false);
    dialog.setFinalText("Database rebuild complete");

    runWhile(dialog, &reply, [&] {
        reply.finish();
        QTRY_COMPARE(status(dialog), QString("Database rebuild complete"));
        button(dialog)->click();
    });
}

void OperationDialogTest::lastStatusLineStaysWithoutAFinalText()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setCloseOnSuccess(false);
    dialog.setProgressFormat("%v of %m");

    runWhile(dialog, &reply, [&] {
        reply.setProgress(3, 3);
        reply.finish();
        QTRY_COMPARE(button(dialog)->text(), QString("Finish"));
        QCOMPARE(status(dialog), QString("3 of 3"));
        button(dialog)->click();
    });
}

void OperationDialogTest::escapeActsLikeTheButton()
{
    OperationDialog dialog;
    OperationReply reply;

    runWhile(dialog, &reply, [&] {
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(reply.isCanceled());
        QVERIFY(dialog.isVisible());
        reply.setError("Canceled");
    });
}

void OperationDialogTest::closingTheWindowActsLikeTheButton()
{
    OperationDialog dialog;
    OperationReply reply;

    runWhile(dialog, &reply, [&] {
        QVERIFY(!dialog.close());
        QVERIFY(reply.isCanceled());
        QVERIFY(dialog.isVisible());
        reply.setError("Canceled");
    });
}

void OperationDialogTest::operationThatCannotBeCanceledIgnoresEveryWayOut()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setCancelEnabled(false);

    runWhile(dialog, &reply, [&] {
        QVERIFY(!button(dialog)->isEnabled());
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(!dialog.close());
        QTest::mouseClick(button(dialog), Qt::LeftButton);
        deliver();
        QVERIFY(!reply.isCanceled());
        QVERIFY(dialog.isVisible());
        QCOMPARE(status(dialog), QString());
        reply.finish();
    });
}

void OperationDialogTest::operationThatCannotBeCanceledStillFinishes()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setCancelEnabled(false);
    dialog.setCloseOnSuccess(false);

    const int result = runWhile(dialog, &reply, [&] {
        reply.finish();
        QTRY_VERIFY(button(dialog)->isEnabled());
        QCOMPARE(button(dialog)->text(), QString("Finish"));
        QVERIFY(dialog.close());
    });

    QCOMPARE(result, 1);
}

void OperationDialogTest::markupInTextsIsShownAsItIs()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setProgressFormat("<b>%v</b>");

    runWhile(dialog, &reply, [&] {
        reply.setProgress(1, 3);
        QTRY_COMPARE(status(dialog), QString("<b>1</b>"));
        reply.addWarning("<i>a.wav</i>");
        QTRY_COMPARE(console(dialog)->toPlainText(), QString("<i>a.wav</i>"));
        QCOMPARE(dialog.findChild<QLabel*>("statusLabel")->textFormat(), Qt::PlainText);
        reply.setError("Canceled");
        QTRY_COMPARE(button(dialog)->text(), QString("Finish"));
        button(dialog)->click();
    });
}

void OperationDialogTest::firstStatusLineDoesNotChangeTheSize()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setProgressFormat("Files scanned: %v of %m");

    runWhile(dialog, &reply, [&] {
        const QSize size = dialog.size();
        reply.setProgress(5, 10);
        QTRY_COMPARE(status(dialog), QString("Files scanned: 5 of 10"));
        QCoreApplication::processEvents();
        // Its layout asks for another size before the dialog takes it.
        QCOMPARE(dialog.sizeHint(), size);
        QCOMPARE(dialog.size(), size);
        reply.finish();
    });
}

QTEST_MAIN(OperationDialogTest)
#include "tst_operationdialog.moc"
