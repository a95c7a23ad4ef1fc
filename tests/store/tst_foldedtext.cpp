// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/foldedtext.h"
#include "tests/store/textfixture.h"

#include <QtTest>

#include <random>

class FoldedTextTest : public QObject
{
    Q_OBJECT

private slots:
    void capitalsOfAsciiAreFolded();
    void textEndsAtItsFirstNul();
    void whatIsNotUtf8IsRefused_data();
    void whatIsNotUtf8IsRefused();
    void everyRowThatContainsTheTermIsFound();
    void rangesOnAllProcessorsFindTheSame();
    void noMatchSpansTwoRows();
    void squeezeGivesBackWhatWasReserved();
};

namespace {

std::vector<size_t> rowsFound(const FoldedText& column, const QString& term)
{
    RowSet hits(column.rows());
    column.find(pattern(term), { 0, column.rows() }, hits);
    return rowsOf(hits);
}

} // namespace

void FoldedTextTest::capitalsOfAsciiAreFolded()
{
    FoldedText column;

    QVERIFY(column.append("Drum É [Z]@`{"));

    QCOMPARE(column.rows(), size_t(1));
    QVERIFY(column.row(0) == "drum É [z]@`{");
}

void FoldedTextTest::textEndsAtItsFirstNul()
{
    FoldedText column;

    QVERIFY(column.append(std::string_view("one\0two", 7)));
    QVERIFY(column.append(std::string_view("\0", 1)));
    QVERIFY(column.append("three"));

    QVERIFY(column.row(0) == "one");
    QVERIFY(column.row(1).empty());
    QVERIFY(column.row(2) == "three");
}

void FoldedTextTest::whatIsNotUtf8IsRefused_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("a lone continuation") << QByteArray("a\x80");
    QTest::newRow("a character without its end") << QByteArray("a\xc3");
    QTest::newRow("a character that breaks off") << QByteArray("\xe6\xbc"
                                                               "aa");
    QTest::newRow("two bytes for ASCII") << QByteArray("\xc1\xa1");
    QTest::newRow("three bytes where two do") << QByteArray("\xe0\x83\x9f");
    QTest::newRow("half a surrogate pair") << QByteArray("\xed\xa0\xbd");
    QTest::newRow("beyond the last character") << QByteArray("\xf4\x90\x80\x80");
    QTest::newRow("no lead byte at all") << QByteArray("\xff");
}

void FoldedTextTest::whatIsNotUtf8IsRefused()
{
    QFETCH(QByteArray, text);
    FoldedText column;
    QVERIFY(column.append("before é 漢 😀"));

    QVERIFY(!column.append(std::string_view(text.constData(), size_t(text.size()))));

    QCOMPARE(column.rows(), size_t(1));
    QVERIFY(column.append("after"));
    QVERIFY(column.row(1) == "after");
}

void FoldedTextTest::everyRowThatContainsTheTermIsFound()
{
    std::mt19937 engine(1);
    FoldedText column;
    QStringList texts;
    for (int row = 0; row < 3000; ++row) {
        QString text;
        for (uint count = engine() % 40; count > 0; --count)
            text += QLatin1Char("abcd"[engine() % 4]);
        texts.append(text);
        QVERIFY(column.append(text.toStdString()));
    }
    const QStringList terms{ "a", "bc", "abcd", "dddd", "abcdabcd", "aaaaaaaa", "bcdabcdabcdabcdabcd", "a%b_c",
        "a_bb_c" };
    for (const QString& term : terms) {
        std::vector<size_t> expected;
        for (int row = 0; row < texts.size(); ++row) {
            const std::string text = texts.at(row).toStdString();
            if (pattern(term).matches(text))
                expected.push_back(size_t(row));
            QCOMPARE(column.isMatch(pattern(term), size_t(row)), pattern(term).matches(text));
        }
        QVERIFY2(rowsFound(column, term) == expected, qPrintable(term));
    }
}

void FoldedTextTest::rangesOnAllProcessorsFindTheSame()
{
    FoldedText column;
    for (int row = 0; row < 200000; ++row)
        QVERIFY(column.append("sound " + std::to_string(row)));

    for (const char* term : { "sound", "77", "7_7", "9%1", "199999", "absent", "_" }) {
        RowSet hits(column.rows());
        forEachRowRange(column.rows(), [&](const RowRange& range) { column.find(pattern(term), range, hits); });
        QVERIFY2(rowsOf(hits) == rowsFound(column, term), term);
    }
}

void FoldedTextTest::noMatchSpansTwoRows()
{
    FoldedText column;
    for (const char* text : { "dr", "um", "drum", "", "dr", "um" })
        QVERIFY(column.append(text));

    QVERIFY(rowsFound(column, "drum") == std::vector<size_t>{ 2 });
    QVERIFY(rowsFound(column, "d%m") == std::vector<size_t>{ 2 });
    QVERIFY(rowsFound(column, "%") == (std::vector<size_t>{ 0, 1, 2, 3, 4, 5 }));
    QVERIFY(rowsFound(column, "___") == std::vector<size_t>{ 2 });
}

void FoldedTextTest::squeezeGivesBackWhatWasReserved()
{
    FoldedText column;
    column.reserve(100000);
    for (int row = 0; row < 1000; ++row)
        QVERIFY(column.append("a text"));
    QVERIFY(column.bytes() > 400000);

    column.squeeze();

    QVERIFY(column.bytes() < 12000);
    QVERIFY(column.row(999) == "a text");
}

QTEST_GUILESS_MAIN(FoldedTextTest)

#include "tst_foldedtext.moc"
