// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/audiodecoder.h"

#include "tests/audio/soundmaker.h"
#include "tests/scan/soundfiles.h"
#include "tests/support/testsupport.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cmath>

using namespace SoundMaker;

namespace {

constexpr double seconds = 12;
constexpr int comparedBytes = playedRate / 2 * playedFrameSize;

bool openFile(AudioDecoder& decoder, const QString& path)
{
    decoder.setOutputSampleRate(playedRate);
    decoder.setOutputChannels(2);
    decoder.setOutputSampleFormat(2);
    decoder.setFileName(path);
    return decoder.open();
}

QByteArray decodeRest(AudioDecoder& decoder)
{
    QByteArray sound;
    while (!decoder.atEnd())
        sound += decoder.decode(307200);
    return sound;
}

QByteArray straightThrough(const QString& path)
{
    AudioDecoder decoder;
    return openFile(decoder, path) ? decodeRest(decoder) : QByteArray();
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

int offsetOf(double position)
{
    return int(std::llround(position * playedRate)) * playedFrameSize;
}

QByteArray difference(double position, const QByteArray& sound, const QByteArray& expected)
{
    return QStringLiteral("%1 s: %2 of %3 bytes, %4")
        .arg(QString::number(position), QString::number(sound.size()), QString::number(expected.size()),
            QString::number(greatestDifference(sound, expected)))
        .toUtf8();
}

void addMpegFormats()
{
    QTest::addColumn<QString>("arguments");
    const auto add = [](const char* arguments) {
        QTest::newRow(arguments) << QString(arguments);
    };
    // Rates from which hardly any main data is left, so that a frame depends on very many earlier ones, among them.
    for (const char* rate : { "32", "40", "48", "64", "96", "128", "192", "256", "320" }) {
        QTest::newRow(qPrintable(QStringLiteral("%1 kbit/s stereo").arg(rate)))
            << QStringLiteral("-ar 44100 -ac 2 -b:a %1k").arg(rate);
        QTest::newRow(qPrintable(QStringLiteral("%1 kbit/s mono").arg(rate)))
            << QStringLiteral("-ar 48000 -ac 1 -b:a %1k").arg(rate);
    }
    for (const char* quality : { "0", "2", "5", "9" })
        QTest::newRow(qPrintable(QStringLiteral("variable rate %1").arg(quality)))
            << QStringLiteral("-ar 44100 -ac 2 -q:a %1").arg(quality);
    add("-ar 48000 -ac 2 -b:a 32k -joint_stereo 0");
    add("-ar 32000 -ac 2 -b:a 128k -abr 1");
    add("-ar 44100 -ac 2 -q:a 3 -write_xing 0");
    add("-ar 24000 -ac 2 -b:a 8k -joint_stereo 0");
    add("-ar 24000 -ac 1 -b:a 8k");
    add("-ar 22050 -ac 2 -b:a 160k");
    add("-ar 16000 -ac 1 -q:a 4");
    add("-ar 12000 -ac 2 -b:a 8k");
    add("-ar 11025 -ac 1 -b:a 64k");
    add("-ar 8000 -ac 2 -b:a 24k");
    add("-ar 44100 -ac 2 -b:a 128k -c:a libshine");
}

} // namespace

class AudioDecoderSeekingTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void everySeekGivesTheVeryBytesOfThatInstant_data() { addMpegFormats(); }
    void everySeekGivesTheVeryBytesOfThatInstant();
    void secondLayerIsExactUpToItsDither_data();
    void secondLayerIsExactUpToItsDither();
    void placesAroundDamageAreExact_data();
    void placesAroundDamageAreExact();

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }

    QScopedPointer<QTemporaryDir> m_folder;
};

void AudioDecoderSeekingTest::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
}

void AudioDecoderSeekingTest::everySeekGivesTheVeryBytesOfThatInstant()
{
    QFETCH(QString, arguments);
    makeNoise(path("a.mp3"), seconds, arguments.split(' '));
    const QByteArray linear = straightThrough(path("a.mp3"));
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, path("a.mp3")));

    // The first directly after opening; then forward and backward.
    for (const double position : { 9.3, 11.9, 0.0, 4.0001, 6.123456, 0.03, 2.5, 10.77, 10.7, 1.0, 7.0, 11.999 }) {
        // A file without a table of contents may call itself shorter than it is.
        const double reachable = std::min(position, decoder.duration());
        QVERIFY(decoder.seek(reachable));
        const QByteArray sound = decoder.decode(comparedBytes);

        const QByteArray expected = linear.mid(offsetOf(reachable), comparedBytes);
        if (sound != expected)
            QFAIL(difference(reachable, sound, expected).constData());
    }
}

void AudioDecoderSeekingTest::secondLayerIsExactUpToItsDither_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char* arguments :
        { "-ar 44100 -ac 2 -b:a 192k", "-ar 48000 -ac 1 -b:a 32k", "-ar 22050 -ac 2 -b:a 64k" })
        QTest::newRow(arguments) << QString(arguments);
}

// FFmpeg's decoder rounds to 16 bits and carries what it rounded off over to the next sample.
void AudioDecoderSeekingTest::secondLayerIsExactUpToItsDither()
{
    constexpr double threeBits = 3.0 / 32768;
    QFETCH(QString, arguments);
    makeNoise(path("a.mp3"), seconds, arguments.split(' ') + QStringList{ "-c:a", "mp2", "-f", "mp2" });
    const QByteArray linear = straightThrough(path("a.mp3"));
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, path("a.mp3")));

    for (const double position : { 9.3, 0.0, 4.0001, 10.7, 1.0 }) {
        QVERIFY(decoder.seek(position));
        const QByteArray sound = decoder.decode(comparedBytes);

        const QByteArray expected = linear.mid(offsetOf(position), comparedBytes);
        QVERIFY2(sound.size() == expected.size() && greatestDifference(sound, expected) < threeBits,
            difference(position, sound, expected).constData());
    }
}

void AudioDecoderSeekingTest::placesAroundDamageAreExact_data()
{
    constexpr int frameSize = 384;
    QTest::addColumn<int>("offsetInFrame");
    QTest::addColumn<int>("removed");
    QTest::addColumn<QByteArray>("inserted");
    QTest::addColumn<int>("lostFrames");
    const QByteArray tag = SoundFiles::id3Tag(SoundFiles::id3Text("TIT2", "Night"));
    QTest::newRow("header destroyed") << 0 << 4 << QByteArray(4, '\0') << 1;
    QTest::newRow("bytes missing") << 0 << 100 << QByteArray() << 1;
    QTest::newRow("tag in the middle") << 0 << 0 << tag << 1;
    QTest::newRow("sound destroyed") << 40 << 300 << QByteArray(300, '\xff') << 0;
    QTest::newRow("frames missing") << 0 << 5 * frameSize << QByteArray() << 0;
}

// A frame that cannot be decoded is left out, so that straight through all that follows comes earlier by its length; a
// seek goes by the time that the frame had.
void AudioDecoderSeekingTest::placesAroundDamageAreExact()
{
    QFETCH(int, offsetInFrame);
    QFETCH(int, removed);
    QFETCH(QByteArray, inserted);
    QFETCH(int, lostFrames);
    constexpr int bytesPerFrame = 1152 * playedRate / 48000 * playedFrameSize;
    makeNoise(path("whole.mp3"), seconds, { "-ar", "48000", "-ac", "2", "-b:a", "128k" });
    QByteArray contents = readFile(path("whole.mp3"));
    constexpr int damagedFrame = 250; // at 6 seconds
    contents.replace(contents.indexOf("\xff\xfb") + damagedFrame * 384 + offsetInFrame, removed, inserted);
    TestSupport::writeFile(path("a.mp3"), contents);
    const QByteArray linear = straightThrough(path("a.mp3"));
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, path("a.mp3")));

    for (const double position : { 9.3, 1.0, 6.2, 5.4, 7.0, 11.0, 6.3, 3.0, 0.0 }) {
        QVERIFY(decoder.seek(position));
        const QByteArray sound = decoder.decode(comparedBytes);

        const int earlier = position > 6 ? lostFrames * bytesPerFrame : 0;
        const QByteArray expected = linear.mid(offsetOf(position) - earlier, comparedBytes);
        if (sound != expected)
            QFAIL(difference(position, sound, expected).constData());
    }
}

QTEST_GUILESS_MAIN(AudioDecoderSeekingTest)
#include "tst_audiodecoderseeking.moc"
