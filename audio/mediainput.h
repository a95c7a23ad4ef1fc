// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/ffmpeg.h"

#include <QPair>
#include <QString>
#include <QVector>

#include <chrono>

class InputFile;
class MpegSeekIndex;
struct AVStream;

/// One media file opened with FFmpeg: its first audio stream and an opened decoder for it.
///
/// The input format is forced by the file's suffix where the suffix is one of the catalogue's own (see
/// `inputFormatForSuffix()`). Only regular files are opened, no other file is opened on their behalf, and what may be
/// read until the decoder stands, or from one frame to the next, is bounded; see audio/inputfile.h.
///
/// Owner: whoever reads the file. Thread: one at a time; different inputs may be used on different threads at once.
class MediaInput final
{
public:
    /// How far `open()` came before it failed.
    enum class Failure
    {
        None,
        OpenInput,
        FindStreamInfo,
        FindAudioStream,
        FindDecoder,
        OpenCodec
    };

    MediaInput();
    ~MediaInput();
    MediaInput(MediaInput&& other) noexcept;
    MediaInput& operator=(MediaInput&& other) noexcept;
    Q_DISABLE_COPY(MediaInput)

    /// Opens a file that is not opened yet; false when any step failed, with everything closed again.
    bool open(const QString& path);
    void close();
    /// The open file seems to end from now on, also for a reading that runs in another thread. It must not be closed
    /// meanwhile.
    void interrupt();

    /// To be called for every decoded frame: behind too many bytes without one the file seems to end. Needs an open
    /// input.
    void allowFurther();

    /// Continues some time before a place, so that all samples from there on are decoded as without a seek; false when
    /// FFmpeg cannot. What was sent to the decoder is forgotten. The time stamp is in the stream's time base; needs an
    /// open input.
    bool seek(qint64 timestamp);

    /// Spends some time on learning where a later seek has to go, without changing what is read next; to be called now
    /// and then while a file is decoded. False when another call would do nothing for now. Needs an open input.
    bool prepareSeek(std::chrono::milliseconds time);

    bool isOpen() const;
    Failure failure() const { return m_failure; }
    /// FFmpeg's text for the failed step; empty where the step has no error code of FFmpeg.
    QString errorText() const { return m_errorText; }

    /// The queries below need an open input.

    /// FFmpeg's short name of the container format, in lower case.
    QString formatName() const;
    /// Hz.
    int sampleRate() const;
    int channelsCount() const;
    /// Significant bits of the stored samples, or the width of a decoded one where the format has no such number.
    int bitsPerSample() const;
    /// Seconds. A stream without a known duration gives the product of FFmpeg's "no value" as it comes.
    double duration() const;
    /// The container's dictionary in its order: lower-cased keys, values without undecodable characters.
    QVector<QPair<QString, QString>> metadata() const;

    AVFormatContext* formatContext() const { return m_format.get(); }
    AVCodecContext* codecContext() const { return m_codec.get(); }
    const AVStream* stream() const;

private:
    enum class Probing
    {
        Short,
        Full
    };

    bool openFile(const QString& path, Probing probing);
    bool openToKnownCodec(const QString& path);
    bool findAudioStream();
    AVStream* firstAudioStream() const;
    bool mayBeDisguised() const;
    bool isKnownFromHeader() const;
    bool learnFromFrames();
    bool openDecoder();
    void correctByteRate();
    MpegSeekIndex* seekIndex();
    qint64 seekStart(qint64 timestamp);
    bool seekTo(qint64 timestamp);
    qint64 lastKnownTimestamp() const;
    bool fail(Failure failure, int errorCode = 0);

    // Declared before the context that reads from it.
    std::unique_ptr<InputFile> m_file;
    FormatContextPointer m_format;
    CodecContextPointer m_codec;
    // Of MPEG audio, from the first seek, or preparation of one, on.
    std::unique_ptr<MpegSeekIndex> m_seekIndex;
    int m_streamIndex = -1;
    // How the open file was opened; a format that was not forced is always examined in full.
    Probing m_probing = Probing::Full;
    Failure m_failure = Failure::None;
    QString m_errorText;
};
