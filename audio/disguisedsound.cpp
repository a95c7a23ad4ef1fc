// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/disguisedsound.h"

#include <algorithm>
#include <array>
#include <cstring>

extern "C" {
#include <libavcodec/ac3_parser.h>
}

namespace {

// Words as a machine of little end first reads them.
constexpr std::uint16_t ac3Sync = 0x770b;
constexpr std::uint16_t ac3SwappedSync = 0x0b77;

// The two words that begin a frame, as they lie in the file.
struct Sync
{
    std::uint16_t first;
    std::uint16_t second;
};

constexpr std::array<Sync, 7> longSyncs = { {
    { 0xfe7f, 0x0180 }, // DTS
    { 0x7ffe, 0x8001 }, // DTS, bytes swapped
    { 0xff1f, 0x00e8 }, // DTS in words of 14 bits
    { 0x1fff, 0xe800 }, // DTS in words of 14 bits, bytes swapped
    { 0x5864, 0x2520 }, // DTS, the extension of high definition
    { 0xf872, 0x4e1f }, // S/PDIF
    { 0x72f8, 0xba6f }, // TrueHD
} };

std::uint16_t wordAt(const std::uint8_t* bytes)
{
    std::uint16_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Without a branch, so that the compiler can compare many words at once.
bool holdsSyncWord(const std::uint8_t* bytes, int size)
{
    unsigned found = 0;
    for (int place = 0; place + 2 <= size; place += 2) {
        const std::uint16_t word = wordAt(bytes + place);
        unsigned isSync = unsigned(word == ac3Sync) | unsigned(word == ac3SwappedSync);
        for (const Sync& sync : longSyncs)
            isSync |= unsigned(word == sync.first);
        found |= isSync;
    }
    return found != 0;
}

// The size in bytes of an AC-3 frame; 0 when there is none.
int ac3FrameSize(const std::uint8_t* bytes, int size)
{
    std::array<std::uint8_t, 16> header = {};
    if (size < int(header.size()))
        return 0;
    std::copy_n(bytes, header.size(), header.begin());
    if (wordAt(bytes) == ac3SwappedSync) {
        for (std::size_t place = 0; place < header.size(); place += 2)
            std::swap(header[place], header[place + 1]);
    }
    std::uint8_t streamId = 0;
    std::uint16_t frameSize = 0;
    return av_ac3_parse_header(header.data(), header.size(), &streamId, &frameSize) < 0 ? 0 : frameSize;
}

// Two frames, one behind the other; samples may look like one.
bool beginsWithAc3(const std::uint8_t* bytes, int size)
{
    const int first = ac3FrameSize(bytes, size);
    return first > 0 && first < size && ac3FrameSize(bytes + first, size - first) > 0;
}

bool beginsWithSync(const std::uint8_t* bytes, int size)
{
    const std::uint16_t word = wordAt(bytes);
    if (word == ac3Sync || word == ac3SwappedSync)
        return beginsWithAc3(bytes, size);
    return size >= 4 && std::any_of(longSyncs.begin(), longSyncs.end(), [&](const Sync& sync) {
        return word == sync.first && wordAt(bytes + 2) == sync.second;
    });
}

// What stands before the frames of an MP3 file.
bool beginsWithTag(const std::uint8_t* bytes)
{
    return std::memcmp(bytes, "ID3", 3) == 0;
}

// A frame of MPEG audio of any layer.
bool beginsWithMpeg(const std::uint8_t* bytes)
{
    const bool isSync = bytes[0] == 0xff && (bytes[1] & 0xe0) == 0xe0;
    const bool isVersion = (bytes[1] & 0x18) != 0x08;
    const bool isLayer = (bytes[1] & 0x06) != 0;
    const int bitrate = bytes[2] >> 4;
    const bool isRate = (bytes[2] & 0x0c) != 0x0c;
    return isSync && isVersion && isLayer && bitrate > 0 && bitrate < 15 && isRate;
}

// A frame of AAC, in either of its transports.
bool beginsWithAac(const std::uint8_t* bytes)
{
    const bool isTransport = bytes[0] == 0xff && (bytes[1] & 0xf6) == 0xf0;
    const bool isLowOverhead = bytes[0] == 0x56 && (bytes[1] & 0xe0) == 0xe0;
    return isTransport || isLowOverhead;
}

bool beginsWithFrame(const std::uint8_t* bytes, int size)
{
    const std::uint8_t* begin = std::find_if(bytes, bytes + size, [](std::uint8_t byte) { return byte != 0; });
    return bytes + size - begin >= 4 && (beginsWithTag(begin) || beginsWithMpeg(begin) || beginsWithAac(begin));
}

} // namespace

bool mayBeDisguisedSound(const std::uint8_t* bytes, int size)
{
    if (beginsWithFrame(bytes, size))
        return true;
    constexpr int blockSize = 1024;
    for (int block = 0; block < size; block += blockSize) {
        const int blockEnd = std::min(size, block + blockSize);
        if (!holdsSyncWord(bytes + block, blockEnd - block))
            continue;
        for (int place = block; place + 2 <= blockEnd; place += 2) {
            if (beginsWithSync(bytes + place, size - place))
                return true;
        }
    }
    return false;
}
