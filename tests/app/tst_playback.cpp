// SPDX-License-Identifier: GPL-3.0-or-later
// Listening in the real window, on a sound server that plays into nothing and is recorded.
#include "tests/app/playbackfixture.h"

#include "tests/audio/soundmaker.h"
#include "tests/audio/soundserver.h"
#include "tests/audio/soundtestmain.h"
#include "tests/support/messagerecorder.h"
#include "ui/settings.h"

#include <QApplication>
#include <QMenu>
#include <QSignalSpy>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <QToolTip>
#include <QtTest>

#include <cmath>
#include <memory>

namespace {

// Of a tool tip.
QString shownText(const QString& text)
{
    return Qt::mightBeRichText(text) ? QTextDocumentFragment::fromHtml(text).toPlainText() : text;
}

} // namespace

class PlaybackTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void nothingPlaysAtFirst();
    void buttonPlaysPausesAndGoesOn();
    void spacePlaysFromTheBeginningAndStops();
    void soundIsHeardAndVolumeChangesIt();
    void volumeIsRememberedExactly();
    void buttonKeepsItsWidth();
    void sliderFollowsTheSound();
    void playedOutSoundLeavesTheControlsAtRest();
    void shortFileNeverShowsAWrongEnd();
    void heldSliderStaysAndSeeksOnRelease();
    void clickBesideTheHandleSeeksThere();
    void keysOnTheSliderSeek();
    void pausedSliderChoosesWhereToGoOn();
    void autoPlaysOnlyWhereTheCursorRests();
    void withoutAutoAChangeOfRowOnlyStops();
    void severalSelectedRowsPlayNothing();
    void otherTableAndRequeryStop_data();
    void otherTableAndRequeryStop();
    void requeryDoesNotStartAutoPlayAgain();
    void unplayableFileIsToldOnce_data();
    void unplayableFileIsToldOnce();
    void windowClosesWhilePlaying();
    void quittingWhilePlayingStops();
    void deathOfTheServerIsToldByTheButton();

private:
    std::unique_ptr<SoundServer> m_server;
};

void PlaybackTest::initTestCase()
{
    m_server = std::make_unique<SoundServer>();
}

void PlaybackTest::nothingPlaysAtFirst()
{
    PlaybackFixture fixture;

    QVERIFY(!fixture.isPlaying());
    QCOMPARE(fixture.button().text(), QStringLiteral("Play"));
    QCOMPARE(fixture.button().toolTip(), QString());
    QCOMPARE(fixture.slider().maximum(), 0);
    QCOMPARE(fixture.slider().value(), 0);
    QCOMPARE(fixture.volumeSlider().maximum(), 100);
    QCOMPARE(fixture.volumeSlider().value(), 100);
    QVERIFY(!fixture.autoButton().isChecked());
}

void PlaybackTest::buttonPlaysPausesAndGoesOn()
{
    PlaybackFixture fixture;

    fixture.clickButton();
    QVERIFY(fixture.isPlaying());
    QCOMPARE(fixture.player().fileName(), fixture.path(PlaybackFixture::LongTone));
    QTRY_COMPARE(fixture.button().text(), QStringLiteral("Pause"));
    QTRY_VERIFY(fixture.slider().value() > 5);

    fixture.clickButton();
    QCOMPARE(fixture.player().state(), QAudio::SuspendedState);
    QTRY_COMPARE(fixture.button().text(), QStringLiteral("Play"));
    const double position = fixture.player().position();

    fixture.clickButton();
    QVERIFY(fixture.isPlaying());
    QVERIFY(fixture.player().position() >= position);
    QTRY_COMPARE(fixture.button().text(), QStringLiteral("Pause"));
}

void PlaybackTest::spacePlaysFromTheBeginningAndStops()
{
    PlaybackFixture fixture;

    fixture.pressSpace();
    QVERIFY(fixture.isPlaying());
    QTRY_VERIFY(fixture.slider().value() > 8);
    fixture.pressSpace();

    QCOMPARE(fixture.player().state(), QAudio::StoppedState);
    QCOMPARE(fixture.button().text(), QStringLiteral("Play"));
    QCOMPARE(fixture.slider().value(), 0);
    fixture.pressSpace();
    QVERIFY(fixture.isPlaying());
    QVERIFY(fixture.player().position() < 0.5);
}

void PlaybackTest::soundIsHeardAndVolumeChangesIt()
{
    PlaybackFixture fixture;
    fixture.volumeSlider().setValue(50);
    SoundRecording recording;

    fixture.pressSpace();

    QVERIFY(recording.waitForSound(0.5));
    QVERIFY(std::abs(SoundMaker::peak(recording.sound()) - 0.25) < 0.01);
    fixture.volumeSlider().setValue(100);
    QTRY_VERIFY(std::abs(SoundMaker::peak(recording.sound()) - 0.5) < 0.01);
}

void PlaybackTest::volumeIsRememberedExactly()
{
    {
        PlaybackFixture fixture;
        fixture.player().setVolume(0.375);
        QCOMPARE(fixture.volumeSlider().value(), 38);
        QCOMPARE(fixture.player().volume(), 0.375);
        fixture.window().close();
        QCOMPARE(Settings(QStringLiteral("MainWindow")).value(QStringLiteral("playbackVolume")).toDouble(), 0.375);
        fixture.window().start();
        QCOMPARE(fixture.player().volume(), 0.375);
        QCOMPARE(fixture.volumeSlider().value(), 38);
    }
}

void PlaybackTest::buttonKeepsItsWidth()
{
    PlaybackFixture fixture;
    const int width = fixture.button().width();
    QCOMPARE(width, fixture.button().fontMetrics().horizontalAdvance(QStringLiteral("WPauseW")));

    fixture.pressSpace();
    QTRY_COMPARE(fixture.button().text(), QStringLiteral("Pause"));

    QCOMPARE(fixture.button().width(), width);
}

void PlaybackTest::sliderFollowsTheSound()
{
    PlaybackFixture fixture;

    fixture.pressSpace();

    QCOMPARE(fixture.slider().maximum(), 200);
    QTRY_VERIFY(fixture.slider().value() > 3);
    QTRY_VERIFY(fixture.slider().value() > 9);
    QVERIFY(std::abs(fixture.slider().value() - fixture.player().position() * 10) <= 10);
}

void PlaybackTest::playedOutSoundLeavesTheControlsAtRest()
{
    PlaybackFixture fixture;
    fixture.choose(PlaybackFixture::ShortTone);
    fixture.pressSpace();
    QTRY_COMPARE(fixture.button().text(), QStringLiteral("Pause"));

    QTRY_COMPARE(fixture.player().state(), QAudio::StoppedState);

    QTRY_COMPARE(fixture.button().text(), QStringLiteral("Play"));
    QTRY_COMPARE(fixture.slider().value(), 0);
    QCOMPARE(fixture.slider().maximum(), 0);
    fixture.clickButton();
    QVERIFY(fixture.isPlaying());
}

void PlaybackTest::shortFileNeverShowsAWrongEnd()
{
    PlaybackFixture fixture;
    fixture.choose(PlaybackFixture::ShortTone);
    fixture.pressSpace();
    QCOMPARE(fixture.player().duration(), 0);

    QTRY_VERIFY(fixture.slider().value() > 1);

    QVERIFY(fixture.slider().maximum() >= fixture.slider().value());
    QVERIFY(fixture.slider().maximum() <= 5);
}

void PlaybackTest::heldSliderStaysAndSeeksOnRelease()
{
    PlaybackFixture fixture;
    fixture.pressSpace();
    QTRY_VERIFY(fixture.slider().value() > 3);
    QSignalSpy position(&fixture.player(), &AudioPlayer::currentPositionChanged);

    fixture.slider().setSliderDown(true);
    fixture.slider().setSliderPosition(150);
    position.clear();
    QTRY_VERIFY(position.count() > 3);
    QCOMPARE(fixture.slider().value(), 150);
    QVERIFY(fixture.player().position() < 10);
    fixture.slider().setSliderDown(false);

    QVERIFY(fixture.isPlaying());
    QVERIFY(fixture.player().position() >= 15);
    QTRY_VERIFY(fixture.slider().value() > 152);
}

void PlaybackTest::clickBesideTheHandleSeeksThere()
{
    PlaybackFixture fixture;
    fixture.pressSpace();
    QTRY_VERIFY(fixture.isPlaying());
    QSlider& slider = fixture.slider();

    QTest::mouseClick(&slider, Qt::LeftButton, {}, { slider.width() / 2, slider.height() / 2 });

    QVERIFY2(std::abs(fixture.player().position() - 10) < 2, qPrintable(QString::number(fixture.player().position())));
    QVERIFY(fixture.isPlaying());
}

void PlaybackTest::keysOnTheSliderSeek()
{
    PlaybackFixture fixture;
    fixture.pressSpace();
    QTRY_VERIFY(fixture.isPlaying());

    QTest::keyClick(&fixture.slider(), Qt::Key_PageUp);

    QVERIFY(fixture.player().position() >= 1.0);
    QVERIFY(fixture.isPlaying());
}

void PlaybackTest::pausedSliderChoosesWhereToGoOn()
{
    PlaybackFixture fixture;
    fixture.clickButton();
    fixture.clickButton();
    QCOMPARE(fixture.player().state(), QAudio::SuspendedState);

    fixture.slider().setSliderDown(true);
    fixture.slider().setSliderPosition(120);
    fixture.slider().setSliderDown(false);

    QCOMPARE(fixture.player().state(), QAudio::StoppedState);
    QTRY_COMPARE(fixture.slider().value(), 120);
    fixture.clickButton();
    QVERIFY(fixture.isPlaying());
    QVERIFY(fixture.player().position() >= 12);
}

void PlaybackTest::autoPlaysOnlyWhereTheCursorRests()
{
    PlaybackFixture fixture;
    QTest::mouseClick(&fixture.autoButton(), Qt::LeftButton);
    QVERIFY(fixture.autoButton().isChecked());
    QStringList played;
    AudioPlayer* player = &fixture.player();
    connect(player, &AudioPlayer::changed, this, [&played, player] {
        if (!player->fileName().isEmpty())
            played.append(player->fileName());
    });

    fixture.choose(PlaybackFixture::ShortTone);
    fixture.choose(PlaybackFixture::ThirdLongTone);
    fixture.choose(PlaybackFixture::SecondLongTone);

    QVERIFY(!fixture.isPlaying());
    QTRY_VERIFY(fixture.isPlaying());
    QCOMPARE(played, QStringList(fixture.path(PlaybackFixture::SecondLongTone)));
    fixture.choose(PlaybackFixture::ThirdLongTone);
    QVERIFY(!fixture.isPlaying());
    QTRY_VERIFY(fixture.isPlaying());
    QCOMPARE(played.last(), fixture.path(PlaybackFixture::ThirdLongTone));
}

void PlaybackTest::withoutAutoAChangeOfRowOnlyStops()
{
    PlaybackFixture fixture;
    fixture.pressSpace();
    QVERIFY(fixture.isPlaying());
    QSignalSpy stateChanged(&fixture.player(), &AudioPlayer::stateChanged);

    fixture.choose(PlaybackFixture::SecondLongTone);

    QVERIFY(!fixture.isPlaying());
    QCOMPARE(fixture.button().text(), QStringLiteral("Play"));
    QVERIFY(!QTest::qWaitFor([&fixture] { return fixture.isPlaying(); }, 400));
}

void PlaybackTest::severalSelectedRowsPlayNothing()
{
    PlaybackFixture fixture;
    fixture.view().selectAll();

    fixture.pressSpace();
    fixture.clickButton();

    QVERIFY(!fixture.isPlaying());
    QCOMPARE(fixture.player().fileName(), QString());
}

void PlaybackTest::otherTableAndRequeryStop_data()
{
    QTest::addColumn<bool>("isTable");
    QTest::newRow("other table") << true;
    QTest::newRow("requery") << false;
}

void PlaybackTest::otherTableAndRequeryStop()
{
    QFETCH(bool, isTable);
    PlaybackFixture fixture;
    fixture.pressSpace();
    QTRY_VERIFY(fixture.slider().value() > 2);

    if (isTable)
        fixture.window().child<QAction>("openTableAction")->menu()->actions().at(1)->trigger();
    else
        fixture.window().window().requery();

    QTRY_COMPARE(fixture.player().state(), QAudio::StoppedState);
    QTRY_COMPARE(fixture.button().text(), QStringLiteral("Play"));
    QCOMPARE(fixture.slider().maximum(), 0);
}

void PlaybackTest::requeryDoesNotStartAutoPlayAgain()
{
    PlaybackFixture fixture;
    fixture.autoButton().setChecked(true);
    QSignalSpy requeried(&fixture.view(), &MetaDataView::requeried);

    fixture.window().window().requery();

    QTRY_VERIFY(!requeried.isEmpty());
    QTRY_COMPARE(fixture.view().currentIndex().row(), int(PlaybackFixture::LongTone));
    QVERIFY(!QTest::qWaitFor([&fixture] { return fixture.isPlaying(); }, 500));
}

void PlaybackTest::unplayableFileIsToldOnce_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("text");
    QTest::newRow("missing") << int(PlaybackFixture::MissingFile) << "\"5 <i>missing.wav\" cannot be played.";
    QTest::newRow("damaged") << int(PlaybackFixture::DamagedFile) << "\"6 damaged.wav\" cannot be played.";
}

void PlaybackTest::unplayableFileIsToldOnce()
{
    QFETCH(int, row);
    QFETCH(QString, text);
    PlaybackFixture fixture;
    const TestSupport::MessageRecorder recorder;
    fixture.choose(PlaybackFixture::Row(row));

    fixture.pressSpace();

    QCOMPARE(fixture.button().text(), QStringLiteral("Play"));
    QCOMPARE(shownText(fixture.button().toolTip()), text);
    QCOMPARE(fixture.button().statusTip(), text);
    QCOMPARE(fixture.button().accessibleDescription(), text);
    QCOMPARE(shownText(QToolTip::text()), text);
    const QStringList messages = recorder.messages(QtCriticalMsg);
    QCOMPARE(messages.size(), 2);
    QVERIFY(messages.at(0).startsWith(QLatin1String("Unable to open source file:")));
    QVERIFY(messages.at(1).startsWith(QLatin1String("Decoder error:")));
    fixture.choose(PlaybackFixture::LongTone);
    QCOMPARE(fixture.button().toolTip(), QString());
}

void PlaybackTest::windowClosesWhilePlaying()
{
    for (int round = 0; round < 10; ++round) {
        PlaybackFixture fixture;
        fixture.pressSpace();
        QVERIFY(fixture.isPlaying());
        if (round % 2)
            QTRY_VERIFY(fixture.slider().value() > round);

        fixture.window().close();
    }
}

void PlaybackTest::quittingWhilePlayingStops()
{
    PlaybackFixture fixture;
    fixture.pressSpace();
    QVERIFY(fixture.isPlaying());

    emit QCoreApplication::instance()->aboutToQuit({});

    QCOMPARE(fixture.player().state(), QAudio::StoppedState);
}

// The last one: no other server takes its place.
void PlaybackTest::deathOfTheServerIsToldByTheButton()
{
    PlaybackFixture fixture;
    const TestSupport::MessageRecorder recorder;
    fixture.pressSpace();
    QTRY_VERIFY(fixture.slider().value() > 5);

    m_server->kill();

    const QString text = QStringLiteral("No sound can be heard. There is no audio device, or it does not answer.");
    QTRY_COMPARE(fixture.button().text(), QStringLiteral("Play"));
    QTRY_COMPARE(fixture.button().toolTip(), text);
    QCOMPARE(QToolTip::text(), text);
    QToolTip::hideText();
    QTRY_VERIFY(!QToolTip::isVisible());
    fixture.pressSpace();
    QTRY_COMPARE(fixture.button().text(), QStringLiteral("Play"));
    QVERIFY(!QToolTip::isVisible());
}

SOUND_TEST_MAIN(PlaybackTest, QApplication)
#include "tst_playback.moc"
