// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/mpegframeheader.h"

#include <QtTest>

namespace {

MpegFrameHeader header(const char* hex)
{
    const QByteArray bytes = QByteArray::fromHex(hex);
    return MpegFrameHeader(reinterpret_cast<const std::uint8_t*>(bytes.constData()));
}

} // namespace

class MpegFrameHeaderTest : public QObject
{
    Q_OBJECT

private slots:
    void fieldsOfValidHeaders_data();
    void fieldsOfValidHeaders();
    void otherBytesAreNoHeader_data();
    void otherBytesAreNoHeader();
    void channelsAreThoseOfTheMode_data();
    void channelsAreThoseOfTheMode();
    void kindIsVersionLayerAndRate_data();
    void kindIsVersionLayerAndRate();
};

void MpegFrameHeaderTest::fieldsOfValidHeaders_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<int>("layer");
    QTest::addColumn<int>("sampleRate");
    QTest::addColumn<int>("samples");
    QTest::addColumn<int>("frameSize");
    QTest::addColumn<int>("mainDataSize");
    QTest::addColumn<int>("largestReservoir");
    const auto add = [](const char* name, const char* hex, int layer, int sampleRate, int samples, int frameSize,
                         int mainDataSize, int largestReservoir) {
        QTest::newRow(name) << QByteArray(hex) << layer << sampleRate << samples << frameSize << mainDataSize
                            << largestReservoir;
    };
    add("128 kbit/s", "fffb9064", 3, 44100, 1152, 417, 381, 511);
    add("padded", "fffb9264", 3, 44100, 1152, 418, 382, 511);
    add("with a check sum", "fffa9064", 3, 44100, 1152, 417, 379, 511);
    add("mono", "fffb90c4", 3, 44100, 1152, 417, 396, 511);
    add("two channels", "fffb9084", 3, 44100, 1152, 417, 381, 511);
    add("32 kbit/s", "fffb1404", 3, 48000, 1152, 96, 60, 511);
    add("320 kbit/s", "fffbe804", 3, 32000, 1152, 1440, 1404, 511);
    add("MPEG-2", "fff380c4", 3, 22050, 576, 208, 195, 255);
    add("MPEG-2, least main data", "fff21404", 3, 24000, 576, 24, 1, 255);
    add("MPEG-2.5", "ffe31804", 3, 8000, 576, 72, 51, 255);
    add("MPEG-2.5, 160 kbit/s", "ffe3e204", 3, 11025, 576, 1045, 1024, 255);
    add("second layer", "fffda404", 2, 48000, 1152, 576, 572, 0);
    add("second layer, 384 kbit/s", "fffde204", 2, 44100, 1152, 1254, 1250, 0);
    add("second layer, MPEG-2", "fff584c4", 2, 24000, 1152, 384, 380, 0);
    add("first layer", "ffffc004", 1, 44100, 384, 416, 412, 0);
    add("first layer, padded", "ffffc204", 1, 44100, 384, 420, 416, 0);
    add("first layer, MPEG-2", "fff79404", 1, 24000, 384, 288, 284, 0);
}

void MpegFrameHeaderTest::fieldsOfValidHeaders()
{
    QFETCH(QByteArray, hex);
    const MpegFrameHeader read = header(hex);

    QVERIFY(read.isValid());
    QTEST(read.layer(), "layer");
    QTEST(read.sampleRate(), "sampleRate");
    QTEST(read.samples(), "samples");
    QTEST(read.frameSize(), "frameSize");
    QTEST(read.mainDataSize(), "mainDataSize");
    QTEST(read.largestReservoir(), "largestReservoir");
}

void MpegFrameHeaderTest::otherBytesAreNoHeader_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::newRow("no sync in the first byte") << QByteArray("7ffb9064");
    QTest::newRow("no sync in the second byte") << QByteArray("ffdb9064");
    QTest::newRow("reserved version") << QByteArray("ffeb9064");
    QTest::newRow("reserved layer") << QByteArray("fff99064");
    QTest::newRow("free format") << QByteArray("fffb0064");
    QTest::newRow("forbidden bit rate") << QByteArray("fffbf064");
    QTest::newRow("reserved sampling rate") << QByteArray("fffb9c64");
    QTest::newRow("ID3v2") << QByteArray("ID3\x04").toHex();
    QTest::newRow("ID3v1") << QByteArray("TAGA").toHex();
    QTest::newRow("APE") << QByteArray("APET").toHex();
    QTest::newRow("zeros") << QByteArray("00000000");
    QTest::newRow("ones") << QByteArray("ffffffff");
}

void MpegFrameHeaderTest::otherBytesAreNoHeader()
{
    QFETCH(QByteArray, hex);

    QVERIFY(!header(hex).isValid());
    QVERIFY(!MpegFrameHeader().isValid());
}

void MpegFrameHeaderTest::channelsAreThoseOfTheMode_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<int>("channels");
    QTest::newRow("stereo") << QByteArray("fffb9004") << 2;
    QTest::newRow("joint stereo") << QByteArray("fffb9064") << 2;
    QTest::newRow("two channels") << QByteArray("fffb9084") << 2;
    QTest::newRow("one channel") << QByteArray("fffb90c4") << 1;
}

void MpegFrameHeaderTest::channelsAreThoseOfTheMode()
{
    QFETCH(QByteArray, hex);

    QTEST(header(hex).channels(), "channels");
}

void MpegFrameHeaderTest::kindIsVersionLayerAndRate_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<bool>("isSame");
    QTest::newRow("itself") << QByteArray("fffb9064") << true;
    QTest::newRow("other bit rate") << QByteArray("fffbe064") << true;
    QTest::newRow("padding") << QByteArray("fffb9264") << true;
    QTest::newRow("check sum") << QByteArray("fffa9064") << true;
    QTest::newRow("mono") << QByteArray("fffb90c4") << true;
    QTest::newRow("other sampling rate") << QByteArray("fffb9464") << false;
    QTest::newRow("other layer") << QByteArray("fffd9064") << false;
    QTest::newRow("other version") << QByteArray("fff39064") << false;
}

void MpegFrameHeaderTest::kindIsVersionLayerAndRate()
{
    QFETCH(QByteArray, hex);

    QTEST(header(hex).isOfSameKind(header("fffb9064")), "isSame");
    QTEST(header("fffb9064").isOfSameKind(header(hex)), "isSame");
}

QTEST_APPLESS_MAIN(MpegFrameHeaderTest)
#include "tst_mpegframeheader.moc"
