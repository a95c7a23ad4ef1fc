// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/wordindex.h"

#include "store/rowranges.h"
#include "store/rowsetpool.h"
#include "store/wordnumbers.h"

#include <algorithm>
#include <climits>
#include <numeric>

namespace {

bool isSeparator(char byte)
{
    return byte == ' ' || byte == '_';
}

constexpr size_t rowsBetweenChecks = 1024;

// To look through so many words is as quick as to look at one row by itself.
constexpr size_t wordsPerCandidate = 50;

// A set of all rows with a bit each is smaller than a list of so many of them.
bool isSetSmaller(size_t listedRows, size_t rows)
{
    return listedRows * sizeof(quint32) > rows / CHAR_BIT;
}

template <typename Visitor>
void forEachWord(std::string_view text, const Visitor& visit)
{
    size_t begin = 0;
    for (size_t end = 0; end <= text.size(); ++end) {
        if (end < text.size() && !isSeparator(text[end]))
            continue;
        if (end > begin)
            visit(text.substr(begin, end - begin));
        begin = end + 1;
    }
}

} // namespace

/// Makes a WordIndex in two passes over the texts: one numbers and counts the words, the other lists their rows.
class WordIndexMaker final
{
public:
    WordIndexMaker(const FoldedText& texts, size_t greatestBytes, const WordIndex::IsCancelled& isCancelled)
        : m_texts(texts)
        , m_greatestBytes(greatestBytes)
        , m_isCancelled(isCancelled)
    {
    }

    std::optional<WordIndex> make()
    {
        m_index.m_rows = m_texts.rows();
        if (!countWords())
            return std::nullopt;
        makeRoom();
        if (m_numbers.bytes() + m_index.bytes() > 2 * m_greatestBytes || !listRows())
            return std::nullopt;
        m_index.m_words = m_numbers.takeWords();
        if (m_index.bytes() > m_greatestBytes)
            return std::nullopt;
        return std::move(m_index);
    }

private:
    bool isEnded(size_t row) const
    {
        return row % rowsBetweenChecks == 0 && (m_numbers.bytes() > m_greatestBytes || m_isCancelled());
    }

    // Each word's number once.
    template <typename Numbering>
    const std::vector<quint32>& wordsOfRow(size_t row, const Numbering& number)
    {
        m_wordsOfRow.clear();
        forEachWord(m_texts.row(row), [&](std::string_view word) { m_wordsOfRow.push_back(number(word)); });
        std::sort(m_wordsOfRow.begin(), m_wordsOfRow.end());
        m_wordsOfRow.erase(std::unique(m_wordsOfRow.begin(), m_wordsOfRow.end()), m_wordsOfRow.end());
        return m_wordsOfRow;
    }

    // Leaves each word's count in the place of its list's start.
    bool countWords()
    {
        std::vector<quint32>& counts = m_index.m_listStarts;
        for (size_t row = 0; row < m_texts.rows(); ++row) {
            if (isEnded(row))
                return false;
            for (const quint32 word : wordsOfRow(row, [this](std::string_view text) { return m_numbers.add(text); })) {
                if (word == WordNumbers::noNumber)
                    return false;
                if (word >= counts.size())
                    counts.resize(word + 1);
                ++counts[word];
            }
        }
        return true;
    }

    void makeRoom()
    {
        std::vector<quint32>& counts = m_index.m_listStarts;
        for (size_t word = 0; word < counts.size(); ++word) {
            if (!isSetSmaller(counts[word], m_index.m_rows))
                continue;
            m_index.m_frequentWords.push_back({ quint32(word), RowSet(m_index.m_rows) });
            counts[word] = 0;
        }
        const quint64 listed = std::accumulate(counts.begin(), counts.end(), quint64(0));
        m_index.m_lists.resize(listed);
        std::exclusive_scan(counts.begin(), counts.end(), counts.begin(), quint32(0));
    }

    // Each start moves on to its list's end, which is the next one's start.
    bool listRows()
    {
        std::vector<quint32>& places = m_index.m_listStarts;
        for (size_t row = 0; row < m_texts.rows(); ++row) {
            if (isEnded(row))
                return false;
            for (const quint32 word : wordsOfRow(row, [this](std::string_view text) { return m_numbers.find(text); })) {
                if (RowSet* rows = rowsOfFrequent(word))
                    rows->insert(row);
                else
                    m_index.m_lists[places[word]++] = quint32(row);
            }
        }
        places.insert(places.begin(), 0);
        return true;
    }

    // Null for other words.
    RowSet* rowsOfFrequent(quint32 word)
    {
        std::vector<WordIndex::FrequentWord>& words = m_index.m_frequentWords;
        const auto found = std::lower_bound(words.begin(), words.end(), word,
            [](const WordIndex::FrequentWord& frequent, quint32 number) { return frequent.number < number; });
        return found != words.end() && found->number == word ? &found->rows : nullptr;
    }

    const FoldedText& m_texts;
    size_t m_greatestBytes;
    const WordIndex::IsCancelled& m_isCancelled;
    WordNumbers m_numbers;
    WordIndex m_index;
    std::vector<quint32> m_wordsOfRow;
};

std::optional<WordIndex> WordIndex::make(const FoldedText& texts, size_t greatestBytes, const IsCancelled& isCancelled)
{
    return WordIndexMaker(texts, greatestBytes, isCancelled).make();
}

bool WordIndex::canFind(const LikePattern& pattern)
{
    const std::string_view anchor = pattern.anchor();
    return !anchor.empty() && std::none_of(anchor.begin(), anchor.end(), isSeparator);
}

size_t WordIndex::bytes() const
{
    size_t bytes = m_words.bytes() + (m_listStarts.capacity() + m_lists.capacity()) * sizeof(quint32);
    for (const FrequentWord& word : m_frequentWords)
        bytes += word.rows.bytes();
    return bytes;
}

void WordIndex::find(const LikePattern& pattern, RowSet& hits, RowSet& candidates) const
{
    findWithAnchor(pattern, hits, candidates);
    for (const LikePattern& piece : pattern.otherPieces()) {
        if (size_t(candidates.count()) * wordsPerCandidate <= m_words.rows())
            return;
        // A piece that goes beyond a word is in none.
        if (!canFind(piece))
            continue;
        RowSet rows(candidates.size());
        findWithAnchor(piece, rows, rows);
        candidates.intersect(rows);
    }
}

void WordIndex::findWithAnchor(const LikePattern& pattern, RowSet& hits, RowSet& candidates) const
{
    const LikePattern anchor = pattern.anchorAlone();
    const auto isHit = [&](size_t word) {
        return pattern.isPlain() || pattern.matches(m_words.row(word));
    };
    RowSet words(m_words.rows());
    RowSetPool hitsOfThreads(m_rows);
    RowSetPool candidatesOfThreads(pattern.isPlain() ? 0 : m_rows);
    forEachRowRange(m_words.rows(), [&](const RowRange& range) {
        m_words.find(anchor, range, words);
        const RowSetPool::Loan rangeHits(hitsOfThreads);
        const RowSetPool::Loan rangeCandidates(candidatesOfThreads);
        words.forEach(range, [&](size_t word) {
            if (m_listStarts[word] < m_listStarts[word + 1])
                addRows(word, isHit(word) ? rangeHits.rows() : rangeCandidates.rows());
        });
    });
    hitsOfThreads.uniteInto(hits);
    candidatesOfThreads.uniteInto(candidates);
    for (const FrequentWord& word : m_frequentWords) {
        if (words.contains(word.number))
            (isHit(word.number) ? hits : candidates).unite(word.rows);
    }
}

void WordIndex::addRows(size_t word, RowSet& rows) const
{
    for (size_t place = m_listStarts[word]; place < m_listStarts[word + 1]; ++place)
        rows.insert(m_lists[place]);
}
