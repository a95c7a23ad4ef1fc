// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/databasefiles.h"

#include "app/filesystem.h"
#include "tests/app/copyfixture.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using TestSupport::writeFile;

namespace {

const QString earlier = QStringLiteral("2024.01.31.23.59.59.999");
const QString later = QStringLiteral("2024.02.01.00.00.00.000");

} // namespace

class DatabaseFilesTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void namesCarryTheTime();
    void partsOfADatabaseAreRecognised();
    void companionsAreRecognised_data();
    void companionsAreRecognised();
    void removingTakesTheCompanionsAlong();
    void lastSafetyCopyReplacesAMissingCatalogue();
    void catalogueThatIsThereIsKept();
    void safetyCopyThatIsTheCatalogueIsRemoved();
    void unfinishedCopiesAreRemoved();
    void otherFilesStay();
    void recoveryFollowsALink();

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }
    QString database() const { return path(QStringLiteral("db.dat")); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void DatabaseFilesTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void DatabaseFilesTest::cleanup()
{
    m_folder.reset();
}

void DatabaseFilesTest::namesCarryTheTime()
{
    QCOMPARE(DatabaseFiles::safetyCopyPath(QStringLiteral("/a/%2.dat"), later),
        QStringLiteral("/a/%2.dat.") + later + QStringLiteral(".backup"));
    QCOMPARE(DatabaseFiles::stagingPath(QStringLiteral("/a/b.dat"), later),
        QStringLiteral("/a/b.dat.") + later + QStringLiteral(".restoring"));
}

void DatabaseFilesTest::partsOfADatabaseAreRecognised()
{
    writeFile(database(), "catalogue");
    QVERIFY(QFile::link(database(), path(QStringLiteral("link"))));

    for (const char* name : { "db.dat", "link", "./db.dat", "db.dat-journal", "db.dat-wal", "./db.dat-shm" })
        QVERIFY2(DatabaseFiles::isPartOfDatabase(path(QLatin1String(name)), database()), name);
    for (const char* name : { "db", "db.dat.backup", "other.dat-journal", "missing/db.dat-journal" })
        QVERIFY2(!DatabaseFiles::isPartOfDatabase(path(QLatin1String(name)), database()), name);
}

void DatabaseFilesTest::companionsAreRecognised_data()
{
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<bool>("isCompanion");
    QTest::newRow("none") << "" << false;
    QTest::newRow("journal") << "-journal" << true;
    QTest::newRow("write-ahead log") << "-wal" << true;
    QTest::newRow("shared memory") << "-shm" << true;
    QTest::newRow("something else") << "-old" << false;
}

void DatabaseFilesTest::companionsAreRecognised()
{
    QFETCH(QString, suffix);
    QFETCH(bool, isCompanion);
    writeFile(database() + suffix, "x");

    QCOMPARE(DatabaseFiles::hasCompanions(database()), isCompanion);
}

void DatabaseFilesTest::removingTakesTheCompanionsAlong()
{
    for (const char* suffix : { "", "-journal", "-wal", "-shm", "-old" })
        writeFile(database() + QLatin1String(suffix), "x");

    DatabaseFiles::remove(database());

    QCOMPARE(namesIn(m_folder->path()), QStringList({ "db.dat-old" }));
}

void DatabaseFilesTest::lastSafetyCopyReplacesAMissingCatalogue()
{
    writeFile(DatabaseFiles::safetyCopyPath(database(), earlier), "earlier");
    writeFile(DatabaseFiles::safetyCopyPath(database(), later), "later");

    DatabaseFiles::recoverFromInterruptedRestore(database());

    QCOMPARE(contents(database()), QByteArray("later"));
    QCOMPARE(contents(DatabaseFiles::safetyCopyPath(database(), earlier)), QByteArray("earlier"));
    QCOMPARE(namesIn(m_folder->path()).size(), 2);
}

void DatabaseFilesTest::catalogueThatIsThereIsKept()
{
    writeFile(database(), "restored");
    writeFile(DatabaseFiles::safetyCopyPath(database(), earlier), "earlier");

    DatabaseFiles::recoverFromInterruptedRestore(database());

    QCOMPARE(contents(database()), QByteArray("restored"));
    QCOMPARE(contents(DatabaseFiles::safetyCopyPath(database(), earlier)), QByteArray("earlier"));
}

void DatabaseFilesTest::safetyCopyThatIsTheCatalogueIsRemoved()
{
    writeFile(database(), "catalogue");
    QVERIFY(FileSystem::addName(database(), DatabaseFiles::safetyCopyPath(database(), later)));

    DatabaseFiles::recoverFromInterruptedRestore(database());

    QCOMPARE(namesIn(m_folder->path()), QStringList({ "db.dat" }));
    QCOMPARE(contents(database()), QByteArray("catalogue"));
}

void DatabaseFilesTest::unfinishedCopiesAreRemoved()
{
    writeFile(database(), "catalogue");
    const QString staging = DatabaseFiles::stagingPath(database(), later);
    for (const char* suffix : { "", "-journal", "-wal", ".0123abcd.part", ".0123abcd.part-journal" })
        writeFile(staging + QLatin1String(suffix), "unfinished");

    DatabaseFiles::recoverFromInterruptedRestore(database());

    QCOMPARE(namesIn(m_folder->path()), QStringList({ "db.dat" }));
}

void DatabaseFilesTest::otherFilesStay()
{
    const QStringList names{ "Settings.ini", "db.dat", "db.dat-journal", "db.dat.backup", "db.dat.mine.backup",
        "db.dat.restoring", "db.dat.0123abcd.part", "dbXdat." + later + ".backup", "db.dat." + later + ".backup.zip",
        "db.dat." + later + ".restoring.zip" };
    for (const QString& name : names)
        writeFile(path(name), "mine");

    DatabaseFiles::recoverFromInterruptedRestore(database());

    QStringList found = namesIn(m_folder->path());
    for (const QString& name : names)
        QVERIFY2(found.removeOne(name), qPrintable(name));
    QVERIFY(found.isEmpty());
}

void DatabaseFilesTest::recoveryFollowsALink()
{
    const QString file = path(QStringLiteral("elsewhere/db.dat"));
    writeFile(file, "catalogue");
    writeFile(DatabaseFiles::stagingPath(file, later), "unfinished");
    QVERIFY(QFile::link(file, database()));

    DatabaseFiles::recoverFromInterruptedRestore(database());

    QCOMPARE(namesIn(path(QStringLiteral("elsewhere"))), QStringList({ "db.dat" }));
}

QTEST_GUILESS_MAIN(DatabaseFilesTest)
#include "tst_databasefiles.moc"
