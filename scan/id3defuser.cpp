// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/id3defuser.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::uint32_t headSize = 10;
constexpr std::uint32_t flagsOffset = 9;

// The most bytes that the head of a compressed frame takes up to the packed data. Where the whole tag is escaped, a
// zero follows each byte of 255, so that everything may stand further behind.
constexpr std::uint32_t longestHeadSize = 24;

bool isIdentifier(const unsigned char* frame)
{
    return std::all_of(frame, frame + 4,
        [](unsigned char letter) { return (letter >= 'A' && letter <= 'Z') || (letter >= '0' && letter <= '9'); });
}

bool isChapter(const unsigned char* frame)
{
    return std::memcmp(frame, "CHAP", 4) == 0 || std::memcmp(frame, "CTOC", 4) == 0;
}

bool hasEscapedBytes(const unsigned char* frame)
{
    return std::find(frame + 4, frame + headSize, 0xFF) != frame + headSize;
}

// The smaller one of the two ways to read a frame's size, which depend on the version of the tag.
std::uint64_t sizeOf(const unsigned char* frame)
{
    std::uint64_t plain = 0;
    std::uint64_t synchronised = 0;
    for (int index = 4; index < 8; ++index) {
        plain = plain << 8 | frame[index];
        synchronised = synchronised << 7 | (frame[index] & 0x7FU);
    }
    return plain == 0 ? 0 : std::max<std::uint64_t>(1, std::min(plain, synchronised));
}

// Says yes to every frame that TagLib would unpack, and to hardly any other.
bool mayBeCompressed(const unsigned char* frame, std::uint32_t room)
{
    const unsigned char compressedInEitherVersion = 0x80 | 0x08;
    const bool isFlagged = std::any_of(frame + headSize - 2, frame + headSize + 4,
        [=](unsigned char flags) { return (flags & compressedInEitherVersion) != 0; });
    if (!isFlagged)
        return false;
    const std::uint32_t end = std::min(room, longestHeadSize);
    for (std::uint32_t index = headSize; index + 1 < end; ++index) {
        const int head = frame[index] << 8 | frame[index + 1];
        if ((frame[index] & 0x0F) == 8 && head % 31 == 0)
            return true;
    }
    return false;
}

} // namespace

void Id3Defuser::defuse(char* bytes, std::uint32_t size)
{
    auto* const data = reinterpret_cast<unsigned char*>(bytes);
    for (std::uint32_t offset = 0; offset + headSize + 4 <= size; ++offset) {
        unsigned char* const frame = data + offset;
        if (!isIdentifier(frame))
            continue;
        const std::uint32_t room = size - offset;
        const std::uint64_t frameSize = sizeOf(frame);
        const bool isEscaped = hasEscapedBytes(frame);
        if (!isEscaped && (frameSize == 0 || frameSize > room))
            continue;
        if (isChapter(frame))
            frame[0] = 'X';
        if (mayBeCompressed(frame, room))
            defuseFrame(frame, isEscaped ? room : frameSize);
    }
}

void Id3Defuser::defuseFrame(unsigned char* frame, std::uint64_t size)
{
    if (size <= m_compressedBytesLeft) {
        m_compressedBytesLeft -= size;
        return;
    }
    if (hasEscapedBytes(frame)) {
        // Its flags may stand anywhere; an invalid name ends the tag here.
        frame[0] = 'x';
        return;
    }
    frame[0] = 'X';
    frame[flagsOffset] = 0;
}
