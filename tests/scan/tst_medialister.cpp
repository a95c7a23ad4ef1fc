// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/medialister.h"

#include "tests/scan/permissions.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <filesystem>

#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

class MediaListerTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void onlyTheFourSuffixesAreFound();
    void hiddenNamesArePassedOver();
    void directlyNamedFileIsTakenWhateverItsSuffix();
    void missingPathIsDropped();
    void filesComeLevelByLevel();
    void sameFolderTwiceListsFilesTwice();
    void givenPathsAreCleaned();
    void relativePathsBecomeAbsolute();
    void folderNamedLikeAFileIsEntered();
    void onlyRegularFilesAreListed();
    void linksToFilesAndFoldersAreFollowed();
    void linkToItsParentEnds();
    void linkToAFolderAboveTheGivenOneListsEachFolderOnceOnItsWay();
    void foldersLinkedToEachOtherEnd();
    void siblingsLinkedTwiceAreListedTwice();
    void deepFoldersAreReached();
    void undecodableNamesAreListed();
    void unreadableFolderIsReported();
    void canceledListingStops();
    void cancellationIsAskedForInsideALargeFolder();

private:
    void touch(const QString& name);
    void link(const QString& target, const QString& name);
    QStringList list(const QStringList& names = { QString() }) const;
    QStringList sortedList(const QStringList& names = { QString() }) const;

    QScopedPointer<QTemporaryDir> m_folder;
};

void MediaListerTest::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
}

void MediaListerTest::touch(const QString& name)
{
    TestSupport::writeFile(m_folder->filePath(name), {});
}

void MediaListerTest::link(const QString& target, const QString& name)
{
    QVERIFY(::symlink(qPrintable(target), qPrintable(m_folder->filePath(name))) == 0);
}

// Lists names below the test's folder; the result is relative to it.
QStringList MediaListerTest::list(const QStringList& names) const
{
    QStringList paths;
    for (const QString& name : names)
        paths.append(name.isEmpty() ? m_folder->path() : m_folder->filePath(name));
    QStringList files = listMediaFiles(paths, mediaFileFilters());
    for (QString& file : files)
        file = QDir(m_folder->path()).relativeFilePath(file);
    return files;
}

QStringList MediaListerTest::sortedList(const QStringList& names) const
{
    QStringList files = list(names);
    files.sort();
    return files;
}

void MediaListerTest::onlyTheFourSuffixesAreFound()
{
    const QStringList found{ "a.wav", "b.mp3", "c.aif", "d.aiff", "e.WAV", "f.Mp3", "g.x.AIFF" };
    for (const QString& name : found)
        touch(name);
    for (const char* name : { "a.txt", "wav", "b.wave", "c.wav.bak", "d.aifc", "e.mp3 " })
        touch(QLatin1String(name));

    QCOMPARE(sortedList(), found);
}

void MediaListerTest::hiddenNamesArePassedOver()
{
    for (const char* name : { "a.wav", ".b.wav", ".wav", ".hidden/c.wav", "folder/.deeper/d.wav", "..e.wav" })
        touch(QLatin1String(name));

    QCOMPARE(list(), QStringList{ "a.wav" });
}

void MediaListerTest::directlyNamedFileIsTakenWhateverItsSuffix()
{
    touch(QStringLiteral("a.flac"));
    touch(QStringLiteral(".hidden"));

    QCOMPARE(list({ "a.flac", ".hidden" }), QStringList({ "a.flac", ".hidden" }));
}

void MediaListerTest::missingPathIsDropped()
{
    touch(QStringLiteral("a.wav"));

    QCOMPARE(list({ "missing.wav", "a.wav", "missing" }), QStringList{ "a.wav" });
    QCOMPARE(listMediaFiles({ QString() }, mediaFileFilters()), QStringList());
}

void MediaListerTest::filesComeLevelByLevel()
{
    for (const char* name : { "f/1.wav", "f/x/2.wav", "f/x/y/3.wav", "g/1.wav", "direct.wav" })
        touch(QLatin1String(name));

    QCOMPARE(list({ "f", "direct.wav", "g" }),
        QStringList({ "direct.wav", "f/1.wav", "g/1.wav", "f/x/2.wav", "f/x/y/3.wav" }));
}

void MediaListerTest::sameFolderTwiceListsFilesTwice()
{
    touch(QStringLiteral("f/a.wav"));

    QCOMPARE(list({ "f", "f", "f/a.wav" }), QStringList({ "f/a.wav", "f/a.wav", "f/a.wav" }));
}

void MediaListerTest::givenPathsAreCleaned()
{
    touch(QStringLiteral("f/a.wav"));
    const QString expected = m_folder->filePath(QStringLiteral("f/a.wav"));

    for (const char* spelling : { "/f", "/f/", "//f//", "/./f", "/f/../f/.", "/f/a.wav", "/f//a.wav" }) {
        QCOMPARE(listMediaFiles({ m_folder->path() + QLatin1String(spelling) }, mediaFileFilters()),
            QStringList{ expected });
    }
}

void MediaListerTest::relativePathsBecomeAbsolute()
{
    touch(QStringLiteral("f/a.wav"));
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder->path()));

    const QStringList files = listMediaFiles({ QStringLiteral("f") }, mediaFileFilters());
    QVERIFY(QDir::setCurrent(before));

    QCOMPARE(files, QStringList{ m_folder->filePath(QStringLiteral("f/a.wav")) });
}

void MediaListerTest::folderNamedLikeAFileIsEntered()
{
    touch(QStringLiteral("folder.wav/a.wav"));

    QCOMPARE(list(), QStringList{ "folder.wav/a.wav" });
}

void MediaListerTest::onlyRegularFilesAreListed()
{
    touch(QStringLiteral("a.wav"));
    QCOMPARE(::mkfifo(qPrintable(m_folder->filePath(QStringLiteral("pipe.wav"))), 0600), 0);
    link(QStringLiteral("/dev/zero"), QStringLiteral("device.wav"));
    link(QStringLiteral("loop.wav"), QStringLiteral("loop.wav"));
    link(QStringLiteral("missing.wav"), QStringLiteral("broken.wav"));

    QCOMPARE(list(), QStringList{ "a.wav" });
    QCOMPARE(list({ "pipe.wav", "device.wav", "loop.wav", "broken.wav" }), QStringList());
}

void MediaListerTest::linksToFilesAndFoldersAreFollowed()
{
    touch(QStringLiteral("real/a.wav"));
    touch(QStringLiteral("real/deep/b.wav"));
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("f")));
    link(QStringLiteral("../real/a.wav"), QStringLiteral("f/linked.wav"));
    link(QStringLiteral("../real"), QStringLiteral("f/folder"));

    QCOMPARE(sortedList({ "f" }), QStringList({ "f/folder/a.wav", "f/folder/deep/b.wav", "f/linked.wav" }));
    QCOMPARE(sortedList({ "f/folder" }), QStringList({ "f/folder/a.wav", "f/folder/deep/b.wav" }));
}

void MediaListerTest::linkToItsParentEnds()
{
    touch(QStringLiteral("f/a.wav"));
    touch(QStringLiteral("f/x/b.wav"));
    link(QStringLiteral("."), QStringLiteral("f/self"));
    link(QStringLiteral(".."), QStringLiteral("f/x/parent"));
    link(m_folder->path(), QStringLiteral("f/x/top"));

    QCOMPARE(sortedList(), QStringList({ "f/a.wav", "f/x/b.wav" }));
}

void MediaListerTest::linkToAFolderAboveTheGivenOneListsEachFolderOnceOnItsWay()
{
    touch(QStringLiteral("top/f/a.wav"));
    touch(QStringLiteral("top/b.wav"));
    link(QStringLiteral(".."), QStringLiteral("top/f/up"));

    // The upper folder is new on the way, the given one below it is not.
    QCOMPARE(sortedList({ "top/f" }), QStringList({ "top/f/a.wav", "top/f/up/b.wav" }));
}

void MediaListerTest::foldersLinkedToEachOtherEnd()
{
    touch(QStringLiteral("a/1.wav"));
    touch(QStringLiteral("b/2.wav"));
    link(QStringLiteral("../b"), QStringLiteral("a/to b"));
    link(QStringLiteral("../a"), QStringLiteral("b/to a"));

    QCOMPARE(sortedList(), QStringList({ "a/1.wav", "a/to b/2.wav", "b/2.wav", "b/to a/1.wav" }));
}

void MediaListerTest::siblingsLinkedTwiceAreListedTwice()
{
    touch(QStringLiteral("f/real/a.wav"));
    link(QStringLiteral("real"), QStringLiteral("f/one"));
    link(QStringLiteral("real"), QStringLiteral("f/two"));
    // A name that only begins like that of a folder on the way.
    touch(QStringLiteral("f/re/b.wav"));
    link(QStringLiteral("../re"), QStringLiteral("f/real/other"));

    QCOMPARE(sortedList(),
        QStringList({ "f/one/a.wav", "f/one/other/b.wav", "f/re/b.wav", "f/real/a.wav", "f/real/other/b.wav",
            "f/two/a.wav", "f/two/other/b.wav" }));
}

void MediaListerTest::deepFoldersAreReached()
{
    const QString name = QStringLiteral("level/").repeated(300) + QStringLiteral("a.wav");
    touch(name);

    QCOMPARE(list(), QStringList{ name });
}

void MediaListerTest::undecodableNamesAreListed()
{
    const QByteArray folder = QFile::encodeName(m_folder->path());
    QCOMPARE(::mkdir((folder + "/caf\xe9").constData(), 0700), 0);
    for (const char* name : { "/caf\xe9.wav", "/caf\xe9/a.wav", "/caf\xe9.txt" }) {
        FILE* stream = ::fopen((folder + name).constData(), "wb");
        QVERIFY(stream && ::fclose(stream) == 0);
    }

    const QString readable = QStringLiteral("caf") + QChar(QChar::ReplacementCharacter);
    const QStringList files = sortedList();
    // QTemporaryDir could not remove them.
    std::filesystem::remove_all((folder + "/caf\xe9").constData());
    std::filesystem::remove((folder + "/caf\xe9.wav").constData());
    std::filesystem::remove((folder + "/caf\xe9.txt").constData());

    QCOMPARE(files, QStringList({ readable + QStringLiteral(".wav"), readable + QStringLiteral("/a.wav") }));
}

void MediaListerTest::unreadableFolderIsReported()
{
    touch(QStringLiteral("a.wav"));
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("locked")));
    const QString locked = m_folder->filePath(QStringLiteral("locked"));
    QVERIFY(QFile::setPermissions(locked, {}));
    const PermissionsCount permissionsCount;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Unable to list folder: .*/locked ")));

    QStringList unreadFolders;
    const QStringList files = listMediaFiles({ m_folder->path() }, mediaFileFilters(), {}, &unreadFolders);
    QVERIFY(QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner));

    QCOMPARE(files, QStringList{ m_folder->filePath("a.wav") });
    QCOMPARE(unreadFolders, QStringList{ locked });
}

void MediaListerTest::canceledListingStops()
{
    touch(QStringLiteral("a.wav"));

    QCOMPARE(listMediaFiles({ m_folder->path() }, mediaFileFilters(), []() { return true; }), QStringList());
}

void MediaListerTest::cancellationIsAskedForInsideALargeFolder()
{
    for (int number = 0; number < 100; ++number)
        touch(QStringLiteral("%1.txt").arg(number));
    int questions = 0;
    const auto isCanceled = [&questions]() {
        return ++questions > 10;
    };

    listMediaFiles({ m_folder->path() }, mediaFileFilters(), isCanceled);

    // Asked again where the walk itself ends, not for the entries that are left.
    QVERIFY2(questions > 10 && questions < 20, qPrintable(QString::number(questions)));
}

QTEST_GUILESS_MAIN(MediaListerTest)
#include "tst_medialister.moc"
