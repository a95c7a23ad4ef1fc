// SPDX-License-Identifier: GPL-3.0-or-later
// The player on a sound server that plays into nothing; what it plays is recorded and measured.
#include "audio/audioplayer.h"

#include "tests/audio/soundmaker.h"
#include "tests/audio/soundserver.h"
#include "tests/audio/soundtestmain.h"
#include "tests/support/messagerecorder.h"

#include <QAudioOutput>
#include <QCoreApplication>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

constexpr int rate = SoundMaker::playedRate;
constexpr int millisecond = rate / 1000; // frames
constexpr int toneHertz = 1000;

// 1 kHz, but for the edges of the span and a crossing that falls between two frames.
bool isWholeTone(const QByteArray& sound, const SoundSpan& span)
{
    const QVector<int> distances = periods(sound, span);
    return !distances.isEmpty() && std::all_of(distances.begin() + 1, distances.end() - 1, [](int distance) {
        return std::abs(distance - rate / toneHertz) <= 1;
    });
}

} // namespace

class AudioPlayerTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void signalsAndSlotsStandInOrder();
    void freshPlayerIsStoppedAtFullVolume();
    void outputHasTheFormatOfTheSource();
    void loadTellsOfTheResetAndOfTheFile();
    void failedLoadLeavesNothingLoaded();
    void volumeIsClamped_data();
    void volumeIsClamped();
    void toggleWithNothingLoadedDoesNoHarm();
    void togglePlaysPausesAndGoesOn();
    void toneIsPlayedWithoutAGap();
    void pauseAndResumeLoseNothing();
    void volumeScalesTheSound();
    void seekWhilePlayingGoesOnFromThere();
    void seekWhilePausedStopsAndPlaysFromThere();
    void seekWhileStoppedOnlySetsTheStart();
    void seekToTheEndPlaysOut();
    void positionFollowsThePlayedTime();
    void positionIsToldOftenWhilePlaying();
    void stateIsToldAfterTheOutputsOwnHandling();
    void playedOutFileIsClosed();
    void fileWithoutSoundPlaysNothing();
    void loadWhilePlayingPlaysTheNewFileOnly();
    void manyDisposalsWhilePlaying();
    void destructionWhilePlaying();
    void randomActionsDoNoHarm();

private:
    QString tone(double seconds);
    bool isActive() const { return m_player->state() == QAudio::ActiveState; }

    QTemporaryDir m_folder;
    std::unique_ptr<SoundServer> m_server;
    std::unique_ptr<AudioPlayer> m_player;
};

void AudioPlayerTest::initTestCase()
{
    QVERIFY(m_folder.isValid());
    m_server = std::make_unique<SoundServer>();
}

void AudioPlayerTest::init()
{
    m_player = std::make_unique<AudioPlayer>();
}

void AudioPlayerTest::cleanup()
{
    m_player.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QString AudioPlayerTest::tone(double seconds)
{
    const QString path = m_folder.filePath(QStringLiteral("tone-%1.wav").arg(seconds));
    if (!QFile::exists(path))
        SoundMaker::makeTone(path, seconds, { "-ar", "48000", "-ac", "1" }, toneHertz);
    return path;
}

void AudioPlayerTest::signalsAndSlotsStandInOrder()
{
    const QMetaObject& object = AudioPlayer::staticMetaObject;
    QStringList methods;
    for (int index = object.methodOffset(); index < object.methodCount(); ++index)
        methods.append(QString::fromLatin1(object.method(index).methodSignature()));

    QCOMPARE(methods,
        QStringList({ "changed()", "currentPositionChanged(double)", "stateChanged()", "volumeChanged()",
            "load(QString)", "reset()", "seek(double)", "togglePlayback()",
            "handleAudioOutputStateChange(QAudio::State)", "emitCurrentPosition()" }));
}

void AudioPlayerTest::freshPlayerIsStoppedAtFullVolume()
{
    QCOMPARE(m_player->state(), QAudio::StoppedState);
    QCOMPARE(m_player->volume(), 1.0);
    QCOMPARE(m_player->position(), 0.0);
    QCOMPARE(m_player->fileName(), QString());
    QCOMPARE(m_player->title(), QString());
    QCOMPARE(m_player->duration(), 0);
    QVERIFY(m_player->canBeHeard());
}

void AudioPlayerTest::outputHasTheFormatOfTheSource()
{
    QVERIFY(m_player->load(tone(2)));
    m_player->togglePlayback();
    QVERIFY(isActive());

    const auto* output = m_player->findChild<QAudioOutput*>();
    QVERIFY(output);
    QCOMPARE(output->format().codec(), QStringLiteral("audio/pcm"));
    QCOMPARE(output->format().sampleRate(), 96000);
    QCOMPARE(output->format().channelCount(), 2);
    QCOMPARE(output->format().sampleSize(), 32);
    QCOMPARE(output->format().sampleType(), QAudioFormat::SignedInt);
    QCOMPARE(output->format().byteOrder(), QAudioFormat::LittleEndian);
    QCOMPARE(output->bufferSize(), 307200);
    QCOMPARE(output->notifyInterval(), 40);
}

void AudioPlayerTest::loadTellsOfTheResetAndOfTheFile()
{
    QSignalSpy changed(m_player.get(), &AudioPlayer::changed);

    QVERIFY(m_player->load(tone(2)));

    QCOMPARE(changed.count(), 2);
    QCOMPARE(m_player->fileName(), tone(2));
    QCOMPARE(m_player->title(), QStringLiteral("tone-2.wav"));
    QCOMPARE(m_player->duration(), 2);
    QCOMPARE(m_player->state(), QAudio::StoppedState);
}

void AudioPlayerTest::failedLoadLeavesNothingLoaded()
{
    QVERIFY(m_player->load(tone(2)));
    m_player->togglePlayback();
    QVERIFY(isActive());
    QSignalSpy changed(m_player.get(), &AudioPlayer::changed);
    const TestSupport::MessageRecorder recorder;

    QVERIFY(!m_player->load(m_folder.filePath("none.wav")));

    QCOMPARE(changed.count(), 1);
    QCOMPARE(m_player->fileName(), QString());
    QCOMPARE(m_player->state(), QAudio::StoppedState);
    QCOMPARE(m_player->position(), 0.0);
    QCOMPARE(recorder.messages(QtCriticalMsg).size(), 2);
}

void AudioPlayerTest::volumeIsClamped_data()
{
    QTest::addColumn<double>("volume");
    QTest::addColumn<double>("expected");
    QTest::newRow("too much") << 1.5 << 1.0;
    QTest::newRow("negative") << -0.2 << 0.0;
    QTest::newRow("nothing") << 0.0 << 0.0;
    QTest::newRow("half") << 0.5 << 0.5;
    QTest::newRow("as before") << 1.0 << 1.0;
}

void AudioPlayerTest::volumeIsClamped()
{
    QFETCH(double, volume);
    QVERIFY(m_player->load(tone(2)));
    m_player->togglePlayback();
    QSignalSpy volumeChanged(m_player.get(), &AudioPlayer::volumeChanged);

    m_player->setVolume(volume);

    QTEST(m_player->volume(), "expected");
    QTEST(double(m_player->findChild<QAudioOutput*>()->volume()), "expected");
    QCOMPARE(volumeChanged.count(), 1);
}

void AudioPlayerTest::toggleWithNothingLoadedDoesNoHarm()
{
    const TestSupport::MessageRecorder recorder;

    m_player->togglePlayback();
    m_player->togglePlayback();
    m_player->seek(3);
    m_player->togglePlayback();

    QCOMPARE(m_player->state(), QAudio::StoppedState);
    QCOMPARE(recorder.messages(), QStringList());
}

void AudioPlayerTest::togglePlaysPausesAndGoesOn()
{
    QVERIFY(m_player->load(tone(10)));

    m_player->togglePlayback();
    QCOMPARE(m_player->state(), QAudio::ActiveState);
    m_player->togglePlayback();
    QCOMPARE(m_player->state(), QAudio::SuspendedState);
    m_player->togglePlayback();
    QCOMPARE(m_player->state(), QAudio::ActiveState);
    m_player->reset();
    QCOMPARE(m_player->state(), QAudio::StoppedState);
}

void AudioPlayerTest::toneIsPlayedWithoutAGap()
{
    SoundRecording recording;
    QVERIFY(m_player->load(tone(2)));

    m_player->togglePlayback();
    QVERIFY(recording.waitForSound(1.9));
    QVERIFY(recording.waitForSilence(0.3));

    const QByteArray sound = recording.sound();
    const QVector<SoundSpan> spans = soundSpans(sound);
    QCOMPARE(spans.size(), 1);
    QVERIFY2(
        std::abs(spans.first().length() - 2 * rate) < millisecond, qPrintable(QString::number(spans.first().length())));
    QVERIFY(isWholeTone(sound, spans.first()));
    QVERIFY(std::abs(SoundMaker::peak(sound) - 0.5) < 0.005);
}

void AudioPlayerTest::pauseAndResumeLoseNothing()
{
    SoundRecording recording;
    QVERIFY(m_player->load(tone(2)));
    m_player->togglePlayback();
    QVERIFY(recording.waitForSound(0.5));

    m_player->togglePlayback();
    QVERIFY(recording.waitForSilence(0.3));
    const double position = m_player->position();
    QCOMPARE(m_player->state(), QAudio::SuspendedState);
    QVERIFY(recording.waitForSilence(0.5));
    QCOMPARE(m_player->position(), position);
    m_player->togglePlayback();
    QVERIFY(recording.waitForSound(1.9));
    QVERIFY(recording.waitForSilence(0.3));

    const QByteArray sound = recording.sound();
    const QVector<SoundSpan> spans = soundSpans(sound);
    QCOMPARE(spans.size(), 2);
    QVERIFY(std::abs(spans.at(0).length() + spans.at(1).length() - 2 * rate) < 2 * millisecond);
    QVERIFY(isWholeTone(sound, spans.at(0)) && isWholeTone(sound, spans.at(1)));
}

void AudioPlayerTest::volumeScalesTheSound()
{
    SoundRecording recording;
    QVERIFY(m_player->load(tone(2)));
    m_player->setVolume(0.25);

    m_player->togglePlayback();
    QVERIFY(recording.waitForSound(1));

    QVERIFY(std::abs(SoundMaker::peak(recording.sound()) - 0.125) < 0.002);
    QCOMPARE(m_player->volume(), 0.25);
}

void AudioPlayerTest::seekWhilePlayingGoesOnFromThere()
{
    QVERIFY(m_player->load(tone(10)));
    m_player->togglePlayback();
    QTRY_VERIFY(m_player->position() > 0.5);
    SoundRecording recording;

    m_player->seek(8.5);
    QVERIFY(isActive());
    QVERIFY(m_player->position() >= 8.5);
    QTRY_COMPARE(m_player->state(), QAudio::StoppedState);
    QVERIFY(recording.waitForSilence(0.3));

    const QByteArray sound = recording.sound();
    const int length = soundSpans(sound).last().end - soundSpans(sound).first().begin;
    QVERIFY2(length > 1.5 * rate && length < 3 * rate, qPrintable(QString::number(length)));
}

void AudioPlayerTest::seekWhilePausedStopsAndPlaysFromThere()
{
    QVERIFY(m_player->load(tone(10)));
    m_player->togglePlayback();
    m_player->togglePlayback();
    QCOMPARE(m_player->state(), QAudio::SuspendedState);
    QSignalSpy stateChanged(m_player.get(), &AudioPlayer::stateChanged);

    m_player->seek(9);

    QCOMPARE(m_player->state(), QAudio::StoppedState);
    QCOMPARE(m_player->position(), 9.0);
    QTRY_VERIFY(!stateChanged.isEmpty());
    SoundRecording recording;
    m_player->togglePlayback();
    QVERIFY(m_player->position() >= 9.0);
    QVERIFY(recording.waitForSound(0.9));
    QVERIFY(recording.waitForSilence(0.3));
    const QVector<SoundSpan> spans = soundSpans(recording.sound());
    QCOMPARE(spans.size(), 1);
    QVERIFY(std::abs(spans.first().length() - rate) < millisecond);
}

void AudioPlayerTest::seekWhileStoppedOnlySetsTheStart()
{
    QVERIFY(m_player->load(tone(10)));

    m_player->seek(7);

    QCOMPARE(m_player->state(), QAudio::StoppedState);
    QCOMPARE(m_player->position(), 7.0);
    m_player->togglePlayback();
    QVERIFY(isActive());
    QVERIFY(m_player->position() >= 7.0 && m_player->position() < 9.0);
}

void AudioPlayerTest::seekToTheEndPlaysOut()
{
    QVERIFY(m_player->load(tone(10)));
    m_player->togglePlayback();
    QSignalSpy changed(m_player.get(), &AudioPlayer::changed);

    m_player->seek(10);

    QTRY_COMPARE(changed.count(), 1);
    QCOMPARE(m_player->state(), QAudio::StoppedState);
    QCOMPARE(m_player->position(), 0.0);
    QCOMPARE(m_player->fileName(), QString());
}

void AudioPlayerTest::positionFollowsThePlayedTime()
{
    QVERIFY(m_player->load(tone(10)));
    m_player->seek(3);
    m_player->togglePlayback();
    QTRY_VERIFY(m_player->position() > 4.0);

    const auto* output = m_player->findChild<QAudioOutput*>();
    QCOMPARE(m_player->position(), 3.0 + double(output->processedUSecs()) / 1000000);
    m_player->reset();
    QCOMPARE(m_player->position(), 0.0);
}

void AudioPlayerTest::positionIsToldOftenWhilePlaying()
{
    QVERIFY(m_player->load(tone(10)));
    QSignalSpy position(m_player.get(), &AudioPlayer::currentPositionChanged);
    m_player->togglePlayback();
    QTRY_VERIFY(m_player->position() > 1.0);

    // 0.6 s at least have passed; how many notifications a busy machine lets through is its own affair.
    QVERIFY2(position.count() >= 5, qPrintable(QString::number(position.count())));
    const auto isEarlier = [](const QList<QVariant>& first, const QList<QVariant>& second) {
        return first.at(0).toDouble() < second.at(0).toDouble();
    };
    QVERIFY(std::is_sorted(position.begin(), position.end(), isEarlier));
}

void AudioPlayerTest::stateIsToldAfterTheOutputsOwnHandling()
{
    QVERIFY(m_player->load(tone(10)));
    QSignalSpy stateChanged(m_player.get(), &AudioPlayer::stateChanged);
    for (int toggles = 0; toggles < 3; ++toggles) {
        stateChanged.clear();

        m_player->togglePlayback();

        QCOMPARE(stateChanged.count(), 0);
        QTRY_VERIFY(!stateChanged.isEmpty());
    }
}

void AudioPlayerTest::playedOutFileIsClosed()
{
    QVERIFY(m_player->load(tone(0.5)));
    QSignalSpy changed(m_player.get(), &AudioPlayer::changed);
    QSignalSpy position(m_player.get(), &AudioPlayer::currentPositionChanged);

    m_player->togglePlayback();

    QTRY_COMPARE(changed.count(), 1);
    QCOMPARE(m_player->state(), QAudio::StoppedState);
    QCOMPARE(m_player->position(), 0.0);
    QCOMPARE(m_player->fileName(), QString());
    QTRY_COMPARE(position.last().at(0).toDouble(), 0.0);
}

void AudioPlayerTest::fileWithoutSoundPlaysNothing()
{
    SoundMaker::makeTone(m_folder.filePath("empty.wav"), 0.0001, { "-ar", "8000" });
    QVERIFY(m_player->load(m_folder.filePath("empty.wav")));
    m_player->seek(1);
    QSignalSpy changed(m_player.get(), &AudioPlayer::changed);

    m_player->togglePlayback();

    QVERIFY(!isActive());
    QTRY_COMPARE(changed.count(), 1);
    QCOMPARE(m_player->position(), 0.0);
}

void AudioPlayerTest::loadWhilePlayingPlaysTheNewFileOnly()
{
    QVERIFY(m_player->load(tone(0.5)));
    m_player->togglePlayback();
    // The end of the first file must not end the second.
    QTRY_VERIFY(m_player->position() >= 0.5);

    QVERIFY(m_player->load(tone(2)));
    m_player->togglePlayback();

    QTRY_VERIFY(m_player->position() > 1.5);
    QCOMPARE(m_player->fileName(), tone(2));
    QVERIFY(isActive());
}

void AudioPlayerTest::manyDisposalsWhilePlaying()
{
    for (int round = 0; round < 400; ++round) {
        QVERIFY(m_player->load(tone(10)));
        m_player->togglePlayback();
        QVERIFY(isActive());
        if (round % 4 == 1)
            QCoreApplication::processEvents();
        if (round % 4 == 2)
            m_player->togglePlayback();
        if (round % 20 == 3)
            QTRY_VERIFY(m_player->position() > 0.42);

        m_player->reset();

        QCOMPARE(m_player->state(), QAudio::StoppedState);
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(m_player->findChildren<QThread*>().isEmpty());
    QVERIFY(m_player->findChildren<QAudioOutput*>().isEmpty());
}

void AudioPlayerTest::destructionWhilePlaying()
{
    for (int round = 0; round < 50; ++round) {
        auto player = std::make_unique<AudioPlayer>();
        QVERIFY(player->load(tone(10)));
        player->togglePlayback();
        if (round % 2)
            QTRY_VERIFY(player->position() > 0.05);

        player.reset();

        if (round % 3)
            QCoreApplication::processEvents();
    }
}

void AudioPlayerTest::randomActionsDoNoHarm()
{
    const QVector<QString> files{ tone(0.5), tone(2), tone(10), m_folder.filePath("none.wav") };
    const TestSupport::MessageRecorder recorder;
    QRandomGenerator random(5);
    const QVector<std::function<void()>> actions{
        [&] { m_player->togglePlayback(); },
        [&] { m_player->togglePlayback(); },
        [&] { m_player->seek(random.bounded(12.0) - 1); },
        [&] { m_player->load(files.at(random.bounded(files.size()))); },
        [&] { m_player->setVolume(random.bounded(2.0) - 0.5); },
        [&] { m_player->reset(); },
        [&] { QCoreApplication::processEvents(QEventLoop::AllEvents, 30); },
        [&] { QSignalSpy(m_player.get(), &AudioPlayer::currentPositionChanged).wait(100); },
    };
    for (int count = 0; count < 300; ++count) {
        actions.at(random.bounded(actions.size()))();
        QVERIFY(m_player->state() == QAudio::StoppedState || !m_player->fileName().isEmpty());
        QVERIFY(m_player->position() >= -1);
    }
    m_player->reset();
    QVERIFY(m_player->load(tone(2)));
    m_player->togglePlayback();
    QTRY_VERIFY(m_player->position() > 1);
    for (const QString& message : recorder.messages(QtWarningMsg))
        QFAIL(qPrintable(message));
}

SOUND_TEST_MAIN(AudioPlayerTest, QCoreApplication)
#include "tst_audioplayer.moc"
