// SPDX-License-Identifier: GPL-3.0-or-later
// The player on a machine without any audio device.
#include "audio/audioplayer.h"

#include "tests/scan/soundfiles.h"
#include "tests/support/messagerecorder.h"
#include "tests/support/testsupport.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

class AudioPlayerWithoutDeviceTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void missingDeviceIsLoggedOnce();
    void filesCanBeLoadedButNotPlayed();
    void everythingElseDoesNoHarm();

private:
    QTemporaryDir m_folder;
    QString m_file;
};

void AudioPlayerWithoutDeviceTest::initTestCase()
{
    QVERIFY(m_folder.isValid());
    qputenv("PULSE_SERVER", "unix:" + QFile::encodeName(m_folder.filePath("none")));
    m_file = m_folder.filePath("a.wav");
    TestSupport::writeFile(m_file, SoundFiles::wave({ 16, 44100, 2, 441000 }));
}

void AudioPlayerWithoutDeviceTest::missingDeviceIsLoggedOnce()
{
    const TestSupport::MessageRecorder recorder;

    const AudioPlayer player;

    QVERIFY(!player.canBeHeard());
    QCOMPARE(
        recorder.messages().count(QStringLiteral("Raw audio format not supported by backend, cannot play audio")), 1);
}

void AudioPlayerWithoutDeviceTest::filesCanBeLoadedButNotPlayed()
{
    const TestSupport::MessageRecorder recorder;
    AudioPlayer player;
    QSignalSpy stateChanged(&player, &AudioPlayer::stateChanged);

    QVERIFY(player.load(m_file));
    QCOMPARE(player.duration(), 10);
    QCOMPARE(player.title(), QStringLiteral("a.wav"));
    player.togglePlayback();

    QCOMPARE(player.state(), QAudio::StoppedState);
    QVERIFY(!player.canBeHeard());
    QTRY_VERIFY(!stateChanged.isEmpty());
    QCOMPARE(player.state(), QAudio::StoppedState);
    QCOMPARE(player.fileName(), m_file);
}

void AudioPlayerWithoutDeviceTest::everythingElseDoesNoHarm()
{
    const TestSupport::MessageRecorder recorder;
    AudioPlayer player;
    for (int round = 0; round < 20; ++round) {
        QVERIFY(player.load(m_file));
        player.togglePlayback();
        player.setVolume(0.5);
        player.seek(3);
        player.togglePlayback();
        QCoreApplication::processEvents();
        QCOMPARE(player.state(), QAudio::StoppedState);
        QCOMPARE(player.position(), 3.0);
        player.reset();
    }
}

QTEST_GUILESS_MAIN(AudioPlayerWithoutDeviceTest)
#include "tst_audioplayerwithoutdevice.moc"
