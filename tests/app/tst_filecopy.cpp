// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/filecopy.h"

#include "store/operationreply.h"
#include "tests/app/copyfixture.h"
#include "tests/support/smalldisk.h"
#include "tests/support/storefixture.h"
#include "tests/support/testsupport.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

using TestSupport::SmallDisk;
using TestSupport::writeFile;

namespace {

QByteArray digest(const QString& path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha1);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file))
        qFatal("Cannot read %s", qPrintable(path));
    return hash.result();
}

} // namespace

class FileCopyTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void copyEqualsItsSource_data();
    void copyEqualsItsSource();
    void progressFollowsTheChunks();
    void folderOfTheTargetIsMade();
    void missingSourceIsAnErrorAtOnce();
    void existingTargetIsAnErrorAtOnce_data();
    void existingTargetIsAnErrorAtOnce();
    void existingTargetIsReplacedOnRequest();
    void unreadableSourceIsAnError_data();
    void unreadableSourceIsAnError();
    void unwritableTargetIsAnError_data();
    void unwritableTargetIsAnError();
    void fullDiskIsAnErrorAndLeavesNothing_data();
    void fullDiskIsAnErrorAndLeavesNothing();
    void failedReplacementKeepsTheEarlierFile();
    void canceledCopyLeavesNothing();
    void endsOfTheCopyAreToldInThisThread();

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }
    QString target() const { return path(QStringLiteral("target.dat")); }
    QString sourceOf(int size);
    QString copy(const QString& source, const QString& targetPath);

    std::unique_ptr<QTemporaryDir> m_folder;
};

void FileCopyTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void FileCopyTest::cleanup()
{
    m_folder.reset();
}

QString FileCopyTest::sourceOf(int size)
{
    const QString source = path(QStringLiteral("source.dat"));
    writeFile(source, someBytes(size));
    return source;
}

// The error text of the whole run.
QString FileCopyTest::copy(const QString& source, const QString& targetPath)
{
    return TestSupport::await(copyFile(source, targetPath))->errorString();
}

void FileCopyTest::copyEqualsItsSource_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("empty") << 0;
    QTest::newRow("one byte") << 1;
    QTest::newRow("one byte less than a chunk") << chunk - 1;
    QTest::newRow("one chunk") << chunk;
    QTest::newRow("two chunks and a byte") << 2 * chunk + 1;
}

void FileCopyTest::copyEqualsItsSource()
{
    QFETCH(int, size);
    const QString source = sourceOf(size);

    QCOMPARE(copy(source, target()), QString());

    QCOMPARE(digest(target()), digest(source));
    QCOMPARE(namesIn(m_folder->path()), QStringList({ "source.dat", "target.dat" }));
}

void FileCopyTest::progressFollowsTheChunks()
{
    const int size = 2 * chunk + 5;
    const std::unique_ptr<OperationReply> reply(copyFile(sourceOf(size), target()));
    QSignalSpy spy(reply.get(), &OperationReply::progress);

    QTRY_VERIFY(reply->isFinishedDelivered());

    const QList<QVariantList> expected{ { 0, -1 }, { chunk, size }, { 2 * chunk, size }, { size, size } };
    QCOMPARE(QList<QVariantList>(spy), expected);
    QCOMPARE(reply->progressUnit(), 1);
}

void FileCopyTest::folderOfTheTargetIsMade()
{
    const QString targetPath = path(QStringLiteral("new/folder/target.dat"));

    QCOMPARE(copy(sourceOf(100), targetPath), QString());

    QCOMPARE(QFileInfo(targetPath).size(), 100);
}

void FileCopyTest::missingSourceIsAnErrorAtOnce()
{
    const QString source = path(QStringLiteral("missing%1.dat"));

    const std::unique_ptr<OperationReply> reply(copyFile(source, target()));

    QCOMPARE(reply->errorString(), QStringLiteral("Source file not exists: ") + source);
    QTRY_VERIFY(reply->isFinishedDelivered());
    QVERIFY(namesIn(m_folder->path()).isEmpty());
}

void FileCopyTest::existingTargetIsAnErrorAtOnce_data()
{
    QTest::addColumn<bool>("isLinkToNowhere");
    QTest::newRow("a file") << false;
    QTest::newRow("a link to nowhere") << true;
}

void FileCopyTest::existingTargetIsAnErrorAtOnce()
{
    QFETCH(bool, isLinkToNowhere);
    if (isLinkToNowhere)
        QVERIFY(QFile::link(path(QStringLiteral("nowhere")), target()));
    else
        writeFile(target(), "earlier");

    const std::unique_ptr<OperationReply> reply(copyFile(sourceOf(100), target()));

    QCOMPARE(reply->errorString(), QStringLiteral("Target file already exists: ") + target());
    QTRY_VERIFY(reply->isFinishedDelivered());
    QVERIFY(!QFileInfo::exists(path(QStringLiteral("nowhere"))));
}

void FileCopyTest::existingTargetIsReplacedOnRequest()
{
    writeFile(target(), "earlier");
    const QString source = sourceOf(100);

    const auto reply = TestSupport::await(copyFile(source, target(), ExistingTarget::Replace));

    QCOMPARE(reply->errorString(), QString());
    QCOMPARE(digest(target()), digest(source));
    QCOMPARE(namesIn(m_folder->path()), QStringList({ "source.dat", "target.dat" }));
}

void FileCopyTest::unreadableSourceIsAnError_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("a folder") << "folder";
    QTest::newRow("a pipe") << "pipe";
    QTest::newRow("a file without permission") << "file";
}

void FileCopyTest::unreadableSourceIsAnError()
{
    QFETCH(QString, kind);
    const QString source = path(QStringLiteral("inner/source"));
    writeFile(source, "secret");
    QVERIFY(QFile::setPermissions(source, {}));
    if (kind != QLatin1String("file"))
        QVERIFY(QFile::remove(source));
    if (kind == QLatin1String("folder"))
        QVERIFY(QDir().mkpath(source));
    if (kind == QLatin1String("pipe"))
        QCOMPARE(::mkfifo(source.toLocal8Bit().constData(), 0600), 0);
    const ClosedFolder closed(path(QStringLiteral("inner")));

    QCOMPARE(copy(source, target()), QStringLiteral("Unable to open source file for reading: ") + source);

    QVERIFY(!QFileInfo::exists(target()));
}

void FileCopyTest::unwritableTargetIsAnError_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("in a read-only folder") << "closed/target.dat";
    QTest::newRow("below a file") << "source.dat/target.dat";
    QTest::newRow("with a name that is too long") << QString(300, 'n');
}

void FileCopyTest::unwritableTargetIsAnError()
{
    QFETCH(QString, name);
    const QString source = sourceOf(100);
    QVERIFY(QDir().mkpath(path(QStringLiteral("closed"))));
    const ClosedFolder closed(path(QStringLiteral("closed")));

    const QString errorText = copy(source, path(name));

    // What is wrong with a name shows when it is given.
    const QString pattern = name.size() > 255 ? QStringLiteral("Unable to write target file: ")
                                              : QStringLiteral("Unable to open target file for writing: ");
    QCOMPARE(errorText, pattern + path(name));
    QCOMPARE(namesIn(m_folder->path()), QStringList({ "closed", "source.dat" }));
    QVERIFY(namesIn(path(QStringLiteral("closed"))).isEmpty());
}

void FileCopyTest::fullDiskIsAnErrorAndLeavesNothing_data()
{
    QTest::addColumn<int>("room");
    QTest::newRow("full at the first chunk") << chunk / 2;
    QTest::newRow("full at the second chunk") << chunk + chunk / 2;
    QTest::newRow("full at the last byte") << 3 * chunk;
}

void FileCopyTest::fullDiskIsAnErrorAndLeavesNothing()
{
    QFETCH(int, room);
    const QString source = sourceOf(3 * chunk + 1);
    const SmallDisk disk(room);
    const QString targetPath = disk.filePath(QStringLiteral("target.dat"));

    QCOMPARE(copy(source, targetPath), QStringLiteral("Unable to write target file: ") + targetPath);

    QVERIFY(namesIn(disk.path()).isEmpty());
}

void FileCopyTest::failedReplacementKeepsTheEarlierFile()
{
    const QString source = sourceOf(3 * chunk);
    const SmallDisk disk(2 * chunk);
    const QString targetPath = disk.filePath(QStringLiteral("target.dat"));
    writeFile(targetPath, "earlier");

    const auto reply = TestSupport::await(copyFile(source, targetPath, ExistingTarget::Replace));

    QCOMPARE(reply->errorString(), QStringLiteral("Unable to write target file: ") + targetPath);
    QFile file(targetPath);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("earlier"));
    QCOMPARE(namesIn(disk.path()), QStringList({ "target.dat" }));
}

void FileCopyTest::canceledCopyLeavesNothing()
{
    writeFile(target(), "earlier");
    OperationReply* reply = nullptr;
    {
        const PoolHold hold;
        reply = copyFile(sourceOf(chunk), target(), ExistingTarget::Replace);
        reply->cancel();
    }

    const auto ended = TestSupport::await(reply);

    QCOMPARE(ended->errorString(), QStringLiteral("Canceled"));
    QCOMPARE(namesIn(m_folder->path()), QStringList({ "source.dat", "target.dat" }));
    QCOMPARE(QFileInfo(target()).size(), 7);
}

void FileCopyTest::endsOfTheCopyAreToldInThisThread()
{
    OperationReply* reply = copyFile(sourceOf(chunk), target());
    const QThread* thread = nullptr;
    connect(
        reply, &OperationReply::finished, reply, [&thread]() { thread = QThread::currentThread(); },
        Qt::DirectConnection);

    TestSupport::await(reply);

    QCOMPARE(thread, QThread::currentThread());
}

QTEST_GUILESS_MAIN(FileCopyTest)
#include "tst_filecopy.moc"
