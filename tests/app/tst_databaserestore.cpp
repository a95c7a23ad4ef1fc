// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/databaserestore.h"

#include "store/operationreply.h"
#include "tests/app/cataloguefiles.h"
#include "tests/app/copyfixture.h"
#include "tests/support/smalldisk.h"
#include "tests/support/storefixture.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

using Outcome = DatabaseRestore::Outcome;
using TestSupport::SmallDisk;
using TestSupport::StoreFixture;
using TestSupport::writeFile;

namespace {

constexpr int recordsBefore = 100;
constexpr int recordsOfBackup = 50;

} // namespace

class DatabaseRestoreTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void restoredRecordsAreInTheStore();
    void sourceIsKept();
    void safetyCopyExistsWhileTheFileIsCopied();
    void fileThatIsNoCatalogueIsRefused_data();
    void fileThatIsNoCatalogueIsRefused();
    void backupWithDamagedPagesIsRefused_data();
    void backupWithDamagedPagesIsRefused();
    void unfinishedChangeIsRolledBackInTheCopy();
    void journalThatCannotBeCopiedChangesNothing();
    void backupWithAWriteAheadLogIsRefused();
    void missingSourceChangesNothing();
    void restoreFromTheDatabaseItselfIsRefused_data();
    void restoreFromTheDatabaseItselfIsRefused();
    void restoreOfADatabaseInUseIsRefused();
    void canceledRestoreChangesNothing();
    void readOnlyDataFolderChangesNothing();
    void folderClosedAfterTheCopyChangesNothing();
    void fullDiskChangesNothing();
    void restoreThatIsLeftChangesNothing();
    void databaseBehindALinkIsReplaced();
    void stagedFileThatVanishesChangesNothing();
    void otherFilesInTheDataFolderStay();
    void endBeforeStartChangesNothing();

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }
    QString backupFile() const { return m_catalogues.filePath(QStringLiteral("backup")); }
    Outcome restoreFrom(const QString& file);
    void compareUnchanged();
    void compareRestored();

    QTemporaryDir m_catalogues;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<StoreFixture> m_store;
    QString m_copyError;
    QString m_errorText;
};

void DatabaseRestoreTest::initTestCase()
{
    makeCatalogue(m_catalogues.filePath(QStringLiteral("present")), QStringLiteral("present"), recordsBefore);
    makeCatalogue(backupFile(), QStringLiteral("backup"), recordsOfBackup);
}

void DatabaseRestoreTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_store = std::make_unique<StoreFixture>();
    QVERIFY(QFile::copy(m_catalogues.filePath(QStringLiteral("present")), m_store->filePath()));
    m_store->open();
}

void DatabaseRestoreTest::cleanup()
{
    m_store.reset();
    m_folder.reset();
}

// The whole command; the errors of its two halves are kept.
Outcome DatabaseRestoreTest::restoreFrom(const QString& file)
{
    DatabaseRestore restore(m_store->database());
    const auto reply = TestSupport::await(restore.start(file));
    m_copyError = reply->errorString();
    const Outcome outcome = restore.end(!reply->hasError());
    m_errorText = restore.errorText();
    return outcome;
}

// The store works as before, and nothing stands beside its file.
void DatabaseRestoreTest::compareUnchanged()
{
    QVERIFY(m_store->database().isOpened());
    QCOMPARE(m_store->records(1).size(), recordsBefore);
    QCOMPARE(catalogueIn(m_store->filePath()), QStringLiteral("present"));
    QCOMPARE(namesIn(m_store->folderPath()), QStringList({ "VellumcastDB.dat" }));
}

void DatabaseRestoreTest::compareRestored()
{
    QVERIFY(m_store->database().isOpened());
    QCOMPARE(m_store->records(1).size(), recordsOfBackup);
    QCOMPARE(catalogueIn(m_store->filePath()), QStringLiteral("backup"));
    QCOMPARE(namesIn(m_store->folderPath()), QStringList({ "VellumcastDB.dat" }));
}

void DatabaseRestoreTest::restoredRecordsAreInTheStore()
{
    QCOMPARE(restoreFrom(backupFile()), Outcome::Restored);

    QCOMPARE(m_copyError, QString());
    compareRestored();
    // A change goes into the restored file.
    m_store->insert(1, MetaDataList{ TestSupport::sampleRecord(QStringLiteral("/backup/more.wav")) });
    QCOMPARE(TestSupport::firstValue(m_store->filePath(), QStringLiteral("SELECT COUNT(*) FROM MetaData1")).toInt(),
        recordsOfBackup + 1);
}

void DatabaseRestoreTest::sourceIsKept()
{
    const QString source = path(QStringLiteral("mine.dat"));
    QVERIFY(QFile::copy(backupFile(), source));

    QCOMPARE(restoreFrom(source), Outcome::Restored);

    QCOMPARE(catalogueIn(source), QStringLiteral("backup"));
    QCOMPARE(namesIn(m_folder->path()), QStringList({ "mine.dat" }));
}

void DatabaseRestoreTest::safetyCopyExistsWhileTheFileIsCopied()
{
    DatabaseRestore restore(m_store->database());

    const auto reply = TestSupport::await(restore.start(backupFile()));

    QVERIFY(!m_store->database().isOpened());
    const QStringList copies = namesIn(m_store->folderPath()).filter(QStringLiteral(".backup"));
    QCOMPARE(copies.size(), 1);
    const QRegularExpression pattern(QStringLiteral(R"(^VellumcastDB\.dat\.\d{4}(\.\d\d){5}\.\d{3}\.backup$)"));
    QVERIFY2(pattern.match(copies.first()).hasMatch(), qPrintable(copies.first()));
    QCOMPARE(catalogueIn(m_store->folderPath() + QLatin1Char('/') + copies.first()), QStringLiteral("present"));
    QCOMPARE(catalogueIn(m_store->filePath()), QStringLiteral("present"));
    QCOMPARE(restore.end(true), Outcome::Restored);
    compareRestored();
}

void DatabaseRestoreTest::fileThatIsNoCatalogueIsRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");
    QFile file(backupFile());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray catalogue = file.readAll();
    QTest::newRow("text") << QByteArray(100000, 'x') << "Invalid database structure";
    QTest::newRow("empty") << QByteArray() << "Invalid database structure";
    QTest::newRow("catalogue cut in the middle")
        << catalogue.left(catalogue.size() / 2) << "Invalid database structure";
    QTest::newRow("beginning of a catalogue") << catalogue.left(4096) << "Invalid database structure";
}

void DatabaseRestoreTest::fileThatIsNoCatalogueIsRefused()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, reason);
    const QString source = path(QStringLiteral("strange.dat"));
    writeFile(source, bytes);

    QCOMPARE(restoreFrom(source), Outcome::Failed);

    QCOMPARE(m_copyError, QString());
    QCOMPARE(m_errorText, reason);
    QCOMPARE(contents(source), bytes);
    compareUnchanged();
}

void DatabaseRestoreTest::backupWithDamagedPagesIsRefused_data()
{
    QTest::addColumn<QString>("damagedPart");
    QTest::newRow("records") << "MetaData1";
    QTest::newRow("an index") << "MetaData1_fileName";
    QTest::newRow("names of the tables") << "Settings";
}

void DatabaseRestoreTest::backupWithDamagedPagesIsRefused()
{
    QFETCH(QString, damagedPart);
    // Signs that have a meaning in the address of a file.
    const QString source = path(QStringLiteral("damaged %41 #1?.dat"));
    QVERIFY(QFile::copy(backupFile(), source));
    damagePagesOf(source, { damagedPart });
    const QByteArray bytes = contents(source);

    QCOMPARE(restoreFrom(source), Outcome::Failed);

    QCOMPARE(m_copyError, QString());
    QVERIFY2(m_errorText.startsWith(QStringLiteral("The backup file is damaged: ") + source + QLatin1Char('\n')),
        qPrintable(m_errorText));
    QVERIFY(contents(source) == bytes);
    QCOMPARE(namesIn(m_folder->path()), QStringList({ QFileInfo(source).fileName() }));
    compareUnchanged();
}

void DatabaseRestoreTest::unfinishedChangeIsRolledBackInTheCopy()
{
    const QString source = path(QStringLiteral("unfinished.dat"));
    const QString journal = source + QLatin1String("-journal");
    copyInTheMiddleOfAChange(backupFile(), source);
    const QByteArray bytes = contents(source);
    const QByteArray journalBytes = contents(journal);
    const QString link = path(QStringLiteral("link.dat"));
    QVERIFY(QFile::link(source, link));

    QCOMPARE(restoreFrom(link), Outcome::Restored);

    compareRestored();
    QVERIFY(contents(source) == bytes);
    QVERIFY(contents(journal) == journalBytes);
    // Without its journal it is not what it was.
    QVERIFY(QFile::remove(journal));
    QVERIFY(catalogueIn(source) != QLatin1String("backup"));
}

void DatabaseRestoreTest::journalThatCannotBeCopiedChangesNothing()
{
    const QString source = path(QStringLiteral("unfinished.dat"));
    const QString journal = source + QLatin1String("-journal");
    QVERIFY(QFile::copy(backupFile(), source));
    QVERIFY(QDir().mkdir(journal));

    QCOMPARE(restoreFrom(source), Outcome::Failed);

    QCOMPARE(
        m_errorText, QStringLiteral("The backup file is damaged: %1\nUnable to copy file: %2").arg(source, journal));
    compareUnchanged();
}

void DatabaseRestoreTest::backupWithAWriteAheadLogIsRefused()
{
    const QString source = path(QStringLiteral("mine.dat"));
    QVERIFY(QFile::copy(backupFile(), source));
    writeFile(source + QLatin1String("-wal"), "another program's");

    QCOMPARE(restoreFrom(source), Outcome::NotCopied);

    QCOMPARE(m_copyError, QStringLiteral("Database file is in use: ") + source);
    compareUnchanged();
}

void DatabaseRestoreTest::missingSourceChangesNothing()
{
    const QString source = path(QStringLiteral("missing.dat"));

    QCOMPARE(restoreFrom(source), Outcome::NotCopied);

    QCOMPARE(m_copyError, QStringLiteral("Source file not exists: ") + source);
    compareUnchanged();
}

void DatabaseRestoreTest::restoreFromTheDatabaseItselfIsRefused_data()
{
    QTest::addColumn<bool>("isLink");
    QTest::newRow("its path") << false;
    QTest::newRow("a link") << true;
}

void DatabaseRestoreTest::restoreFromTheDatabaseItselfIsRefused()
{
    QFETCH(bool, isLink);
    const QString source = isLink ? path(QStringLiteral("link.dat")) : m_store->filePath();
    QVERIFY(!isLink || QFile::link(m_store->filePath(), source));

    QCOMPARE(restoreFrom(source), Outcome::NotCopied);

    QCOMPARE(m_copyError, QStringLiteral("The database cannot be restored from itself: ") + source);
    compareUnchanged();
}

void DatabaseRestoreTest::restoreOfADatabaseInUseIsRefused()
{
    const QString journal = m_store->filePath() + QLatin1String("-shm");
    writeFile(journal, "another program's");

    QCOMPARE(restoreFrom(backupFile()), Outcome::NotCopied);

    QCOMPARE(m_copyError, QStringLiteral("Database file is in use: ") + m_store->filePath());
    QVERIFY(QFile::remove(journal));
    compareUnchanged();
}

void DatabaseRestoreTest::canceledRestoreChangesNothing()
{
    DatabaseRestore restore(m_store->database());
    OperationReply* reply = nullptr;
    {
        const PoolHold hold;
        reply = restore.start(backupFile());
        reply->cancel();
    }

    QCOMPARE(TestSupport::await(reply)->errorString(), QStringLiteral("Canceled"));
    QCOMPARE(restore.end(false), Outcome::NotCopied);

    compareUnchanged();
}

void DatabaseRestoreTest::readOnlyDataFolderChangesNothing()
{
    Outcome outcome = Outcome::Restored;
    {
        const ClosedFolder closed(m_store->folderPath());
        outcome = restoreFrom(backupFile());
    }

    QCOMPARE(outcome, Outcome::NotCopied);
    QVERIFY2(m_copyError.startsWith(QStringLiteral("Unable to make safety copy: ") + m_store->filePath()),
        qPrintable(m_copyError));
    compareUnchanged();
}

void DatabaseRestoreTest::folderClosedAfterTheCopyChangesNothing()
{
    DatabaseRestore restore(m_store->database());
    TestSupport::await(restore.start(backupFile()));
    Outcome outcome = Outcome::Restored;
    {
        const ClosedFolder closed(m_store->folderPath());
        outcome = restore.end(true);
    }

    QCOMPARE(outcome, Outcome::Failed);
    QCOMPARE(restore.errorText(), QStringLiteral("Unable to write target file: ") + m_store->filePath());
    QVERIFY(m_store->database().isOpened());
    QCOMPARE(m_store->records(1).size(), recordsBefore);
    QCOMPARE(catalogueIn(m_store->filePath()), QStringLiteral("present"));
}

void DatabaseRestoreTest::fullDiskChangesNothing()
{
    const qint64 size = QFileInfo(m_store->filePath()).size();
    // Too large even where no disk can be mounted and only the size of each file is limited.
    const QString largeBackup = m_folder->filePath(QStringLiteral("large.dat"));
    QVERIFY(QFile::copy(backupFile(), largeBackup));
    TestSupport::firstValue(
        largeBackup, QStringLiteral("INSERT INTO Settings VALUES('ballast', zeroblob(%1))").arg(size));
    const SmallDisk disk(size + size / 2);
    const QString file = disk.filePath(QStringLiteral("VellumcastDB.dat"));
    QVERIFY(QFile::copy(m_store->filePath(), file));
    m_store->destroy();
    Database database(file);
    QVERIFY(database.open());
    DatabaseRestore restore(database);

    const auto reply = TestSupport::await(restore.start(largeBackup));

    QVERIFY2(reply->errorString().startsWith(QStringLiteral("Unable to write target file: ") + file),
        qPrintable(reply->errorString()));
    QCOMPARE(restore.end(false), Outcome::NotCopied);
    QVERIFY(database.isOpened());
    QCOMPARE(catalogueIn(file), QStringLiteral("present"));
    QCOMPARE(namesIn(disk.path()), QStringList({ "VellumcastDB.dat" }));
}

void DatabaseRestoreTest::restoreThatIsLeftChangesNothing()
{
    {
        DatabaseRestore restore(m_store->database());
        TestSupport::await(restore.start(backupFile()));
    }

    compareUnchanged();
}

void DatabaseRestoreTest::databaseBehindALinkIsReplaced()
{
    m_store->database().close();
    const QString file = path(QStringLiteral("elsewhere.dat"));
    QVERIFY(QFile::rename(m_store->filePath(), file));
    QVERIFY(QFile::link(file, m_store->filePath()));
    m_store->open();

    QCOMPARE(restoreFrom(backupFile()), Outcome::Restored);

    QVERIFY(QFileInfo(m_store->filePath()).isSymLink());
    QCOMPARE(catalogueIn(file), QStringLiteral("backup"));
    QCOMPARE(namesIn(m_folder->path()), QStringList({ "elsewhere.dat" }));
    QCOMPARE(m_store->records(1).size(), recordsOfBackup);
}

void DatabaseRestoreTest::stagedFileThatVanishesChangesNothing()
{
    DatabaseRestore restore(m_store->database());
    TestSupport::await(restore.start(backupFile()));
    const QStringList staged = namesIn(m_store->folderPath()).filter(QStringLiteral(".restoring"));
    QCOMPARE(staged.size(), 1);
    QVERIFY(QFile::remove(m_store->folderPath() + QLatin1Char('/') + staged.first()));

    QCOMPARE(restore.end(true), Outcome::Failed);

    compareUnchanged();
}

void DatabaseRestoreTest::otherFilesInTheDataFolderStay()
{
    const QStringList others{ "VellumcastDB.dat.2020.01.01.10.10.10.000.backup", "VellumcastDB.dat.old",
        "Settings.ini" };
    for (const QString& name : others)
        writeFile(m_store->folderPath() + QLatin1Char('/') + name, name.toUtf8());

    QCOMPARE(restoreFrom(backupFile()), Outcome::Restored);

    for (const QString& name : others)
        QCOMPARE(contents(m_store->folderPath() + QLatin1Char('/') + name), name.toUtf8());
}

void DatabaseRestoreTest::endBeforeStartChangesNothing()
{
    DatabaseRestore restore(m_store->database());

    QCOMPARE(restore.end(true), Outcome::NotCopied);

    compareUnchanged();
}

QTEST_GUILESS_MAIN(DatabaseRestoreTest)
#include "tst_databaserestore.moc"
