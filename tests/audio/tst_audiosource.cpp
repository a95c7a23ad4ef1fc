// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/audiosource.h"

#include "tests/audio/soundmaker.h"
#include "tests/scan/soundfiles.h"
#include "tests/support/messagerecorder.h"
#include "tests/support/testsupport.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>
#include <QThreadPool>
#include <QtConcurrent>
#include <QtTest>

#include <memory>

using SoundMaker::playedFrameSize;
using SoundMaker::playedRate;

namespace {

constexpr int chunkSize = 307200;
constexpr int oneSecond = playedRate * playedFrameSize;

QByteArray readRest(AudioSource& source)
{
    QByteArray sound;
    while (!source.atEnd())
        sound += source.read(15360);
    return sound;
}

void waitForChunks()
{
    QCoreApplication::processEvents();
    QThreadPool::globalInstance()->waitForDone();
}

} // namespace

class AudioSourceTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void wholeFileIsRead_data();
    void wholeFileIsRead();
    void readingIsTheSameWithAndWithoutEvents();
    void deviceIsSequentialAndReadOnly();
    void openingAnOpenSourceLeavesItAsItIs();
    void failureToOpenIsLogged();
    void failedSourceOpensAnotherFile();
    void titleComesFromTheTags_data();
    void titleComesFromTheTags();
    void durationIsInWholeSeconds();
    void seekGoesByTime();
    void seekIsPreparedWhileTheFileIsPlayed();
    void readingPastTheEndGivesNothingUntilASeek();
    void closeForgetsTheFile();
    void closedSourceGivesNothing();
    void chunkOfAClosedSourceDoesNothing();
    void chunksAreBoundedAndAskedForInTime();
    void readyReadComesInTheThreadOfTheSource();
    void destructionWaitsForDecoding();
    void closingWhileDecodingIsSafe();
    void busyThreadPoolDoesNotStopTheSound();
    void soundIsWholeWhenChunksRunWhileItIsRead();

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }
    QString write(const QString& name, const QByteArray& contents);
    QString silence(double seconds);

    QScopedPointer<QTemporaryDir> m_folder;
};

void AudioSourceTest::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
}

QString AudioSourceTest::write(const QString& name, const QByteArray& contents)
{
    TestSupport::writeFile(path(name), contents);
    return path(name);
}

QString AudioSourceTest::silence(double seconds)
{
    return write("silence.wav", SoundFiles::wave({ 16, 48000, 2, int(48000 * seconds) }));
}

void AudioSourceTest::wholeFileIsRead_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("wav mono") << "a.wav" << QStringList{ "-ar", "48000", "-ac", "1" };
    QTest::newRow("wav 24 bit") << "a.wav" << QStringList{ "-ar", "44100", "-c:a", "pcm_s24le" };
    QTest::newRow("aiff") << "a.AIF" << QStringList{ "-ar", "44100", "-f", "aiff" };
    QTest::newRow("mp3") << "a.mp3" << QStringList{ "-ar", "44100", "-b:a", "128k" };
}

void AudioSourceTest::wholeFileIsRead()
{
    QFETCH(QString, name);
    QFETCH(QStringList, arguments);
    SoundMaker::makeNoise(path(name), 2, arguments);
    AudioSource source;
    QVERIFY(source.open(path(name)));

    const QByteArray sound = readRest(source);

    QCOMPARE(sound.size(), 2 * oneSecond);
    const QByteArray expected = SoundMaker::reference(path(name));
    QVERIFY(SoundMaker::greatestDifference(sound, expected) < 1e-6);
}

void AudioSourceTest::readingIsTheSameWithAndWithoutEvents()
{
    SoundMaker::makeNoise(path("a.wav"), 3, { "-ar", "44100" });
    AudioSource source;
    QVERIFY(source.open(path("a.wav")));
    const QByteArray withoutEvents = readRest(source);

    source.seek(0.0);
    QByteArray withEvents;
    while (!source.atEnd()) {
        withEvents += source.read(15360);
        QCoreApplication::processEvents();
    }

    QVERIFY(withEvents == withoutEvents);
}

void AudioSourceTest::deviceIsSequentialAndReadOnly()
{
    AudioSource source;
    QVERIFY(source.open(silence(0.1)));

    QVERIFY(source.isSequential());
    QCOMPARE(source.openMode(), QIODevice::ReadOnly | QIODevice::Unbuffered);
    QVERIFY(!source.seek(qint64(0)));
    const TestSupport::MessageRecorder recorder;
    QCOMPARE(source.write("x", 1), qint64(-1));
}

void AudioSourceTest::openingAnOpenSourceLeavesItAsItIs()
{
    AudioSource source;
    QVERIFY(source.open(silence(1)));
    const QString other = write("other.wav", SoundFiles::wave());

    QVERIFY(!source.open(other));

    QCOMPARE(source.fileName(), path("silence.wav"));
    QCOMPARE(readRest(source).size(), oneSecond);
}

void AudioSourceTest::failureToOpenIsLogged()
{
    const TestSupport::MessageRecorder recorder;
    AudioSource source;

    QVERIFY(!source.open(path("none.wav")));

    QVERIFY(!source.isOpen());
    const QStringList messages = recorder.messages(QtCriticalMsg);
    QCOMPARE(messages.size(), 2);
    QCOMPARE(messages.at(0), QStringLiteral("Unable to open source file: \"%1\"").arg(path("none.wav")));
    QCOMPARE(messages.at(1), QStringLiteral("Decoder error: \"Unable to open input: No such file or directory\""));
}

void AudioSourceTest::failedSourceOpensAnotherFile()
{
    const TestSupport::MessageRecorder recorder;
    AudioSource source;
    QVERIFY(!source.open(write("bad.wav", "no sound")));

    QVERIFY(source.open(silence(0.1)));

    QCOMPARE(source.fileName(), path("silence.wav"));
}

void AudioSourceTest::titleComesFromTheTags_data()
{
    QTest::addColumn<QByteArray>("frames");
    QTest::addColumn<QString>("title");
    using SoundFiles::id3Text;
    QTest::newRow("artist and title") << QByteArray(id3Text("TIT2", "Night") + id3Text("TPE1", "Owls"))
                                      << "Owls - Night";
    QTest::newRow("title") << id3Text("TIT2", "Night") << "Unknown - Night";
    QTest::newRow("artist") << id3Text("TPE1", "Owls") << "a.mp3";
    QTest::newRow("nothing") << QByteArray() << "a.mp3";
    QTest::newRow("percent signs") << QByteArray(id3Text("TIT2", "50%2") + id3Text("TPE1", "%1 %2")) << "%1 %2 - 50%2";
}

void AudioSourceTest::titleComesFromTheTags()
{
    QFETCH(QByteArray, frames);
    AudioSource source;

    QVERIFY(source.open(write("a.mp3", SoundFiles::mp3(20, frames.isEmpty() ? frames : SoundFiles::id3Tag(frames)))));

    QTEST(source.title(), "title");
}

void AudioSourceTest::durationIsInWholeSeconds()
{
    AudioSource source;

    QVERIFY(source.open(silence(2.7)));

    QCOMPARE(source.duration(), 2);
}

void AudioSourceTest::seekGoesByTime()
{
    AudioSource source;
    QVERIFY(source.open(silence(1)));

    source.seek(0.5);
    QCOMPARE(readRest(source).size(), oneSecond / 2);
    source.seek(99.0);
    QCOMPARE(readRest(source).size(), 0);
    QVERIFY(source.atEnd());
    source.seek(-1.0);
    QCOMPARE(readRest(source).size(), oneSecond);
}

void AudioSourceTest::seekIsPreparedWhileTheFileIsPlayed()
{
    const QString whole = path("whole.mp3");
    const QString damaged = path("damaged.mp3");
    SoundMaker::makeNoise(whole, 60, { "-b:a", "128k" });
    QVERIFY(QFile::copy(whole, damaged));
    const auto soundAt = [](AudioSource& source, double seconds) {
        source.seek(seconds);
        return source.read(chunkSize);
    };
    AudioSource played;
    QVERIFY(played.open(damaged));
    for (int chunk = 0; chunk < 20; ++chunk) {
        QVERIFY(!played.read(chunkSize).isEmpty());
        waitForChunks();
    }

    // Who still had to look for the place would miscount here.
    QFile file(damaged);
    QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(file.size() / 2));
    QCOMPARE(file.write(QByteArray(2000, 'x')), qint64(2000));
    file.close();

    AudioSource reference;
    QVERIFY(reference.open(whole));
    const QByteArray expected = soundAt(reference, 50);
    QCOMPARE(expected.size(), chunkSize);
    QVERIFY(soundAt(played, 50) == expected);
    AudioSource unprepared;
    QVERIFY(unprepared.open(damaged));
    QVERIFY(soundAt(unprepared, 50) != expected);
}

void AudioSourceTest::readingPastTheEndGivesNothingUntilASeek()
{
    AudioSource source;
    QVERIFY(source.open(silence(0.2)));
    readRest(source);

    QVERIFY(source.atEnd());
    char byte = 0;
    QCOMPARE(source.read(&byte, 1), qint64(0));
    QCOMPARE(source.bytesAvailable(), qint64(0));

    source.seek(0.1);
    QVERIFY(!source.atEnd());
    QCOMPARE(readRest(source).size(), oneSecond / 10);
}

void AudioSourceTest::closeForgetsTheFile()
{
    AudioSource source;
    QVERIFY(source.open(silence(1)));
    source.decodeNextChunk();

    source.close();

    QVERIFY(!source.isOpen());
    QCOMPARE(source.fileName(), QString());
    QCOMPARE(source.title(), QString());
    QCOMPARE(source.duration(), 0);
    QCOMPARE(source.bytesAvailable(), qint64(0));
    QVERIFY(source.open(silence(1)));
    QCOMPARE(readRest(source).size(), oneSecond);
}

void AudioSourceTest::closedSourceGivesNothing()
{
    AudioSource source;
    const TestSupport::MessageRecorder recorder;

    source.seek(1.0);

    QVERIFY(source.atEnd());
    QVERIFY(source.read(100).isEmpty());
    source.close();
}

void AudioSourceTest::chunkOfAClosedSourceDoesNothing()
{
    AudioSource source;
    QVERIFY(source.open(silence(1)));
    source.decodeNextChunkAsync();
    source.close();

    source.decodeNextChunk();
    source.decodeNextChunkAsync();
    waitForChunks();

    QCOMPARE(source.bytesAvailable(), qint64(0));
}

void AudioSourceTest::chunksAreBoundedAndAskedForInTime()
{
    AudioSource source;
    QVERIFY(source.open(silence(3)));
    source.decodeNextChunk();
    QCOMPARE(source.bytesAvailable(), qint64(chunkSize));

    source.read(chunkSize - 102400);
    waitForChunks();
    QCOMPARE(source.bytesAvailable(), qint64(102400));

    source.read(8);
    waitForChunks();
    QCOMPARE(source.bytesAvailable(), qint64(102400 - 8 + chunkSize));
}

void AudioSourceTest::readyReadComesInTheThreadOfTheSource()
{
    AudioSource source;
    QVERIFY(source.open(silence(1)));
    QThread* thread = nullptr;
    connect(
        &source, &QIODevice::readyRead, this, [&thread] { thread = QThread::currentThread(); }, Qt::DirectConnection);

    source.decodeNextChunkAsync();

    QTRY_VERIFY(thread);
    QCOMPARE(thread, source.thread());
    QCOMPARE(source.bytesAvailable(), qint64(chunkSize));
}

void AudioSourceTest::destructionWaitsForDecoding()
{
    SoundMaker::makeNoise(path("a.mp3"), 30, { "-ar", "44100" });
    for (int round = 0; round < 100; ++round) {
        auto source = std::make_unique<AudioSource>();
        QVERIFY(source->open(path("a.mp3")));
        for (int chunk = 0; chunk < 3; ++chunk)
            source->decodeNextChunkAsync();
        if (round % 2)
            source->read(chunkSize);

        source.reset();
    }
    waitForChunks();
}

void AudioSourceTest::closingWhileDecodingIsSafe()
{
    SoundMaker::makeNoise(path("a.mp3"), 30, { "-ar", "44100" });
    AudioSource source;
    for (int round = 0; round < 100; ++round) {
        QVERIFY(source.open(path("a.mp3")));
        source.decodeNextChunkAsync();
        source.seek(double(round) / 4);
        source.decodeNextChunkAsync();

        source.close();

        QVERIFY(source.atEnd());
    }
}

void AudioSourceTest::busyThreadPoolDoesNotStopTheSound()
{
    AudioSource source;
    QVERIFY(source.open(silence(2)));
    QSemaphore semaphore;
    QFutureSynchronizer<void> synchronizer;
    for (int worker = 0; worker < QThreadPool::globalInstance()->maxThreadCount(); ++worker)
        synchronizer.addFuture(QtConcurrent::run([&semaphore] { semaphore.acquire(); }));

    QByteArray sound;
    while (!source.atEnd()) {
        sound += source.read(15360);
        QCoreApplication::processEvents();
    }

    semaphore.release(QThreadPool::globalInstance()->maxThreadCount());
    QCOMPARE(sound.size(), 2 * oneSecond);
}

void AudioSourceTest::soundIsWholeWhenChunksRunWhileItIsRead()
{
    SoundMaker::makeNoise(path("a.wav"), 5, { "-ar", "44100" });
    AudioSource source;
    QVERIFY(source.open(path("a.wav")));
    QByteArray sound;

    while (!source.atEnd()) {
        source.decodeNextChunkAsync();
        sound += source.read(50000);
    }

    QVERIFY(SoundMaker::greatestDifference(sound, SoundMaker::reference(path("a.wav"))) < 1e-6);
    QCOMPARE(sound.size(), 5 * oneSecond);
}

QTEST_GUILESS_MAIN(AudioSourceTest)
#include "tst_audiosource.moc"
