// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/evaluateoperation.h"

#include "scan/storeoperations.h"
#include "tests/scan/operationrecorder.h"
#include "tests/scan/rowhook.h"
#include "tests/scan/sidelock.h"
#include "tests/support/storefixture.h"

#include <QtTest>

using TestSupport::await;
using TestSupport::StoreFixture;

namespace {

constexpr int tableId = 2;

MetaData recordOf(const QString& fileName, const QString& library)
{
    MetaData record = TestSupport::sampleRecord(QStringLiteral("/sounds/") + fileName);
    record.setLibrary(library);
    return record;
}

MetaDataList numberedRecords(int count, const QString& library)
{
    MetaDataList records;
    for (int number = 0; number < count; ++number)
        records.append(recordOf(QStringLiteral("take%1.wav").arg(number), library));
    return records;
}

} // namespace

class EvaluateOperationTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void cleanupTestCase();
    void librariesFollowTheRules();
    void otherFieldsStayAsTheyAre();
    void secondRunChangesNothing();
    void progressGoesInTenths_data();
    void progressGoesInTenths();
    void emptyTableIsASuccess();
    void gapsInTheIdsDoNotMatter();
    void canceledRunChangesNothing();
    void missingTableIsReported();
    void beginFailureIsReported();
    void failedUpdateIsReportedAndRolledBack();
    void updateThatCannotBePreparedIsReported();
    void failedCommitIsReportedAndTheNextRunWorks();
    void closedStoreIsReported();

private:
    std::unique_ptr<OperationReply> evaluate(const QString& rules);
    QStringList libraries();

    std::unique_ptr<StoreFixture> m_store;
};

// Making a database takes longer than a test, so all share one.
void EvaluateOperationTest::init()
{
    if (!m_store)
        m_store = std::make_unique<StoreFixture>(scanBulkOperations());
    m_store->openEmpty(tableId);
}

void EvaluateOperationTest::cleanup()
{
    // Ends what a test has left open, which closing does as well.
    m_store->database().close();
}

void EvaluateOperationTest::cleanupTestCase()
{
    m_store.reset();
}

std::unique_ptr<OperationReply> EvaluateOperationTest::evaluate(const QString& rules)
{
    return await(m_store->database().evaluateLibraries(tableId, rules));
}

QStringList EvaluateOperationTest::libraries()
{
    QStringList libraries;
    for (const MetaData& record : m_store->records(tableId))
        libraries.append(record.library());
    return libraries;
}

void EvaluateOperationTest::librariesFollowTheRules()
{
    m_store->insert(tableId,
        { recordOf("BOOM_1.wav", ""), recordOf("boom.wav", "Mine"), recordOf("BOOM_2.wav", "SFX"),
            recordOf("x.wav", "") });

    const auto reply = evaluate(QStringLiteral("SFX: ^BOOM_.*\\.wav$\nInvalid: (\n"));

    QCOMPARE(reply->errorString(), QString());
    // A library that no rule gives any more is cleared.
    QCOMPARE(libraries(), QStringList({ "SFX", "", "SFX", "" }));
    QCOMPARE(reply->result("replacementsCount").toInt(), 2);
}

void EvaluateOperationTest::otherFieldsStayAsTheyAre()
{
    MetaData record = recordOf("a.wav", "Old");
    record.setRating(4.5);
    record.setPlaylist(1);
    m_store->insert(tableId, { record }, 1234);
    QVariantMap expected = m_store->records(tableId).first().toVariantMap();
    expected.insert(QStringLiteral("library"), QStringLiteral("New"));

    evaluate(QStringLiteral("New: a"));

    QCOMPARE(m_store->records(tableId).first().toVariantMap(), expected);
}

void EvaluateOperationTest::secondRunChangesNothing()
{
    m_store->insert(tableId, numberedRecords(120, QStringLiteral("Old")));
    const QString rules = QStringLiteral("Ones: 1\n");
    QCOMPARE(evaluate(rules)->result("replacementsCount").toInt(), 120);

    QCOMPARE(evaluate(rules)->result("replacementsCount").toInt(), 0);
}

void EvaluateOperationTest::progressGoesInTenths_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<QStringList>("progress");
    QTest::newRow("one batch") << 50 << QStringList{ "progress 50 of 50" };
    QTest::newRow("smallest batches") << 120
                                      << QStringList{ "progress 50 of 120", "progress 100 of 120",
                                             "progress 120 of 120" };
    QTest::newRow("tenths") << 1500
                            << QStringList{ "progress 150 of 1500", "progress 300 of 1500", "progress 450 of 1500",
                                   "progress 600 of 1500", "progress 750 of 1500", "progress 900 of 1500",
                                   "progress 1050 of 1500", "progress 1200 of 1500", "progress 1350 of 1500",
                                   "progress 1500 of 1500" };
}

void EvaluateOperationTest::progressGoesInTenths()
{
    QFETCH(int, rows);
    QFETCH(QStringList, progress);
    m_store->insert(tableId, numberedRecords(rows, {}));
    OperationReply* reply = m_store->database().evaluateLibraries(tableId, QStringLiteral("All: take"));
    OperationRecorder recorder(reply);

    await(reply);

    progress.prepend(QStringLiteral("progress 0 of %1").arg(rows));
    progress.prepend(QStringLiteral("progress 0 of -1"));
    QCOMPARE(recorder.events(), progress << "finished");
}

void EvaluateOperationTest::emptyTableIsASuccess()
{
    const auto reply = evaluate(QStringLiteral("All: take"));

    QCOMPARE(reply->errorString(), QString());
    QCOMPARE(reply->result("replacementsCount").toInt(), 0);
}

void EvaluateOperationTest::gapsInTheIdsDoNotMatter()
{
    m_store->insert(tableId, numberedRecords(300, {}));
    QCOMPARE(m_store->execute(QStringLiteral("DELETE FROM MetaData2 WHERE id % 3 <> 0")), QString());

    QCOMPARE(evaluate(QStringLiteral("All: take"))->result("replacementsCount").toInt(), 100);
    QCOMPARE(libraries().count(QStringLiteral("All")), 100);
}

void EvaluateOperationTest::canceledRunChangesNothing()
{
    m_store->insert(tableId, numberedRecords(120, QStringLiteral("Mine")));
    QStringList events;
    {
        // In the second batch.
        RowCancellation cancellation(m_store->database(), tableId, 60);
        OperationReply* reply
            = cancellation.watch(m_store->database().evaluateLibraries(tableId, QStringLiteral("All: take")));
        OperationRecorder recorder(reply);
        await(reply);
        QVERIFY(cancellation.wasHit());
        events = recorder.events();
    }

    QVERIFY(events.contains(QStringLiteral("progress 50 of 120")));
    QVERIFY(!events.contains(QStringLiteral("progress 120 of 120")));
    QCOMPARE(events.mid(events.size() - 2), QStringList({ "error Canceled", "finished" }));
    QCOMPARE(libraries().count(QStringLiteral("Mine")), 120);
}

void EvaluateOperationTest::missingTableIsReported()
{
    const auto reply = await(m_store->database().evaluateLibraries(16, QStringLiteral("All: take")));

    QVERIFY2(
        reply->errorString().startsWith(QLatin1String("Unable to get rows count: ")), qPrintable(reply->errorString()));
}

void EvaluateOperationTest::beginFailureIsReported()
{
    QCOMPARE(m_store->execute(QStringLiteral("BEGIN")), QString());

    const auto reply = evaluate(QStringLiteral("All: take"));

    QVERIFY2(reply->errorString().startsWith(QLatin1String("Unable to begin replace transaction: ")),
        qPrintable(reply->errorString()));
}

void EvaluateOperationTest::failedUpdateIsReportedAndRolledBack()
{
    m_store->insert(tableId, numberedRecords(60, QStringLiteral("Mine")));
    QCOMPARE(m_store->execute(QStringLiteral("CREATE TRIGGER refuse BEFORE UPDATE ON MetaData2 WHEN OLD.id = 55 "
                                             "BEGIN SELECT RAISE(ABORT, 'refused'); END")),
        QString());

    const auto reply = evaluate(QStringLiteral("All: take"));

    QVERIFY2(reply->errorString().startsWith(QLatin1String("Unable to update MetaData: ")),
        qPrintable(reply->errorString()));
    QCOMPARE(libraries().count(QStringLiteral("Mine")), 60);
    QCOMPARE(m_store->execute(QStringLiteral("DROP TRIGGER refuse")), QString());
    QVERIFY(!evaluate(QStringLiteral("All: take"))->hasError());
}

void EvaluateOperationTest::updateThatCannotBePreparedIsReported()
{
    m_store->insert(tableId, numberedRecords(3, QStringLiteral("Mine")));
    QCOMPARE(m_store->execute(QStringLiteral("CREATE TRIGGER lost BEFORE UPDATE OF library ON MetaData2 "
                                             "BEGIN DELETE FROM nowhere; END")),
        QString());

    const auto reply = evaluate(QStringLiteral("All: take"));

    QVERIFY2(reply->errorString().startsWith(QLatin1String("Unable to update MetaData: no such table: main.nowhere")),
        qPrintable(reply->errorString()));
    QCOMPARE(m_store->execute(QStringLiteral("DROP TRIGGER lost")), QString());
    QCOMPARE(libraries().count(QStringLiteral("Mine")), 3);
}

void EvaluateOperationTest::failedCommitIsReportedAndTheNextRunWorks()
{
    m_store->insert(tableId, numberedRecords(3, QStringLiteral("Mine")));
    {
        const SideLock lock(m_store->filePath(), SideLock::Kind::Reading);
        const auto reply = evaluate(QStringLiteral("All: take"));
        QVERIFY2(reply->errorString().startsWith(QLatin1String("Unable to commit replace transaction: ")),
            qPrintable(reply->errorString()));
    }
    QCOMPARE(libraries().count(QStringLiteral("Mine")), 3);

    QVERIFY(!evaluate(QStringLiteral("All: take"))->hasError());

    QCOMPARE(libraries().count(QStringLiteral("All")), 3);
}

void EvaluateOperationTest::closedStoreIsReported()
{
    m_store->database().close();

    QCOMPARE(evaluate(QStringLiteral("All: take"))->errorString(), QStringLiteral("Database is not opened"));
}

QTEST_GUILESS_MAIN(EvaluateOperationTest)
#include "tst_evaluateoperation.moc"
