// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

/// Takes out of the ID3v2 frames in a file's bytes what would make TagLib crash or eat memory.
///
/// Chapter frames may hold frames that hold chapters, and so on until the stack is full: they are renamed, so that they
/// are kept as unknown ones; they carry no tag property anyway. Compressed frames may unpack to a thousand times their
/// size: those beyond the first few kilobytes of a file are disabled. Texts that only look alike stay as they are.
///
/// Owner: one tag reading. Thread: its creator's.
class Id3Defuser final
{
public:
    /// Changes the bytes of one read; a tag must come in one piece, as TagLib reads it.
    void defuse(char* bytes, std::uint32_t size);

private:
    void defuseFrame(unsigned char* frame, std::uint32_t room);
    static void disable(unsigned char* frame);

    std::uint32_t m_compressedBytesLeft = 4096;
};
