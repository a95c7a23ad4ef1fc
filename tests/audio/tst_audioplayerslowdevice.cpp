// SPDX-License-Identifier: GPL-3.0-or-later
// The player on a device that is slow to start, as one that has to wake or to be found first.
#include "audio/audioplayer.h"

#include "tests/audio/playerfixture.h"
#include "tests/audio/soundtestmain.h"

#include <QAudioDeviceInfo>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

namespace {

// 0.9 s by a clock that stands still whenever this program does.
void waitNineTicks()
{
    QTimer clock;
    QSignalSpy ticks(&clock, &QTimer::timeout);
    clock.start(100);
    QTRY_VERIFY(ticks.count() >= 9);
}

} // namespace

class AudioPlayerSlowDeviceTest : public PlayerFixture
{
    Q_OBJECT

private slots:
    void cleanup() override;
    void seekBeforeAnythingIsHeardGoesOn_data();
    void seekBeforeAnythingIsHeardGoesOn();
    void pauseBeforeAnythingIsHeardPauses_data();
    void pauseBeforeAnythingIsHeardPauses();
    void deviceThatFellAsleepInAPauseMayTakeItsTime();

private:
    void beginToPlay();
};

void AudioPlayerSlowDeviceTest::cleanup()
{
    PlayerFixture::cleanup();
    m_server->letGoOn(QStringLiteral("test"));
    m_server->choose(QStringLiteral("test"));
    QTRY_COMPARE(QAudioDeviceInfo::defaultOutputDevice().deviceName(), QStringLiteral("test"));
}

// Of the devices that have not played yet when the user acts: one wakes within two seconds, the other when it is told.
void AudioPlayerSlowDeviceTest::seekBeforeAnythingIsHeardGoesOn_data()
{
    QTest::addColumn<QString>("device");
    QTest::addColumn<bool>("sleeps");
    QTest::newRow("device that takes two seconds at a time") << QStringLiteral("slow") << false;
    QTest::newRow("device that sleeps") << QStringLiteral("test") << true;
    QTest::newRow("device that is awake") << QStringLiteral("test") << false;
}

// Starts a sound, and leaves the device less time than it takes.
void AudioPlayerSlowDeviceTest::beginToPlay()
{
    QFETCH(QString, device);
    QFETCH(bool, sleeps);
    m_server->choose(device);
    QTRY_COMPARE(QAudioDeviceInfo::defaultOutputDevice().deviceName(), device);
    // A device that has just woken begins its two seconds anew.
    m_server->putToSleep(device);
    if (!sleeps)
        m_server->letGoOn(device);
    QVERIFY(m_player->load(m_file));
    m_player->togglePlayback();
    QVERIFY(m_player->state() == QAudio::ActiveState);
    waitNineTicks();
}

void AudioPlayerSlowDeviceTest::seekBeforeAnythingIsHeardGoesOn()
{
    beginToPlay();

    m_player->seek(5);

    QCOMPARE(m_player->state(), QAudio::ActiveState);
    m_server->letGoOn(QStringLiteral("test"));
    QTRY_VERIFY(m_player->position() > 6.0);
    QVERIFY(m_player->canBeHeard());
}

void AudioPlayerSlowDeviceTest::pauseBeforeAnythingIsHeardPauses_data()
{
    seekBeforeAnythingIsHeardGoesOn_data();
}

void AudioPlayerSlowDeviceTest::pauseBeforeAnythingIsHeardPauses()
{
    beginToPlay();

    m_player->togglePlayback();

    QCOMPARE(m_player->state(), QAudio::SuspendedState);
    m_player->togglePlayback();
    QCOMPARE(m_player->state(), QAudio::ActiveState);
    m_server->letGoOn(QStringLiteral("test"));
    QTRY_VERIFY(m_player->position() > 2.0);
    QVERIFY(m_player->canBeHeard());
}

void AudioPlayerSlowDeviceTest::deviceThatFellAsleepInAPauseMayTakeItsTime()
{
    QVERIFY(m_player->load(m_file));
    m_player->togglePlayback();
    QTRY_VERIFY(m_player->position() > 0.6);
    m_player->togglePlayback();
    QCOMPARE(m_player->state(), QAudio::SuspendedState);
    m_server->putToSleep(QStringLiteral("test"));
    waitNineTicks();

    m_player->togglePlayback();
    waitNineTicks();
    m_player->seek(5);

    QCOMPARE(m_player->state(), QAudio::ActiveState);
    m_server->letGoOn(QStringLiteral("test"));
    QTRY_VERIFY(m_player->position() > 6.0);
}

SOUND_TEST_MAIN(AudioPlayerSlowDeviceTest, QCoreApplication)
#include "tst_audioplayerslowdevice.moc"
