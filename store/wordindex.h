// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/foldedtext.h"
#include "store/likepattern.h"
#include "store/rowset.h"

#include <functional>
#include <optional>
#include <vector>

/// The words of one text column, each held once, with the rows in which it stands. A term that cannot go beyond a word
/// is looked for in the words alone, which are far fewer than the texts: finding it takes a fraction of the time.
///
/// Words end at spaces, at which lookups are split into terms, and at underscores, which stand for any character in a
/// term.
///
/// Memory: a word takes its UTF-8 and 9 bytes, and 4 bytes for each row in which it stands, or an eighth of a byte for
/// each row of the column where that is less. Owner: WordIndexes. Thread: a value.
class WordIndex final
{
public:
    /// Asked from time to time; true ends the making.
    using IsCancelled = std::function<bool()>;

    /// Takes about half a second for a million texts of ten words. Nothing when it would take, then or while it is
    /// made, more bytes than these; may throw std::bad_alloc.
    static std::optional<WordIndex> make(const FoldedText& texts, size_t greatestBytes, const IsCancelled& isCancelled);

    /// Whether what matches does so within one word.
    static bool canFind(const LikePattern& pattern);

    /// Of the column that it was made of.
    size_t rows() const { return m_rows; }
    size_t bytes() const;

    /// Adds all rows that match to `hits`, which has at least as many rows. All processors look through the words.
    void find(const LikePattern& pattern, RowSet& hits) const;

private:
    struct FrequentWord
    {
        quint32 number;
        RowSet rows;
    };

    WordIndex() = default;

    FoldedText m_words;
    // By number, where each word's rows begin in the lists, and the end. Those of frequent words are not there.
    std::vector<quint32> m_listStarts;
    std::vector<quint32> m_lists;
    std::vector<FrequentWord> m_frequentWords;
    size_t m_rows = 0;

    friend class WordIndexMaker;
};
