// SPDX-License-Identifier: GPL-3.0-or-later
// Files in which something else stands between two stretches of sound.
#include "audio/audiodecoder.h"

#include "tests/audio/soundmaker.h"
#include "tests/scan/soundfiles.h"
#include "tests/support/testsupport.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

using namespace SoundMaker;

namespace {

constexpr int megabyte = 1024 * 1024;
constexpr int signed32Bit = 2;

bool openFile(AudioDecoder& decoder, const QString& path)
{
    decoder.setOutputSampleRate(playedRate);
    decoder.setOutputChannels(2);
    decoder.setOutputSampleFormat(signed32Bit);
    decoder.setFileName(path);
    return decoder.open();
}

double secondsLeft(AudioDecoder& decoder)
{
    qint64 bytes = 0;
    while (!decoder.atEnd())
        bytes += decoder.decode(307200).size();
    return double(bytes) / playedFrameSize / playedRate;
}

bool isAbout(double seconds, double expected)
{
    return std::abs(seconds - expected) < 0.2;
}

QByteArray pictureOf(int bytes)
{
    return SoundFiles::id3Tag(SoundFiles::id3Frame("APIC", QByteArray(bytes, '\0')));
}

} // namespace

class AudioDecoderGapsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void soundBehindAGap_data();
    void soundBehindAGap();
    void placeFarBehindATagIsReached();
    void largeChunksOfAWaveAreNoGap();

private:
    QString write(const QString& name, const QByteArray& contents);

    QTemporaryDir m_folder;
    // Frames of MPEG audio and nothing else.
    QByteArray m_sound;
    double m_seconds = 0;
};

void AudioDecoderGapsTest::initTestCase()
{
    constexpr int frameSize = 960;
    constexpr double frameSeconds = 0.024;
    const QStringList noise{ "-f", "lavfi", "-i", "anoisesrc=seed=3:amplitude=0.5:sample_rate=48000", "-t", "10" };
    m_sound
        = runFfmpeg(noise + QStringList{ "-b:a", "320k", "-write_xing", "0", "-id3v2_version", "0", "-f", "mp3", "-" });
    QVERIFY(m_folder.isValid());
    QCOMPARE(m_sound.size() % frameSize, 0);
    m_seconds = m_sound.size() / frameSize * frameSeconds;
}

QString AudioDecoderGapsTest::write(const QString& name, const QByteArray& contents)
{
    TestSupport::writeFile(m_folder.filePath(name), contents);
    return m_folder.filePath(name);
}

void AudioDecoderGapsTest::soundBehindAGap_data()
{
    QTest::addColumn<QByteArray>("gap");
    QTest::addColumn<bool>("isReached");
    QTest::newRow("tag with a large picture") << pictureOf(12 * megabyte) << true;
    QTest::newRow("zeros, as many as such a tag has") << QByteArray(12 * megabyte, '\0') << true;
    QTest::newRow("zeros without an end") << QByteArray(40 * megabyte, '\0') << false;
}

// Whoever looked for it without a limit would be held up for as long as it takes to read such a file to its end.
void AudioDecoderGapsTest::soundBehindAGap()
{
    QFETCH(QByteArray, gap);
    QFETCH(bool, isReached);
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, write("a.mp3", m_sound + gap + m_sound)));

    const double whole = secondsLeft(decoder);
    QVERIFY(decoder.seek(m_seconds + 3));
    const double rest = secondsLeft(decoder);
    QVERIFY(decoder.seek(m_seconds - 3));
    const double restAgain = secondsLeft(decoder);

    const double behind = isReached ? m_seconds : 0;
    QVERIFY2(isAbout(whole, m_seconds + behind), qPrintable(QString::number(whole)));
    QVERIFY2(isAbout(rest, isReached ? behind - 3 : 0), qPrintable(QString::number(rest)));
    QVERIFY2(isAbout(restAgain, 3 + behind), qPrintable(QString::number(restAgain)));
}

// The walk over the headers ends at the tag; all that follows FFmpeg has to read for the place.
void AudioDecoderGapsTest::placeFarBehindATagIsReached()
{
    constexpr int repetitions = 100;
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, write("a.mp3", m_sound + pictureOf(1000) + m_sound.repeated(repetitions))));

    QVERIFY(decoder.seek(m_seconds * repetitions + 3));

    const double rest = secondsLeft(decoder);
    QVERIFY2(isAbout(rest, m_seconds - 3), qPrintable(QString::number(rest)));
}

void AudioDecoderGapsTest::largeChunksOfAWaveAreNoGap()
{
    constexpr int headerSize = 36;
    constexpr int seconds = 2;
    const QByteArray wave = SoundFiles::wave({ 16, 48000, 2, 48000 * seconds });
    const QByteArray chunk = QByteArray("junk") + QByteArray("\0\0\x80\2", 4) + QByteArray(40 * megabyte, '\0');
    QCOMPARE(wave.mid(headerSize, 4), QByteArray("data"));
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, write("a.wav", wave.left(headerSize) + chunk + wave.mid(headerSize) + chunk)));

    QCOMPARE(secondsLeft(decoder), double(seconds));

    QVERIFY(decoder.seek(0.5));
    QCOMPARE(secondsLeft(decoder), seconds - 0.5);
}

QTEST_GUILESS_MAIN(AudioDecoderGapsTest)
#include "tst_audiodecodergaps.moc"
