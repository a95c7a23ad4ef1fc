// SPDX-License-Identifier: GPL-3.0-or-later
// The real window on a machine without any audio device.
#include "tests/app/playbackfixture.h"

#include "tests/support/messagerecorder.h"

#include <QToolTip>
#include <QtTest>

class PlaybackWithoutDeviceTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void playingIsAnsweredByAHintShownOnce();

private:
    QTemporaryDir m_folder;
};

void PlaybackWithoutDeviceTest::initTestCase()
{
    qputenv("PULSE_SERVER", "unix:" + QFile::encodeName(m_folder.filePath("none")));
}

void PlaybackWithoutDeviceTest::playingIsAnsweredByAHintShownOnce()
{
    const TestSupport::MessageRecorder recorder;
    const QString hint = QStringLiteral("No sound can be heard. There is no audio device, or it does not answer.");
    PlaybackFixture fixture;
    QCOMPARE(fixture.button().toolTip(), hint);
    QVERIFY(!QToolTip::isVisible());

    fixture.pressSpace();

    QTRY_COMPARE(QToolTip::text(), hint);
    QVERIFY(!fixture.isPlaying());
    QCOMPARE(fixture.button().text(), QStringLiteral("Play"));
    QCOMPARE(fixture.button().statusTip(), hint);
    QToolTip::hideText();
    QTRY_VERIFY(!QToolTip::isVisible());
    fixture.clickButton();
    fixture.slider().setSliderPosition(20);
    fixture.choose(PlaybackFixture::ShortTone);
    fixture.pressSpace();
    QCoreApplication::processEvents();
    QVERIFY(!QToolTip::isVisible());
}

QTEST_MAIN(PlaybackWithoutDeviceTest)
#include "tst_playbackwithoutdevice.moc"
