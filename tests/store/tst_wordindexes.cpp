// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/wordindexes.h"
#include "tests/store/textfixture.h"

#include <QtTest>

#include <limits>

namespace {

constexpr size_t anyBytes = std::numeric_limits<size_t>::max() / 2;

std::map<QString, FoldedText> twoColumns(size_t rows)
{
    return { { "description", randomTexts(rows, 1) }, { "library", randomTexts(rows, 2) } };
}

} // namespace

class WordIndexesTest : public QObject
{
    Q_OBJECT

private slots:
    void eachColumnIsMade();
    void nothingIsThereBefore();
    void columnThatDoesNotFitIsLeftOut();
    void clearGivesAllBack();
    void whatIsBeingMadeMayBeForgotten();
};

void WordIndexesTest::eachColumnIsMade()
{
    WordIndexes indexes;
    const std::map<QString, FoldedText> texts = twoColumns(3000);

    indexes.begin(texts, anyBytes);
    indexes.waitForFinished();

    QVERIFY(indexes.hasBegun());
    for (const auto& [column, columnTexts] : texts) {
        const WordIndex* index = indexes.find(column);
        QVERIFY(index != nullptr);
        RowSet hits(columnTexts.rows());
        RowSet candidates(columnTexts.rows());
        index->find(pattern("take1"), hits, candidates);
        QVERIFY(rowsOf(hits) == rowsOf(matchingRows(columnTexts, pattern("take1"))));
    }
    QVERIFY(indexes.find("filePath") == nullptr);
    QCOMPARE(indexes.bytes(), indexes.find("description")->bytes() + indexes.find("library")->bytes());
}

void WordIndexesTest::nothingIsThereBefore()
{
    const WordIndexes indexes;

    QVERIFY(!indexes.hasBegun());
    QVERIFY(indexes.find("description") == nullptr);
    QCOMPARE(indexes.bytes(), size_t(0));
}

void WordIndexesTest::columnThatDoesNotFitIsLeftOut()
{
    constexpr size_t rows = 30000;
    FoldedText repeated;
    for (size_t row = 0; row < rows; ++row)
        repeated.append("drum");
    WordIndexes indexes;

    indexes.begin({ { "description", randomTexts(rows, 1) }, { "library", repeated } }, rows);
    indexes.waitForFinished();

    QVERIFY(indexes.find("description") == nullptr);
    QVERIFY(indexes.find("library") != nullptr);
    QVERIFY(indexes.bytes() <= rows);
}

void WordIndexesTest::clearGivesAllBack()
{
    WordIndexes indexes;
    indexes.begin(twoColumns(3000), anyBytes);
    indexes.waitForFinished();

    indexes.clear();

    QVERIFY(!indexes.hasBegun());
    QVERIFY(indexes.find("description") == nullptr);
    QCOMPARE(indexes.bytes(), size_t(0));
}

void WordIndexesTest::whatIsBeingMadeMayBeForgotten()
{
    WordIndexes indexes;
    const std::map<QString, FoldedText> texts = twoColumns(50000);
    for (int i = 0; i < 20; ++i) {
        indexes.begin(texts, anyBytes);
        indexes.clear();
        QVERIFY(indexes.find("description") == nullptr);
    }

    indexes.begin(texts, anyBytes);
    indexes.waitForFinished();

    QVERIFY(indexes.find("description") != nullptr);
    indexes.begin(texts, anyBytes);
}

QTEST_GUILESS_MAIN(WordIndexesTest)

#include "tst_wordindexes.moc"
