// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/termsearch.h"

#include "store/rowranges.h"

#include <algorithm>
#include <utility>

namespace {

// Where one of so many rows is left, looking at each of these by itself is as quick as looking through the words.
constexpr size_t rowsPerFew = 200;

size_t countMatches(const SearchedColumn& column, const LikePattern& pattern, const std::vector<size_t>& sample)
{
    const auto isHit = [&](size_t row) {
        return column.texts->isMatch(pattern, row);
    };
    return size_t(std::count_if(sample.begin(), sample.end(), isHit));
}

} // namespace

TermSearch::TermSearch(std::vector<SearchedColumn> columns, const std::vector<IndexedView::Term>& terms)
    : m_columns(std::move(columns))
{
    const std::vector<size_t> sample = sampleOfRows();
    m_searches.reserve(terms.size());
    for (const IndexedView::Term& term : terms)
        m_searches.push_back(sampledSearch(term, sample));
    // Few rows are left for the other terms then.
    std::stable_sort(m_searches.begin(), m_searches.end(),
        [](const Search& a, const Search& b) { return a.sampledRows < b.sampledRows; });
}

void TermSearch::apply(RowSet& rows) const
{
    std::vector<const Search*> others;
    for (const Search& search : m_searches) {
        if (hasWords(search) && size_t(rows.count()) * rowsPerFew > rows.size())
            applyWords(search, rows);
        else
            others.push_back(&search);
    }
    if (others.empty())
        return;
    RowSet hits(rows.size());
    // All terms range by range: the texts of a range are in the processor's cache when the second term is searched.
    forEachRowRange(rows.size(), [&](const RowRange& range) {
        for (const Search* search : others)
            applyTexts(*search, range, rows, hits);
    });
}

// Some hundred rows all over the table.
std::vector<size_t> TermSearch::sampleOfRows() const
{
    constexpr size_t sampleSize = 400;
    const size_t rows = m_columns.empty() ? 0 : m_columns.front().texts->rows();
    std::vector<size_t> sample;
    for (size_t row = 0; row < rows; row += rows / sampleSize + 1)
        sample.push_back(row);
    return sample;
}

TermSearch::Search TermSearch::sampledSearch(const IndexedView::Term& term, const std::vector<size_t>& sample) const
{
    constexpr size_t rowsPerLook = 5;
    // To search a text through takes longer the more is found; a look ends sooner.
    constexpr size_t rowsPerLookForFrequent = 2;
    std::vector<std::pair<size_t, SearchedColumn>> counted;
    for (const SearchedColumn& column : m_columns)
        counted.emplace_back(countMatches(column, term.pattern, sample), column);
    std::stable_sort(counted.begin(), counted.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    Search search{ &term, {}, 0, rowsPerLook };
    for (const auto& entry : counted)
        search.columns.push_back(entry.second);
    const auto found
        = size_t(std::count_if(sample.begin(), sample.end(), [&](size_t row) { return isFound(search, row); }));
    search.sampledRows = term.isNegated ? sample.size() - found : found;
    if (term.pattern.isPlain() && 2 * found > sample.size())
        search.rowsPerLook = rowsPerLookForFrequent;
    return search;
}

bool TermSearch::isFound(const Search& search, size_t row)
{
    return std::any_of(search.columns.begin(), search.columns.end(),
        [&](const SearchedColumn& column) { return column.texts->isMatch(search.term->pattern, row); });
}

void TermSearch::keep(const Search& search, const RowSet& hits, const RowRange& range, RowSet& rows)
{
    if (search.term->isNegated)
        rows.subtract(hits, range);
    else
        rows.intersect(hits, range);
}

bool TermSearch::hasWords(const Search& search)
{
    return WordIndex::canFind(search.term->pattern)
        && std::all_of(search.columns.begin(), search.columns.end(),
            [](const SearchedColumn& column) { return column.words != nullptr; });
}

void TermSearch::applyWords(const Search& search, RowSet& rows)
{
    RowSet hits(rows.size());
    for (const SearchedColumn& column : search.columns) {
        column.words->find(search.term->pattern, hits);
        // Few rows came after the words.
        for (size_t row = column.words->rows(); row < rows.size(); ++row) {
            if (column.texts->isMatch(search.term->pattern, row))
                hits.insert(row);
        }
    }
    keep(search, hits, { 0, rows.size() }, rows);
}

// Where few rows of the range are left each is looked at by itself, else the texts of the range are searched through.
void TermSearch::applyTexts(const Search& search, const RowRange& range, RowSet& rows, RowSet& hits)
{
    if (size_t(rows.count(range)) * search.rowsPerLook < range.end - range.begin) {
        rows.forEach(range, [&](size_t row) {
            if (isFound(search, row) == search.term->isNegated)
                rows.remove(row);
        });
        return;
    }
    hits.clear(range);
    for (const SearchedColumn& column : search.columns) {
        column.texts->find(search.term->pattern, range, hits);
        // A word that is in every path need not be looked for in the descriptions.
        if (hits.includes(rows, range))
            break;
    }
    keep(search, hits, range, rows);
}
