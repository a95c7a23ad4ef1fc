// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/databasesession.h"

#include "store/operationreply.h"
#include "tests/scan/soundfiles.h"
#include "tests/support/storefixture.h"
#include "tests/support/testsupport.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QTemporaryDir>
#include <QtTest>

using TestSupport::contents;

namespace {

const QString fileName = QStringLiteral("VellumcastDB.dat");

// An empty catalogue, as a session leaves it. The store takes seconds to make one where the disk is slow.
QString emptyCatalogue()
{
    static TestSupport::StoreFixture store;
    if (!QFile::exists(store.filePath())) {
        store.open();
        store.destroy();
    }
    return store.filePath();
}

QStringList entries(const QString& path)
{
    return QDir(path).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
}

} // namespace

class DatabaseSessionTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void startsItsThreadAndOpensNothing();
    void storeLivesOnTheSessionsThread();
    void storeCanScan();
    void endClosesTheStoreAndStopsItsThread();
    void endMayBeCalledTwice();
    void endLetsWaitingOperationsFinishFirst();
    void operationAfterTheEndFails();
    void destructionEndsTheSession();
    void damagedFileIsMovedIntoANewBackupFolder();
    void companionsOfTheFileGoWithIt_data();
    void companionsOfTheFileGoWithIt();
    void otherFilesStay();
    void everyMoveHasAFolderOfItsOwn();
    void folderInTheFilesPlaceIsMovedAsWell();
    void missingFileCannotBeMoved();
    void blockedBackupFolderLeavesTheFile_data();
    void blockedBackupFolderLeavesTheFile();

private:
    void copyCatalogue();
    QString filePath() const { return m_folder->filePath(fileName); }
    QString backupPath() const { return m_folder->filePath(QStringLiteral("Backup")); }
    /// Where the only folder below "Backup" has this file.
    QString movedPath(const QString& name) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void DatabaseSessionTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

QString DatabaseSessionTest::movedPath(const QString& name) const
{
    return QStringLiteral("%1/%2/%3").arg(backupPath(), entries(backupPath()).value(0), name);
}

void DatabaseSessionTest::copyCatalogue()
{
    QVERIFY(QFile::copy(emptyCatalogue(), filePath()));
}

void DatabaseSessionTest::startsItsThreadAndOpensNothing()
{
    const DatabaseSession session(filePath());

    QVERIFY(session.isRunning());
    QVERIFY(!session.database()->isOpened());
    QCOMPARE(session.database()->databaseFilePath(), filePath());
    QVERIFY(!QFile::exists(filePath()));
}

void DatabaseSessionTest::storeLivesOnTheSessionsThread()
{
    copyCatalogue();
    const DatabaseSession session(filePath());

    QVERIFY(session.database()->thread() != QThread::currentThread());
    QVERIFY(session.database()->open());
    QVERIFY(session.database()->isOpened());
}

void DatabaseSessionTest::storeCanScan()
{
    copyCatalogue();
    const DatabaseSession session(filePath());
    QVERIFY(session.database()->open());
    TestSupport::writeFile(m_folder->filePath(QStringLiteral("sounds/take.wav")), SoundFiles::wave());

    const auto reply
        = TestSupport::await(session.database()->scan(2, { m_folder->filePath(QStringLiteral("sounds")) }, QString()));

    QVERIFY2(!reply->hasError(), qPrintable(reply->errorString()));
    QCOMPARE(TestSupport::firstValue(filePath(), QStringLiteral("SELECT fileName FROM MetaData2")).toString(),
        QStringLiteral("take.wav"));
}

void DatabaseSessionTest::endClosesTheStoreAndStopsItsThread()
{
    copyCatalogue();
    DatabaseSession session(filePath());
    QVERIFY(session.database()->open());

    session.end();

    QVERIFY(!session.isRunning());
    QVERIFY(!session.database()->isOpened());
    QCOMPARE(QSqlDatabase::connectionNames(), QStringList());
}

void DatabaseSessionTest::endMayBeCalledTwice()
{
    copyCatalogue();
    DatabaseSession session(filePath());
    QVERIFY(session.database()->open());
    session.end();

    session.end();

    QVERIFY(!session.isRunning());
}

void DatabaseSessionTest::endLetsWaitingOperationsFinishFirst()
{
    copyCatalogue();
    DatabaseSession session(filePath());
    QVERIFY(session.database()->open());
    const MetaDataList items{ TestSupport::sampleRecord(QStringLiteral("/sounds/bell.wav")) };
    OperationReply* waitingReply = session.database()->pushMetaData(4, items);

    session.end();

    const auto reply = TestSupport::await(waitingReply);
    QVERIFY2(!reply->hasError(), qPrintable(reply->errorString()));
    QCOMPARE(TestSupport::firstValue(filePath(), QStringLiteral("SELECT COUNT(*) FROM MetaData4")).toInt(), 1);
}

void DatabaseSessionTest::operationAfterTheEndFails()
{
    copyCatalogue();
    DatabaseSession session(filePath());
    QVERIFY(session.database()->open());
    session.end();

    const auto reply = TestSupport::await(session.database()->getRowsCount(1, {}));

    QCOMPARE(reply->errorString(), QStringLiteral("Database is not opened"));
}

void DatabaseSessionTest::destructionEndsTheSession()
{
    copyCatalogue();
    {
        const DatabaseSession session(filePath());
        QVERIFY(session.database()->open());
    }

    QCOMPARE(QSqlDatabase::connectionNames(), QStringList());
}

void DatabaseSessionTest::damagedFileIsMovedIntoANewBackupFolder()
{
    TestSupport::writeFile(filePath(), "damaged");
    const QDateTime before = QDateTime::currentDateTime();

    QVERIFY(moveDatabaseToBackup(filePath()));

    QVERIFY(!QFile::exists(filePath()));
    QCOMPARE(contents(movedPath(fileName)), QByteArray("damaged"));
    const QString format = QStringLiteral("yyyy-MM-dd-hh-mm-ss-zzz");
    const QDateTime time = QDateTime::fromString(entries(backupPath()).value(0), format);
    QVERIFY2(time >= before && time <= QDateTime::currentDateTime(), qPrintable(entries(backupPath()).join(' ')));
}

void DatabaseSessionTest::companionsOfTheFileGoWithIt_data()
{
    QTest::addColumn<QString>("suffix");
    for (const auto* suffix : { "-journal", "-wal", "-shm" })
        QTest::newRow(suffix) << QString::fromLatin1(suffix);
}

void DatabaseSessionTest::companionsOfTheFileGoWithIt()
{
    QFETCH(QString, suffix);
    TestSupport::writeFile(filePath(), "damaged");
    TestSupport::writeFile(filePath() + suffix, "companion");

    QVERIFY(moveDatabaseToBackup(filePath()));

    QCOMPARE(entries(m_folder->path()), QStringList(QStringLiteral("Backup")));
    QCOMPARE(contents(movedPath(fileName + suffix)), QByteArray("companion"));
}

void DatabaseSessionTest::otherFilesStay()
{
    TestSupport::writeFile(filePath(), "damaged");
    TestSupport::writeFile(m_folder->filePath(QStringLiteral("Settings.ini")), "[MainWindow]\n");

    QVERIFY(moveDatabaseToBackup(filePath()));

    QCOMPARE(contents(m_folder->filePath(QStringLiteral("Settings.ini"))), QByteArray("[MainWindow]\n"));
    QCOMPARE(entries(QFileInfo(movedPath(fileName)).path()), QStringList(fileName));
}

void DatabaseSessionTest::everyMoveHasAFolderOfItsOwn()
{
    TestSupport::writeFile(filePath(), "first");
    QVERIFY(moveDatabaseToBackup(filePath()));
    const QString first = movedPath(fileName);
    const QDateTime moved = QDateTime::currentDateTime();
    // Folders are named after the millisecond.
    QTRY_VERIFY(QDateTime::currentDateTime() > moved);
    TestSupport::writeFile(filePath(), "second");

    QVERIFY(moveDatabaseToBackup(filePath()));

    QCOMPARE(entries(backupPath()).size(), 2);
    QCOMPARE(contents(first), QByteArray("first"));
}

void DatabaseSessionTest::folderInTheFilesPlaceIsMovedAsWell()
{
    TestSupport::writeFile(filePath() + QStringLiteral("/inside.txt"), "inside");

    QVERIFY(moveDatabaseToBackup(filePath()));

    QVERIFY(!QFile::exists(filePath()));
    QCOMPARE(contents(movedPath(fileName) + QStringLiteral("/inside.txt")), QByteArray("inside"));
}

void DatabaseSessionTest::missingFileCannotBeMoved()
{
    QVERIFY(!moveDatabaseToBackup(filePath()));
}

void DatabaseSessionTest::blockedBackupFolderLeavesTheFile_data()
{
    QTest::addColumn<bool>("hasCompanion");
    QTest::newRow("alone") << false;
    QTest::newRow("with its journal") << true;
}

void DatabaseSessionTest::blockedBackupFolderLeavesTheFile()
{
    QFETCH(bool, hasCompanion);
    TestSupport::writeFile(filePath(), "damaged");
    if (hasCompanion)
        TestSupport::writeFile(filePath() + QStringLiteral("-journal"), "journal");
    TestSupport::writeFile(backupPath(), "a file in the folder's place");
    const QStringList before = entries(m_folder->path());

    QVERIFY(!moveDatabaseToBackup(filePath()));

    QCOMPARE(entries(m_folder->path()), before);
    QCOMPARE(contents(filePath()), QByteArray("damaged"));
}

QTEST_GUILESS_MAIN(DatabaseSessionTest)

#include "tst_databasesession.moc"
