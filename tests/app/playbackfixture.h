// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/audioplayer.h"
#include "tests/app/windowfixture.h"

#include <QPushButton>
#include <QSlider>

/// The main window over a catalogue of real sound files: a tone of 20 s in each of the first rows of table 1, then one
/// of half a second, then a file that does not exist and one that holds no sound. Table 2 is empty.
///
/// Owner and thread: one test.
class PlaybackFixture final
{
public:
    enum Row
    {
        LongTone,
        SecondLongTone,
        ThirdLongTone,
        ShortTone,
        MissingFile,
        DamagedFile,
        RowsCount
    };

    /// Shows the window and waits for its rows.
    PlaybackFixture();

    WindowFixture& window() { return m_window; }
    MetaDataView& view() { return m_window.view(); }
    AudioPlayer& player() { return *m_window.window().findChild<AudioPlayer*>(); }
    QPushButton& button() { return *m_window.child<QPushButton>("playbackButton"); }
    QPushButton& autoButton() { return *m_window.child<QPushButton>("autoPlayButton"); }
    QSlider& slider() { return *m_window.child<QSlider>("playbackSlider"); }
    QSlider& volumeSlider() { return *m_window.child<QSlider>("playbackVolumeSlider"); }
    bool isPlaying() { return player().state() == QAudio::ActiveState; }
    QString path(Row row);

    /// Makes the row the current and only selected one.
    void choose(Row row);
    void pressSpace();
    void clickButton();

private:
    void makeCatalogue();

    WindowFixture m_window;
};
