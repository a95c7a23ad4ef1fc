// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "scan/id3defuser.h"

#include <QByteArray>

#include <taglib/tfilestream.h>
#include <taglib/tiostream.h>

/// A file as TagLib may see it: read-only, and bounded in what it can make TagLib do.
///
/// TagLib takes sizes and nesting in a file at their word. Here the number of reads and of bytes is limited, behind
/// which the file seems to end, and dangerous frames of ID3v2 are made harmless on their way; see scan/id3defuser.h.
///
/// Owner: the stack of one tag reading. Thread: its creator's.
class TagStream final : public TagLib::IOStream
{
public:
    /// `fileName` in the encoding of the file system; it must name a regular file.
    explicit TagStream(const QByteArray& fileName);
    ~TagStream() override;

    TagLib::FileName name() const override;
    bool isOpen() const override;
    bool readOnly() const override;
    long tell() const override;
    long length() override;

    TagLib::ByteVector readBlock(unsigned long length) override;
    void seek(long offset, Position position = Beginning) override;
    void clear() override;

    /// The four below do nothing: the file is never written.
    void writeBlock(const TagLib::ByteVector& data) override;
    void insert(const TagLib::ByteVector& data, unsigned long start = 0, unsigned long replace = 0) override;
    void removeBlock(unsigned long start = 0, unsigned long length = 0) override;
    void truncate(long length) override;

private:
    bool isExhausted() const { return m_readsLeft == 0 || m_bytesLeft == 0; }

    TagLib::FileStream m_file;
    int m_readsLeft;
    unsigned long m_bytesLeft;
    long m_length;
    Id3Defuser m_defuser;
};
