// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/filewarmup.h"
#include "tests/support/filelocks.h"
#include "tests/support/messagerecorder.h"
#include "tests/support/testsupport.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr qint64 blockSize = 10485760;

// A file of this size without contents on the disk.
void makeSparseFile(const QString& path, qint64 size)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !file.resize(size))
        qFatal("Cannot make %s", qPrintable(path));
}

// A file that this process has locked, as a database in a transaction is.
class LockedFile final
{
public:
    explicit LockedFile(const QString& path)
        : m_path(QFile::encodeName(path))
        , m_descriptor(::open(m_path.constData(), O_RDWR | O_CLOEXEC))
    {
        flock lock = writeLock();
        if (m_descriptor < 0 || ::fcntl(m_descriptor, F_SETLK, &lock) < 0)
            qFatal("Cannot lock %s", m_path.constData());
    }
    ~LockedFile() { ::close(m_descriptor); }
    Q_DISABLE_COPY(LockedFile)

    bool isLockedForOthers() const { return TestSupport::isLockedForOthers(QFile::decodeName(m_path)); }

private:
    static flock writeLock()
    {
        flock lock = {};
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        return lock;
    }

    QByteArray m_path;
    int m_descriptor;
};

} // namespace

class FileWarmUpTest : public QObject
{
    Q_OBJECT

private slots:
    void fileIsReadToItsEnd_data();
    void fileIsReadToItsEnd();
    void stopEndsTheReadingOfAHugeFile();
    void startStopsTheReadingBefore();
    void destroyingStopsTheReading();
    void missingFileEndsItSilently();
    void locksOfTheProcessStay();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void FileWarmUpTest::fileIsReadToItsEnd_data()
{
    QTest::addColumn<qint64>("size");

    QTest::newRow("empty") << qint64(0);
    QTest::newRow("small") << qint64(5);
    QTest::newRow("one block") << blockSize;
    QTest::newRow("two blocks and a bit") << 2 * blockSize + 1;
}

void FileWarmUpTest::fileIsReadToItsEnd()
{
    QFETCH(qint64, size);
    makeSparseFile(path("whole"), size);
    FileWarmUp warmUp;

    warmUp.start(path("whole"));
    warmUp.waitForFinished();

    QCOMPARE(warmUp.bytesRead(), size);
}

void FileWarmUpTest::stopEndsTheReadingOfAHugeFile()
{
    const qint64 size = Q_INT64_C(1) << 40;
    makeSparseFile(path("huge"), size);
    FileWarmUp warmUp;

    warmUp.start(path("huge"));
    QTRY_VERIFY(warmUp.bytesRead() > 0);
    warmUp.stop();

    const qint64 bytesRead = warmUp.bytesRead();
    QVERIFY(bytesRead < size);
    QCOMPARE(bytesRead % blockSize, Q_INT64_C(0));
}

void FileWarmUpTest::startStopsTheReadingBefore()
{
    makeSparseFile(path("huge"), Q_INT64_C(1) << 40);
    makeSparseFile(path("small"), 5);
    FileWarmUp warmUp;
    warmUp.start(path("huge"));

    warmUp.start(path("small"));
    warmUp.waitForFinished();

    QCOMPARE(warmUp.bytesRead(), Q_INT64_C(5));
}

void FileWarmUpTest::destroyingStopsTheReading()
{
    makeSparseFile(path("huge"), Q_INT64_C(1) << 40);
    auto warmUp = std::make_unique<FileWarmUp>();
    warmUp->start(path("huge"));
    QTRY_VERIFY(warmUp->bytesRead() > 0);

    warmUp.reset();

    QTRY_COMPARE(QThreadPool::globalInstance()->activeThreadCount(), 0);
}

void FileWarmUpTest::missingFileEndsItSilently()
{
    const TestSupport::MessageRecorder recorder;
    FileWarmUp warmUp;

    warmUp.start(path("missing"));
    warmUp.waitForFinished();

    QCOMPARE(warmUp.bytesRead(), Q_INT64_C(0));
    QCOMPARE(recorder.messages(), QStringList());
}

void FileWarmUpTest::locksOfTheProcessStay()
{
    makeSparseFile(path("locked"), 5);
    const LockedFile file(path("locked"));
    QVERIFY(file.isLockedForOthers());
    FileWarmUp warmUp;

    warmUp.start(path("locked"));
    warmUp.waitForFinished();

    QCOMPARE(warmUp.bytesRead(), Q_INT64_C(5));
    QVERIFY(file.isLockedForOthers());
}

QTEST_GUILESS_MAIN(FileWarmUpTest)

#include "tst_filewarmup.moc"
