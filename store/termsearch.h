// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/foldedtext.h"
#include "store/indexedview.h"
#include "store/rowset.h"
#include "store/wordindex.h"

#include <vector>

/// A column that lookups search.
struct SearchedColumn
{
    const FoldedText* texts = nullptr;
    /// Of the first rows of the texts, or null.
    const WordIndex* words = nullptr;
};

/// Finds the rows in which all terms of a lookup occur, each in any of the columns; a negated one in none of them.
///
/// Terms that are looked for among words come first, then the texts are searched for the others, those in few rows
/// first: what they leave is looked at row by row.
///
/// Owner: the stack of one lookup, as long as columns and terms stay. Thread: any; all processors search.
class TermSearch final
{
public:
    TermSearch(std::vector<SearchedColumn> columns, const std::vector<IndexedView::Term>& terms);

    /// Takes out of the set, which has a row for each text, all rows that do not match.
    void apply(RowSet& rows) const;

private:
    /// A term, and the columns in which it is looked for, those with most hits first.
    struct Search
    {
        const IndexedView::Term* term = nullptr;
        std::vector<SearchedColumn> columns;
        // How many of some hundred rows it leaves.
        size_t sampledRows = 0;
        // Of so many rows, at most one is left where it is quicker to look at each of these by itself.
        size_t rowsPerLook = 0;
    };

    static bool isFound(const Search& search, size_t row);
    static void keep(const Search& search, const RowSet& hits, const RowRange& range, RowSet& rows);
    static bool hasWords(const Search& search);
    static void applyWords(const Search& search, RowSet& rows);
    static void applyTexts(const Search& search, const RowRange& range, RowSet& rows, RowSet& hits);

    std::vector<size_t> sampleOfRows() const;
    Search sampledSearch(const IndexedView::Term& term, const std::vector<size_t>& sample) const;

    std::vector<SearchedColumn> m_columns;
    std::vector<Search> m_searches;
};
