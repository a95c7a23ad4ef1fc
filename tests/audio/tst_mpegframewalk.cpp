// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/mpegframewalk.h"

#include "audio/inputfile.h"
#include "tests/audio/mpegframes.h"
#include "tests/support/testsupport.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace MpegFrames;

namespace {

constexpr int pieceSize = 4096;

} // namespace

class MpegFrameWalkTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void walkEndsWhereFramesDoNotFollow_data();
    void walkEndsWhereFramesDoNotFollow();
    void framesHaveTheirOffsetsAndSamples();
    void walkCanBeginInTheMiddle();
    void pieceSizeDoesNotChangeTheWalk_data();
    void pieceSizeDoesNotChangeTheWalk();
    void otherBytesAreNoBeginning_data();
    void otherBytesAreNoBeginning();
    void interruptedFileEndsTheWalk();
    void fileThatGotShorterEndsTheWalk();

private:
    void open(const QByteArray& contents);

    QScopedPointer<QTemporaryDir> m_folder;
    QScopedPointer<InputFile> m_file;
};

void MpegFrameWalkTest::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
}

void MpegFrameWalkTest::open(const QByteArray& contents)
{
    TestSupport::writeFile(m_folder->filePath("a.mp3"), contents);
    m_file.reset(new InputFile);
    QCOMPARE(m_file->open(m_folder->filePath("a.mp3")), 0);
}

void MpegFrameWalkTest::walkEndsWhereFramesDoNotFollow_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<int>("count");
    QByteArray damagedBody = frames(10);
    damagedBody.replace(5 * frameSize + 4, 300, QByteArray(300, '\xff'));
    QByteArray damagedHeader = frames(10);
    damagedHeader[5 * frameSize] = '\0';
    const QByteArray id3("ID3\4\0\0\0\0\0\0", 10);
    QTest::newRow("whole") << frames(10) << 10;
    QTest::newRow("one frame") << frames(1) << 1;
    QTest::newRow("padding") << frames(3) + paddedFrames(3) + frames(4) << 10;
    QTest::newRow("variable rate") << frames(3) + richFrames(3) + frames(4) << 10;
    QTest::newRow("mono in the middle") << frames(5) + monoFrames(5) << 10;
    QTest::newRow("damaged in a frame") << damagedBody << 10;
    QTest::newRow("damaged header") << damagedHeader << 5;
    QTest::newRow("last frame cut off") << frames(10).left(9 * frameSize + 4) << 10;
    QTest::newRow("last header cut off") << frames(10).left(9 * frameSize + 3) << 9;
    QTest::newRow("ID3v1 at the end") << frames(10) + id3Version1() << 10;
    QTest::newRow("APE at the end") << frames(10) + apeFooter() << 10;
    QTest::newRow("zeros at the end") << frames(10) + QByteArray(5000, '\0') << 10;
    QTest::newRow("ID3v2 in the middle") << frames(5) + id3 + frames(5) << 5;
    QTest::newRow("a byte too much") << frames(5) + 'x' + frames(5) << 5;
    QTest::newRow("a byte missing") << frames(5).chopped(1) + frames(5) << 5;
    QTest::newRow("free format") << frames(5) + freeFormatFrame() + frames(5) << 5;
    QTest::newRow("other sampling rate") << frames(5) + fasterFrames(5) << 5;
    QTest::newRow("other layer") << frames(5) + secondLayerFrames(5) << 5;
    QTest::newRow("Xing") << xingFrame("Xing", 9, 10 * frameSize) + frames(9) << 10;
    QTest::newRow("Info") << xingFrame("Info", 9, 10 * frameSize) + frames(9) << 10;
    QTest::newRow("VBRI") << vbriFrame(9, 10 * frameSize) + frames(9) << 10;
}

void MpegFrameWalkTest::walkEndsWhereFramesDoNotFollow()
{
    QFETCH(QByteArray, contents);
    open(contents);
    MpegFrameWalk walk(*m_file, 0, 0, pieceSize);
    QVERIFY(walk.isValid() && !walk.hasEnded());

    int count = 1;
    while (walk.next())
        ++count;

    QTEST(count, "count");
    QVERIFY(walk.isValid() && walk.hasEnded());
    QVERIFY(!walk.next());
}

void MpegFrameWalkTest::framesHaveTheirOffsetsAndSamples()
{
    open(frames(2) + paddedFrames(2) + frames(1));
    MpegFrameWalk walk(*m_file, 0, 0, pieceSize);

    QVector<qint64> offsets{ walk.frame().offset };
    QVector<qint64> samples{ walk.frame().sample };
    while (walk.next()) {
        offsets.append(walk.frame().offset);
        samples.append(walk.frame().sample);
    }

    QCOMPARE(offsets, (QVector<qint64>{ 0, 417, 834, 1252, 1670 }));
    QCOMPARE(samples, (QVector<qint64>{ 0, 1152, 2304, 3456, 4608 }));
    QCOMPARE(walk.frame().endSample(), qint64(5760));
}

void MpegFrameWalkTest::walkCanBeginInTheMiddle()
{
    open("ID3?" + frames(6));
    MpegFrameWalk walk(*m_file, 4 + 3 * frameSize, 3456, pieceSize);

    QVERIFY(walk.isValid());
    QVERIFY(walk.next());
    QCOMPARE(walk.frame().offset, qint64(4 + 4 * frameSize));
    QCOMPARE(walk.frame().sample, qint64(4608));
}

void MpegFrameWalkTest::pieceSizeDoesNotChangeTheWalk_data()
{
    QTest::addColumn<int>("size");
    for (const int size : { 4, 5, 416, 417, 418, 421, 1000, 65536 })
        QTest::newRow(qPrintable(QString::number(size))) << size;
}

void MpegFrameWalkTest::pieceSizeDoesNotChangeTheWalk()
{
    QFETCH(int, size);
    open((frames(3) + paddedFrames(2)).repeated(20) + id3Version1());
    MpegFrameWalk walk(*m_file, 0, 0, size);

    int count = 1;
    while (walk.next())
        ++count;

    QCOMPARE(count, 100);
    QCOMPARE(walk.frame().offset, qint64(20 * (3 * frameSize + 2 * paddedFrameSize) - paddedFrameSize));
}

void MpegFrameWalkTest::otherBytesAreNoBeginning_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("three bytes") << frames(1).left(3);
    QTest::newRow("zeros") << QByteArray(1000, '\0');
    QTest::newRow("tag") << id3Version1();
    QTest::newRow("free format") << freeFormatFrame() + frames(3);
}

void MpegFrameWalkTest::otherBytesAreNoBeginning()
{
    QFETCH(QByteArray, contents);
    open(contents);

    MpegFrameWalk walk(*m_file, 0, 0, pieceSize);

    QVERIFY(!walk.isValid());
    QVERIFY(walk.hasEnded());
    QVERIFY(!walk.next());
}

void MpegFrameWalkTest::interruptedFileEndsTheWalk()
{
    open(frames(100));
    MpegFrameWalk walk(*m_file, 0, 0, pieceSize);

    m_file->interrupt();
    int count = 1;
    while (walk.next())
        ++count;

    // What has been read before may still come.
    QVERIFY2(count <= 1 + pieceSize / frameSize, qPrintable(QString::number(count)));
    QVERIFY(walk.hasEnded());
}

void MpegFrameWalkTest::fileThatGotShorterEndsTheWalk()
{
    open(frames(100));
    MpegFrameWalk walk(*m_file, 0, 0, pieceSize);

    QVERIFY(QFile::resize(m_folder->filePath("a.mp3"), 50 * frameSize));
    int count = 1;
    while (walk.next())
        ++count;

    QCOMPARE(count, 50);
}

QTEST_APPLESS_MAIN(MpegFrameWalkTest)
#include "tst_mpegframewalk.moc"
