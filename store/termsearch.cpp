// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/termsearch.h"

#include "store/rowranges.h"

#include <algorithm>
#include <utility>

namespace {

// Where one of so many rows is left, looking at each of these by itself is as quick as looking through the words.
constexpr size_t rowsPerFew = 200;

// So many are looked at before another thread has begun.
constexpr size_t fewCandidates = 2000;

// Marks those of the sample that match, and returns how many do.
size_t markMatches(const SearchedColumn& column, const LikePattern& pattern, const std::vector<size_t>& sample,
    std::vector<bool>& isFound)
{
    size_t count = 0;
    for (size_t i = 0; i < sample.size(); ++i) {
        if (!column.texts->isMatch(pattern, sample[i]))
            continue;
        isFound[i] = true;
        ++count;
    }
    return count;
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
    std::vector<Pending> pending;
    for (const Search& search : m_searches) {
        Pending term = lookThroughWords(search, rows);
        if (term.columns.empty())
            keep(search, term.hits, { 0, rows.size() }, rows);
        else
            pending.push_back(std::move(term));
    }
    if (pending.empty())
        return;
    // All terms range by range: the texts of a range are in the processor's cache when the second term is searched.
    forEachRowRange(rows.size(), [&](const RowRange& range) {
        for (Pending& term : pending)
            searchTexts(term, range, rows);
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
    std::vector<bool> isFound(sample.size());
    for (const SearchedColumn& column : m_columns)
        counted.emplace_back(markMatches(column, term.pattern, sample, isFound), column);
    std::stable_sort(counted.begin(), counted.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    Search search{ &term, {}, 0, rowsPerLook };
    for (const auto& entry : counted)
        search.columns.push_back(entry.second);
    const auto found = size_t(std::count(isFound.begin(), isFound.end(), true));
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

// What is left to be searched of a term when its words are looked through.
TermSearch::Pending TermSearch::lookThroughWords(const Search& search, const RowSet& rows)
{
    Pending pending{ &search, search.columns, RowSet(rows.size()) };
    const bool areFew = size_t(rows.count()) * rowsPerFew <= rows.size();
    if (areFew || !WordIndex::canFind(search.term->pattern))
        return pending;
    RowSet hits(rows.size());
    if (!addWordHits(search, rows, hits))
        return pending;
    pending.hits = std::move(hits);
    const auto hasWords = [](const SearchedColumn& column) {
        return column.words != nullptr;
    };
    pending.columns.erase(
        std::remove_if(pending.columns.begin(), pending.columns.end(), hasWords), pending.columns.end());
    return pending;
}

// False when too many rows would have to be looked at by themselves.
bool TermSearch::addWordHits(const Search& search, const RowSet& rows, RowSet& hits)
{
    return std::all_of(search.columns.begin(), search.columns.end(), [&](const SearchedColumn& column) {
        return column.words == nullptr || addWordHits(search, column, rows, hits);
    });
}

bool TermSearch::addWordHits(const Search& search, const SearchedColumn& column, const RowSet& rows, RowSet& hits)
{
    RowSet candidates(rows.size());
    column.words->find(search.term->pattern, hits, candidates);
    // Few rows came after the words.
    for (size_t row = column.words->rows(); row < rows.size(); ++row)
        candidates.insert(row);
    candidates.subtract(hits, { 0, rows.size() });
    candidates.intersect(rows);
    const auto count = size_t(candidates.count());
    if (count * search.rowsPerLook > rows.size())
        return false;
    // Most of them hold the anchor, hence it is not looked for first.
    const auto lookAt = [&](const RowRange& range) {
        candidates.forEach(range, [&](size_t row) {
            if (search.term->pattern.matches(column.texts->row(row)))
                hits.insert(row);
        });
    };
    if (count < fewCandidates)
        lookAt({ 0, rows.size() });
    else
        forEachRowRange(rows.size(), lookAt);
    return true;
}

// Where few rows of the range are left each is looked at by itself, else the texts of the range are searched through.
void TermSearch::searchTexts(Pending& pending, const RowRange& range, RowSet& rows)
{
    const Search& search = *pending.search;
    if (size_t(rows.count(range)) * search.rowsPerLook < range.end - range.begin) {
        rows.forEach(range, [&](size_t row) {
            if (isFound(search, row) == search.term->isNegated)
                rows.remove(row);
        });
        return;
    }
    for (const SearchedColumn& column : pending.columns) {
        // A word that is in every path need not be looked for in the descriptions.
        if (pending.hits.includes(rows, range))
            break;
        column.texts->find(search.term->pattern, range, pending.hits);
    }
    keep(search, pending.hits, range, rows);
}
