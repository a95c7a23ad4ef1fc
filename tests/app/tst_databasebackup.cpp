// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/databasebackup.h"

#include "store/operationreply.h"
#include "tests/app/cataloguefiles.h"
#include "tests/app/copyfixture.h"
#include "tests/support/smalldisk.h"
#include "tests/support/storefixture.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using TestSupport::SmallDisk;
using TestSupport::StoreFixture;
using TestSupport::writeFile;

class DatabaseBackupTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void backupEqualsTheDatabase();
    void storeIsClosedMeanwhile();
    void existingBackupIsReplaced();
    void backupIntoAMissingFolderMakesIt();
    void backupOntoTheDatabaseIsRefused_data();
    void backupOntoTheDatabaseIsRefused();
    void backupOfADatabaseInUseIsRefused();
    void backupBesideTheJournalOfAnotherIsRefused();
    void damagedCatalogueDoesNotReplaceABackup();
    void damagedCatalogueIsCopiedUnderANewName();
    void fullDiskKeepsTheEarlierBackup_data();
    void fullDiskKeepsTheEarlierBackup();
    void readOnlyFolderKeepsTheEarlierBackup();
    void folderOfTheChosenNameIsKept();
    void linkIsReplacedAndNotFollowed();
    void canceledBackupKeepsTheEarlierOne();
    void storeIsOpenedAgainWhenTheCommandIsLeft();
    void storeThatCannotBeOpenedAgainIsTold();

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }
    QString target() const { return path(QStringLiteral("backup.dat")); }
    QString backUpTo(const QString& file);
    void compareDatabase();

    QTemporaryDir m_catalogues;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<StoreFixture> m_store;
};

void DatabaseBackupTest::initTestCase()
{
    makeCatalogue(m_catalogues.filePath(QStringLiteral("new")), QStringLiteral("new"), 100);
    makeCatalogue(m_catalogues.filePath(QStringLiteral("old")), QStringLiteral("old"), 50);
}

void DatabaseBackupTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_store = std::make_unique<StoreFixture>();
    QVERIFY(QFile::copy(m_catalogues.filePath(QStringLiteral("new")), m_store->filePath()));
    m_store->open();
}

void DatabaseBackupTest::cleanup()
{
    m_store.reset();
    m_folder.reset();
}

// The error text of the copy; the store is open again in any case.
QString DatabaseBackupTest::backUpTo(const QString& file)
{
    DatabaseBackup backup(m_store->database());
    const auto reply = TestSupport::await(backup.start(file));
    return backup.end() ? reply->errorString() : QStringLiteral("not opened again");
}

// The store works, and nothing stands beside its file.
void DatabaseBackupTest::compareDatabase()
{
    QVERIFY(m_store->database().isOpened());
    QCOMPARE(m_store->records(1).size(), 100);
    QCOMPARE(namesIn(m_store->folderPath()), QStringList({ "VellumcastDB.dat" }));
}

void DatabaseBackupTest::backupEqualsTheDatabase()
{
    QCOMPARE(backUpTo(target()), QString());

    QVERIFY(contents(target()) == contents(m_store->filePath()));
    QCOMPARE(catalogueIn(target()), QStringLiteral("new"));
    QCOMPARE(namesIn(m_folder->path()), QStringList({ "backup.dat" }));
    compareDatabase();
}

void DatabaseBackupTest::storeIsClosedMeanwhile()
{
    DatabaseBackup backup(m_store->database());
    const std::unique_ptr<OperationReply> reply(backup.start(target()));

    QVERIFY(!m_store->database().isOpened());

    QTRY_VERIFY(reply->isFinishedDelivered());
    QVERIFY(!m_store->database().isOpened());
    QVERIFY(backup.end());
    compareDatabase();
}

void DatabaseBackupTest::existingBackupIsReplaced()
{
    QVERIFY(QFile::copy(m_catalogues.filePath(QStringLiteral("old")), target()));

    QCOMPARE(backUpTo(target()), QString());

    QCOMPARE(catalogueIn(target()), QStringLiteral("new"));
    QCOMPARE(namesIn(m_folder->path()), QStringList({ "backup.dat" }));
}

void DatabaseBackupTest::backupIntoAMissingFolderMakesIt()
{
    const QString file = path(QStringLiteral("a/b/backup.dat"));

    QCOMPARE(backUpTo(file), QString());

    QCOMPARE(catalogueIn(file), QStringLiteral("new"));
}

void DatabaseBackupTest::backupOntoTheDatabaseIsRefused_data()
{
    QTest::addColumn<QString>("kind");
    for (const char* kind : { "its path", "another spelling", "symbolic link", "hard link", "journal" })
        QTest::newRow(kind) << kind;
}

void DatabaseBackupTest::backupOntoTheDatabaseIsRefused()
{
    QFETCH(QString, kind);
    const QString database = m_store->filePath();
    QString file = path(QStringLiteral("link.dat"));
    if (kind == QLatin1String("its path"))
        file = database;
    else if (kind == QLatin1String("another spelling"))
        file = m_store->folderPath() + QLatin1String("/../") + QDir(m_store->folderPath()).dirName()
            + QLatin1String("/./VellumcastDB.dat");
    else if (kind == QLatin1String("journal"))
        file = database + QLatin1String("-journal");
    else if (kind == QLatin1String("symbolic link"))
        QVERIFY(QFile::link(database, file));
    else
        QCOMPARE(QProcess::execute(QStringLiteral("ln"), { database, file }), 0);

    QCOMPARE(backUpTo(file), QStringLiteral("The database cannot be its own backup: ") + file);

    compareDatabase();
    QCOMPARE(catalogueIn(database), QStringLiteral("new"));
}

void DatabaseBackupTest::backupOfADatabaseInUseIsRefused()
{
    const QString journal = m_store->filePath() + QLatin1String("-shm");
    writeFile(journal, "another program's");

    QCOMPARE(backUpTo(target()), QStringLiteral("Database file is in use: ") + m_store->filePath());

    QVERIFY(!QFileInfo::exists(target()));
    QVERIFY(QFileInfo::exists(journal));
    QVERIFY(QFile::remove(journal));
    compareDatabase();
}

void DatabaseBackupTest::backupBesideTheJournalOfAnotherIsRefused()
{
    const QString journal = target() + QLatin1String("-journal");
    writeFile(journal, "another catalogue's");

    QCOMPARE(backUpTo(target()), QStringLiteral("Database file is in use: ") + target());

    QVERIFY(!QFileInfo::exists(target()));
    QCOMPARE(contents(journal), QByteArray("another catalogue's"));
    compareDatabase();
}

void DatabaseBackupTest::damagedCatalogueDoesNotReplaceABackup()
{
    QVERIFY(QFile::copy(m_catalogues.filePath(QStringLiteral("old")), target()));
    damagePagesOf(m_store->filePath(), { QStringLiteral("MetaData1") });
    const QByteArray bytes = contents(m_store->filePath());

    const QString errorText = backUpTo(target());

    QVERIFY2(errorText.startsWith(
                 QStringLiteral("The database is damaged, and the existing file was not replaced: ") + target()),
        qPrintable(errorText));
    QCOMPARE(catalogueIn(target()), QStringLiteral("old"));
    QCOMPARE(namesIn(m_folder->path()), QStringList({ "backup.dat" }));
    QVERIFY(contents(m_store->filePath()) == bytes);
    QVERIFY(m_store->database().isOpened());
}

// What can still be read of it is not to be lost.
void DatabaseBackupTest::damagedCatalogueIsCopiedUnderANewName()
{
    damagePagesOf(m_store->filePath(), { QStringLiteral("MetaData1") });
    DatabaseBackup backup(m_store->database());

    const auto reply = TestSupport::await(backup.start(target()));

    QCOMPARE(reply->errorString(), QString());
    QVERIFY(!backup.damage().isEmpty());
    QVERIFY(backup.end());
    QVERIFY(contents(target()) == contents(m_store->filePath()));
}

void DatabaseBackupTest::fullDiskKeepsTheEarlierBackup_data()
{
    QTest::addColumn<int>("percent");
    QTest::newRow("full at the beginning") << 1;
    QTest::newRow("full in the middle") << 50;
    QTest::newRow("full at the end") << 99;
}

void DatabaseBackupTest::fullDiskKeepsTheEarlierBackup()
{
    QFETCH(int, percent);
    const SmallDisk disk(QFileInfo(m_store->filePath()).size() * percent / 100);
    const QString file = disk.filePath(QStringLiteral("backup.dat"));
    writeFile(file, "earlier");

    QCOMPARE(backUpTo(file), QStringLiteral("Unable to write target file: ") + file);

    QCOMPARE(contents(file), QByteArray("earlier"));
    QCOMPARE(namesIn(disk.path()), QStringList({ "backup.dat" }));
    compareDatabase();
}

void DatabaseBackupTest::readOnlyFolderKeepsTheEarlierBackup()
{
    writeFile(target(), "earlier");
    QString errorText;
    {
        const ClosedFolder closed(m_folder->path());
        errorText = backUpTo(target());
    }

    QCOMPARE(errorText, QStringLiteral("Unable to open target file for writing: ") + target());
    QCOMPARE(contents(target()), QByteArray("earlier"));
    compareDatabase();
}

void DatabaseBackupTest::folderOfTheChosenNameIsKept()
{
    writeFile(target() + QLatin1String("/inner"), "kept");

    QCOMPARE(backUpTo(target()), QStringLiteral("Unable to open target file for writing: ") + target());

    QCOMPARE(contents(target() + QLatin1String("/inner")), QByteArray("kept"));
    compareDatabase();
}

void DatabaseBackupTest::linkIsReplacedAndNotFollowed()
{
    const QString other = path(QStringLiteral("other"));
    writeFile(other, "somebody else's");
    QVERIFY(QFile::link(other, target()));

    QCOMPARE(backUpTo(target()), QString());

    QCOMPARE(contents(other), QByteArray("somebody else's"));
    QVERIFY(!QFileInfo(target()).isSymLink());
    QCOMPARE(catalogueIn(target()), QStringLiteral("new"));
}

void DatabaseBackupTest::canceledBackupKeepsTheEarlierOne()
{
    writeFile(target(), "earlier");
    DatabaseBackup backup(m_store->database());
    OperationReply* reply = nullptr;
    {
        const PoolHold hold;
        reply = backup.start(target());
        reply->cancel();
    }

    QCOMPARE(TestSupport::await(reply)->errorString(), QStringLiteral("Canceled"));
    QVERIFY(backup.end());

    QCOMPARE(contents(target()), QByteArray("earlier"));
    QCOMPARE(namesIn(m_folder->path()), QStringList({ "backup.dat" }));
    compareDatabase();
}

void DatabaseBackupTest::storeIsOpenedAgainWhenTheCommandIsLeft()
{
    {
        DatabaseBackup backup(m_store->database());
        TestSupport::await(backup.start(target()));
    }

    compareDatabase();
}

void DatabaseBackupTest::storeThatCannotBeOpenedAgainIsTold()
{
    DatabaseBackup backup(m_store->database());
    TestSupport::await(backup.start(target()));
    writeFile(m_store->filePath(), "no longer a catalogue");

    QVERIFY(!backup.end());

    QVERIFY(!m_store->database().lastError().isEmpty());
    QVERIFY(!backup.end());
}

QTEST_GUILESS_MAIN(DatabaseBackupTest)
#include "tst_databasebackup.moc"
