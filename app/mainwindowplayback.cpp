// SPDX-License-Identifier: GPL-3.0-or-later
// Listening: the player and its button, sliders, keys and the play by itself.
#include "app/mainwindow.h"

#include "ui_mainwindow.h"

#include "audio/audioplayer.h"

#include <QFileInfo>
#include <QItemSelectionModel>
#include <QSignalBlocker>
#include <QTextDocument>
#include <QToolTip>

#include <cmath>

namespace {

constexpr QPoint toolTipOffset(0, 16); // Qt shows it so far below the place that it is given
constexpr int restingTime = 100; // milliseconds
constexpr int stepsPerSecond = 10; // of the position slider
constexpr int stepsOfFullVolume = 100;

int sliderPosition(double seconds)
{
    return int(std::lround(std::max(0.0, seconds) * stepsPerSecond));
}

// A tool tip takes what looks like tags for tags, and a file may have any name.
QString toolTipOf(const QString& text)
{
    return Qt::mightBeRichText(text)
        ? QStringLiteral("<span style=\"white-space: pre-wrap\">%1</span>").arg(text.toHtmlEscaped())
        : text;
}

} // namespace

void MainWindow::setUpPlayback()
{
    m_audioPlayer = new AudioPlayer(this);
    connect(m_audioPlayer, &AudioPlayer::stateChanged, this, &MainWindow::updatePlaybackButtons);
    connect(m_audioPlayer, &AudioPlayer::stateChanged, this, &MainWindow::showPlaybackFaultOnce);
    connect(m_audioPlayer, &AudioPlayer::changed, this, &MainWindow::updatePlaybackControls);
    connect(m_audioPlayer, &AudioPlayer::currentPositionChanged, this, &MainWindow::updatePlaybackSlider);
    connect(m_audioPlayer, &AudioPlayer::volumeChanged, this, &MainWindow::updatePlaybackVolumeSlider);
    // Keys and the wheel move the slider without pressing it.
    connect(m_ui->playbackSlider, &QSlider::actionTriggered, this, [this] {
        if (!m_ui->playbackSlider->isSliderDown())
            on_playbackSlider_sliderReleased();
    });
    updatePlaybackControls();
    updatePlaybackVolumeSlider();
    m_playbackTimer.setInterval(restingTime);
    connect(&m_playbackTimer, &QTimer::timeout, this, &MainWindow::playRestingRow);
}

void MainWindow::connectPlayback()
{
    const MetaDataView* view = m_ui->metaDataView;
    connect(view, &MetaDataView::spacePressed, this, &MainWindow::playCurrentMetaDataRow);
    connect(view, &MetaDataView::tableChaged, this, &MainWindow::resetAudioPlayer);
    connect(view, &MetaDataView::requeried, this, &MainWindow::resetAudioPlayer);
    connect(view->selectionModel(), &QItemSelectionModel::currentRowChanged, this, &MainWindow::handleCurrentRowChange);
    // While the event loop still runs; what was stopped is deleted by it.
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, &MainWindow::resetAudioPlayer);
}

void MainWindow::handleCurrentRowChange()
{
    // The same record has become current again.
    if (m_isReturningToRecord || m_ui->metaDataView->isRestoringSelection())
        return;
    // The user has moved on. What follows a rating leads back to the new record; once its rows are there, nowhere.
    const bool isRequeryAwaited = m_savedRow > 0;
    forgetSavedRow();
    if (isRequeryAwaited)
        saveSelection();
    resetAudioPlayer();
    if (m_ui->autoPlayButton->isChecked())
        m_playbackTimer.start();
}

void MainWindow::playRestingRow()
{
    // The row may be on the screen before its record has been read; the timer goes on.
    if (m_ui->metaDataView->currentIndex().isValid() && currentRecord().isNull())
        return;
    playCurrentMetaDataRow();
}

void MainWindow::playCurrentMetaDataRow()
{
    m_playbackTimer.stop();
    if (m_audioPlayer->state() == QAudio::ActiveState) {
        m_audioPlayer->reset();
        return;
    }
    const MetaData record = currentRecord();
    if (m_ui->metaDataView->selectedRowsCount() != 1 || record.isNull())
        return;
    const QString path = record.filePath();
    if (m_audioPlayer->load(path)) {
        m_unplayableFile.clear();
        m_audioPlayer->togglePlayback();
    } else {
        m_unplayableFile = tr("\"%1\" cannot be played.").arg(QFileInfo(path).fileName());
    }
    updatePlaybackButtons();
    showPlaybackFaultOnce();
}

void MainWindow::resetAudioPlayer()
{
    m_playbackTimer.stop();
    m_unplayableFile.clear();
    m_audioPlayer->reset();
}

void MainWindow::updatePlaybackButtons()
{
    QPushButton* button = m_ui->playbackButton;
    const bool isPlaying = m_audioPlayer->state() == QAudio::ActiveState;
    button->setText(isPlaying ? tr("Pause") : tr("Play"));
    button->setFixedWidth(button->fontMetrics().horizontalAdvance(QStringLiteral("WPauseW")));
    const QString fault = playbackFault();
    button->setToolTip(toolTipOf(fault));
    button->setStatusTip(fault);
    button->setAccessibleDescription(fault);
    if (fault.isEmpty())
        m_shownPlaybackFault.clear();
}

QString MainWindow::playbackFault() const
{
    return m_audioPlayer->canBeHeard() ? m_unplayableFile
                                       : tr("No sound can be heard. There is no audio device, or it does not answer.");
}

// After an attempt to play; the tool tip alone would be seen only by chance.
void MainWindow::showPlaybackFaultOnce()
{
    const QString fault = playbackFault();
    if (fault == m_shownPlaybackFault)
        return;
    m_shownPlaybackFault = fault;
    QPushButton* button = m_ui->playbackButton;
    // Over the position slider, which nobody needs then: below it would take a click meant for another button.
    QToolTip::showText(
        button->mapToGlobal(button->rect().topRight() - toolTipOffset), toolTipOf(fault), button, button->rect());
}

void MainWindow::updatePlaybackControls()
{
    updatePlaybackButtons();
    m_ui->playbackSlider->setMaximum(m_audioPlayer->duration() * stepsPerSecond);
    updatePlaybackSlider(m_audioPlayer->position());
}

void MainWindow::updatePlaybackSlider(qreal position)
{
    QSlider* slider = m_ui->playbackSlider;
    if (slider->isSliderDown())
        return;
    // The duration is in whole seconds, and not every file tells it right.
    slider->setMaximum(std::max(slider->maximum(), sliderPosition(position)));
    slider->setValue(sliderPosition(position));
}

void MainWindow::updatePlaybackVolumeSlider()
{
    // The volume may lie between two steps of the slider, and stays there.
    const QSignalBlocker blocker(m_ui->playbackVolumeSlider);
    m_ui->playbackVolumeSlider->setValue(int(std::lround(m_audioPlayer->volume() * stepsOfFullVolume)));
}

void MainWindow::on_playbackButton_clicked()
{
    if (m_audioPlayer->fileName().isEmpty())
        playCurrentMetaDataRow();
    else
        m_audioPlayer->togglePlayback();
}

void MainWindow::on_playbackSlider_sliderReleased()
{
    if (m_audioPlayer->fileName().isEmpty())
        updatePlaybackControls();
    else
        m_audioPlayer->seek(double(m_ui->playbackSlider->sliderPosition()) / stepsPerSecond);
}

void MainWindow::on_playbackVolumeSlider_valueChanged(int value)
{
    m_audioPlayer->setVolume(double(value) / stepsOfFullVolume);
}
