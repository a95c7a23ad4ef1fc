// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/scanoperation.h"

#include "scan/storeoperations.h"
#include "tests/scan/lockedfolder.h"
#include "tests/scan/operationrecorder.h"
#include "tests/scan/rowhook.h"
#include "tests/scan/sidelock.h"
#include "tests/scan/soundfiles.h"
#include "tests/support/filelocks.h"
#include "tests/support/messagerecorder.h"
#include "tests/support/storefixture.h"
#include "tests/support/testsupport.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSemaphore>
#include <QSet>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <algorithm>
#include <unistd.h>

using TestSupport::await;
using TestSupport::MessageRecorder;
using TestSupport::StoreFixture;

namespace {

constexpr int tableId = 3;

// Cancels a reply from within the log, that is in the middle of the batch that wrote the message.
OperationReply* replyToCancel = nullptr;

void cancelAtWarning(QtMsgType type, const QMessageLogContext&, const QString&)
{
    if (type == QtWarningMsg && replyToCancel)
        replyToCancel->cancel();
}

QSet<qint64> idsOf(const MetaDataList& records)
{
    QSet<qint64> ids;
    for (const MetaData& record : records)
        ids.insert(record.id());
    return ids;
}

} // namespace

class ScanOperationTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void cleanupTestCase();
    void treeGivesOneRowPerFile();
    void progressCountsBatches();
    void rowsOfOneRunShareItsStart();
    void folderWithoutSoundsEndsAsCanceled();
    void unreadableFilesGiveWarnings();
    void unreadableFolderGivesAWarning();
    void unreadableFolderAloneEndsAsCanceled();
    void refusedRecordsGiveWarnings();
    void warningsComeBatchByBatchBehindTheProgress();
    void undecodableNameGivesAWarning();
    void secondScanKeepsIdsAndDiscardsEdits();
    void sameFileTwiceInOneRunGivesOneRow();
    void cancelInTheSecondBatchLeavesTheTableAsItWas();
    void cancelBeforeTheListingBeginsNoTransaction();
    void librariesComeFromTheRules();
    void onlyTheGivenTableIsWritten();
    void closedStoreIsReported();
    void beginFailureIsReported();
    void failedCommitIsReportedAndTheNextScanWorks();
    void writerElsewhereIsReportedOnce();
    void writerElsewhereIsWaitedFor();
    void fileWithoutASuffixIsStored();
    void databaseItselfIsNotOpened_data();
    void databaseItselfIsNotOpened();
    void spellingsThatDifferInCaseShareARowAndAreLogged();
    void callerStaysResponsive();
    void replyDeletedInsideFinishedIsSafe();
    void linkToTheParentGivesEachFileOnce();

private:
    QString writeSounds(int count, const QString& folder = QStringLiteral("sounds"));
    QString path(const QString& name) const { return m_folder->filePath(name); }
    std::unique_ptr<OperationReply> scan(const QStringList& paths, const QString& rules = {});

    QScopedPointer<QTemporaryDir> m_folder;
    std::unique_ptr<StoreFixture> m_store;
};

void ScanOperationTest::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
    // Making a database takes longer than a test, so all share one.
    if (!m_store)
        m_store = std::make_unique<StoreFixture>(scanBulkOperations());
    m_store->openEmpty(tableId);
}

void ScanOperationTest::cleanup()
{
    replyToCancel = nullptr;
    m_store->database().close();
    m_folder.reset();
}

void ScanOperationTest::cleanupTestCase()
{
    m_store.reset();
}

QString ScanOperationTest::writeSounds(int count, const QString& folder)
{
    const QByteArray sound = SoundFiles::wave({ 16, 8000, 1, 80 });
    for (int number = 0; number < count; ++number)
        TestSupport::writeFile(
            path(QStringLiteral("%1/%2.wav").arg(folder).arg(number, 4, 10, QLatin1Char('0'))), sound);
    return path(folder);
}

std::unique_ptr<OperationReply> ScanOperationTest::scan(const QStringList& paths, const QString& rules)
{
    return await(m_store->database().scan(tableId, paths, rules));
}

void ScanOperationTest::treeGivesOneRowPerFile()
{
    for (const char* name : { "a.wav", "b/c.WAV", "b/.hidden.wav", ".c/d.wav" })
        TestSupport::writeFile(path(QStringLiteral("t/") + QLatin1String(name)), SoundFiles::wave());
    TestSupport::writeFile(path("t/b/d.mp3"), SoundFiles::mp3());
    TestSupport::writeFile(path("t/b/e.aiff"), SoundFiles::aiff());
    TestSupport::writeFile(path("t/b/f.txt"), "text");
    TestSupport::writeFile(path("direct.xyz"), SoundFiles::wave());

    const auto reply = scan({ path("t"), path("direct.xyz"), path("missing") });

    QCOMPARE(reply->errorString(), QString());
    QVERIFY(!reply->hasWarnings());
    QStringList paths;
    for (const MetaData& record : m_store->records(tableId))
        paths.append(QDir(m_folder->path()).relativeFilePath(record.filePath()));
    paths.sort();
    QCOMPARE(paths, QStringList({ "direct.xyz", "t/a.wav", "t/b/c.WAV", "t/b/d.mp3", "t/b/e.aiff" }));
}

void ScanOperationTest::progressCountsBatches()
{
    OperationReply* reply = m_store->database().scan(tableId, { writeSounds(41) }, {});
    OperationRecorder recorder(reply);

    await(reply);

    QCOMPARE(recorder.events(),
        QStringList({ "progress 0 of -1", "progress 0 of 41", "progress 40 of 41", "progress 41 of 41", "finished" }));
}

void ScanOperationTest::rowsOfOneRunShareItsStart()
{
    const QString folder = writeSounds(45);
    const qint64 before = QDateTime::currentMSecsSinceEpoch();

    scan({ folder });

    const MetaDataList records = m_store->records(tableId);
    QCOMPARE(records.size(), 45);
    const qint64 timestamp = records.first().scanTimestamp();
    QVERIFY(timestamp >= before && timestamp <= QDateTime::currentMSecsSinceEpoch());
    for (const MetaData& record : records)
        QCOMPARE(record.scanTimestamp(), timestamp);
}

void ScanOperationTest::folderWithoutSoundsEndsAsCanceled()
{
    m_store->insert(tableId, { TestSupport::sampleRecord("/before.wav") });
    TestSupport::writeFile(path("empty/readme.txt"), "text");
    OperationReply* reply = m_store->database().scan(tableId, { path("empty") }, {});
    OperationRecorder recorder(reply);

    await(reply);

    QCOMPARE(recorder.events(), QStringList({ "progress 0 of -1", "canceled", "error Canceled", "finished" }));
    QCOMPARE(m_store->records(tableId).size(), 1);
}

void ScanOperationTest::unreadableFilesGiveWarnings()
{
    const QString folder = writeSounds(3);
    TestSupport::writeFile(folder + "/empty.wav", {});
    TestSupport::writeFile(folder + "/text %1 %2.mp3", "This is a text.");
    TestSupport::writeFile(folder + "/video.y4m", SoundFiles::silentVideo());
    OperationReply* reply = m_store->database().scan(tableId, { folder, folder + "/video.y4m" }, {});
    OperationRecorder recorder(reply);

    const auto ended = await(reply);

    QVERIFY(!ended->hasError());
    QCOMPARE(recorder.sortedWarnings(),
        QStringList({ "No audio stream found: " + folder + "/video.y4m",
            "Unable to open input: " + folder + "/empty.wav", "Unable to open input: " + folder + "/text %1 %2.mp3" }));
    QCOMPARE(m_store->records(tableId).size(), 3);
}

void ScanOperationTest::unreadableFolderGivesAWarning()
{
    const QString folder = writeSounds(3);
    const LockedFolder locked(m_store->database(), folder + "/locked %1 %2");
    OperationReply* reply = m_store->database().scan(tableId, { folder }, {});
    OperationRecorder recorder(reply);

    const auto ended = await(reply);

    QVERIFY(!ended->hasError());
    QCOMPARE(recorder.events(),
        QStringList({ "progress 0 of -1", "warnings 1", "progress 0 of 3", "progress 3 of 3", "finished" }));
    QCOMPARE(recorder.sortedWarnings(), QStringList{ "Unable to list folder: " + locked.path() });
    QCOMPARE(m_store->records(tableId).size(), 3);
}

void ScanOperationTest::unreadableFolderAloneEndsAsCanceled()
{
    const LockedFolder locked(m_store->database(), path("locked"));
    OperationReply* reply = m_store->database().scan(tableId, { locked.path() }, {});
    OperationRecorder recorder(reply);

    const auto ended = await(reply);

    QCOMPARE(ended->errorString(), QStringLiteral("Canceled"));
    QCOMPARE(recorder.sortedWarnings(), QStringList{ "Unable to list folder: " + locked.path() });
}

void ScanOperationTest::refusedRecordsGiveWarnings()
{
    const QString folder = writeSounds(2);
    // Without samples it has no duration, which no table accepts.
    TestSupport::writeFile(folder + "/silent.aif", SoundFiles::aiff({ 16, 44100, 2, 0 }));
    // Nor is there an MPEG frame in this one.
    TestSupport::writeFile(folder + "/renamed.mp3", SoundFiles::wave({ 16, 44100, 2, 44100 }));
    OperationReply* reply = m_store->database().scan(tableId, { folder }, {});
    OperationRecorder recorder(reply);

    const auto ended = await(reply);

    QVERIFY(!ended->hasError());
    QCOMPARE(recorder.sortedWarnings(),
        QStringList({ "Database constraint violation: " + folder + "/renamed.mp3",
            "Database constraint violation: " + folder + "/silent.aif" }));
    QCOMPARE(m_store->records(tableId).size(), 2);
}

void ScanOperationTest::warningsComeBatchByBatchBehindTheProgress()
{
    QStringList files;
    for (int number = 0; number < 81; ++number) {
        const bool isBroken = number == 3 || number == 4 || number == 80;
        files.append(path(QStringLiteral("%1.wav").arg(number)));
        TestSupport::writeFile(files.last(), isBroken ? QByteArray() : SoundFiles::wave());
    }
    OperationReply* reply = m_store->database().scan(tableId, files, {});
    OperationRecorder recorder(reply);

    await(reply);

    QCOMPARE(recorder.events(),
        QStringList({ "progress 0 of -1", "progress 0 of 81", "progress 40 of 81", "warnings 2", "progress 80 of 81",
            "progress 81 of 81", "warnings 1", "finished" }));
    QCOMPARE(recorder.warnings().last(), QStringList{ "Unable to open input: " + files.last() });
}

void ScanOperationTest::undecodableNameGivesAWarning()
{
    const QString folder = writeSounds(1);
    const QByteArray name = QFile::encodeName(folder) + "/caf\xe9.wav";
    FILE* stream = ::fopen(name.constData(), "wb");
    QVERIFY(stream && ::fclose(stream) == 0);
    OperationReply* reply = m_store->database().scan(tableId, { folder }, {});
    OperationRecorder recorder(reply);

    await(reply);
    ::unlink(name.constData());

    QCOMPARE(recorder.sortedWarnings(), QStringList{ "Unable to open input: " + QString::fromUtf8(name) });
}

void ScanOperationTest::secondScanKeepsIdsAndDiscardsEdits()
{
    const QString folder = writeSounds(41);
    scan({ folder });
    const MetaDataList before = m_store->records(tableId);
    const QString table = QStringLiteral("MetaData%1").arg(tableId);
    QCOMPARE(
        m_store->execute("UPDATE " + table + " SET rating=5, playlist=1, library='Mine', description='Edited'"), "");
    const qint64 firstTimestamp = before.first().scanTimestamp();
    QTRY_VERIFY(QDateTime::currentMSecsSinceEpoch() > firstTimestamp);

    scan({ folder + "//" });

    const MetaDataList after = m_store->records(tableId);
    QCOMPARE(idsOf(after), idsOf(before));
    for (int row = 0; row < after.size(); ++row) {
        QVariantMap expected = before.at(row).toVariantMap();
        expected.insert(QStringLiteral("scanTimestamp"), after.first().scanTimestamp());
        QCOMPARE(after.at(row).toVariantMap(), expected);
    }
    QVERIFY(after.first().scanTimestamp() > firstTimestamp);
}

void ScanOperationTest::sameFileTwiceInOneRunGivesOneRow()
{
    const QString folder = writeSounds(2);
    const MessageRecorder log;

    const auto reply = scan({ folder, folder, folder + "/0000.wav" });

    QVERIFY(!reply->hasError());
    QVERIFY(!reply->hasWarnings());
    QCOMPARE(m_store->records(tableId).size(), 2);
    QCOMPARE(log.messages(), QStringList());
}

void ScanOperationTest::cancelInTheSecondBatchLeavesTheTableAsItWas()
{
    m_store->insert(tableId, { TestSupport::sampleRecord("/before.wav") });
    const QString folder = writeSounds(120);
    QStringList files = QDir(folder).entryList(QDir::Files);
    std::transform(files.begin(), files.end(), files.begin(), [&](const QString& name) { return folder + '/' + name; });
    for (const char* name : { "Kick.wav", "kick.wav" }) {
        TestSupport::writeFile(path(QLatin1String(name)), SoundFiles::wave());
        files.insert(50, path(QLatin1String(name)));
    }
    OperationReply* reply = m_store->database().scan(tableId, files, {});
    OperationRecorder recorder(reply);
    replyToCancel = reply;
    const QtMessageHandler handlerBefore = qInstallMessageHandler(cancelAtWarning);

    await(reply);
    qInstallMessageHandler(handlerBefore);

    QCOMPARE(recorder.events(),
        QStringList({ "progress 0 of -1", "progress 0 of 122", "progress 40 of 122", "canceled", "progress 80 of 122",
            "error Canceled", "finished" }));
    QCOMPARE(m_store->records(tableId).size(), 1);
    QVERIFY(!scan({ folder })->hasError());
}

void ScanOperationTest::cancelBeforeTheListingBeginsNoTransaction()
{
    const QString folder = writeSounds(3);
    QSemaphore canceled;
    // Holds the store's thread up until the scan behind it has been canceled.
    QMetaObject::invokeMethod(&m_store->database(), [&canceled]() { canceled.acquire(); });
    OperationReply* reply = m_store->database().scan(tableId, { folder }, {});
    OperationRecorder recorder(reply);
    reply->cancel();
    canceled.release();

    await(reply);

    QCOMPARE(recorder.events(), QStringList({ "canceled", "progress 0 of -1", "error Canceled", "finished" }));
    QCOMPARE(m_store->records(tableId).size(), 0);
}

void ScanOperationTest::librariesComeFromTheRules()
{
    const QString folder = path("BOOM");
    for (const char* name : { "BOOM_01.wav", "boom_02.wav", "ABC12 Rain.wav" })
        TestSupport::writeFile(folder + '/' + QLatin1String(name), SoundFiles::wave());

    scan({ folder }, QStringLiteral("Booms: ^BOOM_\r\nAll: ABC\\d\r\nLate: Rain\r\n"));

    QVariantMap libraries;
    for (const MetaData& record : m_store->records(tableId))
        libraries.insert(record.fileName(), record.library());
    QCOMPARE(
        libraries, QVariantMap({ { "BOOM_01.wav", "Booms" }, { "boom_02.wav", "" }, { "ABC12 Rain.wav", "All" } }));
}

void ScanOperationTest::onlyTheGivenTableIsWritten()
{
    scan({ writeSounds(2) });

    for (int other = 1; other <= 15; ++other)
        QCOMPARE(m_store->records(other).size(), other == tableId ? 2 : 0);
}

void ScanOperationTest::closedStoreIsReported()
{
    m_store->database().close();

    QCOMPARE(scan({ writeSounds(1) })->errorString(), QStringLiteral("Database is not opened"));
}

void ScanOperationTest::beginFailureIsReported()
{
    const QString folder = writeSounds(1);
    QCOMPARE(m_store->execute(QStringLiteral("BEGIN")), QString());

    const auto reply = scan({ folder });

    QVERIFY2(reply->errorString().startsWith(QLatin1String("Unable to begin scan transaction: ")),
        qPrintable(reply->errorString()));
    QVERIFY(reply->errorString().size() > int(qstrlen("Unable to begin scan transaction: ")));
    QCOMPARE(m_store->execute(QStringLiteral("ROLLBACK")), QString());
}

void ScanOperationTest::failedCommitIsReportedAndTheNextScanWorks()
{
    const QString folder = writeSounds(3);
    {
        const SideLock lock(m_store->filePath(), SideLock::Kind::Reading);
        const auto reply = scan({ folder });
        QVERIFY2(reply->errorString().startsWith(QLatin1String("Unable to finalize scan transaction: ")),
            qPrintable(reply->errorString()));
    }
    QCOMPARE(m_store->records(tableId).size(), 0);

    QVERIFY(!scan({ folder })->hasError());

    QCOMPARE(m_store->records(tableId).size(), 3);
}

void ScanOperationTest::writerElsewhereIsReportedOnce()
{
    const QString folder = writeSounds(3);
    const SideLock lock(m_store->filePath(), SideLock::Kind::Writing);
    OperationReply* reply = m_store->database().scan(tableId, { folder }, {});
    OperationRecorder recorder(reply);

    const auto ended = await(reply);

    QVERIFY2(ended->errorString().startsWith(QLatin1String("Unable to begin scan transaction: ")),
        qPrintable(ended->errorString()));
    QVERIFY(recorder.sortedWarnings().isEmpty());
}

void ScanOperationTest::writerElsewhereIsWaitedFor()
{
    auto lock = std::make_unique<SideLock>(m_store->filePath(), SideLock::Kind::Writing);
    OperationReply* reply = m_store->database().scan(tableId, { writeSounds(3) }, {});
    QTimer writing;
    writing.setSingleShot(true);
    connect(&writing, &QTimer::timeout, &writing, [&lock]() { lock.reset(); });
    // Told just before the scan takes the lock; the other goes on writing for a while.
    connect(reply, &OperationReply::progress, &writing, [&writing](int value, int total) {
        if (value == 0 && total == 3)
            writing.start(200);
    });

    const auto ended = await(reply);

    QVERIFY(!lock);
    QCOMPARE(ended->errorString(), QString());
    QVERIFY(!ended->hasWarnings());
    QCOMPARE(m_store->records(tableId).size(), 3);
}

void ScanOperationTest::fileWithoutASuffixIsStored()
{
    for (const char* name : { "take", "take.", "take.xyz" })
        TestSupport::writeFile(path(QLatin1String(name)), SoundFiles::wave());

    const auto reply = scan({ path("take"), path("take."), path("take.xyz") });

    QVERIFY(!reply->hasWarnings());
    QStringList types;
    for (const MetaData& record : m_store->records(tableId))
        types.append(record.fileName() + QLatin1Char(':') + record.fileType());
    types.sort();
    QCOMPARE(types, QStringList({ "take.:", "take.xyz:xyz", "take:" }));
}

void ScanOperationTest::databaseItselfIsNotOpened_data()
{
    QTest::addColumn<bool>("isLinked");
    QTest::newRow("given by its own name") << false;
    QTest::newRow("behind a link with the name of a sound") << true;
}

void ScanOperationTest::databaseItselfIsNotOpened()
{
    QFETCH(bool, isLinked);
    QString database = m_store->filePath();
    if (isLinked) {
        QVERIFY(QFile::link(database, path("link.wav")));
        database = path("link.wav");
    }
    // The first batch holds the database, the second the row at which others look for the lock.
    const QString folder = writeSounds(60);
    bool isLocked = false;
    const RowHook hook(
        m_store->database(), tableId, 50, [&]() { isLocked = TestSupport::isLockedForOthers(m_store->filePath()); });
    OperationReply* reply = m_store->database().scan(tableId, { database, folder }, {});
    OperationRecorder recorder(reply);

    await(reply);

    QVERIFY(hook.wasHit());
    QVERIFY(isLocked);
    QCOMPARE(recorder.sortedWarnings(), QStringList{ "Unable to open input: " + database });
    QCOMPARE(m_store->records(tableId).size(), 60);
}

void ScanOperationTest::spellingsThatDifferInCaseShareARowAndAreLogged()
{
    TestSupport::writeFile(path("Kick.wav"), SoundFiles::wave());
    TestSupport::writeFile(path("kick.wav"), SoundFiles::wave());
    const MessageRecorder log;

    const auto reply = scan({ m_folder->path() });

    QVERIFY(!reply->hasError());
    QVERIFY(!reply->hasWarnings());
    QCOMPARE(m_store->records(tableId).size(), 1);
    QCOMPARE(log.messages(QtWarningMsg).filter(QStringLiteral("ick.wav")).size(), 1);
}

void ScanOperationTest::callerStaysResponsive()
{
    OperationReply* reply = m_store->database().scan(tableId, { writeSounds(200) }, {});
    int ticks = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, &timer, [&ticks]() { ++ticks; });
    timer.start(0);
    bool wasNameAnswered = false;
    connect(reply, &OperationReply::progress, &timer, [&](int value) {
        // Asked in the middle of the scan; the answer must not wait for its end.
        if (value == 40)
            wasNameAnswered = m_store->database().tableDisplayName(tableId) == QLatin1String("Table3");
    });

    await(reply);

    QVERIFY(ticks > 0);
    QVERIFY(wasNameAnswered);
}

void ScanOperationTest::replyDeletedInsideFinishedIsSafe()
{
    const QString folder = writeSounds(5);
    for (int round = 0; round < 50; ++round) {
        OperationReply* reply = m_store->database().scan(tableId, { folder }, {});
        bool isGone = false;
        connect(reply, &QObject::destroyed, this, [&isGone]() { isGone = true; });
        connect(reply, &OperationReply::finished, reply, [reply]() { reply->deleteLater(); });

        QTRY_VERIFY(isGone);
    }
    QCOMPARE(m_store->records(tableId).size(), 5);
}

void ScanOperationTest::linkToTheParentGivesEachFileOnce()
{
    const QString folder = writeSounds(3);
    QVERIFY(QFile::link(folder, folder + "/again"));
    QVERIFY(QFile::link(m_folder->path(), folder + "/above"));

    scan({ m_folder->path() });

    QCOMPARE(m_store->records(tableId).size(), 3);
}

QTEST_GUILESS_MAIN(ScanOperationTest)
#include "tst_scanoperation.moc"
