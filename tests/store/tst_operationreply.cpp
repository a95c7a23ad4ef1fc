// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/metatypes.h"
#include "store/operationreply.h"
#include "tests/support/messagerecorder.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QThread>
#include <QtConcurrent>
#include <QtTest>

#include <atomic>
#include <memory>

namespace {

// Writes down the signals of a reply in the order in which they arrive.
class SignalLog : public QObject
{
    Q_OBJECT

public:
    explicit SignalLog(OperationReply& reply)
    {
        connect(&reply, &OperationReply::progress, this,
            [this](int value, int total) { add(QStringLiteral("progress %1 %2").arg(value).arg(total)); });
        connect(&reply, &OperationReply::warnings, this,
            [this](const QStringList& values) { add("warnings " + values.join(',')); });
        connect(&reply, &OperationReply::error, this, [this](const QString& value) { add("error " + value); });
        connect(&reply, &OperationReply::canceled, this, [this]() { add("canceled"); });
        connect(&reply, &OperationReply::finished, this, [this]() { add("finished"); });
    }

    QStringList entries() const { return m_entries; }
    bool ranElsewhere() const { return m_ranElsewhere; }

private:
    void add(const QString& entry)
    {
        m_entries.append(entry);
        m_ranElsewhere = m_ranElsewhere || QThread::currentThread() != thread();
    }

    QStringList m_entries;
    bool m_ranElsewhere = false;
};

void runInWorkerThread(const std::function<void()>& work)
{
    const std::unique_ptr<QThread> worker(QThread::create(work));
    worker->start();
    worker->wait();
}

void callEveryMethod(OperationReply& reply)
{
    reply.setProgress(1, 2);
    reply.addWarnings({ "a", "b" });
    reply.addWarning("c");
    reply.setResult("key", 1);
    reply.cancel();
    reply.result("key");
    reply.errorString();
    reply.hasError();
    reply.hasWarnings();
    reply.warningsCount();
    reply.isCanceled();
    reply.isFinishedDelivered();
    reply.elapsed();
}

} // namespace

class OperationReplyTest : public QObject
{
    Q_OBJECT

private slots:
    void metaObjectListsSignalsAndSlotsInOrder();
    void queuedTypesAreRegisteredByName_data();
    void queuedTypesAreRegisteredByName();
    void newReplyIsRunning();
    void progressArrivesAfterTheCall();
    void signalsOfAWorkerArriveInTheOwnersThread();
    void addWarningsWithEmptyListEmitsNothing();
    void warningsAreNotAccumulatedInTheSignal();
    void errorEndsTheReply();
    void finishEndsTheReplyOnce();
    void firstEndingWins_data();
    void firstEndingWins();
    void cancelDoesNotEndTheReply();
    void cancelAfterTheEndChangesNothing();
    void resultsAreReplacedAndHaveDefaults();
    void signalsArriveInTheOrderOfTheCalls();
    void elapsedStandsStillAfterTheEnd();
    void elapsedRunsOnAfterNotifyFinished();
    void deliveryIsRecordedBeforeAnyReceiverRuns();
    void waitEndsWhenTheReplyEndedBefore();
    void waitReturnsAtOnceAfterDelivery();
    void waitEndsWithAWorkersEnding();
    void waitEndsWhenTheReplyIsDestroyed();
    void waitKeepsTimersRunning();
    void everyMethodMayBeCalledFromTwoThreads();
    void onlyOneOfManyRacingEndingsWins();
    void replyMayBeDeletedInsideItsLastSignalsWhileTheWorkerReports_data();
    void replyMayBeDeletedInsideItsLastSignalsWhileTheWorkerReports();
};

void OperationReplyTest::metaObjectListsSignalsAndSlotsInOrder()
{
    const QMetaObject& metaObject = OperationReply::staticMetaObject;
    QStringList methods;
    for (int index = metaObject.methodOffset(); index < metaObject.methodCount(); ++index) {
        const QMetaMethod method = metaObject.method(index);
        const QString kind = method.methodType() == QMetaMethod::Signal ? "signal " : "slot ";
        methods.append(kind + method.methodSignature() + ' ' + method.parameterNames().join(','));
    }

    const QStringList expected{ "signal progress(int,int) value,total", "signal warnings(QStringList) values",
        "signal error(QString) value", "signal canceled() ", "signal finished() ", "slot cancel() ", "slot finish() " };
    QCOMPARE(methods, expected);
    QCOMPARE(metaObject.propertyCount(), QObject::staticMetaObject.propertyCount());
    QCOMPARE(metaObject.superClass(), &QObject::staticMetaObject);
}

void OperationReplyTest::queuedTypesAreRegisteredByName_data()
{
    QTest::addColumn<QByteArray>("name");

    for (const char* name : { "OperationReply*", "MetaData", "MetaDataList", "Qt::CaseSensitivity" })
        QTest::newRow(name) << QByteArray(name);
}

void OperationReplyTest::queuedTypesAreRegisteredByName()
{
    QFETCH(QByteArray, name);
    const OperationReply reply;

    QVERIFY(QMetaType::type(name) != QMetaType::UnknownType);
}

void OperationReplyTest::newReplyIsRunning()
{
    const OperationReply reply;

    QVERIFY(!reply.hasError());
    QVERIFY(reply.errorString().isEmpty());
    QVERIFY(!reply.hasWarnings());
    QCOMPARE(reply.warningsCount(), 0);
    QVERIFY(!reply.isCanceled());
    QVERIFY(!reply.isFinishedDelivered());
    QVERIFY(!reply.parent());
    const qint64 elapsed = reply.elapsed();
    QTRY_VERIFY(reply.elapsed() > elapsed);
}

void OperationReplyTest::progressArrivesAfterTheCall()
{
    OperationReply reply;
    const SignalLog log(reply);

    reply.setProgress(3, 10);

    QVERIFY(log.entries().isEmpty());
    QTRY_COMPARE(log.entries(), QStringList{ "progress 3 10" });
}

void OperationReplyTest::signalsOfAWorkerArriveInTheOwnersThread()
{
    OperationReply reply;
    SignalLog log(reply);
    connect(
        &reply, &OperationReply::finished, &log, []() {}, Qt::DirectConnection);

    runInWorkerThread([&reply]() {
        reply.setProgress(1, 2);
        reply.finish();
    });

    QVERIFY(log.entries().isEmpty());
    QTRY_COMPARE(log.entries(), QStringList({ "progress 1 2", "finished" }));
    QVERIFY(!log.ranElsewhere());
}

void OperationReplyTest::addWarningsWithEmptyListEmitsNothing()
{
    OperationReply reply;
    const SignalLog log(reply);

    reply.addWarnings({});
    reply.finish();

    QTRY_COMPARE(log.entries(), QStringList{ "finished" });
    QVERIFY(!reply.hasWarnings());
}

void OperationReplyTest::warningsAreNotAccumulatedInTheSignal()
{
    OperationReply reply;
    const SignalLog log(reply);

    reply.addWarnings({ "a", "b" });
    reply.addWarning("c");

    QTRY_COMPARE(log.entries(), QStringList({ "warnings a,b", "warnings c" }));
    QVERIFY(reply.hasWarnings());
    QCOMPARE(reply.warningsCount(), 3);
}

void OperationReplyTest::errorEndsTheReply()
{
    OperationReply reply;
    const SignalLog log(reply);

    reply.setError("x");

    QVERIFY(log.entries().isEmpty());
    QVERIFY(reply.hasError());
    QCOMPARE(reply.errorString(), QStringLiteral("x"));
    QTRY_COMPARE(log.entries(), QStringList({ "error x", "finished" }));
}

void OperationReplyTest::finishEndsTheReplyOnce()
{
    OperationReply reply;
    const SignalLog log(reply);

    reply.finish();

    QVERIFY(log.entries().isEmpty());
    QTRY_COMPARE(log.entries(), QStringList{ "finished" });
    QVERIFY(!reply.hasError());
}

void OperationReplyTest::firstEndingWins_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QStringList>("entries");

    QTest::newRow("finish") << "finish" << QStringList{ "finished" };
    QTest::newRow("error") << "error" << QStringList{ "error first", "finished" };
    QTest::newRow("notification") << "notify" << QStringList{ "finished" };
}

void OperationReplyTest::firstEndingWins()
{
    QFETCH(QString, first);
    QFETCH(QStringList, entries);
    OperationReply reply;
    const SignalLog log(reply);
    if (first == "finish")
        reply.finish();
    else if (first == "error")
        reply.setError("first");
    else
        reply.notifyFinished();
    const QString errorText = reply.errorString();

    reply.finish();
    reply.setError("second");
    reply.notifyFinished();
    reply.finish();

    QTRY_VERIFY(reply.isFinishedDelivered());
    QCoreApplication::processEvents();
    QCOMPARE(log.entries(), entries);
    QCOMPARE(reply.errorString(), errorText);
}

void OperationReplyTest::cancelDoesNotEndTheReply()
{
    OperationReply reply;
    const SignalLog log(reply);

    reply.cancel();

    QVERIFY(log.entries().isEmpty());
    QVERIFY(reply.isCanceled());
    QTRY_COMPARE(log.entries(), QStringList{ "canceled" });
    reply.setError("Canceled");
    QTRY_COMPARE(log.entries(), QStringList({ "canceled", "error Canceled", "finished" }));
}

void OperationReplyTest::cancelAfterTheEndChangesNothing()
{
    OperationReply reply;
    const SignalLog log(reply);
    reply.setResult("rowsCount", 7);
    reply.finish();

    reply.cancel();
    QTRY_VERIFY(reply.isFinishedDelivered());
    reply.cancel();
    QCoreApplication::processEvents();

    QVERIFY(!reply.isCanceled());
    QVERIFY(!reply.hasError());
    QCOMPARE(reply.result("rowsCount").toInt(), 7);
    QCOMPARE(log.entries(), QStringList{ "finished" });
}

void OperationReplyTest::resultsAreReplacedAndHaveDefaults()
{
    OperationReply reply;

    reply.setResult("row", 1);
    reply.setResult("row", 2);

    QCOMPARE(reply.result("row").toInt(), 2);
    QCOMPARE(reply.result("row", 5).toInt(), 2);
    QCOMPARE(reply.result("other", 5).toInt(), 5);
    QVERIFY(!reply.result("other").isValid());
}

void OperationReplyTest::signalsArriveInTheOrderOfTheCalls()
{
    OperationReply reply;
    const SignalLog log(reply);

    runInWorkerThread([&reply]() {
        reply.setProgress(0, -1);
        reply.addWarning("w");
        reply.setProgress(1, 1);
        reply.finish();
    });

    QTRY_COMPARE(log.entries(), QStringList({ "progress 0 -1", "warnings w", "progress 1 1", "finished" }));
}

void OperationReplyTest::elapsedStandsStillAfterTheEnd()
{
    OperationReply reply;
    QTRY_VERIFY(reply.elapsed() > 0);

    reply.finish();
    const qint64 elapsed = reply.elapsed();
    QElapsedTimer timer;
    timer.start();
    QTRY_VERIFY(timer.elapsed() > 5);

    QCOMPARE(reply.elapsed(), elapsed);
}

void OperationReplyTest::elapsedRunsOnAfterNotifyFinished()
{
    OperationReply reply;

    reply.notifyFinished();
    const qint64 elapsed = reply.elapsed();

    QTRY_VERIFY(reply.isFinishedDelivered());
    reply.finish();
    QTRY_VERIFY(reply.elapsed() > elapsed);
}

void OperationReplyTest::deliveryIsRecordedBeforeAnyReceiverRuns()
{
    OperationReply reply;
    bool wasRecorded = false;
    connect(&reply, &OperationReply::finished, this, [&]() { wasRecorded = reply.isFinishedDelivered(); });

    reply.finish();

    QVERIFY(!reply.isFinishedDelivered());
    QTRY_VERIFY(reply.isFinishedDelivered());
    QVERIFY(wasRecorded);
}

void OperationReplyTest::waitEndsWhenTheReplyEndedBefore()
{
    OperationReply reply;
    const SignalLog log(reply);
    reply.finish();

    reply.waitForFinished();

    QCOMPARE(log.entries(), QStringList{ "finished" });
}

void OperationReplyTest::waitReturnsAtOnceAfterDelivery()
{
    OperationReply reply;
    reply.notifyFinished();
    QTRY_VERIFY(reply.isFinishedDelivered());
    bool eventsWereProcessed = false;
    const QObject context;
    QTimer::singleShot(0, &context, [&eventsWereProcessed]() { eventsWereProcessed = true; });

    reply.waitForFinished();

    QVERIFY(!eventsWereProcessed);
}

void OperationReplyTest::waitEndsWithAWorkersEnding()
{
    OperationReply reply;
    const QFuture<void> work = QtConcurrent::run([&reply]() {
        for (int value = 0; value < 100; ++value)
            reply.setProgress(value, 100);
        reply.setResult("row", 12);
        reply.finish();
    });
    QSignalSpy progress(&reply, &OperationReply::progress);

    reply.waitForFinished();

    QCOMPARE(progress.size(), 100);
    QCOMPARE(reply.result("row").toInt(), 12);
}

void OperationReplyTest::waitEndsWhenTheReplyIsDestroyed()
{
    auto* reply = new OperationReply;
    bool isDestroyed = false;
    connect(reply, &QObject::destroyed, this, [&isDestroyed]() { isDestroyed = true; });
    connect(reply, &OperationReply::progress, reply, [reply]() { delete reply; });
    reply->setProgress(1, 1);

    reply->waitForFinished();

    QVERIFY(isDestroyed);
}

void OperationReplyTest::waitKeepsTimersRunning()
{
    OperationReply reply;
    QTimer::singleShot(0, &reply, &OperationReply::finish);

    reply.waitForFinished();

    QVERIFY(reply.isFinishedDelivered());
}

void OperationReplyTest::everyMethodMayBeCalledFromTwoThreads()
{
    constexpr int rounds = 500;
    OperationReply reply;
    QSignalSpy finished(&reply, &OperationReply::finished);
    QSignalSpy warnings(&reply, &OperationReply::warnings);
    const QFuture<void> work = QtConcurrent::run([&reply]() {
        for (int round = 0; round < rounds; ++round)
            callEveryMethod(reply);
        reply.finish();
    });

    for (int round = 0; round < rounds; ++round)
        callEveryMethod(reply);
    reply.setError("late or early");
    QFuture<void>(work).waitForFinished();
    reply.waitForFinished();

    QCOMPARE(finished.size(), 1);
    QCOMPARE(warnings.size(), 4 * rounds);
    QCOMPARE(reply.warningsCount(), 6 * rounds);
}

void OperationReplyTest::onlyOneOfManyRacingEndingsWins()
{
    for (int round = 0; round < 1000; ++round) {
        OperationReply reply;
        const SignalLog log(reply);
        QFuture<void> work = QtConcurrent::run([&reply]() { reply.setError("worker"); });
        reply.setError("owner");
        work.waitForFinished();
        reply.waitForFinished();
        QCoreApplication::processEvents();

        QCOMPARE(log.entries(), QStringList({ "error " + reply.errorString(), "finished" }));
    }
}

// The worker posts these signals while it holds the reply's mutex, hence a busy owner may be quicker than the worker.
void OperationReplyTest::replyMayBeDeletedInsideItsLastSignalsWhileTheWorkerReports_data()
{
    QTest::addColumn<bool>("isDeletedOnError");

    QTest::newRow("finished") << false;
    QTest::newRow("error") << true;
}

void OperationReplyTest::replyMayBeDeletedInsideItsLastSignalsWhileTheWorkerReports()
{
    QFETCH(bool, isDeletedOnError);
    constexpr int count = 20000;
    const TestSupport::MessageRecorder recorder;
    QVector<OperationReply*> replies;
    int deleted = 0;
    for (int index = 0; index < count; ++index) {
        auto* reply = new OperationReply;
        const auto deleteReply = [reply, &deleted]() {
            delete reply;
            ++deleted;
        };
        if (isDeletedOnError)
            connect(reply, &OperationReply::error, reply, deleteReply);
        else
            connect(reply, &OperationReply::finished, reply, deleteReply);
        replies.append(reply);
    }

    QFuture<void> worker = QtConcurrent::run([&replies]() {
        for (OperationReply* reply : qAsConst(replies))
            reply->setError("failed");
    });
    while (deleted < count)
        QCoreApplication::sendPostedEvents();
    worker.waitForFinished();

    QCOMPARE(deleted, count);
    QCOMPARE(recorder.messages(), QStringList());
}

QTEST_GUILESS_MAIN(OperationReplyTest)

#include "tst_operationreply.moc"
