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
    void termsThatMayGoBeyondAWordCannotBeFound_data();
    void termsThatMayGoBeyondAWordCannotBeFound();
    void hitsAreAddedToOthers();
    void columnWithoutWordsHasNoHits();
    void frequentWordTakesABitForEachRow();
    void isNotMadeOfMoreBytesThanAllowed();
    void makingCanBeCancelled();
};

void WordIndexTest::findsTheRowsThatTheTextsMatch_data()
{
    QTest::addColumn<QString>("term");
    for (const char* term :
        { "drum", "DRUMS", "d", "rum", "take", "take7", "99", "déjà", "j", "vu,", ",", "-", "漢", "x", "absent", "o" })
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
    index->find(pattern(term), hits);

    QVERIFY(rowsOf(hits) == rowsOf(matchingRows(texts, pattern(term))));
}

void WordIndexTest::termsThatMayGoBeyondAWordCannotBeFound_data()
{
    QTest::addColumn<QString>("term");
    QTest::addColumn<bool>("canBeFound");
    QTest::newRow("a wildcard for one character") << "dr_m" << false;
    QTest::newRow("a wildcard at the end") << "drum%" << false;
    QTest::newRow("nothing but a wildcard") << "%" << false;
    QTest::newRow("a space") << "drum loop" << false;
    QTest::newRow("another white space") << "drum\tloop" << true;
    QTest::newRow("a word") << "drum" << true;
}

void WordIndexTest::termsThatMayGoBeyondAWordCannotBeFound()
{
    QFETCH(QString, term);
    QTEST(WordIndex::canFind(pattern(term)), "canBeFound");
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

    index->find(pattern("drum"), hits);

    QVERIFY(rowsOf(hits) == (std::vector<size_t>{ 0, 1, 99 }));
}

void WordIndexTest::columnWithoutWordsHasNoHits()
{
    FoldedText texts;
    texts.append("");
    texts.append(" __ ");
    const std::optional<WordIndex> index = WordIndex::make(texts, anyBytes, never);
    QVERIFY(index);
    RowSet hits(2);

    index->find(pattern("a"), hits);

    QCOMPARE(hits.count(), 0);
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
