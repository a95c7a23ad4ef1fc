// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/mediainput.h"
#include "audio/resampler.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <chrono>
#include <optional>

/// Decodes the first audio stream of one file into interleaved samples of a chosen format, from any position on.
///
/// Every frame of the stream is delivered once: 1 s of sound gives exactly as many frames as the output rate says; a
/// sound shorter than about 25 samples may give none at all. After a seek the same samples come as without one,
/// whatever the file's format, except where a file's own time stamps are not exact, and for the first frame after a
/// seek to the start of an MP3 joined from two rates, which is played at the other rate.
///
/// A failure is a false result and a text in `errorString()`. What cannot be decoded in the middle of a file is left
/// out; after 16 MB without any sound the file is at its end.
///
/// Owner: an audio source. Thread: one at a time; `interrupt()` excepted.
class AudioDecoder final
{
public:
    AudioDecoder();
    ~AudioDecoder();
    Q_DISABLE_COPY(AudioDecoder)

    void setFileName(const QString& fileName) { m_fileName = fileName; }
    /// The settings of the output are left as they are while a file is open. Hz; number of channels; the sample format
    /// is one of `Resampler::Output`, anything else is none.
    void setOutputSampleRate(int sampleRate);
    void setOutputChannels(int channels);
    void setOutputSampleFormat(int sampleFormat);

    bool open();
    /// The next bytes, at most so many; fewer only at the end of the stream.
    QByteArray decode(int maxBytes);
    /// Continues from this position, in seconds from the start of the sound; positions outside of it mean its ends.
    bool seek(double seconds);
    /// Spends some time on making a later seek quick, without changing what comes next; to be called now and then.
    /// False when another call would do nothing for now.
    bool prepareSeek(std::chrono::milliseconds time);
    void close();
    /// Makes a `decode()` that runs in another thread see the end of the file. To be called by the thread that opens
    /// and closes; what it does is undone by closing only.
    void interrupt();

    bool isOpen() const { return m_input.isOpen(); }
    /// Everything has been handed out.
    bool atEnd() const { return m_isAtEnd && m_pending.isEmpty(); }
    /// Seconds, as the file tells; 0 when it does not.
    double duration() const { return m_duration; }
    /// Metadata of the container; the key's case does not matter.
    QString tag(const QString& key, const QString& defaultValue = {}) const;
    /// The text of the last failure.
    QString errorString() const { return m_errorString; }

private:
    bool fail(const QString& text);
    QString inputError() const;
    double knownDuration() const;
    qint64 startTime() const;
    qint64 firstTimestampToDecode(qint64 wantedFrame) const;
    void decodeFurther();
    void readPacket();
    void beginFrame();
    void dropUntilWanted();
    void convertSlice();
    void finish();
    void append(const QByteArray& converted);
    void forgetFrame();

    QString m_fileName;
    QString m_errorString;
    Resampler::Output m_output;
    QMap<QString, QString> m_tags;
    double m_duration = 0;
    // Hz, as the file began; joined recordings may change it.
    int m_sourceRate = 0;
    MediaInput m_input;
    Resampler m_resampler;
    FramePointer m_frame;
    PacketPointer m_packet;
    // What is left to convert of the current frame, in its samples.
    int m_nextSample = 0;
    int m_samplesLeft = 0;
    // After a seek: the frame of the output, counted from the start of the sound, that is to come first; then how many
    // converted frames come before it.
    qint64 m_wantedFrame = -1;
    qint64 m_framesToSkip = 0;
    // In samples of the source, once a frame after the seek has told its time: up to where was dropped.
    std::optional<qint64> m_dropPosition;
    QByteArray m_pending;
    bool m_isDraining = false;
    bool m_isAtEnd = false;
};
