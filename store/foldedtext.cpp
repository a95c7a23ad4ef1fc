// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/foldedtext.h"

#include "store/growth.h"

#include <algorithm>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

constexpr int greatestBytes = 1 << 30;

// Bytes that are compared at a time.
constexpr size_t wideBlock = 64;

struct Utf8Lead
{
    int continuations;
    quint32 bits;
    // What takes fewer bytes must not be written with as many.
    quint32 least;
};

// Without continuations for a byte that cannot begin a longer character.
Utf8Lead leadOf(uchar byte)
{
    if (byte >= 0xc2 && byte <= 0xdf)
        return { 1, byte & 0x1fU, 0x80 };
    if (byte >= 0xe0 && byte <= 0xef)
        return { 2, byte & 0x0fU, 0x800 };
    if (byte >= 0xf0 && byte <= 0xf4)
        return { 3, byte & 0x07U, 0x10000 };
    return { 0, 0, 0 };
}

bool isUtf8(std::string_view text)
{
    for (size_t i = 0; i < text.size(); ++i) {
        const uchar byte = uchar(text[i]);
        if (byte < 0x80)
            continue;
        const Utf8Lead lead = leadOf(byte);
        if (lead.continuations == 0 || i + lead.continuations >= text.size())
            return false;
        quint32 character = lead.bits;
        for (int k = 0; k < lead.continuations; ++k) {
            const uchar next = uchar(text[++i]);
            if ((next & 0xc0) != 0x80)
                return false;
            character = (character << 6) | (next & 0x3fU);
        }
        const bool isSurrogate = character >= 0xd800 && character <= 0xdfff;
        if (character < lead.least || character > 0x10ffff || isSurrogate)
            return false;
    }
    return true;
}

#ifdef __SSE2__
/// The places at which an occurrence may begin: the first and the last byte are right.
class OccurrencePlaces final
{
public:
    explicit OccurrencePlaces(std::string_view wanted)
        : m_first(_mm_set1_epi8(wanted.front()))
        , m_last(_mm_set1_epi8(wanted.back()))
        , m_lastOffset(wanted.size() - 1)
    {
    }

    // A bit for each of the block's places, the first one's lowest. So many bytes more are read as a word is long.
    quint64 inBlock(const char* block) const
    {
        const __m128i part1 = inPart(block);
        const __m128i part2 = inPart(block + 16);
        const __m128i part3 = inPart(block + 32);
        const __m128i part4 = inPart(block + 48);
        if (bits(_mm_or_si128(_mm_or_si128(part1, part2), _mm_or_si128(part3, part4))) == 0)
            return 0;
        return bits(part1) | bits(part2) << 16U | bits(part3) << 32U | bits(part4) << 48U;
    }

private:
    static __m128i load(const char* bytes)
    {
        return _mm_loadu_si128(static_cast<const __m128i*>(static_cast<const void*>(bytes)));
    }
    static quint64 bits(__m128i bytes) { return quint64(uint(_mm_movemask_epi8(bytes))); }
    __m128i inPart(const char* part) const
    {
        return _mm_and_si128(_mm_cmpeq_epi8(load(part), m_first), _mm_cmpeq_epi8(load(part + m_lastOffset), m_last));
    }

    __m128i m_first;
    __m128i m_last;
    size_t m_lastOffset;
};
#endif

// Calls `visit` with the place of an occurrence and goes on at the place that it returns.
template <typename Visitor>
void forEachOccurrence(std::string_view text, std::string_view wanted, const Visitor& visit)
{
    size_t place = 0;
#ifdef __SSE2__
    const OccurrencePlaces places(wanted);
    const auto isWanted = [&](size_t found) {
        return wanted.size() <= 2 || std::memcmp(text.data() + found + 1, wanted.data() + 1, wanted.size() - 2) == 0;
    };
    while (place + wanted.size() - 1 + wideBlock <= text.size()) {
        const size_t block = place;
        place += wideBlock;
        quint64 mask = places.inBlock(text.data() + block);
        while (mask != 0) {
            const size_t found = block + qCountTrailingZeroBits(mask);
            const size_t resume = isWanted(found) ? visit(found) : found + 1;
            if (resume >= block + wideBlock) {
                place = resume;
                break;
            }
            mask &= ~quint64(0) << (resume - block);
        }
    }
#endif
    while ((place = text.find(wanted, place)) != std::string_view::npos)
        place = visit(place);
}

} // namespace

FoldedText::FoldedText()
    : m_starts{ 0 }
{
}

void FoldedText::reserve(size_t rows)
{
    m_starts.reserve(rows + 1);
}

bool FoldedText::append(std::string_view text)
{
    text = text.substr(0, text.find('\0'));
    const int start = m_text.size();
    if (text.size() >= size_t(greatestBytes - start))
        return false;
    const int end = start + int(text.size()) + 1;
    // Large blocks are moved by the system without a copy.
    if (end > m_text.capacity())
        m_text.reserve(int(nextCapacity(size_t(end))));
    m_text.resize(end);
    char* target = m_text.data() + start;
    uchar allBytes = 0;
    for (const char byte : text) {
        allBytes |= uchar(byte);
        *target++ = foldedByte(byte);
    }
    *target = '\0';
    if (allBytes >= 0x80 && !isUtf8(text)) {
        m_text.resize(start);
        return false;
    }
    appendSparingly(m_starts, quint32(end));
    return true;
}

void FoldedText::squeeze()
{
    m_text.squeeze();
    m_starts.shrink_to_fit();
}

std::string_view FoldedText::row(size_t index) const
{
    return { m_text.constData() + m_starts[index], m_starts[index + 1] - m_starts[index] - 1 };
}

size_t FoldedText::bytes() const
{
    return size_t(m_text.capacity()) + m_starts.capacity() * sizeof(quint32);
}

void FoldedText::find(const LikePattern& pattern, const RowRange& range, RowSet& hits) const
{
    const std::string_view anchor = pattern.anchor();
    if (anchor.empty()) {
        for (size_t index = range.begin; index < range.end; ++index) {
            if (pattern.matches(row(index)))
                hits.insert(index);
        }
        return;
    }
    const bool isPlain = pattern.isPlain();
    const bool isRigid = pattern.isRigid();
    size_t index = range.begin;
    const size_t start = m_starts[range.begin];
    const std::string_view text(m_text.constData() + start, m_starts[range.end] - start);
    forEachOccurrence(text, anchor, [&](size_t place) -> size_t {
        const size_t position = start + place;
        index = rowAt(position, index);
        const bool isHit = isPlain
            || (isRigid ? pattern.matchesAround(row(index), position - m_starts[index]) : pattern.matches(row(index)));
        if (isHit)
            hits.insert(index);
        // One match in a row is enough; without, another occurrence may do.
        return isHit || !isRigid ? m_starts[index + 1] - start : place + 1;
    });
}

bool FoldedText::isMatch(const LikePattern& pattern, size_t index) const
{
    return holdsAnchor(pattern.anchor(), index) && (pattern.isPlain() || pattern.matches(row(index)));
}

bool FoldedText::holdsAnchor(std::string_view anchor, size_t index) const
{
    if (anchor.empty())
        return true;
    const size_t start = m_starts[index];
    const size_t length = m_starts[index + 1] - start;
    // With some bytes of the next rows, so that the last ones of this row, too, are compared many at a time.
    const size_t visible = std::min(length + anchor.size() + wideBlock, size_t(m_text.size()) - start);
    const std::string_view text(m_text.constData() + start, visible);
    bool isFound = false;
    forEachOccurrence(text, anchor, [&](size_t place) {
        isFound = isFound || place < length;
        return visible;
    });
    return isFound;
}

// The row of a position that is not before the row `from`: a few steps when it is near, as it is for common words.
size_t FoldedText::rowAt(size_t position, size_t from) const
{
    // The very row, or the next: no more steps.
    if (position < m_starts[from + 1])
        return from;
    if (from + 2 < m_starts.size() && position < m_starts[from + 2])
        return from + 1;
    size_t step = 1;
    while (from + step < rows() && m_starts[from + step] <= position) {
        from += step;
        step *= 2;
    }
    const auto begin = m_starts.begin() + std::ptrdiff_t(from);
    const auto end = m_starts.begin() + std::ptrdiff_t(std::min(from + step, rows()));
    return size_t(std::upper_bound(begin, end, position) - m_starts.begin()) - 1;
}
