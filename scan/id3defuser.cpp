// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/id3defuser.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr std::uint32_t sizeOffset = 4;
constexpr std::uint32_t flagsOffset = 9;
constexpr std::uint32_t headSize = 10;

// Behind the head of a compressed frame stands its unpacked length, then what is packed.
constexpr std::uint32_t packedOffset = headSize + 4;

constexpr unsigned char compressedInVersion3 = 0x80;
constexpr unsigned char compressedInVersion4 = 0x08;

// The first bytes of a frame, up to the first two that are packed.
using Look = std::array<unsigned char, packedOffset + 2>;

constexpr std::uint32_t escapedNowhere = packedOffset + 2;

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

// Where a tag is escaped, a zero follows each byte of 255; from an offset on, such zeros are left out.
Look lookAt(const unsigned char* frame, std::uint32_t room, std::uint32_t escapedFrom)
{
    Look look = {};
    std::uint32_t source = 0;
    for (std::uint32_t target = 0; target < look.size() && source < room; ++target) {
        look[target] = frame[source++];
        if (target >= escapedFrom && look[target] == 0xFF && source < room && frame[source] == 0)
            ++source;
    }
    return look;
}

// The smaller one of the two ways to read a frame's size, which depend on the version of the tag.
std::uint64_t sizeOf(const Look& look)
{
    std::uint64_t plain = 0;
    std::uint64_t synchronised = 0;
    for (std::uint32_t index = sizeOffset; index < sizeOffset + 4; ++index) {
        plain = plain << 8 | look[index];
        synchronised = synchronised << 7 | (look[index] & 0x7FU);
    }
    return plain == 0 ? 0 : std::max<std::uint64_t>(1, std::min(plain, synchronised));
}

bool hasRoom(const Look& look, std::uint32_t room)
{
    const std::uint64_t size = sizeOf(look);
    return size > 0 && size <= room;
}

bool isCompressed(const Look& look, unsigned char flags)
{
    const int packed = look[packedOffset] << 8 | look[packedOffset + 1];
    return (look[flagsOffset] & flags) != 0 && (look[packedOffset] & 0x0F) == 8 && packed % 31 == 0;
}

} // namespace

void Id3Defuser::defuse(char* bytes, std::uint32_t size)
{
    auto* const data = reinterpret_cast<unsigned char*>(bytes);
    for (std::uint32_t offset = 0; offset + headSize + 4 <= size; ++offset) {
        if (isIdentifier(data + offset))
            examine(data + offset, size - offset);
    }
}

void Id3Defuser::examine(unsigned char* frame, std::uint32_t room)
{
    // In version 3 of the tag everything may be escaped, in version 4 what stands behind a frame's head.
    const Look plain = lookAt(frame, room, escapedNowhere);
    const Look body = lookAt(frame, room, headSize);
    const Look whole = lookAt(frame, room, sizeOffset);
    const bool hasPlainRoom = hasRoom(plain, room);
    const bool hasWholeRoom = hasRoom(whole, room);
    if (isChapter(frame) && (hasPlainRoom || hasWholeRoom))
        frame[0] = 'X';
    const unsigned char eitherVersion = compressedInVersion3 | compressedInVersion4;
    if (hasPlainRoom && (isCompressed(plain, eitherVersion) || isCompressed(body, compressedInVersion4)))
        defuseFrame(frame, sizeOf(plain));
    else if (hasWholeRoom && isCompressed(whole, compressedInVersion3))
        defuseFrame(frame, sizeOf(whole));
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
