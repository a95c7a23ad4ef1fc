// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAudio>
#include <QAudioFormat>
#include <QObject>
#include <QString>

class AudioSource;
class OutputWatch;
class QAudioOutput;

/// Plays one sound file at a time on the default audio device: play, pause, seek, volume.
///
/// "Playing" is `QAudio::ActiveState`. A file that was played out is closed: the player is as after `reset()`. Without
/// a device, or when its server dies or hangs, nothing plays, nothing waits, and `canBeHeard()` is false until a later
/// attempt succeeds. Only starting, going on after a pause, or pausing before anything is heard, on a server that hangs
/// waits for it: nothing tells before.
///
/// A known limit: going on after a pause aborts the program when the server has meanwhile ended the stream alone, or
/// has died only just now. Qt neither tells of it nor expects it, and a new stream instead would lose or repeat sound.
///
/// An output that is stopped is always disposed of through the event loop, because its destructor runs queued events.
/// A program that has one of these ends by `endProcess()`.
///
/// Owner: the main window. Thread: GUI.
class AudioPlayer : public QObject
{
    Q_OBJECT

public:
    explicit AudioPlayer(QObject* parent = nullptr);
    ~AudioPlayer() override;

    /// Seconds; while stopped, where playback will start. It runs up to 0.4 s ahead of what is heard.
    double position() const;
    /// 0 to 1; values outside mean the nearest of these.
    void setVolume(qreal volume);
    qreal volume() const { return m_volume; }
    /// That of the output, which is active also while it has to wait for more of the file.
    QAudio::State state() const;
    /// False when the last attempt to play found no device, or lost it. `stateChanged()` follows every change.
    bool canBeHeard() const { return m_canBeHeard; }

    /// What is loaded; see `AudioSource`.
    QString fileName() const;
    QString title() const;
    int duration() const;

signals:
    /// Another file, or none, is loaded.
    void changed();
    /// Seconds; 25 times a second while playing, and after each change of state.
    void currentPositionChanged(qreal value);
    /// After each change of the output's state, from the event loop.
    void stateChanged();
    void volumeChanged();

public slots:
    /// False when the file cannot be read; then nothing is loaded.
    bool load(const QString& fileName);
    void reset();
    /// Seconds. Playback goes on from there; a paused player stops, and plays from there when it is toggled.
    void seek(qreal position);
    /// Pauses, goes on, or starts from the start offset. Without a file it does nothing.
    void togglePlayback();

private slots:
    void handleAudioOutputStateChange(QAudio::State state);
    void emitCurrentPosition();

private:
    void createOutput();
    void disposeOfOutput();
    void startPlayback();
    void pause();
    void goOn();
    void stopHere();
    bool isPlayedOut() const;
    void resetLaterWhenPlayedOut();
    void handleHungServer();
    void setCanBeHeard(bool canBeHeard);
    void announceStateLater();

    QAudioFormat m_format;
    AudioSource* m_source;
    OutputWatch* m_watch;
    // A child. There is one only while something plays, is paused or has just ended.
    QAudioOutput* m_output = nullptr;
    int m_outputNumber = 0; // of the newest
    double m_startOffset = 0; // seconds
    double m_volume = 1.0;
    bool m_canBeHeard = true;
};
