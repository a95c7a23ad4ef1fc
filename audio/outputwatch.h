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
    /// The active output has not gone on for half a second.
    bool isHanging() const;

signals:
    /// The active output has not gone on for three seconds. Emitted once per output.
    void hung();

private:
    void look();

    QTimer m_timer;
    QPointer<QAudioOutput> m_output;
    qint64 m_processed = -1; // microseconds
    int m_looksWithoutProgress = 0;
};
