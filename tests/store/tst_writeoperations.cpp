// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/operationreply.h"
#include "store/recordwriter.h"
#include "store/writeoperations.h"
#include "tests/scan/rowhook.h"
#include "tests/store/connectionfixture.h"
#include "tests/support/storefixture.h"

#include <QSignalSpy>
#include <QSqlQuery>
#include <QtTest>

#include <functional>
#include <numeric>

using TestSupport::sampleRecord;

namespace {

// The signals of one operation, and its end.
struct Outcome
{
    QStringList progress;
    QString error;
    int finishedCount = 0;
};

QVariantList idsFrom(int first, int last)
{
    QVariantList ids;
    for (int id = first; id <= last; ++id)
        ids.append(id);
    return ids;
}

using Body = std::function<void(OperationReply*)>;

Outcome run(const Body& body, OperationReply& reply)
{
    Outcome outcome;
    QObject::connect(&reply, &OperationReply::progress, &reply,
        [&outcome](int value, int total) { outcome.progress.append(QStringLiteral("%1/%2").arg(value).arg(total)); });
    QObject::connect(&reply, &OperationReply::finished, &reply, [&outcome]() { ++outcome.finishedCount; });
    body(&reply);
    reply.waitForFinished();
    QCoreApplication::processEvents();
    reply.disconnect(&reply);
    outcome.error = reply.errorString();
    return outcome;
}

Outcome run(const Body& body)
{
    OperationReply reply;
    return run(body, reply);
}

} // namespace

class WriteOperationsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void deleteReportsProgressEachThousand();
    void deleteOfUnknownIdsSucceeds();
    void deleteOfNothingSucceeds();
    void deleteTouchesOnlyItsTable();
    void canceledDeleteLeavesAllRows();
    void deleteCanceledOnTheWayLeavesAllRows();
    void failingDeleteLeavesAllRows();
    void playlistIsMarkedAndCleared();
    void playlistReportsProgressEachThousand();
    void canceledPlaylistLeavesAllRows();
    void failingPlaylistLeavesAllRows();
    void beginFailureIsReported_data();
    void beginFailureIsReported();
    void finalizeFailureIsReportedAndTheNextWriteWorks_data();
    void finalizeFailureIsReportedAndTheNextWriteWorks();
    void writesFailOnALockedFile();
    void pushUpdatesAndInserts();
    void pushOfARefusedRecordEndsWithoutError();
    void clearEmptiesOneTable();
    void clearDoesNotFreeTheIds();
    void clearFailureIsReported();
    void rebuildReportsItsProgress();
    void rebuildAppliesThePageSize();
    void rebuildFailureIsReported();

private:
    // Fills table 1 with this many records, with ids from 1.
    void fill(int count);
    int rowsCount(int tableId = 1) const;
    // Makes every COMMIT of changes to table 1 fail.
    void makeCommitsFail();

    Body deletion(const QVariantList& ids) const;
    Body playlisting(const QVariantList& ids, int value) const;
    // Deletion, or marking for the playlist.
    Body batchWrite(const QString& kind, const QVariantList& ids) const;

    std::unique_ptr<ConnectionFixture> m_fixture;
};

void WriteOperationsTest::init()
{
    m_fixture = std::make_unique<ConnectionFixture>();
}

void WriteOperationsTest::cleanup()
{
    m_fixture.reset();
}

void WriteOperationsTest::fill(int count)
{
    const QString insert = "WITH RECURSIVE numbers(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM numbers WHERE n < %1) "
                           "INSERT INTO MetaData1 (filePath, fileName, fileType, description, duration) "
                           "SELECT '/' || n || '.wav', n || '.wav', 'wav', '', n FROM numbers";
    QCOMPARE(m_fixture->execute(insert.arg(count)), QString());
}

int WriteOperationsTest::rowsCount(int tableId) const
{
    return m_fixture->value("SELECT COUNT(*) FROM MetaData" + QString::number(tableId)).toInt();
}

void WriteOperationsTest::makeCommitsFail()
{
    QCOMPARE(m_fixture->execute("PRAGMA foreign_keys=ON"), QString());
    QCOMPARE(m_fixture->execute("CREATE TABLE parents (id INTEGER PRIMARY KEY)"), QString());
    QCOMPARE(m_fixture->execute("CREATE TABLE children (parent REFERENCES parents (id) DEFERRABLE INITIALLY DEFERRED)"),
        QString());
    for (const char* event : { "DELETE", "UPDATE" }) {
        const QString trigger = "CREATE TRIGGER orphan_%1 AFTER %1 ON MetaData1 BEGIN "
                                "INSERT INTO children VALUES (77); END";
        QCOMPARE(m_fixture->execute(trigger.arg(event)), QString());
    }
}

Body WriteOperationsTest::deletion(const QVariantList& ids) const
{
    return [=](OperationReply* reply) {
        runDeleteMetaData(m_fixture->connection(), reply, 1, ids);
    };
}

Body WriteOperationsTest::playlisting(const QVariantList& ids, int value) const
{
    return [=](OperationReply* reply) {
        runSetMetaDataPlaylist(m_fixture->connection(), reply, 1, ids, value);
    };
}

Body WriteOperationsTest::batchWrite(const QString& kind, const QVariantList& ids) const
{
    return kind == "delete" ? deletion(ids) : playlisting(ids, 1);
}

void WriteOperationsTest::deleteReportsProgressEachThousand()
{
    fill(2600);

    const Outcome outcome = run(deletion(idsFrom(1, 2500)));

    QCOMPARE(outcome.progress, QStringList({ "0/-1", "0/2500", "1000/2500", "2000/2500" }));
    QCOMPARE(outcome.error, QString());
    QCOMPARE(outcome.finishedCount, 1);
    QCOMPARE(rowsCount(), 100);
}

void WriteOperationsTest::deleteOfUnknownIdsSucceeds()
{
    fill(3);

    const Outcome outcome = run(deletion({ 2, 99, 2 }));

    QCOMPARE(outcome.error, QString());
    QCOMPARE(m_fixture->column("SELECT id FROM MetaData1"), QVariantList({ 1, 3 }));
}

void WriteOperationsTest::deleteOfNothingSucceeds()
{
    fill(3);

    const Outcome outcome = run(deletion({}));

    QCOMPARE(outcome.progress, QStringList({ "0/-1", "0/0" }));
    QCOMPARE(outcome.error, QString());
    QCOMPARE(rowsCount(), 3);
}

void WriteOperationsTest::deleteTouchesOnlyItsTable()
{
    fill(3);
    QVERIFY(writeMetaData(m_fixture->connection(), 2, { sampleRecord("/a.wav") }, 0, false).isEmpty());

    run(deletion({ 1 }));

    QCOMPARE(rowsCount(1), 2);
    QCOMPARE(rowsCount(2), 1);
}

void WriteOperationsTest::canceledDeleteLeavesAllRows()
{
    fill(10);
    OperationReply reply;
    reply.cancel();

    const Outcome outcome = run(deletion(idsFrom(1, 10)), reply);

    QCOMPARE(outcome.error, QStringLiteral("Canceled"));
    QCOMPARE(outcome.finishedCount, 1);
    QCOMPARE(outcome.progress, QStringList({ "0/-1", "0/10" }));
    QCOMPARE(rowsCount(), 10);
}

// A worker thread deletes, and is canceled between its reports of progress.
void WriteOperationsTest::deleteCanceledOnTheWayLeavesAllRows()
{
    constexpr int rows = 3000;
    TestSupport::StoreFixture store;
    store.open();
    QCOMPARE(store.execute(QStringLiteral(
                 "WITH RECURSIVE numbers(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM numbers WHERE n < %1) "
                 "INSERT INTO MetaData1 (filePath, fileName, fileType, description) "
                 "SELECT '/' || n || '.wav', n || '.wav', 'wav', '' FROM numbers")
                               .arg(rows)),
        QString());
    std::unique_ptr<OperationReply> finished;
    {
        RowCancellation cancellation(store.database(), 1, 1500);
        finished = TestSupport::await(cancellation.watch(store.database().deleteMetaData(1, idsFrom(1, rows))));
        QCOMPARE(cancellation.count(), 1501);
    }

    QCOMPARE(finished->errorString(), QStringLiteral("Canceled"));
    const auto count = TestSupport::await(store.database().getRowsCount(1, {}));
    QCOMPARE(count->result("rowsCount").toInt(), rows);
}

void WriteOperationsTest::failingDeleteLeavesAllRows()
{
    fill(10);
    QCOMPARE(m_fixture->execute("CREATE TRIGGER guard BEFORE DELETE ON MetaData1 WHEN OLD.id=7 BEGIN "
                                "SELECT RAISE(ABORT, 'kept'); END"),
        QString());

    const Outcome outcome = run(deletion(idsFrom(1, 10)));

    QCOMPARE(outcome.error, QStringLiteral("MetaData delete failed"));
    QCOMPARE(rowsCount(), 10);
    QCOMPARE(run(deletion({ 1 })).error, QString());
    QCOMPARE(rowsCount(), 9);
}

void WriteOperationsTest::playlistIsMarkedAndCleared()
{
    fill(5);

    QCOMPARE(run(playlisting({ 2, 4, 5 }, 1)).error, QString());
    QCOMPARE(m_fixture->column("SELECT id FROM MetaData1 WHERE playlist=1"), QVariantList({ 2, 4, 5 }));

    QCOMPARE(run(playlisting({ 4 }, 0)).error, QString());
    QCOMPARE(m_fixture->column("SELECT id FROM MetaData1 WHERE playlist=1"), QVariantList({ 2, 5 }));
}

void WriteOperationsTest::playlistReportsProgressEachThousand()
{
    fill(2000);

    const Outcome outcome = run(playlisting(idsFrom(1, 2000), 1));

    QCOMPARE(outcome.progress, QStringList({ "0/-1", "0/2000", "1000/2000", "2000/2000" }));
    QCOMPARE(m_fixture->value("SELECT SUM(playlist) FROM MetaData1").toInt(), 2000);
}

void WriteOperationsTest::canceledPlaylistLeavesAllRows()
{
    fill(5);
    OperationReply reply;
    reply.cancel();

    QCOMPARE(run(playlisting({ 1, 2 }, 1), reply).error, QStringLiteral("Canceled"));

    QCOMPARE(m_fixture->value("SELECT SUM(playlist) FROM MetaData1").toInt(), 0);
}

void WriteOperationsTest::failingPlaylistLeavesAllRows()
{
    fill(5);
    QCOMPARE(m_fixture->execute("CREATE TRIGGER guard BEFORE UPDATE ON MetaData1 WHEN OLD.id=3 BEGIN "
                                "SELECT RAISE(ABORT, 'kept'); END"),
        QString());

    QCOMPARE(run(playlisting({ 1, 2, 3, 4 }, 1)).error, QStringLiteral("MetaData playlist update failed"));

    QCOMPARE(m_fixture->value("SELECT SUM(playlist) FROM MetaData1").toInt(), 0);
}

void WriteOperationsTest::beginFailureIsReported_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("frame");

    QTest::newRow("delete") << "delete"
                            << "Unable to begin delete transaction: ";
    QTest::newRow("playlist") << "playlist"
                              << "Unable to begin update transaction: ";
}

void WriteOperationsTest::beginFailureIsReported()
{
    QFETCH(QString, kind);
    QFETCH(QString, frame);
    fill(3);
    QCOMPARE(m_fixture->execute("BEGIN TRANSACTION"), QString());

    const Outcome outcome = run(batchWrite(kind, { 1 }));

    QVERIFY2(outcome.error.startsWith(frame) && outcome.error.size() > frame.size(), qPrintable(outcome.error));
    QCOMPARE(outcome.progress, QStringList{ "0/-1" });
    QCOMPARE(m_fixture->execute("ROLLBACK"), QString());
    QCOMPARE(rowsCount(), 3);
}

void WriteOperationsTest::finalizeFailureIsReportedAndTheNextWriteWorks_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("frame");

    QTest::newRow("delete") << "delete"
                            << "Unable to finalize delete transaction: ";
    QTest::newRow("playlist") << "playlist"
                              << "Unable to finalize update transaction: ";
}

void WriteOperationsTest::finalizeFailureIsReportedAndTheNextWriteWorks()
{
    QFETCH(QString, kind);
    QFETCH(QString, frame);
    fill(3);
    makeCommitsFail();

    const Outcome outcome = run(batchWrite(kind, { 1 }));

    QVERIFY2(outcome.error.startsWith(frame + "FOREIGN KEY"), qPrintable(outcome.error));
    QCOMPARE(outcome.finishedCount, 1);
    QCOMPARE(rowsCount(), 3);
    QCOMPARE(m_fixture->value("SELECT SUM(playlist) FROM MetaData1").toInt(), 0);
    QCOMPARE(m_fixture->execute("DROP TABLE children"), QString());
    QCOMPARE(m_fixture->execute("CREATE TABLE children (parent)"), QString());
    QCOMPARE(run(batchWrite(kind, { 1 })).error, QString());
}

void WriteOperationsTest::writesFailOnALockedFile()
{
    fill(3);
    QCOMPARE(m_fixture->execute("PRAGMA busy_timeout=1"), QString());
    const TestConnection other(m_fixture->filePath());
    QCOMPARE(other.execute("BEGIN EXCLUSIVE TRANSACTION"), QString());

    QCOMPARE(run(deletion({ 1 })).error, QStringLiteral("MetaData delete failed"));
    QCOMPARE(run(playlisting({ 1 }, 1)).error, QStringLiteral("MetaData playlist update failed"));

    QCOMPARE(other.execute("ROLLBACK"), QString());
    QCOMPARE(run(deletion({ 1 })).error, QString());
    QCOMPARE(rowsCount(), 2);
}

void WriteOperationsTest::pushUpdatesAndInserts()
{
    fill(2);
    MetaData changed = sampleRecord("/changed.wav");
    changed.setId(2);
    const MetaDataList items{ changed, sampleRecord("/new.wav") };

    const Outcome outcome
        = run([&](OperationReply* reply) { runPushMetaData(m_fixture->connection(), reply, 1, items); });

    QCOMPARE(outcome.error, QString());
    QCOMPARE(outcome.progress, QStringList());
    QCOMPARE(outcome.finishedCount, 1);
    QCOMPARE(m_fixture->column("SELECT filePath FROM MetaData1 ORDER BY id"),
        QVariantList({ "/1.wav", "/changed.wav", "/new.wav" }));
    QCOMPARE(m_fixture->value("SELECT scanTimestamp FROM MetaData1 WHERE id=3").toInt(), 0);
}

void WriteOperationsTest::pushOfARefusedRecordEndsWithoutError()
{
    fill(2);
    MetaData refused = sampleRecord("/1.wav");
    refused.setId(2);
    OperationReply reply;

    const Outcome outcome
        = run([&](OperationReply*) { runPushMetaData(m_fixture->connection(), &reply, 1, { refused }); }, reply);

    QCOMPARE(outcome.error, QString());
    QCOMPARE(outcome.finishedCount, 1);
    QVERIFY(!reply.hasWarnings());
    QCOMPARE(m_fixture->value("SELECT filePath FROM MetaData1 WHERE id=2").toString(), QStringLiteral("/2.wav"));
    const qint64 elapsed = reply.elapsed();
    QTRY_VERIFY(reply.elapsed() > elapsed);
}

void WriteOperationsTest::clearEmptiesOneTable()
{
    fill(5);
    QVERIFY(writeMetaData(m_fixture->connection(), 2, { sampleRecord("/a.wav") }, 0, false).isEmpty());

    const Outcome outcome = run([&](OperationReply* reply) { runClearTable(m_fixture->connection(), reply, 1); });

    QCOMPARE(outcome.error, QString());
    QCOMPARE(outcome.progress, QStringList());
    QCOMPARE(rowsCount(1), 0);
    QCOMPARE(rowsCount(2), 1);
}

void WriteOperationsTest::clearDoesNotFreeTheIds()
{
    fill(5);

    run([&](OperationReply* reply) { runClearTable(m_fixture->connection(), reply, 1); });
    QVERIFY(writeMetaData(m_fixture->connection(), 1, { sampleRecord("/a.wav") }, 0, false).isEmpty());

    QCOMPARE(m_fixture->value("SELECT id FROM MetaData1").toInt(), 6);
}

void WriteOperationsTest::clearFailureIsReported()
{
    const Outcome outcome = run([&](OperationReply* reply) { runClearTable(m_fixture->connection(), reply, 16); });

    QVERIFY2(outcome.error.startsWith("Unable to clear table: no such table"), qPrintable(outcome.error));
}

void WriteOperationsTest::rebuildReportsItsProgress()
{
    fill(5);

    const Outcome outcome = run([&](OperationReply* reply) { runRebuild(m_fixture->connection(), reply); });

    QCOMPARE(outcome.error, QString());
    QCOMPARE(outcome.progress, QStringList({ "0/-1", "0/1" }));
    QCOMPARE(rowsCount(), 5);
}

void WriteOperationsTest::rebuildAppliesThePageSize()
{
    QCOMPARE(m_fixture->value("PRAGMA page_size").toInt(), 4096);
    QCOMPARE(m_fixture->execute("PRAGMA page_size = 65536"), QString());
    QCOMPARE(m_fixture->value("PRAGMA page_size").toInt(), 4096);

    run([&](OperationReply* reply) { runRebuild(m_fixture->connection(), reply); });

    QCOMPARE(m_fixture->value("PRAGMA page_size").toInt(), 65536);
}

void WriteOperationsTest::rebuildFailureIsReported()
{
    QCOMPARE(m_fixture->execute("BEGIN TRANSACTION"), QString());

    const Outcome outcome = run([&](OperationReply* reply) { runRebuild(m_fixture->connection(), reply); });

    const QString frame = "Unable to rebuild database: ";
    QVERIFY2(outcome.error.startsWith(frame) && outcome.error.size() > frame.size(), qPrintable(outcome.error));
    QCOMPARE(outcome.progress, QStringList{ "0/-1" });
    QCOMPARE(m_fixture->execute("ROLLBACK"), QString());
}

QTEST_GUILESS_MAIN(WriteOperationsTest)

#include "tst_writeoperations.moc"
