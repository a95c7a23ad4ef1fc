// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/filesystem.h"

#include "tests/app/copyfixture.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using TestSupport::writeFile;

class FileSystemTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void nameOfALinkToNowhereIsTaken();
    void folderThatIsClosedTakesNoFiles();
    void fileWithoutPermissionIsNotReadable();
    void sameFileIsRecognisedThroughLinks();
    void filesOfTheSameContentsAreNotTheSame();
    void missingFileIsTheSameAsNone();
    void renamingReplaces();
    void renamingToANewNameRefusesATakenOne();
    void secondNameIsTheSameFile();
    void secondNameThatIsTakenIsRefused();

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void FileSystemTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    writeFile(path(QStringLiteral("one")), "first");
    writeFile(path(QStringLiteral("two")), "second");
}

void FileSystemTest::nameOfALinkToNowhereIsTaken()
{
    QVERIFY(QFile::link(path(QStringLiteral("nowhere")), path(QStringLiteral("link"))));

    QVERIFY(FileSystem::isNameTaken(path(QStringLiteral("link"))));
    QVERIFY(FileSystem::isNameTaken(path(QStringLiteral("one"))));
    QVERIFY(!FileSystem::isNameTaken(path(QStringLiteral("nowhere"))));
}

void FileSystemTest::folderThatIsClosedTakesNoFiles()
{
    QVERIFY(FileSystem::isWritableFolder(m_folder->path()));
    QVERIFY(!FileSystem::isWritableFolder(path(QStringLiteral("one"))));
    QVERIFY(!FileSystem::isWritableFolder(path(QStringLiteral("missing"))));
    QVERIFY(!FileSystem::isWritableFolder(QString()));

    const ClosedFolder closed(m_folder->path());
    QVERIFY(!FileSystem::isWritableFolder(m_folder->path()));
}

void FileSystemTest::fileWithoutPermissionIsNotReadable()
{
    QVERIFY(QFile::setPermissions(path(QStringLiteral("two")), {}));
    const PermissionsCount permissionsCount;

    QVERIFY(FileSystem::isReadable(path(QStringLiteral("one"))));
    QVERIFY(!FileSystem::isReadable(path(QStringLiteral("two"))));
    QVERIFY(!FileSystem::isReadable(path(QStringLiteral("missing"))));
}

void FileSystemTest::sameFileIsRecognisedThroughLinks()
{
    QVERIFY(QFile::link(path(QStringLiteral("one")), path(QStringLiteral("symbolic"))));
    QVERIFY(FileSystem::addName(path(QStringLiteral("one")), path(QStringLiteral("hard"))));
    QVERIFY(QDir().mkpath(path(QStringLiteral("inner"))));

    for (const char* name : { "one", "symbolic", "hard", "inner/../one", "./one" })
        QVERIFY2(FileSystem::isSameFile(path(QStringLiteral("one")), path(QString::fromLatin1(name))), name);
}

void FileSystemTest::filesOfTheSameContentsAreNotTheSame()
{
    writeFile(path(QStringLiteral("two")), "first");

    QVERIFY(!FileSystem::isSameFile(path(QStringLiteral("one")), path(QStringLiteral("two"))));
}

void FileSystemTest::missingFileIsTheSameAsNone()
{
    QVERIFY(!FileSystem::isSameFile(path(QStringLiteral("missing")), path(QStringLiteral("missing"))));
    QVERIFY(!FileSystem::isSameFile(path(QStringLiteral("one")), path(QStringLiteral("missing"))));
}

void FileSystemTest::renamingReplaces()
{
    QVERIFY(FileSystem::renameReplacing(path(QStringLiteral("one")), path(QStringLiteral("two"))));

    QCOMPARE(namesIn(m_folder->path()), QStringList({ "two" }));
    QCOMPARE(contents(path(QStringLiteral("two"))), QByteArray("first"));
}

void FileSystemTest::renamingToANewNameRefusesATakenOne()
{
    QVERIFY(!FileSystem::renameToNew(path(QStringLiteral("one")), path(QStringLiteral("two"))));
    QCOMPARE(contents(path(QStringLiteral("two"))), QByteArray("second"));

    QVERIFY(FileSystem::renameToNew(path(QStringLiteral("one")), path(QStringLiteral("three"))));
    QCOMPARE(namesIn(m_folder->path()), QStringList({ "three", "two" }));
}

void FileSystemTest::secondNameIsTheSameFile()
{
    QVERIFY(FileSystem::addName(path(QStringLiteral("one")), path(QStringLiteral("three"))));

    QVERIFY(QFile::remove(path(QStringLiteral("one"))));
    QCOMPARE(contents(path(QStringLiteral("three"))), QByteArray("first"));
}

void FileSystemTest::secondNameThatIsTakenIsRefused()
{
    QVERIFY(!FileSystem::addName(path(QStringLiteral("one")), path(QStringLiteral("two"))));
    QVERIFY(!FileSystem::addName(path(QStringLiteral("missing")), path(QStringLiteral("three"))));

    QCOMPARE(contents(path(QStringLiteral("two"))), QByteArray("second"));
}

QTEST_GUILESS_MAIN(FileSystemTest)
#include "tst_filesystem.moc"
