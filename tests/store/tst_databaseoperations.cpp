// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/recordwriter.h"
#include "tests/support/messagerecorder.h"
#include "tests/support/storefixture.h"

#include <QSemaphore>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QtTest>

#include <numeric>

using TestSupport::await;
using TestSupport::sampleRecord;
using TestSupport::StoreFixture;

namespace {

using Request = std::function<OperationReply*(Database&)>;

// The eleven operations, each with arguments that suit it.
QVector<QPair<QByteArray, Request>> allRequests()
{
    return {
        { "scan",
            [](Database& store) {
                return store.scan(1, { "/nowhere" }, "rules");
            } },
        { "getRowsCount",
            [](Database& store) {
                return store.getRowsCount(1, {});
            } },
        { "pullMetaData",
            [](Database& store) {
                return store.pullMetaData(1, {});
            } },
        { "pushMetaData",
            [](Database& store) {
                return store.pushMetaData(1, { sampleRecord("/a.wav") });
            } },
        { "deleteMetaData",
            [](Database& store) {
                return store.deleteMetaData(1, { 1 });
            } },
        { "setMetaDataPlaylist",
            [](Database& store) {
                return store.setMetaDataPlaylist(1, { 1 }, 1);
            } },
        { "lookupMetaDataRow",
            [](Database& store) {
                return store.lookupMetaDataRow(1, 1, {});
            } },
        { "evaluateLibraries",
            [](Database& store) {
                return store.evaluateLibraries(1, "rules");
            } },
        { "replace",
            [](Database& store) {
                return store.replace(1, { "title" }, "a", "b", Qt::CaseInsensitive, {});
            } },
        { "clearTable",
            [](Database& store) {
                return store.clearTable(1);
            } },
        { "rebuild",
            [](Database& store) {
                return store.rebuild();
            } },
    };
}

// Stops the store's thread inside a scan until it is let go.
struct Gate
{
    QSemaphore entered;
    QSemaphore released;

    BulkOperations operations()
    {
        BulkOperations bulk;
        bulk.scan = [this](const QSqlDatabase&, OperationReply* reply, int, const QStringList&, const QString&) {
            entered.release();
            released.acquire();
            reply->finish();
        };
        return bulk;
    }
};

} // namespace

class DatabaseOperationsTest : public QObject
{
    Q_OBJECT

private slots:
    void requestOnAClosedStoreFailsAfterTheCall_data();
    void requestOnAClosedStoreFailsAfterTheCall();
    void requestAfterCloseFails_data();
    void requestAfterCloseFails();
    void everyOperationEndsOnAnOpenStore_data();
    void everyOperationEndsOnAnOpenStore();
    void recordsAreWrittenAndRead();
    void operationsFinishInTheOrderRequested();
    void bulkOperationsGetTheirArguments();
    void missingBulkOperationsAreNotAvailable();
    void countWaitsForALongScan();
    void eventLoopRunsDuringALongOperation();
    void namesAreGivenDuringALongOperation();
    void storeNeverDeletesAReply();
    void repliesRequestedBeforeCloseAreAnswered();
    void requestOvertakenByCloseFails();
    void repliesEndWhenTheThreadEndedBeforeTheirTurn();
    void repliesEndWhenTheStoreIsDestroyed();
    void replyMayBeDeletedInsideFinished();
    void unknownTablesGiveTheQuerysError();
};

void DatabaseOperationsTest::requestOnAClosedStoreFailsAfterTheCall_data()
{
    QTest::addColumn<int>("index");

    for (int index = 0; index < allRequests().size(); ++index)
        QTest::newRow(allRequests().at(index).first) << index;
}

void DatabaseOperationsTest::requestOnAClosedStoreFailsAfterTheCall()
{
    QFETCH(int, index);
    StoreFixture store;

    OperationReply* reply = allRequests().at(index).second(store.database());
    QStringList received;
    connect(reply, &OperationReply::error, reply, [&received](const QString& value) { received.append(value); });
    connect(reply, &OperationReply::finished, reply, [&received]() { received.append("finished"); });

    QVERIFY(!reply->parent());
    QVERIFY(received.isEmpty());
    QCOMPARE(await(reply)->errorString(), QStringLiteral("Database is not opened"));
    QCOMPARE(received, QStringList({ "Database is not opened", "finished" }));
}

void DatabaseOperationsTest::requestAfterCloseFails_data()
{
    requestOnAClosedStoreFailsAfterTheCall_data();
}

void DatabaseOperationsTest::requestAfterCloseFails()
{
    QFETCH(int, index);
    StoreFixture store;
    store.open();
    store.database().close();

    const auto reply = await(allRequests().at(index).second(store.database()));

    QCOMPARE(reply->errorString(), QStringLiteral("Database is not opened"));
}

void DatabaseOperationsTest::everyOperationEndsOnAnOpenStore_data()
{
    requestOnAClosedStoreFailsAfterTheCall_data();
}

void DatabaseOperationsTest::everyOperationEndsOnAnOpenStore()
{
    QFETCH(int, index);
    StoreFixture store;
    store.open();

    OperationReply* reply = allRequests().at(index).second(store.database());
    QSignalSpy finished(reply, &OperationReply::finished);
    const auto ended = await(reply);
    QCoreApplication::processEvents();

    QCOMPARE(finished.size(), 1);
    QVERIFY(ended->errorString() != "Database is not opened");
}

void DatabaseOperationsTest::recordsAreWrittenAndRead()
{
    StoreFixture store;
    store.open();
    Database& database = store.database();

    QVERIFY(!await(database.pushMetaData(2, { sampleRecord("/a.wav"), sampleRecord("/b.wav") }))->hasError());
    QVERIFY(!await(database.setMetaDataPlaylist(2, { 2 }, 1))->hasError());

    QCOMPARE(await(database.getRowsCount(2, {}))->result("rowsCount"), QVariant(2));
    QCOMPARE(await(database.getRowsCount(2, { { "playlistOnly", true } }))->result("rowsCount"), QVariant(1));
    QCOMPARE(await(database.lookupMetaDataRow(2, 2, {}))->result("row"), QVariant(1));
    QCOMPARE(store.records(2).at(1).filePath(), QStringLiteral("/b.wav"));
    QVERIFY(!await(database.deleteMetaData(2, { 1 }))->hasError());
    QCOMPARE(store.records(2).size(), 1);
    QVERIFY(!await(database.clearTable(2))->hasError());
    QCOMPARE(store.records(2).size(), 0);
    QVERIFY(!await(database.rebuild())->hasError());
}

void DatabaseOperationsTest::operationsFinishInTheOrderRequested()
{
    StoreFixture store;
    store.open();
    QVector<int> order;
    QVector<OperationReply*> replies;

    for (int number = 0; number < 30; ++number) {
        OperationReply* reply = number % 3 == 0 ? store.database().clearTable(1)
            : number % 3 == 1                   ? store.database().pushMetaData(1, { sampleRecord("/a.wav") })
                                                : store.database().getRowsCount(1, {});
        connect(reply, &OperationReply::finished, this, [&order, number]() { order.append(number); });
        replies.append(reply);
    }

    for (int number = 0; number < 30; ++number) {
        const auto reply = await(replies.at(number));
        if (number % 3 == 2)
            QCOMPARE(reply->result("rowsCount"), QVariant(1));
    }
    QVector<int> expected(30);
    std::iota(expected.begin(), expected.end(), 0);
    QCOMPARE(order, expected);
}

void DatabaseOperationsTest::bulkOperationsGetTheirArguments()
{
    QVector<QVariantList> calls;
    BulkOperations bulk;
    bulk.scan = [&](const QSqlDatabase& connection, OperationReply* reply, int tableId, const QStringList& paths,
                    const QString& rules) {
        calls.append(QVariantList{ connection.isOpen(), tableId, paths, rules });
        reply->finish();
    };
    bulk.evaluateLibraries
        = [&](const QSqlDatabase& connection, OperationReply* reply, int tableId, const QString& rules) {
              calls.append(QVariantList{ connection.isOpen(), tableId, rules });
              reply->finish();
          };
    bulk.replace = [&](const QSqlDatabase& connection, OperationReply* reply, int tableId, const QStringList& fields,
                       const QString& before, const QString& after, Qt::CaseSensitivity caseSensitivity,
                       const QVariantMap& parameters) {
        calls.append(QVariantList{
            connection.isOpen(), tableId, fields, before, after, caseSensitivity == Qt::CaseSensitive, parameters });
        reply->finish();
    };
    StoreFixture store(bulk);
    store.open();

    await(store.database().scan(4, { "/a", "/b" }, "rules"));
    await(store.database().evaluateLibraries(5, "other rules"));
    await(store.database().replace(6, { "title" }, "old", "new", Qt::CaseSensitive, { { "lookup", "x" } }));

    const QVector<QVariantList> expected{ QVariantList{ true, 4, QStringList{ "/a", "/b" }, "rules" },
        QVariantList{ true, 5, "other rules" },
        QVariantList{ true, 6, QStringList{ "title" }, "old", "new", true, QVariantMap{ { "lookup", "x" } } } };
    QCOMPARE(calls, expected);
}

void DatabaseOperationsTest::missingBulkOperationsAreNotAvailable()
{
    StoreFixture store;
    store.open();
    const QString expected = "Operation is not available";

    QCOMPARE(await(store.database().scan(1, {}, {}))->errorString(), expected);
    QCOMPARE(await(store.database().evaluateLibraries(1, {}))->errorString(), expected);
    QCOMPARE(await(store.database().replace(1, {}, {}, {}, Qt::CaseSensitive, {}))->errorString(), expected);
}

void DatabaseOperationsTest::countWaitsForALongScan()
{
    Gate gate;
    StoreFixture store(gate.operations());
    store.open();
    OperationReply* scan = store.database().scan(1, {}, {});
    OperationReply* count = store.database().getRowsCount(1, {});
    bool countIsFinished = false;
    connect(count, &OperationReply::finished, this, [&countIsFinished]() { countIsFinished = true; });
    bool countWasFinishedFirst = true;
    connect(scan, &OperationReply::finished, this, [&]() { countWasFinishedFirst = countIsFinished; });
    gate.entered.acquire();

    gate.released.release();

    const auto finishedScan = await(scan);
    const auto finishedCount = await(count);
    QVERIFY(!countWasFinishedFirst);
    QCOMPARE(finishedCount->result("rowsCount"), QVariant(0));
}

void DatabaseOperationsTest::eventLoopRunsDuringALongOperation()
{
    Gate gate;
    StoreFixture store(gate.operations());
    store.open();
    OperationReply* scan = store.database().scan(1, {}, {});
    gate.entered.acquire();
    int ticks = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, &timer, [&ticks]() { ++ticks; });

    timer.start(1);

    QTRY_VERIFY(ticks > 10);
    QVERIFY(!scan->isFinishedDelivered());
    gate.released.release();
    await(scan);
}

void DatabaseOperationsTest::namesAreGivenDuringALongOperation()
{
    Gate gate;
    StoreFixture store(gate.operations());
    store.open();
    OperationReply* scan = store.database().scan(1, {}, {});
    gate.entered.acquire();

    QCOMPARE(store.database().tableDisplayName(1), QStringLiteral("Table1"));
    QVERIFY(store.database().isOpened());
    OperationReply* count = store.database().getRowsCount(1, {});

    gate.released.release();
    await(scan);
    await(count);
}

void DatabaseOperationsTest::storeNeverDeletesAReply()
{
    auto store = std::make_unique<StoreFixture>();
    store->open();
    const QPointer<OperationReply> reply = store->database().getRowsCount(1, {});
    reply->waitForFinished();

    store.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    QVERIFY(reply);
    delete reply;
}

void DatabaseOperationsTest::repliesRequestedBeforeCloseAreAnswered()
{
    StoreFixture store;
    store.open();
    QVector<OperationReply*> replies;
    for (int number = 0; number < 20; ++number)
        replies.append(store.database().getRowsCount(1, {}));

    store.database().close();

    for (OperationReply* reply : qAsConst(replies)) {
        QVERIFY(reply->isFinishedDelivered());
        QCOMPARE(await(reply)->errorString(), QString());
    }
}

// The store is closed by its own thread between the request and its turn.
void DatabaseOperationsTest::requestOvertakenByCloseFails()
{
    BulkOperations bulk;
    QSemaphore requested;
    Database* database = nullptr;
    bulk.scan = [&](const QSqlDatabase&, OperationReply* reply, int, const QStringList&, const QString&) {
        requested.acquire();
        reply->finish();
        QMetaObject::invokeMethod(
            database, [database]() { database->close(); }, Qt::DirectConnection);
    };
    StoreFixture store(bulk);
    database = &store.database();
    store.open();
    const TestSupport::MessageRecorder recorder;

    OperationReply* scan = store.database().scan(1, {}, {});
    OperationReply* count = store.database().getRowsCount(1, {});
    requested.release();

    QCOMPARE(await(scan)->errorString(), QString());
    QCOMPARE(await(count)->errorString(), QStringLiteral("Database is not opened"));
}

void DatabaseOperationsTest::repliesEndWhenTheThreadEndedBeforeTheirTurn()
{
    Gate gate;
    StoreFixture store(gate.operations());
    store.open();
    OperationReply* scan = store.database().scan(1, {}, {});
    gate.entered.acquire();
    store.thread().quit();
    OperationReply* count = store.database().getRowsCount(1, {});
    gate.released.release();
    store.thread().wait();

    store.database().close();

    QCOMPARE(await(scan)->errorString(), QString());
    QCOMPARE(await(count)->errorString(), QStringLiteral("Database is not opened"));
}

void DatabaseOperationsTest::repliesEndWhenTheStoreIsDestroyed()
{
    const QTemporaryDir folder;
    QThread thread;
    TestSupport::makeEmptyDatabase(folder.filePath("store.dat"));
    auto database = std::make_unique<Database>(folder.filePath("store.dat"));
    database->moveToThread(&thread);
    thread.start();
    QVERIFY(database->open());
    thread.quit();
    thread.wait();
    OperationReply* count = database->getRowsCount(1, {});
    OperationReply* released = database->rebuild();
    delete released;

    database.reset();

    QCOMPARE(await(count)->errorString(), QStringLiteral("Database is not opened"));
}

void DatabaseOperationsTest::replyMayBeDeletedInsideFinished()
{
    constexpr int count = 3000;
    StoreFixture store;
    store.open();
    int finished = 0;

    for (int index = 0; index < count; ++index) {
        OperationReply* reply
            = index % 2 == 0 ? store.database().lookupMetaDataRow(1, 1, {}) : store.database().getRowsCount(16, {});
        connect(reply, &OperationReply::finished, reply, [reply, &finished]() {
            delete reply;
            ++finished;
        });
        if (index % 50 == 0)
            QCoreApplication::processEvents();
    }

    QTRY_COMPARE_WITH_TIMEOUT(finished, count, 60000);
}

void DatabaseOperationsTest::unknownTablesGiveTheQuerysError()
{
    StoreFixture store;
    store.open();
    Database& database = store.database();

    QVERIFY(await(database.getRowsCount(16, {}))->errorString().contains("no such table: MetaData16"));
    QVERIFY(await(database.pullMetaData(0, {}))->errorString().contains("no such table: MetaData0"));
    QVERIFY(await(database.clearTable(-1))->hasError());
    QCOMPARE(await(database.deleteMetaData(99, { 1 }))->errorString(), QStringLiteral("MetaData delete failed"));
    QVERIFY(!await(database.pushMetaData(99, { sampleRecord("/a.wav") }))->hasError());
    QVERIFY(!await(database.getRowsCount(1, {}))->hasError());
}

QTEST_GUILESS_MAIN(DatabaseOperationsTest)

#include "tst_databaseoperations.moc"
