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
/// Terms are looked for among the words of the columns that have them. Then the texts of the others are searched, for
/// the terms with few rows first: what these leave is looked at row by row.
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

    /// A term of which some columns are still to be searched.
    struct Pending
    {
        const Search* search = nullptr;
        std::vector<SearchedColumn> columns;
        // The rows that the other columns have.
        RowSet hits;
    };

    static bool isFound(const Search& search, size_t row);
    static void keep(const Search& search, const RowSet& hits, const RowRange& range, RowSet& rows);
    static Pending lookThroughWords(const Search& search, const RowSet& rows);
    static bool addWordHits(const Search& search, const RowSet& rows, RowSet& hits);
    static bool addWordHits(const Search& search, const SearchedColumn& column, const RowSet& rows, RowSet& hits);
    static void searchTexts(Pending& pending, const RowRange& range, RowSet& rows);

    std::vector<size_t> sampleOfRows() const;
    Search sampledSearch(const IndexedView::Term& term, const std::vector<size_t>& sample) const;

    std::vector<SearchedColumn> m_columns;
    std::vector<Search> m_searches;
};
