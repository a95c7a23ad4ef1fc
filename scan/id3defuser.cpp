// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/id3defuser.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include <zlib.h>

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

// One way to take the bytes of a frame: where a tag is escaped, a zero follows each byte of 255, from some offset on.
struct Reading
{
    std::uint32_t escapedFrom;
    unsigned char compressionFlags;
};

// In version 3 of the tag everything may be escaped, in version 4 what stands behind a frame's head.
constexpr std::array<Reading, 3> readings = { {
    { UINT32_MAX, compressedInVersion3 | compressedInVersion4 },
    { headSize, compressedInVersion4 },
    { sizeOffset, compressedInVersion3 },
} };

// Frames of version 2 that stand in a tag of version 3 have a zero as the fourth letter.
bool isIdentifier(const unsigned char* frame)
{
    const auto isLetter = [](unsigned char letter) {
        return (letter >= 'A' && letter <= 'Z') || (letter >= '0' && letter <= '9');
    };
    return std::all_of(frame, frame + 3, isLetter) && (isLetter(frame[3]) || frame[3] == 0);
}

bool isChapter(const unsigned char* frame)
{
    return std::memcmp(frame, "CHAP", 4) == 0 || std::memcmp(frame, "CTOC", 4) == 0;
}

bool hasEscapedBytes(const unsigned char* frame)
{
    return std::find(frame + 4, frame + headSize, 0xFF) != frame + headSize;
}

// Writes the first bytes of a frame without the zeros that escape it, as many as there are and as fit.
std::uint32_t copyRead(const Reading& reading, const unsigned char* frame, std::uint32_t room, unsigned char* target,
    std::uint32_t targetSize)
{
    std::uint32_t source = 0;
    std::uint32_t count = 0;
    while (count < targetSize && source < room) {
        const unsigned char byte = frame[source++];
        if (count >= reading.escapedFrom && byte == 0xFF && source < room && frame[source] == 0)
            ++source;
        target[count++] = byte;
    }
    return count;
}

Look lookAt(const Reading& reading, const unsigned char* frame, std::uint32_t room)
{
    Look look = {};
    copyRead(reading, frame, room, look.data(), std::uint32_t(look.size()));
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

// How many bytes of what is packed in a frame TagLib would unpack, if they are fewer than the limit.
std::uint32_t packedSize(const Reading& reading, const unsigned char* frame, std::uint32_t room, std::uint32_t limit)
{
    std::vector<unsigned char> bytes(packedOffset + limit);
    const std::uint32_t count = copyRead(reading, frame, room, bytes.data(), std::uint32_t(bytes.size()));
    z_stream stream = {};
    stream.next_in = bytes.data() + packedOffset;
    stream.avail_in = count - packedOffset;
    int result = inflateInit(&stream);
    while (result == Z_OK) {
        std::array<unsigned char, 4096> unpacked;
        stream.next_out = unpacked.data();
        stream.avail_out = unpacked.size();
        result = inflate(&stream, Z_NO_FLUSH);
    }
    inflateEnd(&stream);
    // Everything is read where more would follow; wrong bytes end it as well.
    return result == Z_BUF_ERROR ? limit : std::uint32_t(stream.total_in);
}

} // namespace

void Id3Defuser::defuse(char* bytes, std::uint32_t size)
{
    auto* const data = reinterpret_cast<unsigned char*>(bytes);
    for (std::uint32_t offset = 0; offset + headSize + 4 <= size; ++offset) {
        if (isIdentifier(data + offset))
            defuseFrame(data + offset, size - offset);
    }
}

void Id3Defuser::defuseFrame(unsigned char* frame, std::uint32_t room)
{
    bool isPacked = false;
    std::uint32_t size = 0;
    for (const Reading& reading : readings) {
        const Look look = lookAt(reading, frame, room);
        if (!hasRoom(look, room))
            continue;
        if (isChapter(frame))
            frame[0] = 'X';
        if (isCompressed(look, reading.compressionFlags)) {
            isPacked = true;
            // TagLib unpacks what follows behind the end of the frame, too.
            size = std::max(size, packedSize(reading, frame, room, m_compressedBytesLeft));
        }
    }
    m_compressedBytesLeft -= size;
    if (isPacked && m_compressedBytesLeft == 0)
        disable(frame);
}

void Id3Defuser::disable(unsigned char* frame)
{
    if (hasEscapedBytes(frame)) {
        // Its flags may stand anywhere; an invalid name ends the tag here.
        frame[0] = 'x';
        return;
    }
    frame[0] = 'X';
    frame[flagsOffset] = 0;
}
