// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/databaseschema.h"
#include "tests/store/connectionfixture.h"
#include "tests/support/storefixture.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <csignal>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

std::atomic<int> syncsCount = 0;
// Each change of the file ends with the removal of its journal; at this removal the process dies.
std::atomic<int> removalsUntilDeath = -1;

} // namespace

// These stand before those of the C library for everything that is loaded into this program, SQLite too.
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" int fdatasync(int descriptor)
{
    ++syncsCount;
    return int(::syscall(SYS_fdatasync, descriptor));
}

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" int fsync(int descriptor)
{
    ++syncsCount;
    return int(::syscall(SYS_fsync, descriptor));
}

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" int unlink(const char* path) noexcept
{
    if (removalsUntilDeath > 0 && --removalsUntilDeath == 0)
        ::kill(::getpid(), SIGKILL);
    return int(::syscall(SYS_unlink, path));
}

/// What making a new database costs the disk, and what is left of one that was not finished.
class DatabaseInstallationTest : public QObject
{
    Q_OBJECT

private slots:
    void newDatabaseHardlyWaitsForTheDisk();
    void laterWritesWaitForTheDisk();
    void lastTableIsWrittenThroughWithAllBeforeIt();
    void killedInstallationIsNoDatabaseAndCanBeginAnew_data();
    void killedInstallationIsNoDatabaseAndCanBeginAnew();

private:
    static void installAndDie(const QString& path, int removals);
};

void DatabaseInstallationTest::newDatabaseHardlyWaitsForTheDisk()
{
    TestSupport::StoreFixture store;

    syncsCount = 0;
    QVERIFY(store.database().open());

    QVERIFY2(syncsCount > 0 && syncsCount <= 20, qPrintable(QString::number(syncsCount)));
}

void DatabaseInstallationTest::laterWritesWaitForTheDisk()
{
    TestSupport::StoreFixture store;
    QVERIFY(store.database().open());

    syncsCount = 0;
    QCOMPARE(store.execute("INSERT INTO Settings (key, value) VALUES ('a', 'b')"), QString());

    QVERIFY(syncsCount > 0);
}

void DatabaseInstallationTest::lastTableIsWrittenThroughWithAllBeforeIt()
{
    const QTemporaryDir folder;
    const TestConnection connection(folder.filePath("new.dat"));
    syncsCount = 0;

    QVERIFY(installSchema(connection.connection()));

    // The journal and the file itself, with every page that was written before.
    QVERIFY(syncsCount >= 2);
}

// In a process of its own, which has no other threads.
void DatabaseInstallationTest::installAndDie(const QString& path, int removals)
{
    const pid_t child = ::fork();
    if (child == 0) {
        const TestConnection connection(path);
        applyPragmas(connection.connection());
        removalsUntilDeath = removals;
        installSchema(connection.connection());
        ::_exit(0);
    }
    int status = 0;
    QCOMPARE(::waitpid(child, &status, 0), child);
    QVERIFY(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
}

void DatabaseInstallationTest::killedInstallationIsNoDatabaseAndCanBeginAnew_data()
{
    QTest::addColumn<int>("removals");
    for (const int removals : { 1, 2, 20, 150, 314 })
        QTest::addRow("at change %d", removals) << removals;
}

void DatabaseInstallationTest::killedInstallationIsNoDatabaseAndCanBeginAnew()
{
    QFETCH(int, removals);
    TestSupport::StoreFixture store;
    const QString path = store.filePath();
    installAndDie(path, removals);

    QVERIFY(!store.database().open());
    QCOMPARE(store.database().lastError(), QStringLiteral("Invalid database structure"));
    QCOMPARE(TestConnection(path).value("PRAGMA integrity_check").toString(), QStringLiteral("ok"));

    QVERIFY(QFile::remove(path));
    QVERIFY(store.database().open());
}

QTEST_GUILESS_MAIN(DatabaseInstallationTest)

#include "tst_databaseinstallation.moc"
