// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/mpegseekindex.h"

#include "audio/mediainput.h"
#include "tests/audio/mpegframes.h"
#include "tests/scan/soundfiles.h"
#include "tests/support/testsupport.h"

#include <QTemporaryDir>
#include <QtTest>

#include <chrono>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

using namespace MpegFrames;

namespace {

constexpr qint64 timePerFrame = 368640; // 1152 samples at 44.1 kHz, in the time base of such files
constexpr int manyFrames = 20000; // 8 MB, more than 8 minutes
constexpr qint64 fewBytes = 512 * 1024;

// More than it takes to follow all headers of these files.
constexpr std::chrono::minutes ampleTime(1);

struct PacketPlace
{
    qint64 timestamp;
    qint64 offset;
};

bool operator==(const PacketPlace& first, const PacketPlace& second)
{
    return first.timestamp == second.timestamp && first.offset == second.offset;
}

QVector<PacketPlace> readPackets(MediaInput& input, int count)
{
    QVector<PacketPlace> places;
    const PacketPointer packet(av_packet_alloc());
    while (places.size() < count && av_read_frame(input.formatContext(), packet.get()) >= 0) {
        input.allowFurther();
        places.append({ packet->dts, packet->pos });
        av_packet_unref(packet.get());
    }
    return places;
}

// Read through without a seek: what a seek has to agree with.
QVector<PacketPlace> allPackets(const QString& path)
{
    MediaInput input;
    return input.open(path) ? readPackets(input, std::numeric_limits<int>::max()) : QVector<PacketPlace>();
}

void addFiles()
{
    QTest::addColumn<QByteArray>("contents");
    QByteArray damaged = frames(600);
    damaged.replace(300 * frameSize, 2, "xx");
    QByteArray damagedTwice = damaged;
    damagedTwice.replace(100 * frameSize - 7, 900, QByteArray(900, 'x'));
    QByteArray falseHeaders = frames(600);
    falseHeaders.replace(300 * frameSize, 8, QByteArray::fromHex("0000fffb94640000"));
    const QByteArray tag = SoundFiles::id3Tag(SoundFiles::id3Text("TIT2", "Night"));
    const int size = 601 * frameSize;
    QTest::newRow("plain") << frames(600);
    QTest::newRow("padding") << (frames(3) + paddedFrames(2)).repeated(120);
    QTest::newRow("variable rate") << (frames(7) + richFrames(4) + paddedFrames(1)).repeated(50);
    QTest::newRow("second layer") << secondLayerFrames(600);
    QTest::newRow("ID3v2 at the beginning") << tag + frames(600);
    QTest::newRow("tags at the end") << frames(600) + apeFooter() + id3Version1();
    QTest::newRow("Xing") << xingFrame("Xing", 600, size) + frames(600);
    QTest::newRow("Info") << xingFrame("Info", 600, size) + frames(600);
    QTest::newRow("Info that lies") << xingFrame("Info", 900, 2 * size) + frames(300) + richFrames(300);
    QTest::newRow("VBRI") << vbriFrame(600, size) + frames(600);
    QTest::newRow("two files joined") << (tag + xingFrame("Info", 300, size / 2) + frames(300)).repeated(2);
    QTest::newRow("joined, other rate") << frames(300) + fasterFrames(300);
    QTest::newRow("joined, mono") << frames(300) + monoFrames(300);
    QTest::newRow("joined, other layer") << frames(300) + secondLayerFrames(300);
    QTest::newRow("damaged") << damaged;
    QTest::newRow("damaged twice") << damagedTwice;
    QTest::newRow("false header in the damage") << falseHeaders;
    QTest::newRow("a byte too much") << frames(300) + 'x' + frames(300);
    QTest::newRow("bytes missing") << frames(300).chopped(50) + frames(300);
    QTest::newRow("free format in the middle") << frames(300) + freeFormatFrame() + frames(300);
    QTest::newRow("cut off") << frames(600).chopped(100);
    QTest::newRow("junk at the beginning") << QByteArray(3000, 'x') + frames(600);
    QTest::newRow("other rate at the beginning") << fasterFrames(3) + frames(600);
    QTest::newRow("very short") << frames(5);
    QTest::newRow("short") << frames(12);
}

} // namespace

class MpegSeekIndexTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void seekComesToAPacketOfTheFile_data() { addFiles(); }
    void seekComesToAPacketOfTheFile();
    void seekIsFollowedByTheSamePackets_data() { addFiles(); }
    void seekIsFollowedByTheSamePackets();
    void preparationLeavesTheReadingAsItIs_data() { addFiles(); }
    void preparationLeavesTheReadingAsItIs();
    void preparedSeekFollowsTheHeadersNoMore();
    void preparationBeforeTheFirstPacketsDoesNothing();
    void farSeekReadsLittleThroughFfmpeg();
    void seekAfterLongReadingReadsLittle();
    void endIsReachedByReadingLittle();
    void packetsBehindDamageAreReadFromThereOnly();
    void leadIsAsLongAsTheReservoir_data();
    void leadIsAsLongAsTheReservoir();
    void interruptedSeekEnds();

private:
    QString write(const QByteArray& contents);

    QScopedPointer<QTemporaryDir> m_folder;
};

void MpegSeekIndexTest::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
}

QString MpegSeekIndexTest::write(const QByteArray& contents)
{
    QString path = m_folder->filePath("a.mp3");
    TestSupport::writeFile(path, contents);
    return path;
}

void MpegSeekIndexTest::seekComesToAPacketOfTheFile()
{
    QFETCH(QByteArray, contents);
    const QString path = write(contents);
    const QVector<PacketPlace> expected = allPackets(path);
    QVERIFY(expected.size() > 2);
    const qint64 end = expected.last().timestamp;

    for (qint64 timestamp = 0; timestamp <= end; timestamp += end / 17) {
        // Each time in a file of which nothing is known yet.
        MediaInput input;
        QVERIFY(input.open(path));
        QVERIFY(input.seek(timestamp));
        const QVector<PacketPlace> packets = readPackets(input, 1);

        QCOMPARE(packets.size(), 1);
        QVERIFY2(expected.contains(packets.first()), qPrintable(QString::number(timestamp)));
        QVERIFY(packets.first().timestamp <= timestamp);
    }
}

void MpegSeekIndexTest::seekIsFollowedByTheSamePackets()
{
    QFETCH(QByteArray, contents);
    const QString path = write(contents);
    const QVector<PacketPlace> expected = allPackets(path);
    const qint64 end = expected.last().timestamp;
    MediaInput input;
    QVERIFY(input.open(path));

    // Forward, backward, to the ends and beyond.
    for (const double part : { 0.3, 0.31, 0.9, 0.1, 0.0, 0.499, 0.501, 0.52, 1.0, 0.6, 1.2, 0.7, 0.05, 0.95 }) {
        QVERIFY(input.seek(qint64(part * double(end))));
        const QVector<PacketPlace> packets = readPackets(input, 150);

        QVERIFY2(!packets.isEmpty(), qPrintable(QString::number(part)));
        const int first = expected.indexOf(packets.first());
        QVERIFY2(first >= 0, qPrintable(QString::number(part)));
        QVERIFY2(packets == expected.mid(first, 150), qPrintable(QString::number(part)));
    }
}

void MpegSeekIndexTest::preparationLeavesTheReadingAsItIs()
{
    QFETCH(QByteArray, contents);
    const QString path = write(contents);
    const QVector<PacketPlace> expected = allPackets(path);
    MediaInput input;
    QVERIFY(input.open(path));

    // In the middle of the reading, at its end, and by and by.
    QVector<PacketPlace> packets;
    for (const int count : { 3, 20, 100, 1000 }) {
        packets += readPackets(input, count);
        input.prepareSeek(ampleTime);
    }

    QCOMPARE(packets, expected);
    QVERIFY(input.seek(expected.last().timestamp / 2));
    const QVector<PacketPlace> packetsAfterSeek = readPackets(input, 1000);
    QVERIFY(!packetsAfterSeek.isEmpty());
    const int first = expected.indexOf(packetsAfterSeek.first());
    QVERIFY(first >= 0);
    QCOMPARE(packetsAfterSeek, expected.mid(first));
}

void MpegSeekIndexTest::preparedSeekFollowsTheHeadersNoMore()
{
    const QString path = write(frames(manyFrames));
    MediaInput input;
    QVERIFY(input.open(path));
    readPackets(input, 20);
    const qint64 before = input.formatContext()->pb->bytes_read;

    input.prepareSeek(ampleTime);
    // Who follows the headers now comes no farther, and FFmpeg would read on from there.
    TestSupport::writeFile(path, frames(manyFrames).replace(5000 * frameSize, 100, QByteArray(100, 'x')));
    QVERIFY(input.seek(19000 * timePerFrame));

    const PacketPlace place = readPackets(input, 1).value(0);
    QCOMPARE(place.offset, place.timestamp / timePerFrame * frameSize);
    QVERIFY(place.timestamp > (19000 - 10) * timePerFrame);
    QVERIFY(input.formatContext()->pb->bytes_read - before < fewBytes);
}

void MpegSeekIndexTest::preparationBeforeTheFirstPacketsDoesNothing()
{
    const QString path = write(frames(600));
    MediaInput input;
    QVERIFY(input.open(path));

    input.prepareSeek(ampleTime);

    QCOMPARE(readPackets(input, 1000), allPackets(path));
}

void MpegSeekIndexTest::farSeekReadsLittleThroughFfmpeg()
{
    MediaInput input;
    QVERIFY(input.open(write(xingFrame("Xing", manyFrames, manyFrames * frameSize) + frames(manyFrames))));
    const qint64 before = input.formatContext()->pb->bytes_read;

    for (const qint64 frame : { 19000, 4000, 11000, 19990, 18500 }) {
        QVERIFY(input.seek(frame * timePerFrame));

        const PacketPlace place = readPackets(input, 1).value(0);
        QCOMPARE(place.offset, frameSize + place.timestamp / timePerFrame * frameSize);
        QVERIFY(place.timestamp <= frame * timePerFrame);
        QVERIFY(place.timestamp > (frame - 10) * timePerFrame);
    }

    QVERIFY(input.formatContext()->pb->bytes_read - before < fewBytes);
}

void MpegSeekIndexTest::seekAfterLongReadingReadsLittle()
{
    MediaInput input;
    QVERIFY(input.open(write(frames(3 * manyFrames))));
    // So many that FFmpeg drops a part of the places that it had noted.
    QCOMPARE(readPackets(input, 45000).size(), 45000);
    const qint64 before = input.formatContext()->pb->bytes_read;

    for (const qint64 frame : { 59000, 30001, 44999 }) {
        QVERIFY(input.seek(frame * timePerFrame));
        const PacketPlace place = readPackets(input, 1).value(0);
        QCOMPARE(place.offset, place.timestamp / timePerFrame * frameSize);
        QVERIFY(place.timestamp <= frame * timePerFrame);
    }

    QVERIFY(input.formatContext()->pb->bytes_read - before < fewBytes);
}

void MpegSeekIndexTest::endIsReachedByReadingLittle()
{
    MediaInput input;
    QVERIFY(input.open(write(frames(manyFrames) + id3Version1())));
    const qint64 before = input.formatContext()->pb->bytes_read;

    QVERIFY(input.seek((manyFrames + 100) * timePerFrame));
    readPackets(input, manyFrames);

    QVERIFY(input.formatContext()->pb->bytes_read - before < fewBytes);
}

void MpegSeekIndexTest::packetsBehindDamageAreReadFromThereOnly()
{
    MediaInput input;
    QVERIFY(input.open(write(frames(manyFrames) + "damage" + frames(600))));
    const qint64 before = input.formatContext()->pb->bytes_read;

    QVERIFY(input.seek((manyFrames + 500) * timePerFrame));

    const qint64 offset = readPackets(input, 1).value(0).offset;
    QVERIFY2(offset > qint64(manyFrames) * frameSize, qPrintable(QString::number(offset)));
    QVERIFY(input.formatContext()->pb->bytes_read - before < 2 * fewBytes);
}

void MpegSeekIndexTest::leadIsAsLongAsTheReservoir_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<int>("leadFrames");
    const auto frame = [](const char* header, int size) {
        return QByteArray::fromHex(header).leftJustified(size, '\0');
    };
    // Three frames for what a decoder keeps, and as many as hold the largest reservoir.
    QTest::newRow("128 kbit/s: 381 bytes a frame") << frame("fffb9064", 417) << 3 + 2;
    QTest::newRow("320 kbit/s: 1008 bytes a frame") << frame("fffbe064", 1044) << 3 + 1;
    QTest::newRow("32 kbit/s: 60 bytes a frame") << frame("fffb1404", 96) << 3 + 9;
    QTest::newRow("8 kbit/s: 1 byte a frame") << frame("fff21404", 24) << 3 + 255;
    QTest::newRow("second layer: no reservoir") << frame("fffd8064", 417) << 3;
}

void MpegSeekIndexTest::leadIsAsLongAsTheReservoir()
{
    QFETCH(QByteArray, frame);
    QFETCH(int, leadFrames);
    MediaInput input;
    QVERIFY(input.open(write(frame.repeated(1000))));
    const MpegFrameHeader header(reinterpret_cast<const std::uint8_t*>(frame.constData()));
    const qint64 duration = qint64(14112000) / header.sampleRate() * header.samples();

    QVERIFY(input.seek(900 * duration));

    QCOMPARE(readPackets(input, 1).value(0).timestamp, (900 - leadFrames) * duration);
}

void MpegSeekIndexTest::interruptedSeekEnds()
{
    MediaInput input;
    QVERIFY(input.open(write(frames(manyFrames))));

    input.interrupt();
    input.seek(19000 * timePerFrame);

    // Only what had been read before.
    QVERIFY(readPackets(input, manyFrames).size() < 1000);
}

QTEST_GUILESS_MAIN(MpegSeekIndexTest)
#include "tst_mpegseekindex.moc"
