// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/tagstream.h"

#include <algorithm>

namespace {

// Reading the tags of an honest file takes some dozen reads and, with a large cover picture, some megabytes.
constexpr int largestNumberOfReads = 8192;
constexpr unsigned long largestNumberOfBytes = 32UL * 1024 * 1024;

} // namespace

TagStream::TagStream(const QByteArray& fileName)
    : m_file(fileName.constData(), true)
    , m_readsLeft(largestNumberOfReads)
    , m_bytesLeft(largestNumberOfBytes)
    , m_length(m_file.isOpen() ? m_file.length() : 0)
{
}

TagStream::~TagStream() = default;

TagLib::FileName TagStream::name() const
{
    return m_file.name();
}

bool TagStream::isOpen() const
{
    return m_file.isOpen();
}

bool TagStream::readOnly() const
{
    return true;
}

long TagStream::tell() const
{
    return m_file.tell();
}

long TagStream::length()
{
    return m_length;
}

TagLib::ByteVector TagStream::readBlock(unsigned long length)
{
    if (isExhausted())
        return {};
    TagLib::ByteVector block = m_file.readBlock(std::min(length, m_bytesLeft));
    --m_readsLeft;
    m_bytesLeft -= block.size();
    if (!block.isEmpty())
        m_defuser.defuse(block.data(), block.size());
    return block;
}

void TagStream::seek(long offset, Position position)
{
    // TagLib may go on stepping through a large file in small pieces; that no longer costs a call into the system.
    if (!isExhausted())
        m_file.seek(offset, position);
}

void TagStream::clear()
{
    m_file.clear();
}

void TagStream::writeBlock(const TagLib::ByteVector&) { }

void TagStream::insert(const TagLib::ByteVector&, unsigned long, unsigned long) { }

void TagStream::removeBlock(unsigned long, unsigned long) { }

void TagStream::truncate(long) { }
