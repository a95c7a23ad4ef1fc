// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/outputwatch.h"

#include <QAudioOutput>

namespace {

// Looks are counted instead of time: a program that was itself held up has not looked meanwhile.
constexpr int lookInterval = 100; // milliseconds
constexpr int looksUntilHanging = 5;
constexpr int looksUntilHung = 30;

} // namespace

OutputWatch::OutputWatch(QObject* parent)
    : QObject(parent)
{
    m_timer.setInterval(lookInterval);
    connect(&m_timer, &QTimer::timeout, this, &OutputWatch::look);
}

void OutputWatch::setOutput(QAudioOutput* output)
{
    m_output = output;
    m_processed = -1;
    m_processedBefore = 0;
    m_hasPlayed = false;
    m_looksWithoutProgress = 0;
    if (output)
        m_timer.start();
    else
        m_timer.stop();
}

bool OutputWatch::isHanging() const
{
    return m_looksWithoutProgress >= (m_hasPlayed ? looksUntilHanging : looksUntilHung);
}

void OutputWatch::noteWhetherItPlays(bool isActive)
{
    if (!isActive) {
        m_processedBefore = m_processed;
        m_hasPlayed = false;
    } else if (!m_hasPlayed) {
        const qint64 buffered = m_output->format().durationForBytes(m_output->bufferSize());
        m_hasPlayed = m_processed > m_processedBefore + buffered;
    }
}

void OutputWatch::look()
{
    if (!m_output)
        return;
    const qint64 processed = m_output->processedUSecs();
    const bool isActive = m_output->state() == QAudio::ActiveState;
    const bool isGoingOn = !isActive || processed != m_processed;
    m_processed = processed;
    noteWhetherItPlays(isActive);
    m_looksWithoutProgress = isGoingOn ? 0 : m_looksWithoutProgress + 1;
    if (m_looksWithoutProgress == looksUntilHung)
        emit hung();
}
