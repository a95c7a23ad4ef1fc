// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/mpegframewalk.h"

#include <chrono>
#include <optional>
#include <vector>

class InputFile;
struct AVFormatContext;
struct AVStream;

/// Tells FFmpeg where the frames of an MPEG audio file are, so that it jumps to a place exactly.
///
/// FFmpeg knows such a place only when it has read all packets before it, which takes more than a tenth of a second
/// in a file of an hour. Here the headers alone are followed, from the first packet on, no farther than wanted and only
/// once, and the frame to begin with is added to FFmpeg's own index of the stream. No place is ever guessed: what the
/// walk cannot follow to the byte (see audio/mpegframewalk.h) is left to FFmpeg, which reads on from there.
///
/// Time stamps are in the stream's time base, in which each frame of MPEG audio has a whole length.
///
/// Owner: the media input, whose file and stream must outlive it. Thread: that which reads the stream.
class MpegSeekIndex final
{
public:
    MpegSeekIndex(const InputFile& file, AVFormatContext& format, const AVStream& stream);
    Q_DISABLE_COPY(MpegSeekIndex)

    /// The time stamp to seek to, so that all samples from this one on are decoded as without a seek; nothing where
    /// only FFmpeg itself finds the place. FFmpeg's position may be changed.
    std::optional<qint64> startFor(qint64 timestamp);
    /// Follows the headers for so long while the stream is read from its beginning, and goes on where it stopped, so
    /// that a later seek has less to follow, or nothing. FFmpeg's position stays. Returns at once when the first
    /// packets have not been read yet. False when another call would do nothing for now.
    bool lookAhead(std::chrono::milliseconds time);

private:
    using Frame = MpegFrameWalk::Frame;
    using Frames = std::vector<Frame>;

    bool begin();
    bool beginAtKnownPackets();
    bool meetsKnownPackets(MpegFrameWalk& walk) const;
    bool knowsFirstPackets() const;
    void walkTo(qint64 sample);
    bool step();
    bool isWalked(qint64 sample) const;
    Frames framesUpTo(qint64 sample) const;
    Frames framesFrom(const Frame& place, qint64 sample) const;
    void announce(const Frame& frame);
    qint64 timestampOf(qint64 sample) const;
    qint64 sampleAt(qint64 timestamp) const;

    const InputFile* m_file;
    AVFormatContext* m_format;
    AVStream* m_stream;
    bool m_hasBegun = false;
    qint64 m_firstTimestamp = 0;
    std::optional<MpegFrameWalk> m_walk;
    // Every so many of the frames that were walked over, the first among them.
    Frames m_places;
    int m_framesSincePlace = 0;
};
