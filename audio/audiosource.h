// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/audiodecoder.h"

#include <QByteArray>
#include <QFuture>
#include <QIODevice>
#include <QMutex>
#include <QString>
#include <QVector>

/// One sound file as the stream of samples that an audio output pulls: 96000 Hz, two channels, signed 32-bit,
/// interleaved, little-endian.
///
/// Chunks of 0.4 s are decoded on the global thread pool ahead of what is read, so that a read rarely has to decode by
/// itself. `readyRead()` is emitted after each chunk, from the event loop of the source's thread. After it the thread
/// of the pool spends some time on making a later seek quick, and gives way to any other call meanwhile.
///
/// A failure to open is told in the message log.
///
/// Owner: the player. Thread: the one that it lives in opens, seeks, reads and closes; `decodeNextChunk()` any.
class AudioSource : public QIODevice
{
    Q_OBJECT

public:
    explicit AudioSource(QObject* parent = nullptr);
    /// Waits for a chunk that is being decoded.
    ~AudioSource() override;

    using QIODevice::open;
    /// Fails, and leaves everything as it is, while a file is open.
    bool open(const QString& fileName);
    /// Continues from this position, in seconds; what was decoded ahead is dropped. After a failure the source is at
    /// its end.
    void seek(double seconds);

    /// Whole seconds of the open file.
    int duration() const { return m_duration; }
    /// Artist and title of the open file, or its name.
    QString title() const { return m_title; }
    QString fileName() const { return m_fileName; }

    bool isSequential() const override { return true; }
    void close() override;
    /// Refused: a position is a time here.
    bool seek(qint64 position) override;
    bool atEnd() const override;
    qint64 bytesAvailable() const override;

public slots:
    /// Decodes 0.4 s and keeps them to be read.
    void decodeNextChunk();
    /// The same on the thread pool.
    void decodeNextChunkAsync();

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char* data, qint64 maxSize) override;

private:
    QString composeTitle() const;
    bool hasNothingToRead() const;
    void requestChunk();
    void prepareSeek();
    bool prepareSeekALittle();

    QString m_fileName;
    int m_duration = 0;
    QString m_title;
    // Guards the members below.
    mutable QMutex m_mutex;
    AudioDecoder m_decoder;
    QByteArray m_buffer;
    bool m_isChunkRequested = false;
    // Of the source's thread: those that may still run.
    QVector<QFuture<void>> m_chunks;
};
