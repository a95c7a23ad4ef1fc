// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/chunkedcopy.h"

#include "tests/app/copyfixture.h"
#include "tests/support/testsupport.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

using Outcome = ChunkedCopy::Outcome;

namespace {

constexpr int chunks = 4;

} // namespace

// The callers in other threads are simulated by what happens between two chunks.
class ChunkedCopyTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void copyEqualsItsSource();
    void severalFilesAreCopiedOneAfterTheOther();
    void cancelAtEachChunkLeavesNothing_data();
    void cancelAtEachChunkLeavesNothing();
    void cancelBeforeTheNameIsGivenLeavesNothing();
    void cancelKeepsTheFileThatWasToBeReplaced();
    void sourceCutDuringTheCopyIsNotRead();
    void sourceThatGrowsDuringTheCopyIsNotRead();
    void removedSourceIsCopiedWhole();
    void targetThatAppearsMeanwhileIsKept();
    void targetThatAppearsMeanwhileIsReplacedOnRequest();
    void partThatIsCutDuringTheCopyIsNotPublished();
    void permissionsOfTheSourceAreKeptOnRequest();

private:
    QString source() const { return m_folder.filePath(QStringLiteral("source")); }
    QString target() const { return m_folder.filePath(QStringLiteral("target")); }
    Outcome copyWith(const std::function<void(int)>& afterChunk, const ChunkedCopy::Options& options = {});

    QTemporaryDir m_folder;
};

void ChunkedCopyTest::initTestCase()
{
    TestSupport::writeFile(source(), someBytes(chunks * chunk));
}

void ChunkedCopyTest::cleanup()
{
    QFile::remove(target());
    TestSupport::writeFile(source(), someBytes(chunks * chunk));
}

// Copies, with something done after each chunk, which is numbered from 1.
Outcome ChunkedCopyTest::copyWith(const std::function<void(int)>& afterChunk, const ChunkedCopy::Options& options)
{
    const auto progress = [&afterChunk](qint64 position, qint64) {
        afterChunk(int(position / chunk));
    };
    return ChunkedCopy({ []() { return false; }, progress }, options).copy(source(), target());
}

void ChunkedCopyTest::copyEqualsItsSource()
{
    QCOMPARE(copyWith([](int) {}), Outcome::Copied);

    QVERIFY(contents(target()) == contents(source()));
    QCOMPARE(namesIn(m_folder.path()), QStringList({ "source", "target" }));
}

void ChunkedCopyTest::severalFilesAreCopiedOneAfterTheOther()
{
    const QString small = m_folder.filePath(QStringLiteral("small"));
    TestSupport::writeFile(small, "few bytes");
    ChunkedCopy copy({ []() { return false; }, {} }, {});

    QCOMPARE(copy.copy(source(), target()), Outcome::Copied);
    QCOMPARE(copy.copy(small, small + QLatin1String(" copy")), Outcome::Copied);

    QCOMPARE(contents(small + QLatin1String(" copy")), QByteArray("few bytes"));
    QVERIFY(QFile::remove(small) && QFile::remove(small + QLatin1String(" copy")));
}

void ChunkedCopyTest::cancelAtEachChunkLeavesNothing_data()
{
    QTest::addColumn<int>("copiedChunks");
    for (int copied = 0; copied <= chunks; ++copied)
        QTest::addRow("after %d", copied) << copied;
}

void ChunkedCopyTest::cancelAtEachChunkLeavesNothing()
{
    QFETCH(int, copiedChunks);
    qint64 reached = 0;
    const ChunkedCopy::Watch watch{ [&]() { return reached == qint64(copiedChunks) * chunk; },
        [&reached](qint64 position, qint64) {
            reached = position;
        } };

    QCOMPARE(ChunkedCopy(watch, {}).copy(source(), target()), Outcome::Canceled);

    QCOMPARE(reached, qint64(copiedChunks) * chunk);
    QCOMPARE(namesIn(m_folder.path()), QStringList({ "source" }));
}

void ChunkedCopyTest::cancelBeforeTheNameIsGivenLeavesNothing()
{
    int questions = 0;
    // Once before each chunk, once at the end of the source, and then the last time.
    const ChunkedCopy::Watch watch{ [&questions]() { return ++questions == chunks + 2; }, {} };

    QCOMPARE(ChunkedCopy(watch, {}).copy(source(), target()), Outcome::Canceled);

    QCOMPARE(namesIn(m_folder.path()), QStringList({ "source" }));
}

void ChunkedCopyTest::cancelKeepsTheFileThatWasToBeReplaced()
{
    TestSupport::writeFile(target(), "earlier");
    int questions = 0;
    const ChunkedCopy::Watch watch{ [&questions]() { return ++questions == 3; }, {} };

    QCOMPARE(ChunkedCopy(watch, { true, false, false }).copy(source(), target()), Outcome::Canceled);

    QCOMPARE(contents(target()), QByteArray("earlier"));
}

void ChunkedCopyTest::sourceCutDuringTheCopyIsNotRead()
{
    const auto cut = [this](int number) {
        if (number == 2)
            QFile::resize(source(), chunk);
    };

    QCOMPARE(copyWith(cut), Outcome::SourceNotRead);

    QCOMPARE(namesIn(m_folder.path()), QStringList({ "source" }));
}

void ChunkedCopyTest::sourceThatGrowsDuringTheCopyIsNotRead()
{
    const auto grow = [this](int number) {
        if (number == 2)
            QFile::resize(source(), (chunks + 1) * chunk);
    };

    QCOMPARE(copyWith(grow), Outcome::SourceNotRead);

    QCOMPARE(namesIn(m_folder.path()), QStringList({ "source" }));
}

// The open file is still there.
void ChunkedCopyTest::removedSourceIsCopiedWhole()
{
    const auto remove = [this](int number) {
        if (number == 1)
            QFile::remove(source());
    };

    QCOMPARE(copyWith(remove), Outcome::Copied);

    QVERIFY(contents(target()) == someBytes(chunks * chunk));
}

void ChunkedCopyTest::targetThatAppearsMeanwhileIsKept()
{
    const auto appear = [this](int number) {
        if (number == 3)
            TestSupport::writeFile(target(), "somebody else's");
    };

    QCOMPARE(copyWith(appear), Outcome::TargetNotWritten);

    QCOMPARE(contents(target()), QByteArray("somebody else's"));
    QCOMPARE(namesIn(m_folder.path()), QStringList({ "source", "target" }));
}

void ChunkedCopyTest::targetThatAppearsMeanwhileIsReplacedOnRequest()
{
    const auto appear = [this](int number) {
        if (number == 3)
            TestSupport::writeFile(target(), "somebody else's");
    };

    QCOMPARE(copyWith(appear, { true, true, false }), Outcome::Copied);

    QVERIFY(contents(target()) == contents(source()));
}

void ChunkedCopyTest::partThatIsCutDuringTheCopyIsNotPublished()
{
    const auto cut = [this](int number) {
        const QStringList parts = namesIn(m_folder.path()).filter(QStringLiteral(".part"));
        if (number == chunks)
            QFile::resize(m_folder.filePath(parts.value(0)), 5);
    };

    QCOMPARE(copyWith(cut), Outcome::TargetNotWritten);

    QCOMPARE(namesIn(m_folder.path()), QStringList({ "source" }));
}

void ChunkedCopyTest::permissionsOfTheSourceAreKeptOnRequest()
{
    const auto permissions
        = QFileDevice::ReadOwner | QFileDevice::ReadUser | QFileDevice::ExeOwner | QFileDevice::ExeUser;
    QVERIFY(QFile::setPermissions(source(), permissions));

    QCOMPARE(copyWith([](int) {}, { false, false, true }), Outcome::Copied);

    QCOMPARE(QFile::permissions(target()), QFile::permissions(source()));
    QVERIFY(QFile::setPermissions(source(), permissions | QFileDevice::WriteOwner));
}

QTEST_GUILESS_MAIN(ChunkedCopyTest)
#include "tst_chunkedcopy.moc"
