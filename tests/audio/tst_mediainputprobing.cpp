// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/audiodecoder.h"
#include "audio/mediainput.h"

#include "tests/audio/fullprobe.h"
#include "tests/audio/mpegframes.h"
#include "tests/audio/soundmaker.h"
#include "tests/scan/corpus.h"
#include "tests/scan/soundfiles.h"
#include "tests/support/testsupport.h"

#include <QDirIterator>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

extern "C" {
#include <libavformat/avformat.h>
}

using namespace SoundFiles;

namespace {

constexpr int seconds = 2;

// What claims to be 16-bit stereo sound.
QByteArray waveOf(const QByteArray& sound)
{
    Layout layout;
    layout.sampleRate = 48000;
    layout.frames = sound.size() / 4;
    const QByteArray whole = sound.left(layout.frames * 4);
    return wave(layout).chopped(whole.size()) + whole;
}

QByteArray swapped(QByteArray words)
{
    for (int place = 0; place + 1 < words.size(); place += 2)
        std::swap(words.data()[place], words.data()[place + 1]);
    return words;
}

// Noise in this codec, bare or wrapped.
QByteArray coded(const QStringList& arguments, const QString& wrapping)
{
    const QStringList source{ "-f", "lavfi", "-i", "anoisesrc=seed=3:amplitude=0.5:sample_rate=48000", "-t",
        QString::number(seconds), "-ac", "2" };
    return SoundMaker::runFfmpeg(source + arguments + QStringList{ "-f", wrapping, "-" });
}

QStringList filesBelow(const QString& folder)
{
    QStringList files;
    QDirIterator walk(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (walk.hasNext())
        files.append(walk.next());
    return files;
}

} // namespace

/// An input reads less of a file than FFmpeg would; what it tells must be the same.
class MediaInputProbingTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void generatedLibraryIsReadAsInFull_data();
    void generatedLibraryIsReadAsInFull();
    void disguisedSoundIsRecognised_data();
    void disguisedSoundIsRecognised();
    void disguisedSoundIsDecoded();
    void encodedFilesAreReadAsInFull_data();
    void encodedFilesAreReadAsInFull();
    void cutFilesAreReadAsInFull_data();
    void cutFilesAreReadAsInFull();
    void pictureIsNoSound();
    void framesAreNotReadToLearnTheirKind();
    void countedFramesAreReadAsInFull_data();
    void countedFramesAreReadAsInFull();
    void damagedFramesAreReadAsInFull_data();
    void damagedFramesAreReadAsInFull();

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

void MediaInputProbingTest::initTestCase()
{
    QVERIFY(m_folder.isValid());
}

void MediaInputProbingTest::generatedLibraryIsReadAsInFull_data()
{
    QTest::addColumn<double>("brokenShare");
    QTest::addColumn<int>("files");
    QTest::newRow("whole files") << 0.05 << 250;
    QTest::newRow("damaged files") << 0.9 << 350;
}

void MediaInputProbingTest::generatedLibraryIsReadAsInFull()
{
    QFETCH(double, brokenShare);
    QFETCH(int, files);
    const QString folder = path(QStringLiteral("library %1").arg(brokenShare));
    Corpus::generate(folder, files, brokenShare, { "--no-links", "--mp3", "ffmpeg" });

    const QStringList paths = filesBelow(folder);

    QVERIFY(paths.size() >= files);
    for (const QString& file : paths)
        QVERIFY2(FullProbe::propertiesOfInput(file) == FullProbe::properties(file), qPrintable(file));
}

void MediaInputProbingTest::disguisedSoundIsRecognised_data()
{
    QTest::addColumn<QByteArray>("sound");
    QTest::addColumn<QString>("codec");
    const QByteArray dts = coded({ "-c:a", "dca", "-strict", "-2" }, "dts");
    const QByteArray ac3 = coded({ "-c:a", "ac3" }, "ac3");
    QTest::newRow("dts") << dts << "dts";
    QTest::newRow("dts, swapped") << swapped(dts) << "dts";
    QTest::newRow("ac-3") << ac3 << "ac3";
    QTest::newRow("ac-3, swapped") << swapped(ac3) << "ac3";
    QTest::newRow("e-ac-3") << coded({ "-c:a", "eac3" }, "eac3") << "eac3";
    QTest::newRow("mp3") << coded({ "-c:a", "libmp3lame", "-b:a", "320k", "-write_xing", "0", "-id3v2_version", "0" },
        "mp3") << "mp3";
    QTest::newRow("mp3 behind a tag") << coded({ "-c:a", "libmp3lame" }, "mp3") << "mp3";
    QTest::newRow("aac") << coded({ "-c:a", "aac" }, "adts") << "aac";
    QTest::newRow("aac, low overhead") << coded({ "-c:a", "aac" }, "latm") << "aac_latm";
    QTest::newRow("ac-3 over an interface") << coded({ "-c:a", "ac3" }, "spdif") << "ac3";
    QTest::newRow("dts over an interface") << coded({ "-c:a", "dca", "-strict", "-2" }, "spdif") << "dts";
    for (const int silence : { 64, 4096, 20000, 100000 }) {
        const QByteArray zeros(silence, '\0');
        QTest::addRow("dts after %d zeros", silence) << zeros + dts << "dts";
        QTest::addRow("ac-3 after %d zeros", silence) << zeros + ac3 << "pcm_s16le";
    }
    QTest::newRow("noise") << coded({ "-c:a", "pcm_s16le" }, "s16le") << "pcm_s16le";
    QTest::newRow("silence") << QByteArray(300000, '\0') << "pcm_s16le";
}

// What is one codec or another is FFmpeg's decision; the expected name only shows that it was put to the test.
void MediaInputProbingTest::disguisedSoundIsRecognised()
{
    QFETCH(QByteArray, sound);
    const QString file = path("disguised.wav");
    TestSupport::writeFile(file, waveOf(sound));

    const QVariantMap found = FullProbe::propertiesOfInput(file);

    QCOMPARE(found, FullProbe::properties(file));
    QTEST(found.value("codec").toString(), "codec");
}

void MediaInputProbingTest::disguisedSoundIsDecoded()
{
    const QString file = path("played.wav");
    TestSupport::writeFile(file, waveOf(coded({ "-c:a", "dca", "-strict", "-2" }, "dts")));
    AudioDecoder decoder;
    decoder.setOutputSampleRate(SoundMaker::playedRate);
    decoder.setOutputChannels(2);
    decoder.setOutputSampleFormat(2);
    decoder.setFileName(file);
    QVERIFY(decoder.open());

    QByteArray sound;
    while (!decoder.atEnd())
        sound.append(decoder.decode(307200));

    QVERIFY(SoundMaker::peak(sound) > 0.1);
    QVERIFY(SoundMaker::greatestDifference(sound, SoundMaker::reference(file)) < 1e-6);
}

void MediaInputProbingTest::encodedFilesAreReadAsInFull_data()
{
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QStringList>("arguments");
    const auto add = [](const char* name, const char* suffix, const char* arguments) {
        QTest::newRow(name) << suffix << QString::fromLatin1(arguments).split(' ');
    };
    add("8 bits", "wav", "-c:a pcm_u8");
    add("24 bits", "wav", "-c:a pcm_s24le");
    add("32 bits", "wav", "-c:a pcm_s32le");
    add("float", "wav", "-c:a pcm_f32le");
    add("double", "wav", "-c:a pcm_f64le");
    add("a-law", "wav", "-c:a pcm_alaw");
    add("adpcm", "wav", "-c:a adpcm_ms");
    add("mp3 in wave", "wav", "-c:a libmp3lame");
    add("dts in wave by name", "wav", "-c:a dca -strict -2");
    add("six channels", "wav", "-ac 6 -c:a pcm_s16le");
    add("long file form", "wav", "-c:a pcm_s24le -rf64 always");
    add("16 bits, long file form", "wav", "-c:a pcm_s16le -rf64 always");
    add("aiff", "aif", "-c:a pcm_s16be");
    add("aiff of 24 bits", "aiff", "-c:a pcm_s24be");
    add("aifc, little end", "aif", "-c:a pcm_s16le");
    add("aifc, float", "aif", "-c:a pcm_f32be");
    add("aifc, a-law", "aif", "-c:a pcm_alaw");
    add("mp3, constant rate", "mp3", "-b:a 192k");
    add("mp3, variable rate", "mp3", "-q:a 2");
    add("mp3, variable rate without its table", "mp3", "-q:a 2 -write_xing 0 -id3v2_version 0");
    add("mp3, joint stereo of a low rate", "mp3", "-ar 22050 -b:a 32k");
    add("another container", "flac", "-c:a flac");
    add("a wave of another name", "w64", "-c:a pcm_s16le");
}

void MediaInputProbingTest::encodedFilesAreReadAsInFull()
{
    QFETCH(QString, suffix);
    QFETCH(QStringList, arguments);
    const QString file = path("encoded.") + suffix;
    SoundMaker::makeNoise(file, seconds, QStringList{ "-ar", "48000", "-ac", "2", "-bitexact" } + arguments);

    const QVariantMap found = FullProbe::propertiesOfInput(file);

    QVERIFY(found.contains("codec"));
    QCOMPARE(found, FullProbe::properties(file));
}

void MediaInputProbingTest::cutFilesAreReadAsInFull_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("codec");
    QTest::newRow("16 bits") << "a.wav"
                             << "pcm_s16le";
    QTest::newRow("24 bits") << "b.wav"
                             << "pcm_s24le";
    QTest::newRow("aiff") << "a.aif"
                          << "pcm_s16be";
    QTest::newRow("mp3") << "a.mp3"
                         << "libmp3lame";
}

void MediaInputProbingTest::cutFilesAreReadAsInFull()
{
    QFETCH(QString, name);
    QFETCH(QString, codec);
    SoundMaker::makeNoise(path(name), seconds, { "-c:a", codec, "-ac", "2" });
    QFile whole(path(name));
    QVERIFY(whole.open(QIODevice::ReadOnly));
    const QByteArray bytes = whole.readAll();
    const QString cut = path("cut " + name);

    for (const int size : { 1, 12, 36, 44, 45, 54, 60, 80, 100, 200, 1000, 5000, 50000, bytes.size() - 1 }) {
        TestSupport::writeFile(cut, bytes.left(size));
        QVERIFY2(FullProbe::propertiesOfInput(cut) == FullProbe::properties(cut), qPrintable(QString::number(size)));
    }
}

void MediaInputProbingTest::pictureIsNoSound()
{
    const QByteArray picture = SoundMaker::runFfmpeg(
        { "-f", "lavfi", "-i", "color=red:size=300x300", "-frames:v", "1", "-c:v", "png", "-f", "image2pipe", "-" });
    const QByteArray frame = id3Frame("APIC", QByteArray("\0image/png\0\3\0", 13) + picture);
    const QString file = path("picture.mp3");
    TestSupport::writeFile(file, mp3(50, id3Tag(frame + id3Text("TIT2", "Night"))));

    const QVariantMap found = FullProbe::propertiesOfInput(file);

    QCOMPARE(found, FullProbe::properties(file));
    QCOMPARE(found.value("codec").toString(), QStringLiteral("mp3"));
}

void MediaInputProbingTest::framesAreNotReadToLearnTheirKind()
{
    const QString file = path("long.mp3");
    SoundMaker::makeNoise(file, seconds, { "-b:a", "320k" });
    MediaInput input;

    QVERIFY(input.open(file));

    QCOMPARE(avformat_index_get_entries_count(input.stream()), 0);
    QCOMPARE(input.sampleRate(), 48000);
}

// FFmpeg looks at fifty frames: another kind among them counts, one behind them does not.
void MediaInputProbingTest::countedFramesAreReadAsInFull_data()
{
    QTest::addColumn<QByteArray>("table");
    QTest::addColumn<QByteArray>("sound");
    const QVector<QPair<const char*, QByteArray>> kinds{ { "stereo", MpegFrames::frames(1) },
        { "padding", MpegFrames::paddedFrames(1) }, { "higher rate of bits", MpegFrames::richFrames(1) },
        { "mono", MpegFrames::monoFrames(1) }, { "faster", MpegFrames::fasterFrames(1) },
        { "second layer", MpegFrames::secondLayerFrames(1) }, { "free format", MpegFrames::freeFormatFrame() },
        { "junk", QByteArray(100, 'x') } };
    const QVector<QPair<const char*, QByteArray>> tables{ { "Xing", MpegFrames::xingFrame("Xing", 60, 25000) },
        { "Info", MpegFrames::xingFrame("Info", 60, 25000) }, { "VBRI", MpegFrames::vbriFrame(60, 25000) },
        { "a table without a count", MpegFrames::xingFrame("Xing", 0, 0) }, { "no table", QByteArray() } };
    for (const auto& table : tables) {
        for (const auto& first : kinds) {
            for (const auto& second : kinds) {
                for (const int count : { 1, 10, 49, 50, 51 })
                    QTest::addRow("%s, %d x %s, %s", table.first, count, first.first, second.first)
                        << table.second << first.second.repeated(count) + second.second.repeated(60 - count);
            }
        }
    }
}

void MediaInputProbingTest::countedFramesAreReadAsInFull()
{
    QFETCH(QByteArray, table);
    QFETCH(QByteArray, sound);
    const QString file = path("counted.mp3");
    TestSupport::writeFile(file, table + sound);

    QCOMPARE(FullProbe::propertiesOfInput(file), FullProbe::properties(file));
}

void MediaInputProbingTest::damagedFramesAreReadAsInFull_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("constant rate") << QStringList{ "-b:a", "128k" };
    QTest::newRow("variable rate") << QStringList{ "-q:a", "4" };
    QTest::newRow("mono of a low rate") << QStringList{ "-ar", "22050", "-ac", "1", "-b:a", "32k" };
}

void MediaInputProbingTest::damagedFramesAreReadAsInFull()
{
    QFETCH(QStringList, arguments);
    const QString file = path("frames.mp3");
    SoundMaker::makeNoise(file, seconds, arguments);
    QFile whole(file);
    QVERIFY(whole.open(QIODevice::ReadOnly));
    const QByteArray bytes = whole.readAll();
    QRandomGenerator random(7);
    for (int round = 0; round < 400; ++round) {
        QByteArray damaged = bytes;
        for (int change = random.bounded(1, 6); change > 0; --change)
            damaged[random.bounded(bytes.size())] = char(random.bounded(256));
        TestSupport::writeFile(path("damaged.mp3"), damaged);
        QVERIFY2(FullProbe::propertiesOfInput(path("damaged.mp3")) == FullProbe::properties(path("damaged.mp3")),
            qPrintable(QString::number(round)));
    }
}

QTEST_GUILESS_MAIN(MediaInputProbingTest)

#include "tst_mediainputprobing.moc"
