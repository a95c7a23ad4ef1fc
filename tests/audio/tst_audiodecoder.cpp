// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/audiodecoder.h"

#include "tests/audio/soundmaker.h"
#include "tests/scan/soundfiles.h"
#include "tests/support/messagerecorder.h"
#include "tests/support/testsupport.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cmath>

extern "C" {
#include <libavutil/mem.h>
}

using namespace SoundMaker;

namespace {

constexpr int signed32Bit = 2;

void setPlayedFormat(AudioDecoder& decoder)
{
    decoder.setOutputSampleRate(playedRate);
    decoder.setOutputChannels(2);
    decoder.setOutputSampleFormat(signed32Bit);
}

bool openFile(AudioDecoder& decoder, const QString& path)
{
    setPlayedFormat(decoder);
    decoder.setFileName(path);
    return decoder.open();
}

QByteArray decodeRest(AudioDecoder& decoder, int chunkSize = 307200)
{
    QByteArray sound;
    while (!decoder.atEnd())
        sound += decoder.decode(chunkSize);
    return sound;
}

void addFormats()
{
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QStringList>("arguments");
    const auto add = [](const char* name, const char* suffix, const char* arguments) {
        QTest::newRow(name) << QString(suffix) << QString(arguments).split(' ');
    };
    add("wav 8 bit", "wav", "-ar 44100 -ac 1 -c:a pcm_u8");
    add("wav 16 bit mono 48 kHz", "wav", "-ar 48000 -ac 1 -c:a pcm_s16le");
    add("wav 16 bit 44.1 kHz", "wav", "-ar 44100 -ac 2 -c:a pcm_s16le");
    add("wav 16 bit 22.05 kHz", "wav", "-ar 22050 -ac 2 -c:a pcm_s16le");
    add("wav 16 bit 8 kHz", "wav", "-ar 8000 -ac 1 -c:a pcm_s16le");
    add("wav 24 bit 96 kHz", "wav", "-ar 96000 -ac 2 -c:a pcm_s24le");
    add("wav 24 bit 192 kHz", "wav", "-ar 192000 -ac 2 -c:a pcm_s24le");
    add("wav 32 bit", "wav", "-ar 88200 -ac 2 -c:a pcm_s32le");
    add("wav float", "wav", "-ar 44100 -ac 2 -c:a pcm_f32le");
    add("wav double", "wav", "-ar 44100 -ac 2 -c:a pcm_f64le");
    add("wav a-law", "wav", "-ar 8000 -ac 1 -c:a pcm_alaw");
    // Rates of which every sample falls on a frame of the output.
    add("wav IMA", "wav", "-ar 48000 -ac 2 -c:a adpcm_ima_wav");
    add("wav Microsoft", "wav", "-ar 96000 -ac 1 -c:a adpcm_ms");
    add("wav six channels", "wav", "-ar 48000 -ac 6 -c:a pcm_s16le");
    add("aiff 16 bit", "aif", "-ar 44100 -ac 2 -c:a pcm_s16be");
    add("aiff 24 bit", "aiff", "-ar 48000 -ac 2 -c:a pcm_s24be");
    add("mp3 constant rate", "mp3", "-ar 44100 -ac 2 -c:a libmp3lame -b:a 192k");
    add("mp3 low rate", "mp3", "-ar 22050 -ac 1 -c:a libmp3lame -b:a 32k");
    add("mp3 variable rate", "mp3", "-ar 44100 -ac 2 -c:a libmp3lame -q:a 4");
    add("mp3 without a header frame", "mp3", "-ar 48000 -ac 2 -c:a libmp3lame -b:a 128k -write_xing 0");
    add("mp3 variable without a header frame", "mp3", "-ar 44100 -ac 2 -c:a libmp3lame -q:a 2 -write_xing 0");
}

} // namespace

class AudioDecoderTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void wholeFileIsDecodedAsByTheReference_data() { addFormats(); }
    void wholeFileIsDecodedAsByTheReference();
    void seekContinuesWithTheVerySamplesOfThatInstant_data() { addFormats(); }
    void seekContinuesWithTheVerySamplesOfThatInstant();
    void chunkSizeDoesNotChangeTheSound();
    void oneSecondGivesExactlyOneSecond_data();
    void oneSecondGivesExactlyOneSecond();
    void packetsOfSeveralFramesLoseNone_data();
    void packetsOfSeveralFramesLoseNone();
    void levelIsKept_data();
    void levelIsKept();
    void outputFormatCanBeChosen_data();
    void outputFormatCanBeChosen();
    void settingsAreRefusedWhileOpen();
    void positionsOutsideMeanTheEnds();
    void seekAfterTheEndMakesReadable();
    void failuresHaveTheirTexts_data();
    void failuresHaveTheirTexts();
    void unusableOutputIsAnError_data();
    void unusableOutputIsAnError();
    void openDecoderRefusesToOpenAgain();
    void closedDecoderGivesNothing();
    void suffixInCapitalsForcesTheFormat();
    void tagsHaveLowerCaseKeys();
    void onlyTheFirstAudioStreamIsDecoded();
    void changeOfFormatInTheMiddleIsSurvived();
    void rateOfOneHertzIsDecodedInBoundedSteps();
    void framesWithoutMemoryAreDroppedWithAWarning();
    void damagedFilesAreSurvived_data();
    void damagedFilesAreSurvived();
    void interruptedDecodingEnds();

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }
    QString write(const QString& name, const QByteArray& contents);

    QScopedPointer<QTemporaryDir> m_folder;
};

void AudioDecoderTest::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
}

QString AudioDecoderTest::write(const QString& name, const QByteArray& contents)
{
    TestSupport::writeFile(path(name), contents);
    return path(name);
}

void AudioDecoderTest::wholeFileIsDecodedAsByTheReference()
{
    QFETCH(QString, suffix);
    QFETCH(QStringList, arguments);
    const QString file = path("noise." + suffix);
    makeNoise(file, 1.7, arguments);
    const QByteArray expected = reference(file);
    AudioDecoder decoder;
    QVERIFY2(openFile(decoder, file), qPrintable(decoder.errorString()));

    const QByteArray sound = decodeRest(decoder);

    QCOMPARE(sound.size(), expected.size());
    QVERIFY2(
        greatestDifference(sound, expected) < 1e-6, qPrintable(QString::number(greatestDifference(sound, expected))));
}

void AudioDecoderTest::seekContinuesWithTheVerySamplesOfThatInstant()
{
    QFETCH(QString, suffix);
    QFETCH(QStringList, arguments);
    const QString file = path("noise." + suffix);
    makeNoise(file, 4, arguments);
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, file));
    const QByteArray linear = decodeRest(decoder);

    for (const double position : { 2.5, 0.0, 0.123456, 3.9, 1.0, 3.0001, 0.5 }) {
        QVERIFY(decoder.seek(position));
        const QByteArray rest = decodeRest(decoder);

        // The time stamps of compressed waves are rounded, as their byte rate is a whole number.
        const bool isRounded = arguments.last().startsWith("adpcm");
        const int exactSize = linear.size() - int(std::llround(position * playedRate)) * playedFrameSize;
        const int tolerance = isRounded ? playedRate / 500 * playedFrameSize : 0;
        const QByteArray expected
            = linear.right(std::abs(rest.size() - exactSize) <= tolerance ? rest.size() : exactSize);
        const QByteArray what = QByteArray::number(position) + " s: " + QByteArray::number(rest.size()) + " of "
            + QByteArray::number(expected.size()) + ", " + QByteArray::number(greatestDifference(rest, expected));
        QVERIFY2(rest.size() == expected.size(), what.constData());
        QVERIFY2(greatestDifference(rest, expected) < 1e-6, what.constData());
    }
}

void AudioDecoderTest::chunkSizeDoesNotChangeTheSound()
{
    makeNoise(path("a.mp3"), 1, { "-ar", "44100", "-b:a", "128k" });
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, path("a.mp3")));
    const QByteArray whole = decodeRest(decoder);

    for (const int size : { 8, 1000, 4096, 307200, 10000000 }) {
        QVERIFY(decoder.seek(0));
        QVERIFY(decoder.decode(size).size() <= size);
        QVERIFY(decoder.seek(0));
        QVERIFY(decodeRest(decoder, size) == whole);
    }
}

void AudioDecoderTest::oneSecondGivesExactlyOneSecond_data()
{
    QTest::addColumn<int>("sampleRate");
    for (const int rate : { 8000, 11025, 22050, 44100, 48000, 88200, 96000, 192000 })
        QTest::newRow(qPrintable(QString::number(rate))) << rate;
}

void AudioDecoderTest::oneSecondGivesExactlyOneSecond()
{
    QFETCH(int, sampleRate);
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, write("a.wav", SoundFiles::wave({ 16, sampleRate, 1, sampleRate }))));
    QCOMPARE(decoder.duration(), 1.0);

    QCOMPARE(decodeRest(decoder).size(), playedRate * playedFrameSize);

    QVERIFY(decoder.atEnd());
    QVERIFY(decoder.decode(1000).isEmpty());
}

void AudioDecoderTest::packetsOfSeveralFramesLoseNone_data()
{
    QTest::addColumn<QString>("codec");
    QTest::newRow("IMA") << "adpcm_ima_wav";
    QTest::newRow("Microsoft") << "adpcm_ms";
}

void AudioDecoderTest::packetsOfSeveralFramesLoseNone()
{
    QFETCH(QString, codec);
    makeTone(path("a.wav"), 5, { "-ar", "48000", "-ac", "2", "-c:a", codec });
    const QByteArray expected = reference(path("a.wav"));
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, path("a.wav")));

    const QByteArray sound = decodeRest(decoder);

    // The last block is filled up.
    QVERIFY(sound.size() >= 5 * playedRate * playedFrameSize);
    QCOMPARE(sound.size(), expected.size());
    QVERIFY(greatestDifference(sound, expected) < 1e-6);
}

void AudioDecoderTest::levelIsKept_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<double>("level");
    QTest::newRow("mono") << "a.wav" << QStringList{ "-ar", "48000", "-ac", "1" } << 0.5;
    QTest::newRow("stereo") << "a.wav" << QStringList{ "-ar", "44100", "-af", "pan=stereo|c0=c0|c1=c0" } << 0.5;
    QTest::newRow("float") << "a.wav" << QStringList{ "-ar", "44100", "-ac", "1", "-c:a", "pcm_f32le" } << 0.5;
    QTest::newRow("aiff") << "a.aif" << QStringList{ "-ar", "44100", "-ac", "1", "-c:a", "pcm_s24be" } << 0.5;
    // Its encoder makes everything 3 % softer.
    QTest::newRow("mp3") << "a.mp3" << QStringList{ "-ar", "44100", "-ac", "1", "-b:a", "192k" } << 0.485;
}

void AudioDecoderTest::levelIsKept()
{
    QFETCH(QString, name);
    QFETCH(QStringList, arguments);
    QFETCH(double, level);
    makeTone(path(name), 1, arguments);
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, path(name)));
    // Away from the ends, where filters and codecs ring.
    const QByteArray middle = decodeRest(decoder).mid(playedRate * 2, playedRate * 4);

    QVERIFY2(std::abs(peak(middle) / level - 1) < 0.01, qPrintable(QString::number(peak(middle))));
}

void AudioDecoderTest::outputFormatCanBeChosen_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("bytesPerSample");
    QTest::newRow("unsigned 8 bit") << 0 << 1;
    QTest::newRow("signed 16 bit") << 1 << 2;
    QTest::newRow("signed 32 bit") << 2 << 4;
    QTest::newRow("float 32 bit") << 3 << 4;
    QTest::newRow("float 64 bit") << 4 << 8;
}

void AudioDecoderTest::outputFormatCanBeChosen()
{
    QFETCH(int, format);
    QFETCH(int, bytesPerSample);
    AudioDecoder decoder;
    decoder.setOutputSampleRate(48000);
    decoder.setOutputChannels(1);
    decoder.setOutputSampleFormat(format);
    decoder.setFileName(write("a.wav", SoundFiles::wave({ 16, 44100, 2, 4410 })));
    QVERIFY(decoder.open());

    QCOMPARE(decodeRest(decoder).size(), 4800 * bytesPerSample);
}

void AudioDecoderTest::settingsAreRefusedWhileOpen()
{
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, write("a.wav", SoundFiles::wave({ 16, 44100, 2, 4410 }))));

    decoder.setOutputSampleRate(8000);
    decoder.setOutputChannels(1);
    decoder.setOutputSampleFormat(0);

    QCOMPARE(decodeRest(decoder).size(), 9600 * playedFrameSize);
    decoder.close();
    QVERIFY(decoder.open());
    QCOMPARE(decodeRest(decoder).size(), 9600 * playedFrameSize);
}

void AudioDecoderTest::positionsOutsideMeanTheEnds()
{
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, write("a.wav", SoundFiles::wave({ 16, 44100, 2, 44100 }))));

    QVERIFY(decoder.seek(99));
    QVERIFY(decoder.decode(1000).isEmpty());
    QVERIFY(decoder.atEnd());

    for (const double position : { -1.0, double(NAN) }) {
        QVERIFY(decoder.seek(position));
        QCOMPARE(decodeRest(decoder).size(), playedRate * playedFrameSize);
    }
}

void AudioDecoderTest::seekAfterTheEndMakesReadable()
{
    makeNoise(path("a.mp3"), 1, { "-ar", "44100" });
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, path("a.mp3")));
    const QByteArray linear = decodeRest(decoder);
    QVERIFY(decoder.atEnd());

    QVERIFY(decoder.seek(0.5));

    QVERIFY(!decoder.atEnd());
    QCOMPARE(decodeRest(decoder), linear.mid(linear.size() / 2));
}

void AudioDecoderTest::failuresHaveTheirTexts_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<QString>("text");
    QByteArray unknownCodec = SoundFiles::wave();
    unknownCodec.replace(20, 2, "\x77\x77");
    QByteArray noRate = SoundFiles::wave();
    noRate.replace(24, 4, QByteArray(4, '\0'));
    QByteArray noChannels = SoundFiles::wave();
    noChannels.replace(22, 2, QByteArray(2, '\0'));
    const QByteArray garbage(200000, 'U');
    QTest::newRow("no name") << "" << QByteArray() << "Audio decoder file name is empty";
    QTest::newRow("missing") << "none.wav" << QByteArray() << "Unable to open input: No such file or directory";
    QTest::newRow("text") << "a.wav" << QByteArray("no sound")
                          << "Unable to open input: Invalid data found when processing input";
    QTest::newRow("no sound") << "a.y4m" << SoundFiles::silentVideo() << "No audio stream found";
    QTest::newRow("unknown codec") << "a.wav" << unknownCodec << "Unable to find decoder";
    QTest::newRow("no channels") << "a.wav" << noChannels << "Unable to open codec: Invalid argument";
    QTest::newRow("no rate") << "a.wav" << noRate << "Unable to open input: Invalid data found when processing input";
    QTest::newRow("garbage") << "a.mp3" << garbage << "Could not initialize audio resampler";
}

void AudioDecoderTest::failuresHaveTheirTexts()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, contents);
    if (!contents.isEmpty())
        write(name, contents);
    AudioDecoder decoder;

    QVERIFY(!openFile(decoder, name.isEmpty() ? QString() : path(name)));

    QVERIFY(!decoder.isOpen());
    QTEST(decoder.errorString(), "text");
}

void AudioDecoderTest::unusableOutputIsAnError_data()
{
    QTest::addColumn<int>("sampleRate");
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("format");
    QTest::newRow("no rate") << 0 << 2 << 2;
    QTest::newRow("no channels") << 96000 << 0 << 2;
    QTest::newRow("no format") << 96000 << 2 << -1;
    QTest::newRow("unknown format") << 96000 << 2 << 5;
}

void AudioDecoderTest::unusableOutputIsAnError()
{
    QFETCH(int, sampleRate);
    QFETCH(int, channels);
    QFETCH(int, format);
    AudioDecoder decoder;
    decoder.setOutputSampleRate(sampleRate);
    decoder.setOutputChannels(channels);
    decoder.setOutputSampleFormat(format);
    decoder.setFileName(write("a.wav", SoundFiles::wave()));

    QVERIFY(!decoder.open());

    QVERIFY(!decoder.isOpen());
    QCOMPARE(decoder.errorString(), QStringLiteral("Could not initialize audio resampler"));
}

void AudioDecoderTest::openDecoderRefusesToOpenAgain()
{
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, write("a.wav", SoundFiles::wave({ 16, 44100, 2, 4410 }))));

    decoder.setFileName(write("b.wav", SoundFiles::wave()));
    QVERIFY(!decoder.open());

    QCOMPARE(decoder.errorString(), QStringLiteral("Audio decoder is already opened"));
    QCOMPARE(decodeRest(decoder).size(), 9600 * playedFrameSize);
}

void AudioDecoderTest::closedDecoderGivesNothing()
{
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, write("a.wav", SoundFiles::wave())));
    QVERIFY(!decoder.decode(8).isEmpty());

    decoder.close();

    QVERIFY(!decoder.isOpen());
    QVERIFY(decoder.decode(1000).isEmpty());
    QCOMPARE(decoder.duration(), 0.0);
    QVERIFY(!decoder.seek(0));
    QCOMPARE(decoder.errorString(), QStringLiteral("Audio decoder is not opened"));
}

void AudioDecoderTest::suffixInCapitalsForcesTheFormat()
{
    AudioDecoder decoder;

    // Whatever these bytes are, they are no WAVE; an unknown suffix would have them detected.
    QVERIFY(!openFile(decoder, write("a.WAV", SoundFiles::aiff())));
    QVERIFY(openFile(decoder, write("a.AIFF", SoundFiles::aiff())));
}

void AudioDecoderTest::tagsHaveLowerCaseKeys()
{
    using namespace SoundFiles;
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, write("a.mp3", mp3(20, id3Tag(id3UserText("Mood", "Dark") + id3Text("TIT2", "Night"))))));

    QCOMPARE(decoder.tag("title"), QStringLiteral("Night"));
    QCOMPARE(decoder.tag("TITLE"), QStringLiteral("Night"));
    QCOMPARE(decoder.tag("mood"), QStringLiteral("Dark"));
    QCOMPARE(decoder.tag("artist", "Unknown"), QStringLiteral("Unknown"));
}

void AudioDecoderTest::onlyTheFirstAudioStreamIsDecoded()
{
    makeTone(path("first.wav"), 1, { "-ar", "48000", "-ac", "1" });
    makeNoise(path("second.wav"), 2, { "-ar", "48000", "-ac", "1" });
    runFfmpeg({ "-i", path("first.wav"), "-i", path("second.wav"), "-map", "0", "-map", "1", "-c", "copy",
        path("both.mka") });
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, path("both.mka")));

    const QByteArray sound = decodeRest(decoder);

    QCOMPARE(sound.size(), playedRate * playedFrameSize);
    QVERIFY(greatestDifference(sound, reference(path("first.wav"))) < 1e-6);
}

void AudioDecoderTest::changeOfFormatInTheMiddleIsSurvived()
{
    makeTone(path("stereo.mp3"), 1, { "-ar", "44100", "-ac", "2", "-write_xing", "0", "-id3v2_version", "0" });
    makeTone(path("mono.mp3"), 1, { "-ar", "22050", "-ac", "1", "-write_xing", "0", "-id3v2_version", "0" });
    QFile stereo(path("stereo.mp3"));
    QFile mono(path("mono.mp3"));
    QVERIFY(stereo.open(QIODevice::ReadOnly) && mono.open(QIODevice::ReadOnly));
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, write("joined.mp3", stereo.readAll() + mono.readAll())));

    const double seconds = double(decodeRest(decoder).size()) / playedFrameSize / playedRate;

    // Codecs add a few frames at the ends of each.
    QVERIFY2(seconds > 1.9 && seconds < 2.3, qPrintable(QString::number(seconds)));
}

void AudioDecoderTest::rateOfOneHertzIsDecodedInBoundedSteps()
{
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, write("a.wav", SoundFiles::wave({ 16, 1, 1, 2000 }))));

    for (int chunk = 0; chunk < 20; ++chunk)
        QCOMPARE(decoder.decode(307200).size(), 307200);
}

void AudioDecoderTest::framesWithoutMemoryAreDroppedWithAWarning()
{
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, write("a.wav", SoundFiles::wave({ 8, 8000, 1, 8000 }))));
    const TestSupport::MessageRecorder recorder;
    constexpr size_t enoughForPacketsOnly = 100000;
    constexpr size_t usual = size_t(512) * 1024 * 1024;

    av_max_alloc(enoughForPacketsOnly);
    const QByteArray sound = decoder.decode(307200);
    av_max_alloc(usual);

    QVERIFY(sound.size() < 307200);
    QVERIFY(recorder.messages(QtWarningMsg).contains(QStringLiteral("Could not allocate source samples")));
}

void AudioDecoderTest::damagedFilesAreSurvived_data()
{
    addFormats();
}

void AudioDecoderTest::damagedFilesAreSurvived()
{
    QFETCH(QString, suffix);
    QFETCH(QStringList, arguments);
    makeNoise(path("whole." + suffix), 0.5, arguments);
    QFile file(path("whole." + suffix));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray whole = file.readAll();
    QRandomGenerator random(11);
    for (int round = 0; round < 30; ++round) {
        QByteArray damaged = whole.left(whole.size() - random.bounded(whole.size() / 2));
        for (int count = random.bounded(60); count > 0; --count)
            damaged[random.bounded(round % 2 ? damaged.size() : 200)] = char(random.bounded(256));
        AudioDecoder decoder;
        if (!openFile(decoder, write("damaged." + suffix, damaged)))
            continue;
        QVERIFY(decoder.decode(3000000).size() <= 3000000);
        decoder.seek(random.bounded(1.0));
        QVERIFY(decoder.decode(3000000).size() <= 3000000);
    }
}

void AudioDecoderTest::interruptedDecodingEnds()
{
    const QString file = write("a.wav", SoundFiles::wave({ 16, 44100, 2, 441000 }));
    AudioDecoder decoder;
    QVERIFY(openFile(decoder, file));

    decoder.interrupt();

    // What has been read before may still come.
    QVERIFY(decodeRest(decoder).size() < 9 * playedRate * playedFrameSize);
    decoder.close();
    QVERIFY(decoder.open());
    QCOMPARE(decodeRest(decoder).size(), 10 * playedRate * playedFrameSize);
}

QTEST_GUILESS_MAIN(AudioDecoderTest)
#include "tst_audiodecoder.moc"
