// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/foldedtext.h"

#include <string_view>
#include <vector>

/// Gives each different word a number, from 0 in the order of their first use.
///
/// A hash table of the numbers alone, with open addressing: a word takes its UTF-8 and 9 to 22 bytes, where a map of
/// the standard library takes some 70 more.
/// Owner: the one who makes a WordIndex. Thread: a value.
class WordNumbers final
{
public:
    static constexpr quint32 noNumber = ~quint32(0);

    WordNumbers();

    /// The word's number, a new one if need be. `noNumber` when there are too many words, or one is not UTF-8. May
    /// throw std::bad_alloc.
    quint32 add(std::string_view word);
    /// The number of a word that was added.
    quint32 find(std::string_view word) const { return m_slots[slotOf(word)]; }

    size_t count() const { return m_words.rows(); }
    size_t bytes() const { return m_words.bytes() + m_slots.capacity() * sizeof(quint32); }
    /// The words by their numbers; nothing is left.
    FoldedText takeWords();

private:
    size_t slotOf(std::string_view word) const;
    void grow();

    FoldedText m_words;
    // A power of two, more than there are words.
    std::vector<quint32> m_slots;
};
