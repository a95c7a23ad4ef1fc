// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/filecopy.h"

#include "store/operationreply.h"
#include "tests/app/copyfixture.h"
#include "tests/support/smalldisk.h"
#include "tests/support/storefixture.h"
#include "tests/support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using TestSupport::SmallDisk;
using TestSupport::writeFile;

class FilesCopyTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void emptyListIsAnErrorAtOnce();
    void invalidFolderIsAnErrorAtOnce_data();
    void invalidFolderIsAnErrorAtOnce();
    void filesAreCopiedUnderTheirNames();
    void existingFileIsSkippedWithAWarning();
    void secondFileOfTheSameNameIsSkippedWithAWarning();
    void fileIsNotCopiedOntoItself();
    void invalidSourceIsSkippedWithAWarning_data();
    void invalidSourceIsSkippedWithAWarning();
    void warningsOfManyMissingFilesComeTogether();
    void sourceThatIsAFolderIsAWarning();
    void permissionsAreCopied();
    void fullDiskIsAWarningAndLeavesNoPart();
    void cancelRemovesWhatWasCopiedAndNothingElse();
    void cancelWarnsOfWhatCannotBeRemoved();

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }
    QString workFolder() const { return path(QStringLiteral("work")); }
    QStringList sources(const QStringList& names, int size = 1000);
    QStringList warningsOf(OperationReply* reply);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<OperationReply> m_reply;
    QList<QVariantList> m_progress;
};

void FilesCopyTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir().mkpath(workFolder()));
}

void FilesCopyTest::cleanup()
{
    m_reply.reset();
    m_folder.reset();
}

// Makes files of these names, each with its own bytes; their paths.
QStringList FilesCopyTest::sources(const QStringList& names, int size)
{
    QStringList paths;
    for (const QString& name : names) {
        paths.append(path(QStringLiteral("sounds/") + name));
        writeFile(paths.last(), QByteArray(size, name.at(0).toLatin1()));
    }
    return paths;
}

// Waits for the end; the reply and its progress are kept.
QStringList FilesCopyTest::warningsOf(OperationReply* reply)
{
    m_reply.reset(reply);
    QSignalSpy progress(reply, &OperationReply::progress);
    QStringList warnings;
    connect(reply, &OperationReply::warnings, reply, [&warnings](const QStringList& values) { warnings += values; });
    m_reply = TestSupport::await(m_reply.release());
    m_progress = progress;
    return warnings;
}

void FilesCopyTest::emptyListIsAnErrorAtOnce()
{
    const std::unique_ptr<OperationReply> reply(copyFiles({}, workFolder()));

    QCOMPARE(reply->errorString(), QStringLiteral("Source file paths list is empty"));
    QTRY_VERIFY(reply->isFinishedDelivered());
}

void FilesCopyTest::invalidFolderIsAnErrorAtOnce_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing") << "missing%1";
    QTest::newRow("a file") << "sounds/a.wav";
    QTest::newRow("not writable") << "closed";
}

void FilesCopyTest::invalidFolderIsAnErrorAtOnce()
{
    QFETCH(QString, name);
    const QStringList paths = sources({ "a.wav" });
    QVERIFY(QDir().mkpath(path(QStringLiteral("closed"))));
    const ClosedFolder closed(path(QStringLiteral("closed")));

    const std::unique_ptr<OperationReply> reply(copyFiles(paths, path(name)));

    QCOMPARE(reply->errorString(), QStringLiteral("Target directory is not valid: ") + path(name));
    QTRY_VERIFY(reply->isFinishedDelivered());
}

void FilesCopyTest::filesAreCopiedUnderTheirNames()
{
    const QStringList paths = sources({ "a.wav", "ü %1.mp3", "empty.aif" });
    writeFile(paths.last(), QByteArray());

    QCOMPARE(warningsOf(copyFiles(paths, workFolder())), QStringList());

    QVERIFY(!m_reply->hasError());
    QCOMPARE(namesIn(workFolder()), QStringList({ "a.wav", "empty.aif", "ü %1.mp3" }));
    for (const QString& source : paths)
        QCOMPARE(contents(workFolder() + QLatin1Char('/') + QFileInfo(source).fileName()), contents(source));
    QCOMPARE(m_progress, QList<QVariantList>({ { 0, 3 }, { 1, 3 }, { 2, 3 }, { 3, 3 } }));
}

void FilesCopyTest::existingFileIsSkippedWithAWarning()
{
    const QStringList paths = sources({ "a.wav", "b.wav", "c.wav" });
    const QString existing = workFolder() + QLatin1String("/b.wav");
    writeFile(existing, "user's own");

    QCOMPARE(warningsOf(copyFiles(paths, workFolder())),
        QStringList({ "Target file with the same name exists: " + existing }));

    QVERIFY(!m_reply->hasError());
    QCOMPARE(contents(existing), QByteArray("user's own"));
    QCOMPARE(m_progress.last(), QVariantList({ 2, 3 }));
}

void FilesCopyTest::secondFileOfTheSameNameIsSkippedWithAWarning()
{
    QStringList paths = sources({ "a.wav" });
    paths.append(path(QStringLiteral("other/a.wav")));
    writeFile(paths.last(), "other");

    QCOMPARE(warningsOf(copyFiles(paths, workFolder())),
        QStringList({ "Target file with the same name exists: " + workFolder() + "/a.wav" }));

    QCOMPARE(contents(workFolder() + QLatin1String("/a.wav")), contents(paths.first()));
}

void FilesCopyTest::fileIsNotCopiedOntoItself()
{
    const QStringList paths = sources({ "a.wav" });

    QCOMPARE(warningsOf(copyFiles(paths, path(QStringLiteral("sounds")))),
        QStringList({ "Target file with the same name exists: " + paths.first() }));

    QCOMPARE(contents(paths.first()).size(), 1000);
}

void FilesCopyTest::invalidSourceIsSkippedWithAWarning_data()
{
    QTest::addColumn<bool>("exists");
    QTest::newRow("missing") << false;
    QTest::newRow("unreadable") << true;
}

void FilesCopyTest::invalidSourceIsSkippedWithAWarning()
{
    QFETCH(bool, exists);
    const QStringList paths = sources({ "a.wav", "b.wav" });
    QVERIFY(exists ? QFile::setPermissions(paths.first(), {}) : QFile::remove(paths.first()));
    const ClosedFolder closed(path(QStringLiteral("sounds")));

    QCOMPARE(warningsOf(copyFiles(paths, workFolder())), QStringList({ "Invalid source file: " + paths.first() }));

    QVERIFY(!m_reply->hasError());
    QCOMPARE(namesIn(workFolder()), QStringList({ "b.wav" }));
}

void FilesCopyTest::warningsOfManyMissingFilesComeTogether()
{
    QStringList paths;
    QStringList expected;
    for (int number = 0; number < 20000; ++number) {
        paths.append(path(QStringLiteral("missing/%1.wav").arg(number)));
        expected.append(QStringLiteral("Invalid source file: ") + paths.last());
    }
    OperationReply* reply = copyFiles(paths, workFolder());
    const QSignalSpy warnings(reply, &OperationReply::warnings);

    QVERIFY(warningsOf(reply) == expected);

    // One before the first interval, and one at the end.
    QVERIFY(warnings.count() <= m_reply->elapsed() / 100 + 2);
}

void FilesCopyTest::sourceThatIsAFolderIsAWarning()
{
    const QString folder = path(QStringLiteral("sounds/folder"));
    QVERIFY(QDir().mkpath(folder));

    QCOMPARE(warningsOf(copyFiles({ folder }, workFolder())), QStringList({ "Unable to copy file: " + folder }));

    QVERIFY(namesIn(workFolder()).isEmpty());
}

void FilesCopyTest::permissionsAreCopied()
{
    const QStringList paths = sources({ "a.wav" });
    QVERIFY(QFile::setPermissions(paths.first(), QFileDevice::ReadOwner | QFileDevice::ReadOther));

    QCOMPARE(warningsOf(copyFiles(paths, workFolder())), QStringList());

    QCOMPARE(QFile::permissions(workFolder() + QLatin1String("/a.wav")), QFile::permissions(paths.first()));
}

void FilesCopyTest::fullDiskIsAWarningAndLeavesNoPart()
{
    const QStringList paths = sources({ "small.wav" }, 1000) + sources({ "large.wav" }, 3000000);
    const SmallDisk disk(1000000);

    QCOMPARE(warningsOf(copyFiles({ paths.at(1), paths.at(0) }, disk.path())),
        QStringList({ "Unable to copy file: " + paths.at(1) }));

    QCOMPARE(namesIn(disk.path()), QStringList({ "small.wav" }));
    QCOMPARE(m_progress.last(), QVariantList({ 1, 2 }));
}

// The last source is so large that the cancel comes while it is copied at the latest.
void FilesCopyTest::cancelRemovesWhatWasCopiedAndNothingElse()
{
    QStringList paths = sources({ "a.wav", "b.wav" });
    paths.append(path(QStringLiteral("sounds/huge.wav")));
    writeFile(paths.last(), "huge");
    QVERIFY(QFile::resize(paths.last(), Q_INT64_C(1) << 40));
    writeFile(workFolder() + QLatin1String("/mine.wav"), "user's own");
    OperationReply* reply = copyFiles(paths, workFolder());
    connect(reply, &OperationReply::progress, reply, [reply](int value, int) {
        if (value == 2)
            reply->cancel();
    });

    QCOMPARE(warningsOf(reply), QStringList());

    QCOMPARE(m_reply->errorString(), QStringLiteral("Canceled"));
    QCOMPARE(namesIn(workFolder()), QStringList({ "mine.wav" }));
    QCOMPARE(m_progress, QList<QVariantList>({ { 0, 3 }, { 1, 3 }, { 2, 3 }, { 1, 3 }, { 0, 3 } }));
}

void FilesCopyTest::cancelWarnsOfWhatCannotBeRemoved()
{
    QStringList paths = sources({ "a.wav", "b.wav" });
    paths.append(path(QStringLiteral("sounds/huge.wav")));
    writeFile(paths.last(), "huge");
    QVERIFY(QFile::resize(paths.last(), Q_INT64_C(1) << 40));
    const QString gone = workFolder() + QLatin1String("/a.wav");
    OperationReply* reply = copyFiles(paths, workFolder());
    connect(reply, &OperationReply::progress, reply, [reply, &gone](int value, int) {
        if (value != 2)
            return;
        QFile::remove(gone);
        reply->cancel();
    });

    QCOMPARE(warningsOf(reply), QStringList({ "Unable to remove copied file: " + gone }));

    QVERIFY(namesIn(workFolder()).isEmpty());
    QCOMPARE(m_progress.last(), QVariantList({ 0, 3 }));
}

QTEST_GUILESS_MAIN(FilesCopyTest)
#include "tst_filescopy.moc"
