// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/storeoperations.h"
#include "tests/scan/operationrecorder.h"
#include "tests/scan/rowhook.h"
#include "tests/scan/soundfiles.h"
#include "tests/support/storefixture.h"
#include "tests/support/testsupport.h"

#include <QDateTime>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QtTest>

using TestSupport::await;
using TestSupport::StoreFixture;

namespace {

constexpr int tableId = 3;
// So many that the indexes of the time stamp are made anew.
constexpr int soundsCount = 1200;

} // namespace

/// Scans of files whose rows are there already.
class RescanTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void manyUnchangedRowsGetTheTimestamp();
    void cancelWhileRowsGetTheTimestampLeavesTheTableAsItWas();
    void rowThatIsRefusedTheTimestampGivesAWarning();

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }
    std::unique_ptr<OperationReply> scan() { return await(m_store->database().scan(tableId, { path("sounds") }, {})); }
    void scanFirst(int count);
    QString check() const
    {
        return TestSupport::firstValue(m_store->filePath(), QStringLiteral("PRAGMA integrity_check")).toString();
    }
    QString indexNames() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<StoreFixture> m_store;
    MetaDataList m_before;
};

void RescanTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_store = std::make_unique<StoreFixture>(scanBulkOperations());
    m_store->open();
}

void RescanTest::cleanup()
{
    m_store.reset();
    m_folder.reset();
}

// Notes the rows in m_before; every later scan has a later time stamp.
void RescanTest::scanFirst(int count)
{
    const QByteArray sound = SoundFiles::wave({ 16, 8000, 1, 80 });
    for (int number = 0; number < count; ++number)
        TestSupport::writeFile(path(QStringLiteral("sounds/%1.wav").arg(number, 4, 10, QLatin1Char('0'))), sound);
    QVERIFY(!scan()->hasError());
    m_before = m_store->records(tableId);
    QCOMPARE(m_before.size(), count);
    QTRY_VERIFY(QDateTime::currentMSecsSinceEpoch() > m_before.first().scanTimestamp());
}

// The indexes of the table in the order in which SQLite knows them.
QString RescanTest::indexNames() const
{
    const QString statement = QStringLiteral(
        "SELECT group_concat(name) FROM (SELECT name FROM sqlite_master WHERE tbl_name='MetaData%1' ORDER BY rowid)");
    return TestSupport::firstValue(m_store->filePath(), statement.arg(tableId)).toString();
}

void RescanTest::manyUnchangedRowsGetTheTimestamp()
{
    scanFirst(soundsCount);
    const QString indexes = indexNames();
    TestSupport::writeFile(path("sounds/0007.wav"), SoundFiles::wave({ 16, 8000, 2, 160 }));
    TestSupport::writeFile(path("sounds/new.wav"), SoundFiles::wave());

    QVERIFY(!scan()->hasError());

    const MetaDataList after = m_store->records(tableId);
    QCOMPARE(after.size(), soundsCount + 1);
    for (int row = 0; row < m_before.size(); ++row) {
        QVariantMap expected = m_before.at(row).toVariantMap();
        expected.insert(QStringLiteral("scanTimestamp"), after.last().scanTimestamp());
        if (m_before.at(row).fileName() == QLatin1String("0007.wav"))
            expected.insert(QStringLiteral("channelsCount"), 2);
        QVariantMap actual = after.at(row).toVariantMap();
        actual.insert(QStringLiteral("duration"), expected.value(QStringLiteral("duration")));
        QCOMPARE(actual, expected);
    }
    QVERIFY(after.last().scanTimestamp() > m_before.first().scanTimestamp());
    QCOMPARE(indexNames(), indexes);
    QCOMPARE(check(), QStringLiteral("ok"));
}

void RescanTest::cancelWhileRowsGetTheTimestampLeavesTheTableAsItWas()
{
    scanFirst(soundsCount);
    const QString indexes = indexNames();
    std::unique_ptr<OperationReply> reply;
    OperationReply* replyToBeCanceled = nullptr;
    {
        const RowHook hook(m_store->database(), tableId, 100, [&replyToBeCanceled]() { replyToBeCanceled->cancel(); });
        QSemaphore isKnown;
        QMetaObject::invokeMethod(&m_store->database(), [&isKnown]() { isKnown.acquire(); });
        replyToBeCanceled = m_store->database().scan(tableId, { path("sounds") }, {});
        isKnown.release();
        reply = await(replyToBeCanceled);
        QVERIFY(hook.wasHit());
        QVERIFY(hook.count() < soundsCount);
    }

    QCOMPARE(reply->errorString(), QStringLiteral("Canceled"));
    const MetaDataList after = m_store->records(tableId);
    QCOMPARE(after.size(), m_before.size());
    for (int row = 0; row < after.size(); ++row)
        QCOMPARE(after.at(row).toVariantMap(), m_before.at(row).toVariantMap());
    QCOMPARE(indexNames(), indexes);
    QCOMPARE(check(), QStringLiteral("ok"));
    QVERIFY(!scan()->hasError());
}

void RescanTest::rowThatIsRefusedTheTimestampGivesAWarning()
{
    scanFirst(3);
    std::unique_ptr<OperationReply> reply;
    QStringList warnings;
    {
        const RowHook hook(m_store->database(), tableId, 0);
        OperationReply* running = m_store->database().scan(tableId, { path("sounds") }, {});
        OperationRecorder recorder(running);
        reply = await(running);
        warnings = recorder.sortedWarnings();
        QVERIFY(hook.wasHit());
    }

    QVERIFY(!reply->hasError());
    QCOMPARE(warnings.size(), 1);
    const QString refused = warnings.first().mid(QStringLiteral("Unknown database error: ").size());
    QCOMPARE(warnings.first(), "Unknown database error: " + refused);
    int refusedCount = 0;
    for (const MetaData& record : m_store->records(tableId)) {
        const bool hasItsTimestamp = record.scanTimestamp() == m_before.first().scanTimestamp();
        QCOMPARE(hasItsTimestamp, record.filePath() == refused);
        refusedCount += hasItsTimestamp ? 1 : 0;
    }
    QCOMPARE(refusedCount, 1);
}

QTEST_GUILESS_MAIN(RescanTest)

#include "tst_rescan.moc"
