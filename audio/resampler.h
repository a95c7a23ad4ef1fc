// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "audio/ffmpeg.h"

#include <QByteArray>

#include <cstdint>

struct AVChannelLayout;

/// Turns decoded frames of one format into interleaved samples of another.
///
/// Owner: a decoder. Thread: one at a time.
class Resampler final
{
public:
    /// What comes out. `sampleFormat` is 0 to 4: unsigned 8-bit, signed 16-bit, signed 32-bit, 32-bit float and 64-bit
    /// float. The rate is in Hz.
    struct Output
    {
        int sampleRate = 0;
        int channels = 0;
        int sampleFormat = -1;
    };

    /// Prepares for frames as this codec gives them. False when one of the formats cannot be had; then nothing may be
    /// converted.
    bool open(const AVCodecContext& codec, const Output& output);
    /// Prepares for frames like this one, with the same output.
    bool reopen(const AVFrame& frame);
    void close();
    /// Forgets the samples that it still holds.
    void restart();

    /// Frames of another format must not be converted.
    bool accepts(const AVFrame& frame) const;
    /// The samples that `count` samples from `first` on of the frame give now; some stay inside for later.
    QByteArray convert(const AVFrame& frame, int first, int count);
    /// What it still holds.
    QByteArray flush();

    const Output& output() const { return m_output; }
    int bytesPerOutputFrame() const;

private:
    bool openContext(AVChannelLayout& source, int sampleFormat, int sampleRate);
    QByteArray convertPlanes(const std::uint8_t** planes, int count);

    ResamplerPointer m_context;
    Output m_output;
    int m_sourceRate = 0;
    int m_sourceChannels = 0;
    int m_sourceFormat = -1;
};
