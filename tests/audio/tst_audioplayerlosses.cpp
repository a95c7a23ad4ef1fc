// SPDX-License-Identifier: GPL-3.0-or-later
// The player when what it plays on goes. Qt tells of hardly any of these, and a call on the dead stream would abort.
#include "tests/audio/playerfixture.h"
#include "tests/audio/soundtestmain.h"
#include "tests/support/messagerecorder.h"

#include <QAudioDeviceInfo>
#include <QAudioOutput>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>
#include <QtTest>

class AudioPlayerLossesTest : public PlayerFixture
{
    Q_OBJECT

private slots:
    void pausingOnAnEndedStreamStops();
    void pausingOnARemovedDeviceStops();
    void goingOnWithoutAnyDeviceStops();
    void pausingOnADeadServerStops();

private:
    void waitForTheLoss();
    void pauseStops();
    void playsAgain();
    void bringBackTheDevice();
};

// Without events, so that nothing tells the player.
void AudioPlayerLossesTest::waitForTheLoss()
{
    const auto* output = m_player->findChild<QAudioOutput*>();
    const QDeadlineTimer deadline(20000);
    while (output->bytesFree() >= 0 && !deadline.hasExpired())
        QThread::yieldCurrentThread();
    QVERIFY(output->bytesFree() < 0);
    QCOMPARE(m_player->state(), QAudio::ActiveState);
}

void AudioPlayerLossesTest::pauseStops()
{
    const double position = m_player->position();

    m_player->togglePlayback();

    QCOMPARE(m_player->state(), QAudio::StoppedState);
    QCOMPARE(m_player->position(), position);
    QCOMPARE(m_player->fileName(), m_file);
}

void AudioPlayerLossesTest::playsAgain()
{
    const double position = m_player->position();
    m_player->togglePlayback();
    QCOMPARE(m_player->state(), QAudio::ActiveState);
    QVERIFY(m_player->canBeHeard());
    QTRY_VERIFY(m_player->position() > position + 0.6);
}

void AudioPlayerLossesTest::bringBackTheDevice()
{
    m_server->addDevice();
    QTRY_COMPARE(QAudioDeviceInfo::defaultOutputDevice().deviceName(), QStringLiteral("test"));
}

void AudioPlayerLossesTest::pausingOnAnEndedStreamStops()
{
    play();
    m_server->endStreams();
    waitForTheLoss();

    pauseStops();

    playsAgain();
}

void AudioPlayerLossesTest::pausingOnARemovedDeviceStops()
{
    play();
    m_server->removeDevices();
    waitForTheLoss();

    pauseStops();

    bringBackTheDevice();
    playsAgain();
}

void AudioPlayerLossesTest::goingOnWithoutAnyDeviceStops()
{
    const TestSupport::MessageRecorder recorder;
    play();
    m_player->togglePlayback();
    QCOMPARE(m_player->state(), QAudio::SuspendedState);
    const double position = m_player->position();
    m_server->removeDevices();
    QTRY_VERIFY(QAudioDeviceInfo::defaultOutputDevice().isNull());

    m_player->togglePlayback();

    QCOMPARE(m_player->state(), QAudio::StoppedState);
    QVERIFY(!m_player->canBeHeard());
    QCOMPARE(m_player->position(), position);
    bringBackTheDevice();
    playsAgain();
}

// The last one: there is no server after it.
void AudioPlayerLossesTest::pausingOnADeadServerStops()
{
    play();
    m_server->kill();
    waitForTheLoss();

    pauseStops();
}

SOUND_TEST_MAIN(AudioPlayerLossesTest, QCoreApplication)
#include "tst_audioplayerlosses.moc"
