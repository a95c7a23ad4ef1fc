// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/termsearch.h"
#include "tests/store/textfixture.h"

#include <QtTest>

#include <algorithm>
#include <limits>

namespace {

constexpr size_t rowsCount = 30000;
// Rows that came after the words were made.
constexpr size_t addedRows = 500;

std::optional<WordIndex> wordsOf(const FoldedText& texts)
{
    return WordIndex::make(texts, std::numeric_limits<size_t>::max() / 2, []() { return false; });
}

std::vector<IndexedView::Term> termsOf(const QString& lookup)
{
    std::vector<IndexedView::Term> terms;
    for (const QString& text : lookup.split(' '))
        terms.push_back({ pattern(text.startsWith('!') ? text.mid(1) : text), text.startsWith('!') });
    return terms;
}

FoldedText withMoreRows(FoldedText texts, uint seed)
{
    const FoldedText more = randomTexts(addedRows, seed);
    for (size_t row = 0; row < more.rows(); ++row)
        texts.append(more.row(row));
    return texts;
}

// Every row but each seventh, as if others had been filtered away.
RowSet mostRows()
{
    RowSet rows(rowsCount + addedRows);
    for (size_t row = 0; row < rows.size(); ++row) {
        if (row % 7 != 0)
            rows.insert(row);
    }
    return rows;
}

} // namespace

class TermSearchTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void rowsAreThoseOfEachLookedAtByItself_data();
    void rowsAreThoseOfEachLookedAtByItself();
    void withoutColumnsNoTermIsFound();

private:
    RowSet expectedRows(const std::vector<IndexedView::Term>& terms) const;

    FoldedText m_libraries;
    FoldedText m_descriptions;
    std::optional<WordIndex> m_libraryWords;
    std::optional<WordIndex> m_descriptionWords;
};

void TermSearchTest::initTestCase()
{
    const FoldedText libraries = randomTexts(rowsCount, 1);
    const FoldedText descriptions = randomTexts(rowsCount, 2);
    m_libraryWords = wordsOf(libraries);
    m_descriptionWords = wordsOf(descriptions);
    QVERIFY(m_libraryWords && m_descriptionWords);
    m_libraries = withMoreRows(libraries, 3);
    m_descriptions = withMoreRows(descriptions, 4);
}

RowSet TermSearchTest::expectedRows(const std::vector<IndexedView::Term>& terms) const
{
    RowSet rows = mostRows();
    rows.forEach([&](size_t row) {
        const bool isHit = std::all_of(terms.begin(), terms.end(), [&](const IndexedView::Term& term) {
            const bool isFound
                = term.pattern.matches(m_libraries.row(row)) || term.pattern.matches(m_descriptions.row(row));
            return isFound != term.isNegated;
        });
        if (!isHit)
            rows.remove(row);
    });
    return rows;
}

void TermSearchTest::rowsAreThoseOfEachLookedAtByItself_data()
{
    QTest::addColumn<bool>("hasLibraryWords");
    QTest::addColumn<bool>("hasDescriptionWords");
    QTest::addColumn<QString>("lookup");
    for (const char* lookup :
        { "drum", "absent", "take77", "!drum", "!x", "drum loop", "drum !loop", "take1 drum vu,", "take12 !of windy",
            "d_um", "d%p of", "!d%p", "% x", "_ !take9", "m_loop", "take1%x", "!take1%x drum", "o_%_vu" }) {
        for (const int words : { 0, 1, 2, 3 }) {
            QTest::addRow("%s, words %d", lookup, words) << ((words & 1) != 0) << ((words & 2) != 0) << QString(lookup);
        }
    }
}

void TermSearchTest::rowsAreThoseOfEachLookedAtByItself()
{
    QFETCH(bool, hasLibraryWords);
    QFETCH(bool, hasDescriptionWords);
    QFETCH(QString, lookup);
    const std::vector<IndexedView::Term> terms = termsOf(lookup);
    const TermSearch search({ { &m_libraries, hasLibraryWords ? &*m_libraryWords : nullptr },
                                { &m_descriptions, hasDescriptionWords ? &*m_descriptionWords : nullptr } },
        terms);

    RowSet rows = mostRows();
    search.apply(rows);

    QVERIFY(rowsOf(rows) == rowsOf(expectedRows(terms)));
}

void TermSearchTest::withoutColumnsNoTermIsFound()
{
    const std::vector<IndexedView::Term> terms = termsOf("drum");
    RowSet rows = mostRows();

    TermSearch({}, terms).apply(rows);

    QCOMPARE(rows.count(), 0);
}

QTEST_GUILESS_MAIN(TermSearchTest)

#include "tst_termsearch.moc"
