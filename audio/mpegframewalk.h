// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/mpegframeheader.h"

#include <QtGlobal>

#include <cstdint>
#include <vector>

class InputFile;

/// Goes from frame to frame of MPEG audio by the headers alone, as long as one frame follows the other without a gap.
///
/// The walk ends for good where the bytes behind a frame are no header of the same kind: at a tag, at damage, where the
/// sampling rate changes, at the end of the file, or when the file was interrupted. It does not look for the next one.
/// The last frame of a walk is thus one of which only the header is known.
///
/// Owner: who seeks. It reads from the file without changing what FFmpeg reads next, and must not outlive it. Thread:
/// one at a time.
class MpegFrameWalk final
{
public:
    /// One frame: the offset in bytes, and the number of samples of one channel between the first frame and this one.
    struct Frame
    {
        qint64 offset = 0;
        qint64 sample = 0;
        MpegFrameHeader header;

        qint64 endSample() const { return sample + header.samples(); }
    };

    /// The walk begins at a frame of which the offset is known; the sample is what the frame is to have. So many bytes
    /// are read at once.
    MpegFrameWalk(const InputFile& file, qint64 offset, qint64 sample, int pieceSize);

    /// False when there was no frame to begin with; nothing else may be asked then.
    bool isValid() const { return m_frame.header.isValid(); }
    const Frame& frame() const { return m_frame; }
    /// Goes on to the next frame; false, without a change, where the walk ends.
    bool next();
    bool hasEnded() const { return m_hasEnded; }

private:
    MpegFrameHeader headerAt(qint64 offset);

    const InputFile* m_file;
    Frame m_frame;
    bool m_hasEnded = false;
    // A piece of the file, with the offset of its first byte.
    std::vector<std::uint8_t> m_piece;
    int m_pieceLength = 0;
    qint64 m_pieceOffset = 0;
};
