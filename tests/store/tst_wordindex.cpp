// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/wordindex.h"
#include "tests/store/textfixture.h"

#include <QtTest>

#include <limits>

namespace {

constexpr size_t anyBytes = std::numeric_limits<size_t>::max() / 2;

bool never()
{
    return false;
}

} // namespace

class WordIndexTest : public QObject
{
    Q_OBJECT

private slots:
    void findsTheRowsThatTheTextsMatch_data();
    void findsTheRowsThatTheTextsMatch();
    void termsWithoutAPieceWithinAWordCannotBeFound_data();
    void termsWithoutAPieceWithinAWordCannotBeFound();
    void wildcardsMayStandForWhatIsBetweenWords();
    void candidatesHoldAllPieces();
    void pieceOfSeveralWordsLeavesTheCandidates();
    void hitsAreAddedToOthers();
    void columnWithoutWordsHasNoHits();
    void frequentWordTakesABitForEachRow();
    void isNotMadeOfMoreBytesThanAllowed();
    void makingCanBeCancelled();
};

void WordIndexTest::findsTheRowsThatTheTextsMatch_data()
{
    QTest::addColumn<QString>("term");
    for (const char* term : { "drum", "DRUMS", "d", "rum", "take", "take7", "99", "déjà", "j", "vu,", ",", "-", "漢",
             "x", "absent", "o", "d_um", "dr%", "d%p", "p_of", "x_x", "take_9", "_vu", "漢%x", "a%b%c" })
        QTest::newRow(term) << QString(term);
}

void WordIndexTest::findsTheRowsThatTheTextsMatch()
{
    QFETCH(QString, term);
    const FoldedText texts = randomTexts(20000, 1);
    const std::optional<WordIndex> index = WordIndex::make(texts, anyBytes, never);
    QVERIFY(index);
    QCOMPARE(index->rows(), texts.rows());

    QVERIFY(WordIndex::canFind(pattern(term)));
    RowSet hits(texts.rows());
    RowSet candidates(texts.rows());
    index->find(pattern(term), hits, candidates);

    const RowSet expected = matchingRows(texts, pattern(term));
    QVERIFY(expected.includes(hits, { 0, texts.rows() }));
    QVERIFY(!pattern(term).isPlain() || candidates.count() == 0);
    candidates.intersect(expected);
    hits.unite(candidates);
    QVERIFY(rowsOf(hits) == rowsOf(expected));
}

void WordIndexTest::termsWithoutAPieceWithinAWordCannotBeFound_data()
{
    QTest::addColumn<QString>("term");
    QTest::addColumn<bool>("canBeFound");
    QTest::newRow("a wildcard for one character") << "dr_m" << true;
    QTest::newRow("a wildcard at the end") << "drum%" << true;
    QTest::newRow("nothing but wildcards") << "%_" << false;
    QTest::newRow("a space") << "drum loop" << false;
    QTest::newRow("another white space") << "drum\tloop" << true;
    QTest::newRow("a word") << "drum" << true;
}

void WordIndexTest::termsWithoutAPieceWithinAWordCannotBeFound()
{
    QFETCH(QString, term);
    QTEST(WordIndex::canFind(pattern(term)), "canBeFound");
}

void WordIndexTest::wildcardsMayStandForWhatIsBetweenWords()
{
    FoldedText texts;
    for (const char* text : { "drum loop", "drumxloop", "drum", "loop drum", "a drum_loop", "other" })
        texts.append(text);
    const std::optional<WordIndex> index = WordIndex::make(texts, anyBytes, never);
    RowSet hits(texts.rows());
    RowSet candidates(texts.rows());

    index->find(pattern("m_loop"), hits, candidates);

    QVERIFY(rowsOf(hits) == (std::vector<size_t>{ 1 }));
    QVERIFY(rowsOf(candidates) == (std::vector<size_t>{ 0, 3, 4 }));
}

void WordIndexTest::candidatesHoldAllPieces()
{
    FoldedText texts;
    for (const char* text : { "drum loop", "drum", "loop drum", "drum other", "drumloop", "loop" })
        texts.append(text);
    const std::optional<WordIndex> index = WordIndex::make(texts, anyBytes, never);
    RowSet hits(texts.rows());
    RowSet candidates(texts.rows());

    index->find(pattern("drum%oo"), hits, candidates);

    QVERIFY(rowsOf(hits) == (std::vector<size_t>{ 4 }));
    QVERIFY(rowsOf(candidates) == (std::vector<size_t>{ 0, 2 }));
}

void WordIndexTest::pieceOfSeveralWordsLeavesTheCandidates()
{
    FoldedText texts;
    texts.append("drum a b");
    texts.append("other");
    const std::optional<WordIndex> index = WordIndex::make(texts, anyBytes, never);
    RowSet hits(texts.rows());
    RowSet candidates(texts.rows());

    index->find(pattern("drum%a b"), hits, candidates);

    QCOMPARE(hits.count(), 0);
    QVERIFY(rowsOf(candidates) == (std::vector<size_t>{ 0 }));
}

void WordIndexTest::hitsAreAddedToOthers()
{
    FoldedText texts;
    texts.append("drum");
    texts.append("loop");
    const std::optional<WordIndex> index = WordIndex::make(texts, anyBytes, never);
    // There may be rows that came later.
    RowSet hits(100);
    hits.insert(1);
    hits.insert(99);

    RowSet candidates(100);

    index->find(pattern("drum"), hits, candidates);

    QVERIFY(rowsOf(hits) == (std::vector<size_t>{ 0, 1, 99 }));
    QCOMPARE(candidates.count(), 0);
}

void WordIndexTest::columnWithoutWordsHasNoHits()
{
    FoldedText texts;
    texts.append("");
    texts.append(" __ ");
    const std::optional<WordIndex> index = WordIndex::make(texts, anyBytes, never);
    QVERIFY(index);
    RowSet hits(2);
    RowSet candidates(2);

    index->find(pattern("a"), hits, candidates);

    QCOMPARE(hits.count(), 0);
    QCOMPARE(candidates.count(), 0);
}

void WordIndexTest::frequentWordTakesABitForEachRow()
{
    constexpr size_t rows = 80000;
    FoldedText texts;
    for (size_t row = 0; row < rows; ++row)
        texts.append("drum loop drum");

    const std::optional<WordIndex> index = WordIndex::make(texts, anyBytes, never);

    QVERIFY(index->bytes() >= 2 * rows / 8);
    QVERIFY(index->bytes() < 2 * rows / 8 + 1000);
}

void WordIndexTest::isNotMadeOfMoreBytesThanAllowed()
{
    const FoldedText texts = randomTexts(20000, 2);
    const std::optional<WordIndex> index = WordIndex::make(texts, anyBytes, never);
    QVERIFY(index);
    const size_t bytes = index->bytes();

    QVERIFY(WordIndex::make(texts, bytes, never));
    QVERIFY(!WordIndex::make(texts, bytes - 1, never));
    QVERIFY(!WordIndex::make(texts, bytes / 10, never));
    QVERIFY(!WordIndex::make(texts, 0, never));
}

void WordIndexTest::makingCanBeCancelled()
{
    const FoldedText texts = randomTexts(20000, 3);
    int questions = 0;

    QVERIFY(!WordIndex::make(texts, anyBytes, [&]() { return ++questions == 30; }));
    QCOMPARE(questions, 30);
}

QTEST_GUILESS_MAIN(WordIndexTest)

#include "tst_wordindex.moc"
