// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/storeoperations.h"
#include "store/database.h"
#include "store/operationreply.h"
#include "tests/scan/rowhook.h"
#include "tests/support/storefixture.h"

#include <QtTest>

#include <functional>
#include <memory>

// Every operation that changes many records, stopped at each of its records in turn: by a statement that fails, and by
// a cancellation. All of its changes are then undone, and the next operation finds no transaction left open.

namespace {

constexpr int tableId = 3;
constexpr int rowsCount = 120;

// Nothing here is about what survives a crash.
const QString withoutWaiting = QStringLiteral("PRAGMA synchronous=OFF");

using TestSupport::await;
using Start = std::function<OperationReply*(Database&)>;

QVariantList allIds()
{
    QVariantList ids;
    for (int id = 1; id <= rowsCount; ++id)
        ids.append(id);
    return ids;
}

OperationReply* startDelete(Database& database)
{
    return database.deleteMetaData(tableId, allIds());
}

OperationReply* startPlaylist(Database& database)
{
    return database.setMetaDataPlaylist(tableId, allIds(), 1);
}

OperationReply* startEvaluation(Database& database)
{
    return database.evaluateLibraries(tableId, QStringLiteral("All: take"));
}

OperationReply* startReplacement(Database& database)
{
    return database.replace(tableId, { "description" }, "rain", "hail", Qt::CaseSensitive, {});
}

QVector<QVariantMap> mapsOf(const MetaDataList& records)
{
    QVector<QVariantMap> maps;
    for (const MetaData& record : records)
        maps.append(record.toVariantMap());
    return maps;
}

} // namespace

Q_DECLARE_METATYPE(Start)

class WriteFaultsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void cleanupTestCase();
    void failureAtEveryRowUndoesAll_data();
    void failureAtEveryRowUndoesAll();
    void cancellationAtEveryRowUndoesAll_data();
    void cancellationAtEveryRowUndoesAll();
    void replacementRefusedAtEveryRowKeepsThatRowAlone();
    void failedPushOfOneRecordLosesNoOther();
    void failureAtEveryRowOfAClearKeepsAll();

private:
    void addOperations();
    void expectUntouched();

    std::unique_ptr<TestSupport::StoreFixture> m_store;
    QVector<QVariantMap> m_before;
};

void WriteFaultsTest::initTestCase()
{
    m_store = std::make_unique<TestSupport::StoreFixture>(scanBulkOperations());
    m_store->open();
    QCOMPARE(m_store->execute(withoutWaiting), QString());
    MetaDataList records;
    for (int number = 1; number <= rowsCount; ++number) {
        MetaData record = TestSupport::sampleRecord(QStringLiteral("/sounds/take %1.wav").arg(number));
        record.setDescription(QStringLiteral("rain %1").arg(number));
        record.setLibrary(QStringLiteral("Mine"));
        record.setRating(number % 100);
        records.append(record);
    }
    m_store->insert(tableId, records, 7);
    m_before = mapsOf(m_store->records(tableId));
}

// Each test leaves the records as they were.
void WriteFaultsTest::cleanup()
{
    QCOMPARE(mapsOf(m_store->records(tableId)), m_before);
}

void WriteFaultsTest::cleanupTestCase()
{
    m_store.reset();
}

// An open transaction would swallow the next write, or refuse to begin.
void WriteFaultsTest::expectUntouched()
{
    QCOMPARE(mapsOf(m_store->records(tableId)), m_before);
    const auto next = await(m_store->database().setMetaDataPlaylist(tableId, {}, 1));
    QCOMPARE(next->errorString(), QString());
}

void WriteFaultsTest::addOperations()
{
    QTest::addColumn<Start>("start");
    QTest::addColumn<QString>("failure");

    QTest::newRow("delete") << Start(startDelete) << "MetaData delete failed";
    QTest::newRow("playlist") << Start(startPlaylist) << "MetaData playlist update failed";
    QTest::newRow("evaluation") << Start(startEvaluation) << "Unable to update MetaData: injected";
}

void WriteFaultsTest::failureAtEveryRowUndoesAll_data()
{
    addOperations();
}

void WriteFaultsTest::failureAtEveryRowUndoesAll()
{
    QFETCH(Start, start);
    QFETCH(QString, failure);
    for (int row = 0; row < rowsCount; ++row) {
        const RowHook hook(m_store->database(), tableId, row);
        const auto reply = await(start(m_store->database()));
        QVERIFY(hook.wasHit());
        QVERIFY2(reply->errorString().startsWith(failure), qPrintable(reply->errorString()));
        if (row % 10 == 0 || row == rowsCount - 1)
            expectUntouched();
        QCOMPARE(hook.count(), row + 1);
    }
}

void WriteFaultsTest::cancellationAtEveryRowUndoesAll_data()
{
    addOperations();
    QTest::newRow("replacement") << Start(startReplacement) << "";
}

void WriteFaultsTest::cancellationAtEveryRowUndoesAll()
{
    QFETCH(Start, start);
    for (int row = 0; row < rowsCount; ++row) {
        RowCancellation cancellation(m_store->database(), tableId, row);
        const auto reply = await(cancellation.watch(start(m_store->database())));
        QVERIFY(cancellation.wasHit());
        QCOMPARE(reply->errorString(), QStringLiteral("Canceled"));
        if (row % 10 == 0 || row == rowsCount - 1)
            expectUntouched();
    }
}

void WriteFaultsTest::replacementRefusedAtEveryRowKeepsThatRowAlone()
{
    for (int row = 0; row < rowsCount; row += 7) {
        const RowHook hook(m_store->database(), tableId, row);
        const auto reply = await(startReplacement(m_store->database()));
        QCOMPARE(reply->errorString(), QString());
        QCOMPARE(reply->warningsCount(), 1);
        QCOMPARE(reply->result(QStringLiteral("replacementsCount")).toInt(), rowsCount);
        const MetaDataList records = m_store->records(tableId);
        for (int index = 0; index < records.size(); ++index) {
            const QString word = index == row ? QStringLiteral("rain %1") : QStringLiteral("hail %1");
            QCOMPARE(records.at(index).description(), word.arg(index + 1));
        }
        const auto back
            = await(m_store->database().replace(tableId, { "description" }, "hail", "rain", Qt::CaseSensitive, {}));
        QCOMPARE(back->result(QStringLiteral("replacementsCount")).toInt(), rowsCount - 1);
    }
}

void WriteFaultsTest::failedPushOfOneRecordLosesNoOther()
{
    MetaDataList before = m_store->records(tableId);
    before.erase(before.begin() + 5, before.end());
    MetaDataList changed = before;
    for (MetaData& record : changed)
        record.setRating(55.5);
    for (int row = 0; row < changed.size(); ++row) {
        {
            const RowHook hook(m_store->database(), tableId, row);
            const auto reply = await(m_store->database().pushMetaData(tableId, changed));
            QCOMPARE(reply->errorString(), QString());
        }
        const MetaDataList after = m_store->records(tableId);
        for (int index = 0; index < changed.size(); ++index)
            QCOMPARE(after.at(index).rating(), index == row ? before.at(index).rating() : 55.5);
        await(m_store->database().pushMetaData(tableId, before));
    }
}

void WriteFaultsTest::failureAtEveryRowOfAClearKeepsAll()
{
    for (int row = 0; row < rowsCount; row += 7) {
        const RowHook hook(m_store->database(), tableId, row);
        const auto reply = await(m_store->database().clearTable(tableId));
        QVERIFY2(reply->errorString().startsWith(QLatin1String("Unable to clear table: injected")),
            qPrintable(reply->errorString()));
        expectUntouched();
    }
}

QTEST_GUILESS_MAIN(WriteFaultsTest)
#include "tst_writefaults.moc"
