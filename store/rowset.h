// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/rowranges.h"

#include <QtAlgorithms>

#include <vector>

/// A set of row numbers (from 0) of one table, one bit a row. Thread: a value; but threads may insert and remove at
/// once where the rows of each lie in words of its own.
class RowSet final
{
public:
    static constexpr size_t bitsInWord = 64;

    RowSet() = default;
    /// Holds none of `size` rows.
    explicit RowSet(size_t size)
        : m_words((size + bitsInWord - 1) / bitsInWord)
        , m_size(size)
    {
    }

    /// How many rows there are, in the set or not.
    size_t size() const { return m_size; }
    size_t bytes() const { return m_words.capacity() * sizeof(quint64); }
    bool contains(size_t row) const { return ((m_words[row / bitsInWord] >> (row % bitsInWord)) & 1U) != 0; }
    void insert(size_t row) { m_words[row / bitsInWord] |= bit(row); }
    void remove(size_t row) { m_words[row / bitsInWord] &= ~bit(row); }
    /// One more row, which is in the set.
    void append()
    {
        m_words.resize(m_size / bitsInWord + 1);
        insert(m_size++);
    }

    int count() const { return count({ 0, m_size }); }
    /// Of a range, which here and below begins at a multiple of `bitsInWord` and ends at one or with the set.
    int count(const RowRange& range) const
    {
        uint count = 0;
        forEachWord(range, [&](size_t i) { count += bitsOf(m_words[i]); });
        return int(count);
    }
    void clear(const RowRange& range)
    {
        forEachWord(range, [&](size_t i) { m_words[i] = 0; });
    }

    /// Keeps what is in both sets. The sizes are the same, as below.
    void intersect(const RowSet& other) { intersect(other, { 0, m_size }); }
    void intersect(const RowSet& other, const RowRange& range)
    {
        forEachWord(range, [&](size_t i) { m_words[i] &= other.m_words[i]; });
    }
    /// The other set may be of fewer rows.
    void unite(const RowSet& other)
    {
        forEachWord({ 0, other.m_size }, [&](size_t i) { m_words[i] |= other.m_words[i]; });
    }
    void subtract(const RowSet& other, const RowRange& range)
    {
        forEachWord(range, [&](size_t i) { m_words[i] &= ~other.m_words[i]; });
    }

    /// Whether all rows of the other set are in this one.
    bool includes(const RowSet& other, const RowRange& range) const
    {
        quint64 missing = 0;
        forEachWord(range, [&](size_t i) { missing |= other.m_words[i] & ~m_words[i]; });
        return missing == 0;
    }

    /// Calls `visit` with each row of the set, in ascending order; the row may be removed meanwhile.
    template <typename Visitor>
    void forEach(const Visitor& visit) const
    {
        forEach({ 0, m_size }, visit);
    }
    template <typename Visitor>
    void forEach(const RowRange& range, const Visitor& visit) const
    {
        forEachWord(range, [&](size_t i) {
            for (quint64 word = m_words[i]; word != 0; word &= word - 1)
                visit(i * bitsInWord + qCountTrailingZeroBits(word));
        });
    }

private:
    template <typename Visitor>
    static void forEachWord(const RowRange& range, const Visitor& visit)
    {
        for (size_t i = range.begin / bitsInWord; i * bitsInWord < range.end; ++i)
            visit(i);
    }
    // Adds up neighbours of one bit, of two and of four, then all bytes in the highest one. Without the processor's own
    // instruction, which not every one has, the compiler's function takes twice as long.
    static uint bitsOf(quint64 word)
    {
        word -= (word >> 1U) & Q_UINT64_C(0x5555555555555555);
        word = (word & Q_UINT64_C(0x3333333333333333)) + ((word >> 2U) & Q_UINT64_C(0x3333333333333333));
        word = (word + (word >> 4U)) & Q_UINT64_C(0x0f0f0f0f0f0f0f0f);
        return uint((word * Q_UINT64_C(0x0101010101010101)) >> 56U);
    }
    static quint64 bit(size_t row) { return Q_UINT64_C(1) << (row % bitsInWord); }

    std::vector<quint64> m_words;
    size_t m_size = 0;
};
