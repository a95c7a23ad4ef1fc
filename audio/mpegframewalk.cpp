// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/mpegframewalk.h"

#include "audio/inputfile.h"

MpegFrameWalk::MpegFrameWalk(const InputFile& file, qint64 offset, qint64 sample, int pieceSize)
    : m_file(&file)
    , m_piece(std::size_t(pieceSize))
{
    m_frame = { offset, sample, headerAt(offset) };
    m_hasEnded = !m_frame.header.isValid();
}

bool MpegFrameWalk::next()
{
    if (m_hasEnded)
        return false;
    const qint64 offset = m_frame.offset + m_frame.header.frameSize();
    const MpegFrameHeader header = headerAt(offset);
    if (!header.isValid() || !header.isOfSameKind(m_frame.header)) {
        m_hasEnded = true;
        return false;
    }
    m_frame = { offset, m_frame.endSample(), header };
    return true;
}

MpegFrameHeader MpegFrameWalk::headerAt(qint64 offset)
{
    if (offset < m_pieceOffset || offset + MpegFrameHeader::length > m_pieceOffset + m_pieceLength) {
        m_pieceOffset = offset;
        m_pieceLength = m_file->peek(offset, m_piece.data(), int(m_piece.size()));
    }
    if (m_pieceLength < MpegFrameHeader::length)
        return {};
    return MpegFrameHeader(m_piece.data() + (offset - m_pieceOffset));
}
