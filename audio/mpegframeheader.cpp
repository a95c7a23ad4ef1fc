// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/mpegframeheader.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::uint32_t syncBits = 0xffe00000;
constexpr std::uint32_t kindBits = syncBits | 0x001e0c00; // version, layer and sampling rate

constexpr int fullRateVersion = 3;
constexpr int reservedVersion = 1;
constexpr int quarteredRateVersion = 0;
constexpr int reservedLayer = 0;
constexpr int freeFormat = 0;
constexpr int forbiddenBitRate = 15;
constexpr int reservedSampleRate = 3;

using BitRates = std::array<int, 15>; // kbit/s

constexpr std::array<BitRates, 3> bitRates{ {
    { 0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448 },
    { 0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384 },
    { 0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320 },
} };
constexpr BitRates lowFirstLayerBitRates{ 0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256 };
constexpr BitRates lowBitRates{ 0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160 };

constexpr std::array<int, 3> sampleRates{ 44100, 48000, 32000 };

} // namespace

MpegFrameHeader::MpegFrameHeader(const std::uint8_t* bytes)
    : m_bits(std::uint32_t(bytes[0]) << 24 | std::uint32_t(bytes[1]) << 16 | std::uint32_t(bytes[2]) << 8 | bytes[3])
{
}

bool MpegFrameHeader::isValid() const
{
    return (m_bits & syncBits) == syncBits && versionField() != reservedVersion && layerField() != reservedLayer
        && bitRateField() != freeFormat && bitRateField() != forbiddenBitRate
        && sampleRateField() != reservedSampleRate;
}

bool MpegFrameHeader::isOfSameKind(const MpegFrameHeader& other) const
{
    return ((m_bits ^ other.m_bits) & kindBits) == 0;
}

bool MpegFrameHeader::isLow() const
{
    return versionField() != fullRateVersion;
}

int MpegFrameHeader::sampleRate() const
{
    const int divisor = versionField() == quarteredRateVersion ? 4 : isLow() ? 2 : 1;
    return sampleRates[std::size_t(sampleRateField())] / divisor;
}

int MpegFrameHeader::bitRate() const
{
    const auto index = std::size_t(bitRateField());
    const int kilobits = !isLow() ? bitRates[std::size_t(layer() - 1)][index]
        : layer() == 1            ? lowFirstLayerBitRates[index]
                                  : lowBitRates[index];
    return kilobits * 1000;
}

int MpegFrameHeader::samples() const
{
    if (layer() == 1)
        return 384;
    return layer() == 3 && isLow() ? 576 : 1152;
}

int MpegFrameHeader::frameSize() const
{
    // The first layer counts in slots of four bytes.
    if (layer() == 1)
        return (samples() / 32 * bitRate() / sampleRate() + padding()) * 4;
    return samples() / 8 * bitRate() / sampleRate() + padding();
}

int MpegFrameHeader::sideInformationSize() const
{
    if (layer() != 3)
        return 0;
    if (isLow())
        return isMono() ? 9 : 17;
    return isMono() ? 17 : 32;
}

int MpegFrameHeader::mainDataSize() const
{
    return std::max(0, frameSize() - length - (isProtected() ? 2 : 0) - sideInformationSize());
}

int MpegFrameHeader::largestReservoir() const
{
    if (layer() != 3)
        return 0;
    return isLow() ? 255 : 511;
}
