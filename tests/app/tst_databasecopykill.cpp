// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/databasefiles.h"
#include "tests/app/cataloguefiles.h"
#include "tests/app/copyfixture.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

constexpr int patience = 60000; // milliseconds
constexpr int mostSteps = 500;

struct Ending
{
    bool wasKilled = false;
    int exitCode = -1;
    int steps = 0;
};

Ending run(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral(VELLUMCAST_COPY_PROGRAM), arguments);
    if (!process.waitForFinished(patience))
        qFatal("The program does not end");
    Ending ending;
    ending.wasKilled = process.exitStatus() == QProcess::CrashExit;
    ending.exitCode = process.exitCode();
    ending.steps = process.readAllStandardOutput().simplified().split(' ').value(1).toInt();
    return ending;
}

void copyFresh(const QString& source, const QString& target)
{
    DatabaseFiles::remove(target);
    if (!QFile::copy(source, target))
        qFatal("Cannot copy %s", qPrintable(source));
}

} // namespace

// Every step of what the program does to files is one at which it is killed once.
class DatabaseCopyKillTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void killedBackupLeavesWholeFiles_data();
    void killedBackupLeavesWholeFiles();
    void killedRestoreLeavesTheOldOrTheNewCatalogue_data();
    void killedRestoreLeavesTheOldOrTheNewCatalogue();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }
    QString database() const { return path(QStringLiteral("data/VellumcastDB.dat")); }
    void resetDataFolder();

    QTemporaryDir m_folder;
};

void DatabaseCopyKillTest::initTestCase()
{
    makeCatalogue(path(QStringLiteral("old")), QStringLiteral("old"), 100);
    makeCatalogue(path(QStringLiteral("new")), QStringLiteral("new"), 130);
    QCOMPARE(catalogueIn(path(QStringLiteral("old"))), QStringLiteral("old"));
}

void DatabaseCopyKillTest::resetDataFolder()
{
    QDir(path(QStringLiteral("data"))).removeRecursively();
    QDir(path(QStringLiteral("backups"))).removeRecursively();
    QVERIFY(QDir().mkpath(path(QStringLiteral("data"))) && QDir().mkpath(path(QStringLiteral("backups"))));
    copyFresh(path(QStringLiteral("new")), database());
}

void DatabaseCopyKillTest::killedBackupLeavesWholeFiles_data()
{
    QTest::addColumn<QString>("earlierBackup");
    QTest::newRow("over an earlier backup") << "old";
    QTest::newRow("to a new file") << "missing";
}

void DatabaseCopyKillTest::killedBackupLeavesWholeFiles()
{
    QFETCH(QString, earlierBackup);
    const QString backup = path(QStringLiteral("backups/backup.dat"));
    Ending ending;
    ending.wasKilled = true;
    int step = 0;
    QStringList seen;
    for (step = 1; ending.wasKilled && step < mostSteps; ++step) {
        resetDataFolder();
        if (earlierBackup != QLatin1String("missing"))
            copyFresh(path(earlierBackup), backup);

        ending = run({ "backup", database(), backup, QString::number(step) });

        QCOMPARE(catalogueIn(database()), QStringLiteral("new"));
        seen.append(catalogueIn(backup));
        QVERIFY2(seen.last() == earlierBackup || seen.last() == QLatin1String("new"), qPrintable(seen.last()));
    }

    QCOMPARE(ending.exitCode, 0);
    qInfo("killed at each of %d steps", step - 2);
    QVERIFY(seen.count(earlierBackup) > 3);
    QCOMPARE(seen.last(), QStringLiteral("new"));
    QCOMPARE(namesIn(path(QStringLiteral("backups"))), QStringList({ "backup.dat" }));
}

void DatabaseCopyKillTest::killedRestoreLeavesTheOldOrTheNewCatalogue_data()
{
    QTest::addColumn<QString>("fileSystem");
    QTest::newRow("with second names") << "full";
    QTest::newRow("without second names") << "plain";
}

void DatabaseCopyKillTest::killedRestoreLeavesTheOldOrTheNewCatalogue()
{
    QFETCH(QString, fileSystem);
    const QString source = path(QStringLiteral("old"));
    Ending ending;
    ending.wasKilled = true;
    int step = 0;
    QStringList seen;
    for (step = 1; ending.wasKilled && step < mostSteps; ++step) {
        resetDataFolder();

        ending = run({ "restore", database(), source, QString::number(step), fileSystem });

        // Where no file has a second name, the next start of the program puts the safety copy back.
        const QString found = catalogueIn(database());
        QVERIFY2(found != QLatin1String("missing") || fileSystem == QLatin1String("plain"), "missing");
        DatabaseFiles::recoverFromInterruptedRestore(database());
        seen.append(catalogueIn(database()));
        QVERIFY2(seen.last() == QLatin1String("old") || seen.last() == QLatin1String("new"), qPrintable(seen.last()));
        QCOMPARE(catalogueIn(source), QStringLiteral("old"));
        // At most the safety copy of the catalogue that was replaced stays.
        const QStringList names = namesIn(path(QStringLiteral("data")));
        QVERIFY2(names.size() == 1 || seen.last() == QLatin1String("old"), qPrintable(names.join(' ')));
        QVERIFY2(
            names.filter(QRegularExpression(QStringLiteral("restoring|part"))).isEmpty(), qPrintable(names.join(' ')));
    }

    QCOMPARE(ending.exitCode, 0);
    qInfo("killed at each of %d steps", step - 2);
    QVERIFY(seen.count(QStringLiteral("new")) > 5);
    QVERIFY(seen.count(QStringLiteral("old")) > 1);
    QCOMPARE(namesIn(path(QStringLiteral("data"))), QStringList({ "VellumcastDB.dat" }));
}

QTEST_GUILESS_MAIN(DatabaseCopyKillTest)
#include "tst_databasecopykill.moc"
