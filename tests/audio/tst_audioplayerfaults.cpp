// SPDX-License-Identifier: GPL-3.0-or-later
// The player while its sound server hangs or dies. A call that waited for the server would never return.
#include "audio/audioplayer.h"

#include "tests/audio/playerfixture.h"
#include "tests/audio/soundtestmain.h"
#include "tests/support/messagerecorder.h"

#include <QAudioOutput>
#include <QDeadlineTimer>
#include <QSignalSpy>
#include <QThread>
#include <QtTest>

class AudioPlayerFaultsTest : public PlayerFixture
{
    Q_OBJECT

private slots:
    void cleanup() override;
    void resettingOnAHungServerDoesNotWait();
    void pausingOnAHungServerStops();
    void seekingOnAHungServerStops();
    void hungServerStopsPlayback();
    void playbackGoesOnOnceTheServerAnswers();
    void vanishedFilePlaysOnOrEnds();
    void pauseAfterTheProgramWasHeldUpPauses();
    void seekAfterTheProgramWasHeldUpGoesOn();
    void heldUpProgramIsStillPlaying();
    void deathOfTheServerStopsPlayback();

private:
    bool hasStalled();
    void holdUpTheProgram();
};

void AudioPlayerFaultsTest::cleanup()
{
    m_server->wake();
    PlayerFixture::cleanup();
}

// The output has taken what it has room for, and nothing has gone on since for some time.
bool AudioPlayerFaultsTest::hasStalled()
{
    QSignalSpy position(m_player.get(), &AudioPlayer::currentPositionChanged);
    const bool isSilent = QTest::qWaitFor(
        [&position] {
            const int count = position.count();
            return !position.wait(1000) && position.count() == count;
        },
        10000);
    return isSilent;
}

// Until the output has nothing left to play, and tells so: its thread goes on, this one with its events does not.
void AudioPlayerFaultsTest::holdUpTheProgram()
{
    const auto* output = m_player->findChild<QAudioOutput*>();
    const QDeadlineTimer deadline(20000);
    while (output->state() == QAudio::ActiveState && !deadline.hasExpired())
        QThread::yieldCurrentThread();
    QCOMPARE(output->state(), QAudio::IdleState);
}

void AudioPlayerFaultsTest::resettingOnAHungServerDoesNotWait()
{
    play();
    m_server->freeze();

    m_player->reset();

    QCOMPARE(m_player->state(), QAudio::StoppedState);
}

void AudioPlayerFaultsTest::pausingOnAHungServerStops()
{
    play();
    m_server->freeze();
    QVERIFY(hasStalled());
    const double position = m_player->position();

    m_player->togglePlayback();

    QCOMPARE(m_player->state(), QAudio::StoppedState);
    QCOMPARE(m_player->position(), position);
}

void AudioPlayerFaultsTest::seekingOnAHungServerStops()
{
    play();
    m_server->freeze();
    QVERIFY(hasStalled());

    m_player->seek(30);

    QCOMPARE(m_player->state(), QAudio::StoppedState);
    QCOMPARE(m_player->position(), 30.0);
}

void AudioPlayerFaultsTest::hungServerStopsPlayback()
{
    const TestSupport::MessageRecorder recorder;
    play();
    QSignalSpy stateChanged(m_player.get(), &AudioPlayer::stateChanged);
    m_server->freeze();

    QTRY_COMPARE_WITH_TIMEOUT(m_player->state(), QAudio::StoppedState, 20000);

    QVERIFY(!m_player->canBeHeard());
    QVERIFY(m_player->position() > 0.6);
    QTRY_VERIFY(!stateChanged.isEmpty());
    QVERIFY(recorder.messages(QtWarningMsg).contains("The audio server does not answer, playback is stopped"));
}

void AudioPlayerFaultsTest::playbackGoesOnOnceTheServerAnswers()
{
    const TestSupport::MessageRecorder recorder;
    play();
    m_server->freeze();
    QTRY_COMPARE_WITH_TIMEOUT(m_player->state(), QAudio::StoppedState, 20000);
    const double position = m_player->position();
    m_server->wake();

    m_player->togglePlayback();

    QCOMPARE(m_player->state(), QAudio::ActiveState);
    QVERIFY(m_player->canBeHeard());
    QTRY_VERIFY(m_player->position() > position + 0.5);
}

void AudioPlayerFaultsTest::vanishedFilePlaysOnOrEnds()
{
    const QString copy = m_folder.filePath("copy.wav");
    QVERIFY(QFile::copy(m_file, copy));
    QVERIFY(m_player->load(copy));
    m_player->togglePlayback();
    QTRY_VERIFY(m_player->position() > 0.6);

    QVERIFY(QFile::resize(copy, 1000));

    // What was read before is played; then the sound ends.
    QTRY_COMPARE_WITH_TIMEOUT(m_player->state(), QAudio::StoppedState, 20000);
    QTRY_COMPARE(m_player->fileName(), QString());
}

void AudioPlayerFaultsTest::pauseAfterTheProgramWasHeldUpPauses()
{
    play();
    const double position = m_player->position();
    holdUpTheProgram();

    m_player->togglePlayback();

    QCOMPARE(m_player->state(), QAudio::SuspendedState);
    QCOMPARE(m_player->position(), position);
    QCoreApplication::processEvents();
    QCOMPARE(m_player->state(), QAudio::SuspendedState);
    m_player->togglePlayback();
    QCOMPARE(m_player->state(), QAudio::ActiveState);
    QTRY_VERIFY(m_player->position() > position + 1);
}

void AudioPlayerFaultsTest::seekAfterTheProgramWasHeldUpGoesOn()
{
    play();
    holdUpTheProgram();

    m_player->seek(30);

    QCOMPARE(m_player->state(), QAudio::ActiveState);
    QTRY_VERIFY(m_player->position() > 31);
}

void AudioPlayerFaultsTest::heldUpProgramIsStillPlaying()
{
    play();
    const double position = m_player->position();
    holdUpTheProgram();

    QCOMPARE(m_player->state(), QAudio::ActiveState);

    QTRY_VERIFY(m_player->position() > position + 1);
}

void AudioPlayerFaultsTest::deathOfTheServerStopsPlayback()
{
    const TestSupport::MessageRecorder recorder;
    play();
    QSignalSpy stateChanged(m_player.get(), &AudioPlayer::stateChanged);

    m_server->kill();

    QTRY_COMPARE(m_player->state(), QAudio::StoppedState);
    QTRY_VERIFY(!stateChanged.isEmpty());
    QVERIFY(!m_player->canBeHeard());
    QCOMPARE(m_player->fileName(), m_file);
    QVERIFY(m_player->position() > 0.6);
    m_player->togglePlayback();
    QTRY_COMPARE(m_player->state(), QAudio::StoppedState);
    QVERIFY(!m_player->canBeHeard());
    m_player->seek(5);
    m_player->reset();
    QCOMPARE(m_player->state(), QAudio::StoppedState);
}

SOUND_TEST_MAIN(AudioPlayerFaultsTest, QCoreApplication)
#include "tst_audioplayerfaults.moc"
