// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/audioplayer.h"

#include "audio/audiosource.h"
#include "audio/outputwatch.h"

#include <QAudioDeviceInfo>
#include <QAudioOutput>
#include <QDebug>

namespace {

constexpr int outputBufferSize = 307200; // bytes; 0.4 s
constexpr int notifyInterval = 40; // milliseconds
constexpr double microsecondsPerSecond = 1000000.0;

QAudioFormat playedFormat()
{
    QAudioFormat format;
    format.setCodec(QStringLiteral("audio/pcm"));
    format.setSampleRate(96000);
    format.setChannelCount(2);
    format.setSampleSize(32);
    format.setSampleType(QAudioFormat::SignedInt);
    format.setByteOrder(QAudioFormat::LittleEndian);
    return format;
}

} // namespace

AudioPlayer::AudioPlayer(QObject* parent)
    : QObject(parent)
    , m_format(playedFormat())
    , m_source(new AudioSource(this))
    , m_watch(new OutputWatch(this))
{
    connect(m_watch, &OutputWatch::hung, this, &AudioPlayer::handleHungServer);
    if (!QAudioDeviceInfo::defaultOutputDevice().isFormatSupported(m_format)) {
        qWarning("Raw audio format not supported by backend, cannot play audio");
        m_canBeHeard = false;
    }
}

AudioPlayer::~AudioPlayer()
{
    disposeOfOutput();
}

void AudioPlayer::createOutput()
{
    disposeOfOutput();
    m_output = new QAudioOutput(m_format, this);
    ++m_outputNumber;
    m_output->setBufferSize(outputBufferSize);
    m_output->setNotifyInterval(notifyInterval);
    m_output->setVolume(m_volume);
    connect(m_output, &QAudioOutput::notify, this, &AudioPlayer::emitCurrentPosition);
    connect(m_output, &QAudioOutput::stateChanged, this, &AudioPlayer::handleAudioOutputStateChange);
    m_watch->setOutput(m_output);
}

// Deleting an output that still plays, or moving it to another thread for that, crashes the back ends. Stopping it
// takes no time, not even when the server hangs.
void AudioPlayer::disposeOfOutput()
{
    if (!m_output)
        return;
    m_watch->setOutput(nullptr);
    QAudioOutput* output = m_output;
    m_output = nullptr;
    output->disconnect(this);
    output->stop();
    // Otherwise it would be deleted with its parent, in the middle of that.
    output->setParent(nullptr);
    output->deleteLater();
}

bool AudioPlayer::load(const QString& fileName)
{
    reset();
    if (!m_source->open(fileName))
        return false;
    emit changed();
    return true;
}

void AudioPlayer::reset()
{
    disposeOfOutput();
    m_source->close();
    m_startOffset = 0;
    emit changed();
}

void AudioPlayer::togglePlayback()
{
    switch (state()) {
    case QAudio::ActiveState:
        pause();
        break;
    case QAudio::SuspendedState:
        goOn();
        break;
    default:
        startPlayback();
    }
}

void AudioPlayer::pause()
{
    // Pausing waits for the server, and aborts the program when the stream has gone. Of that the output tells by this
    // number alone.
    if (m_watch->isHanging() || m_output->bytesFree() < 0)
        stopHere();
    else
        m_output->suspend();
}

void AudioPlayer::goOn()
{
    if (!QAudioDeviceInfo::defaultOutputDevice().isNull()) {
        m_output->resume();
        return;
    }
    // The stream has gone with the last device.
    stopHere();
    startPlayback();
}

void AudioPlayer::stopHere()
{
    m_startOffset = position();
    disposeOfOutput();
    announceStateLater();
}

void AudioPlayer::startPlayback()
{
    // On a source that never gives anything an output would stay active for ever.
    if (!m_source->isOpen())
        return;
    createOutput();
    m_source->seek(m_startOffset);
    m_source->decodeNextChunk();
    if (m_source->atEnd()) {
        resetLaterWhenPlayedOut();
        return;
    }
    // The output takes the first chunk at once.
    m_source->decodeNextChunkAsync();
    m_output->start(m_source);
    const bool isStarted = m_output->state() != QAudio::StoppedState;
    if (!isStarted)
        disposeOfOutput();
    setCanBeHeard(isStarted);
    announceStateLater();
}

void AudioPlayer::seek(qreal position)
{
    const QAudio::State stateBefore = state();
    m_startOffset = position;
    if (stateBefore == QAudio::StoppedState)
        return;
    if (stateBefore == QAudio::ActiveState && !m_watch->isHanging()) {
        startPlayback();
    } else {
        disposeOfOutput();
        announceStateLater();
    }
}

double AudioPlayer::position() const
{
    if (!m_output || m_output->state() == QAudio::StoppedState)
        return m_startOffset;
    return m_startOffset + double(m_output->processedUSecs()) / microsecondsPerSecond;
}

void AudioPlayer::emitCurrentPosition()
{
    emit currentPositionChanged(position());
}

QAudio::State AudioPlayer::state() const
{
    const QAudio::State state = m_output ? m_output->state() : QAudio::StoppedState;
    // An output that ran dry, because this thread was held up, goes on as soon as it gets something again.
    return state == QAudio::IdleState && !m_source->atEnd() ? QAudio::ActiveState : state;
}

void AudioPlayer::handleAudioOutputStateChange(QAudio::State state)
{
    if (state == QAudio::SuspendedState || state == QAudio::IdleState) {
        if (isPlayedOut())
            resetLaterWhenPlayedOut();
    } else if (state == QAudio::StoppedState && m_output->error() == QAudio::FatalError) {
        // The server has gone. What was played until then was played.
        m_startOffset += double(m_output->processedUSecs()) / microsecondsPerSecond;
        setCanBeHeard(false);
    }
    announceStateLater();
}

bool AudioPlayer::isPlayedOut() const
{
    if (!m_source->atEnd())
        return false;
    // Not every back end's buffer is wholly free when it has nothing left to play.
    return m_output->state() == QAudio::IdleState || m_output->bytesFree() == m_output->bufferSize();
}

void AudioPlayer::resetLaterWhenPlayedOut()
{
    m_startOffset = 0;
    const auto finish = [this, outputNumber = m_outputNumber] {
        const bool isStillTheSame = m_output && outputNumber == m_outputNumber;
        if (isStillTheSame && m_source->atEnd())
            reset();
    };
    QMetaObject::invokeMethod(this, finish, Qt::QueuedConnection);
    announceStateLater();
}

void AudioPlayer::handleHungServer()
{
    qWarning("The audio server does not answer, playback is stopped");
    stopHere();
    setCanBeHeard(false);
}

void AudioPlayer::setCanBeHeard(bool canBeHeard)
{
    if (m_canBeHeard == canBeHeard)
        return;
    m_canBeHeard = canBeHeard;
    if (!canBeHeard)
        qWarning("Unable to play audio on the default device");
}

void AudioPlayer::announceStateLater()
{
    QMetaObject::invokeMethod(this, &AudioPlayer::emitCurrentPosition, Qt::QueuedConnection);
    QMetaObject::invokeMethod(this, &AudioPlayer::stateChanged, Qt::QueuedConnection);
}

void AudioPlayer::setVolume(qreal volume)
{
    m_volume = qBound(0.0, volume, 1.0);
    if (m_output)
        m_output->setVolume(m_volume);
    emit volumeChanged();
}

QString AudioPlayer::fileName() const
{
    return m_source->fileName();
}

QString AudioPlayer::title() const
{
    return m_source->title();
}

int AudioPlayer::duration() const
{
    return m_source->duration();
}
