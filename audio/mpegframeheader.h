// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/// The header of one frame of MPEG audio, Layers I to III.
///
/// Its fields are those of ISO/IEC 11172-3 (2.4.1.3, 2.4.2.3), with the halved sampling rates of ISO/IEC 13818-3
/// (2.4.2.3) and the quartered ones that are known as MPEG-2.5. Frames of free format, whose size no header tells, do
/// not count as valid.
///
/// A value. Thread: any.
class MpegFrameHeader final
{
public:
    /// Bytes of a file that hold a header.
    static constexpr int length = 4;

    /// No header at all.
    MpegFrameHeader() = default;
    explicit MpegFrameHeader(const std::uint8_t* bytes);

    /// The queries below need a valid header.
    bool isValid() const;
    /// Whether the other valid header belongs to the same stream, as far as it must not change there: version, layer
    /// and sampling rate.
    bool isOfSameKind(const MpegFrameHeader& other) const;

    /// 1 to 3.
    int layer() const { return 4 - layerField(); }
    /// Hz.
    int sampleRate() const;
    /// 1 or 2.
    int channels() const { return isMono() ? 1 : 2; }
    /// Samples of each channel that the frame stands for.
    int samples() const;
    /// Bytes from this header to the next one.
    int frameSize() const;
    /// Bytes of the frame that hold main data: in Layer III, without the side information, the data of this frame and
    /// of following ones.
    int mainDataSize() const;
    /// Bytes of main data of earlier frames that the frame may depend on: what the field main_data_begin can tell.
    int largestReservoir() const;

private:
    int versionField() const { return int(m_bits >> 19) & 3; }
    int layerField() const { return int(m_bits >> 17) & 3; }
    bool isProtected() const { return (m_bits >> 16 & 1) == 0; }
    int bitRateField() const { return int(m_bits >> 12) & 15; }
    int sampleRateField() const { return int(m_bits >> 10) & 3; }
    int padding() const { return int(m_bits >> 9) & 1; }
    bool isMono() const { return (m_bits >> 6 & 3) == 3; }
    // Halved or quartered sampling rates.
    bool isLow() const;
    int bitRate() const;
    int sideInformationSize() const;

    std::uint32_t m_bits = 0;
};
