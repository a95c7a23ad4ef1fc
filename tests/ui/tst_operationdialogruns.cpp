// SPDX-License-Identifier: GPL-3.0-or-later
// What happens between the dialog and its replies over several runs, early ends and lost replies.
#include "operationdialogdriver.h"

#include <QSignalSpy>
#include <QThread>

#include <memory>

using namespace OperationDialogDriver;

class OperationDialogRunsTest : public QObject
{
    Q_OBJECT

private slots:
    void elapsedTimeRunsAndStops();
    void everyRunStartsAfresh();
    void replyThatFinishedBeforeEndsTheDialog();
    void failureThatWasToldBeforeIsShown();
    void optionIsShownOnlyWithAText();
    void optionCanBeReadAfterwards();
    void destroyedReplyEndsTheDialog();
    void destroyedReplyDoesNotBlockTheNextRun();
    void noConnectionRemainsAfterwards();
    void endToldLateDoesNotEndTheNextRun();
    void operationOfAWorkerThreadIsFollowed();
};

void OperationDialogRunsTest::elapsedTimeRunsAndStops()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setCloseOnSuccess(false);
    const auto* timer = dialog.findChild<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(timer->interval(), 250);

    runWhile(dialog, &reply, [&] {
        QVERIFY(timer->isActive());
        QVERIFY(elapsedTime(dialog).startsWith("Elapsed Time: 00:00:0"));
        QTRY_VERIFY(elapsedTime(dialog) > "Elapsed Time: 00:00:00");
        reply.finish();
        QTRY_VERIFY(!timer->isActive());
        const QTime last = QTime(0, 0).addMSecs(int(reply.elapsed()));
        QCOMPARE(elapsedTime(dialog), "Elapsed Time: " + last.toString("hh:mm:ss"));
        button(dialog)->click();
    });
}

void OperationDialogRunsTest::everyRunStartsAfresh()
{
    OperationDialog dialog;
    OperationReply first;
    runWhile(dialog, &first, [&] {
        first.addWarning("a");
        first.setError("The disk is full");
        QTRY_COMPARE(status(dialog), QString("Operation failed"));
        button(dialog)->click();
    });
    OperationReply second;

    const int result = runWhile(dialog, &second, [&] {
        QCOMPARE(status(dialog), QString());
        QCOMPARE(console(dialog)->toPlainText(), QString());
        QVERIFY(console(dialog)->isHidden());
        QVERIFY(isBusy(dialog));
        QCOMPARE(button(dialog)->text(), QString("Cancel"));
        QCOMPARE(dialog.size(), dialog.sizeHint());
        second.finish();
    });

    QCOMPARE(result, 1);
}

void OperationDialogRunsTest::replyThatFinishedBeforeEndsTheDialog()
{
    OperationDialog dialog;
    OperationReply reply;
    reply.finish();
    reply.waitForFinished();
    const QSignalSpy endings(&reply, &OperationReply::finished);

    QCOMPARE(runWhile(dialog, &reply, [] {}), 1);
    QCOMPARE(endings.count(), 0);
}

void OperationDialogRunsTest::failureThatWasToldBeforeIsShown()
{
    OperationDialog dialog;
    OperationReply reply;
    reply.setError("Database is not opened");
    reply.waitForFinished();

    const int result = runWhile(dialog, &reply, [&] {
        QTRY_COMPARE(console(dialog)->toPlainText(), QString("Database is not opened"));
        button(dialog)->click();
    });

    QCOMPARE(result, 0);
}

void OperationDialogRunsTest::optionIsShownOnlyWithAText()
{
    OperationDialog dialog;
    const auto* option = dialog.findChild<QCheckBox*>("optionCheckBox");
    QVERIFY(option->isHidden());

    dialog.setOptionText("Open work folder when finished");
    QVERIFY(!option->isHidden());
    QCOMPARE(option->text(), QString("Open work folder when finished"));
    dialog.setOptionText(QString());
    QVERIFY(option->isHidden());
}

void OperationDialogRunsTest::optionCanBeReadAfterwards()
{
    OperationDialog dialog;
    OperationReply reply;
    dialog.setOptionText("Open work folder when finished");
    dialog.setOptionChecked(true);
    QVERIFY(dialog.isOptionChecked());

    runWhile(dialog, &reply, [&] {
        dialog.findChild<QCheckBox*>("optionCheckBox")->click();
        reply.finish();
    });

    QVERIFY(!dialog.isOptionChecked());
}

void OperationDialogRunsTest::destroyedReplyEndsTheDialog()
{
    OperationDialog dialog;
    auto reply = std::make_unique<OperationReply>();

    const int result = runWhile(dialog, reply.get(), [&] {
        reply->setProgress(1, 3);
        reply.reset();
    });

    QCOMPARE(result, 0);
    QVERIFY(!dialog.isVisible());
}

void OperationDialogRunsTest::destroyedReplyDoesNotBlockTheNextRun()
{
    OperationDialog dialog;
    auto first = std::make_unique<OperationReply>();
    runWhile(dialog, first.get(), [&] { first.reset(); });
    OperationReply second;

    const int result = runWhile(dialog, &second, [&] {
        deliver();
        QVERIFY(dialog.isVisible());
        second.finish();
    });

    QCOMPARE(result, 1);
}

void OperationDialogRunsTest::noConnectionRemainsAfterwards()
{
    OperationDialog dialog;
    OperationReply reply;

    runWhile(dialog, &reply, [&] { reply.finish(); });

    QVERIFY(!QObject::disconnect(&reply, nullptr, &dialog, nullptr));
    reply.setProgress(1, 3);
    reply.addWarning("late");
    deliver();
    QCOMPARE(console(dialog)->toPlainText(), QString());
}

void OperationDialogRunsTest::endToldLateDoesNotEndTheNextRun()
{
    OperationDialog dialog;
    OperationReply first;
    first.finish();
    first.waitForFinished();
    // The dialog is closed from outside before it has looked at the reply.
    QMetaObject::invokeMethod(
        &dialog, [&dialog] { dialog.done(0); }, Qt::QueuedConnection);
    dialog.exec(&first);
    OperationReply second;

    const int result = runWhile(dialog, &second, [&] {
        deliver();
        QVERIFY(dialog.isVisible());
        second.setError("The disk is full");
        QTRY_COMPARE(button(dialog)->text(), QString("Finish"));
        button(dialog)->click();
    });

    QCOMPARE(result, 0);
}

void OperationDialogRunsTest::operationOfAWorkerThreadIsFollowed()
{
    constexpr int count = 500;
    OperationDialog dialog;
    OperationReply reply;
    dialog.setProgressFormat("%v of %m");
    const std::unique_ptr<QThread> worker(QThread::create([&reply] {
        reply.setProgress(0, -1);
        for (int value = 0; value <= count; ++value) {
            reply.setProgress(value, count);
            if (value % 100 == 50)
                reply.addWarnings({ "one", "two" });
        }
        reply.finish();
    }));

    const int result = runWhile(dialog, &reply, [&] {
        worker->start();
        QTRY_COMPARE(button(dialog)->text(), QString("Finish"));
        QCOMPARE(status(dialog), QString("500 of 500 (warnings: 10)"));
        QCOMPARE(console(dialog)->blockCount(), 10);
        button(dialog)->click();
    });
    worker->wait();

    QCOMPARE(result, 1);
}

QTEST_MAIN(OperationDialogRunsTest)
#include "tst_operationdialogruns.moc"
