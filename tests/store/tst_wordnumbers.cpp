// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/wordnumbers.h"

#include <QtTest>

class WordNumbersTest : public QObject
{
    Q_OBJECT

private slots:
    void sameWordHasTheSameNumber();
    void wordThatWasNotAddedHasNone();
    void manyWordsAreNumberedInTheirOrder();
    void whatIsNotUtf8GetsNoNumber();
    void wordsAreTaken();
};

void WordNumbersTest::sameWordHasTheSameNumber()
{
    WordNumbers numbers;

    QCOMPARE(numbers.add("drum"), quint32(0));
    QCOMPARE(numbers.add("loop"), quint32(1));
    QCOMPARE(numbers.add("drum"), quint32(0));
    QCOMPARE(numbers.find("loop"), quint32(1));
    QCOMPARE(numbers.count(), size_t(2));
}

void WordNumbersTest::wordThatWasNotAddedHasNone()
{
    WordNumbers numbers;
    numbers.add("drum");

    QCOMPARE(numbers.find("dru"), WordNumbers::noNumber);
    QCOMPARE(numbers.find("drums"), WordNumbers::noNumber);
}

void WordNumbersTest::manyWordsAreNumberedInTheirOrder()
{
    constexpr uint count = 50000;
    WordNumbers numbers;
    for (uint i = 0; i < count; ++i)
        QCOMPARE(numbers.add("take" + std::to_string(i)), quint32(i));

    for (uint i = 0; i < count; ++i) {
        QCOMPARE(numbers.find("take" + std::to_string(i)), quint32(i));
        QCOMPARE(numbers.add("take" + std::to_string(i)), quint32(i));
    }
    QCOMPARE(numbers.count(), size_t(count));
    QVERIFY(numbers.bytes() > count * sizeof("take0000"));
}

void WordNumbersTest::whatIsNotUtf8GetsNoNumber()
{
    WordNumbers numbers;

    QCOMPARE(numbers.add("a\xff"), WordNumbers::noNumber);
    QCOMPARE(numbers.count(), size_t(0));
    QCOMPARE(numbers.add("a"), quint32(0));
}

void WordNumbersTest::wordsAreTaken()
{
    WordNumbers numbers;
    numbers.add("drum");
    numbers.add("loop");

    const FoldedText words = numbers.takeWords();

    QCOMPARE(words.rows(), size_t(2));
    QVERIFY(words.row(1) == "loop");
    QCOMPARE(numbers.count(), size_t(0));
    QCOMPARE(numbers.find("drum"), WordNumbers::noNumber);
}

QTEST_GUILESS_MAIN(WordNumbersTest)

#include "tst_wordnumbers.moc"
