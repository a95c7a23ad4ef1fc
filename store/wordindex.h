// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/foldedtext.h"
#include "store/likepattern.h"
#include "store/rowset.h"

#include <functional>
#include <optional>
#include <vector>

/// The words of one text column, each held once, with the rows in which it stands. Looking through the words, which are
/// far fewer than the texts, finds the rows of a term in a fraction of the time.
///
/// Words end at spaces, at which lookups are split into terms, and at underscores, which stand for any character in a
/// term: no piece of a term between two wildcards goes beyond a word.
///
/// Memory: a word takes its UTF-8 and 9 bytes, and 4 bytes for each row in which it stands, or an eighth of a byte for
/// each row of the column where that is less. Owner: WordIndexes. Thread: a value.
class WordIndex final
{
public:
    /// Asked from time to time; true ends the making.
    using IsCancelled = std::function<bool()>;

    /// Takes one to two seconds for a million texts of ten words. Nothing when it would take more bytes than these;
    /// while it is made, up to twice as many. May throw std::bad_alloc.
    static std::optional<WordIndex> make(const FoldedText& texts, size_t greatestBytes, const IsCancelled& isCancelled);

    /// Whether a row that matches must hold a word with the pattern's anchor in it.
    static bool canFind(const LikePattern& pattern);

    /// Of the column that it was made of.
    size_t rows() const { return m_rows; }
    size_t bytes() const;

    /// Adds to `hits` the rows that match within one word. To `candidates`, which holds none, it adds rows that may
    /// match beyond a word, for a wildcard may stand for what is between two of them: their words hold the anchor, and
    /// where these are many also the pattern's other pieces. No other row matches. Both sets have at least as many
    /// rows. All processors look through the words.
    void find(const LikePattern& pattern, RowSet& hits, RowSet& candidates) const;

private:
    struct FrequentWord
    {
        quint32 number;
        RowSet rows;
    };

    WordIndex() = default;

    void findWithAnchor(const LikePattern& pattern, RowSet& hits, RowSet& candidates) const;
    void addRows(size_t word, RowSet& rows) const;

    FoldedText m_words;
    // By number, where each word's rows begin in the lists, and the end. Those of frequent words are not there.
    std::vector<quint32> m_listStarts;
    std::vector<quint32> m_lists;
    std::vector<FrequentWord> m_frequentWords;
    size_t m_rows = 0;

    friend class WordIndexMaker;
};
