// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

class QAudioOutput;

/// Tells whether an active audio output goes on playing.
///
/// When the audio server hangs, its clients are told nothing: the output stays active, and a call that waits for the
/// server's answer (suspend, resume) does not return. `stop()` waits for nothing.
///
/// Owner: the player. Thread: that of the output.
class OutputWatch final : public QObject
{
    Q_OBJECT

public:
    explicit OutputWatch(QObject* parent = nullptr);

    /// Watches this output from now on; null ends it.
    void setOutput(QAudioOutput* output);
    /// The active output has not gone on for half a second. Of one that has not played yet, or not again since a pause,
    /// it cannot be told so soon: a device may need longer than that to start.
    bool isHanging() const;

signals:
    /// The active output has not gone on for three seconds. Emitted once per output.
    void hung();

private:
    void look();
    void noteWhetherItPlays(bool isActive);

    QTimer m_timer;
    QPointer<QAudioOutput> m_output;
    // Microseconds. What an output has processed when it becomes active, and a bufferful more, was not played yet.
    qint64 m_processed = -1;
    qint64 m_processedBefore = 0;
    bool m_hasPlayed = false;
    int m_looksWithoutProgress = 0;
};
