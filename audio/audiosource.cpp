// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/audiosource.h"

#include <QDeadlineTimer>
#include <QDebug>
#include <QFileInfo>
#include <QMutexLocker>
#include <QThread>
#include <QtConcurrent>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <limits>

namespace {

constexpr int sampleRate = 96000; // Hz
constexpr int channels = 2;
constexpr int signed32Bit = 2;

// Bytes: what is decoded at once, and what is left when more is asked for.
constexpr int chunkSize = 307200;
constexpr int lowMark = 102400;

// Out of each 0.4 s: a slow disk is hardly kept busy by it, and a file of an hour that is in memory takes half of this.
constexpr std::chrono::milliseconds seekPreparation(40);
// So long at a time nobody else gets at the decoder; then whoever waits comes first.
constexpr std::chrono::milliseconds seekPreparationSlice(2);
constexpr std::chrono::microseconds pauseBetweenSlices(100);

} // namespace

AudioSource::AudioSource(QObject* parent)
    : QIODevice(parent)
{
    m_decoder.setOutputSampleRate(sampleRate);
    m_decoder.setOutputChannels(channels);
    m_decoder.setOutputSampleFormat(signed32Bit);
}

AudioSource::~AudioSource()
{
    AudioSource::close();
    for (QFuture<void>& chunk : m_chunks)
        chunk.waitForFinished();
}

bool AudioSource::open(const QString& fileName)
{
    const QMutexLocker locker(&m_mutex);
    if (isOpen() || m_decoder.isOpen())
        return false;
    m_decoder.setFileName(fileName);
    if (!m_decoder.open()) {
        qCritical() << "Unable to open source file:" << fileName;
        qCritical() << "Decoder error:" << m_decoder.errorString();
        return false;
    }
    m_fileName = fileName;
    m_duration = int(std::min(m_decoder.duration(), double(std::numeric_limits<int>::max())));
    m_title = composeTitle();
    return QIODevice::open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

QString AudioSource::composeTitle() const
{
    const QString title = m_decoder.tag(QStringLiteral("title"));
    if (title.isEmpty())
        return QFileInfo(m_fileName).fileName();
    const QString artist = m_decoder.tag(QStringLiteral("artist"));
    return tr("%1 - %2").arg(artist.isEmpty() ? tr("Unknown") : artist, title);
}

void AudioSource::close()
{
    // A chunk that waits for a slow disk holds the mutex.
    m_decoder.interrupt();
    QMutexLocker locker(&m_mutex);
    m_decoder.close();
    m_buffer.clear();
    m_fileName.clear();
    m_duration = 0;
    m_title.clear();
    // Whoever is told of it may ask for something.
    locker.unlock();
    if (isOpen())
        QIODevice::close();
}

void AudioSource::seek(double seconds)
{
    const QMutexLocker locker(&m_mutex);
    if (!m_decoder.isOpen())
        return;
    m_decoder.seek(seconds);
    m_buffer.clear();
}

bool AudioSource::seek(qint64 position)
{
    Q_UNUSED(position)
    return false;
}

bool AudioSource::atEnd() const
{
    const QMutexLocker locker(&m_mutex);
    return hasNothingToRead();
}

// A decoder without a file has no end.
bool AudioSource::hasNothingToRead() const
{
    return m_buffer.isEmpty() && (!m_decoder.isOpen() || m_decoder.atEnd());
}

qint64 AudioSource::bytesAvailable() const
{
    const QMutexLocker locker(&m_mutex);
    return m_buffer.size() + QIODevice::bytesAvailable();
}

qint64 AudioSource::readData(char* data, qint64 maxSize)
{
    QMutexLocker locker(&m_mutex);
    if (m_buffer.isEmpty()) {
        if (hasNothingToRead())
            return 0;
        locker.unlock();
        decodeNextChunk();
        locker.relock();
    }
    const int count = int(std::min<qint64>(maxSize, m_buffer.size()));
    std::memcpy(data, m_buffer.constData(), size_t(count));
    m_buffer.remove(0, count);
    if (m_buffer.size() < lowMark)
        requestChunk();
    return count;
}

qint64 AudioSource::writeData(const char* data, qint64 maxSize)
{
    Q_UNUSED(data)
    Q_UNUSED(maxSize)
    return -1;
}

// With the mutex held.
void AudioSource::requestChunk()
{
    if (m_isChunkRequested || !m_decoder.isOpen() || m_decoder.atEnd())
        return;
    m_isChunkRequested = true;
    QMetaObject::invokeMethod(this, &AudioSource::decodeNextChunkAsync, Qt::QueuedConnection);
}

void AudioSource::decodeNextChunkAsync()
{
    Q_ASSERT(QThread::currentThread() == thread());
    const auto isFinished = [](const QFuture<void>& chunk) {
        return chunk.isFinished();
    };
    m_chunks.erase(std::remove_if(m_chunks.begin(), m_chunks.end(), isFinished), m_chunks.end());
    m_chunks.append(QtConcurrent::run([this] {
        decodeNextChunk();
        prepareSeek();
    }));
}

void AudioSource::decodeNextChunk()
{
    const QMutexLocker locker(&m_mutex);
    m_isChunkRequested = false;
    if (!m_decoder.isOpen() || m_decoder.atEnd())
        return;
    m_buffer.append(m_decoder.decode(chunkSize));
    QMetaObject::invokeMethod(this, &AudioSource::readyRead, Qt::QueuedConnection);
}

void AudioSource::prepareSeek()
{
    const QDeadlineTimer deadline(seekPreparation);
    while (prepareSeekALittle() && !deadline.hasExpired())
        QThread::usleep(pauseBetweenSlices.count());
}

bool AudioSource::prepareSeekALittle()
{
    const QMutexLocker locker(&m_mutex);
    return m_decoder.prepareSeek(seekPreparationSlice);
}
