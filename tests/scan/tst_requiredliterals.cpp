// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/requiredliterals.h"

#include <QtTest>

class RequiredLiteralsTest : public QObject
{
    Q_OBJECT

private slots:
    void literalsAreFound_data();
    void literalsAreFound();
};

void RequiredLiteralsTest::literalsAreFound_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QStringList>("literals");

    const QStringList nothing;
    QTest::newRow("plain text") << "BOOM" << QStringList("BOOM");
    QTest::newRow("blank, code, digits, underscore") << R"(\sAB01_)" << QStringList("AB01_");
    QTest::newRow("digit count") << R"(\sABC\d{2,2})" << QStringList("ABC");
    QTest::newRow("anchored") << R"(^AB\d{2,2}-)" << QStringList("AB");
    QTest::newRow("escaped punctuation is text") << R"(\.wav$)" << QStringList(".wav");
    QTest::newRow("the longest run counts") << "a.bcd[ef]gh" << QStringList("bcd");
    QTest::newRow("optional character") << "abc?" << QStringList("ab");
    QTest::newRow("starred character") << "xabc*yz" << QStringList("xab");
    QTest::newRow("counted character") << "abc{0,3}" << QStringList("ab");
    QTest::newRow("repeated character stands once") << "abc+de" << QStringList("abc");
    QTest::newRow("repeated and optional") << "abc+?" << QStringList("ab");
    QTest::newRow("alternatives at the top") << "abc|de|f" << QStringList({ "abc", "de", "f" });
    QTest::newRow("an alternative without text") << R"(abc|\d)" << nothing;
    QTest::newRow("an empty alternative") << "abc|" << nothing;
    QTest::newRow("group is passed over") << "ab(cdef|g)h" << QStringList("ab");
    QTest::newRow("group in group") << "ab((c|[)])d)efg" << QStringList("efg");
    QTest::newRow("forbidden text is not required") << "(?!abcdef)xy" << QStringList("xy");
    QTest::newRow("class that begins with its bracket") << "[]abc]de" << QStringList("de");
    QTest::newRow("excluding class that begins with its bracket") << "[^]abc]de" << QStringList("de");
    QTest::newRow("class with an escaped bracket") << R"([a\]bcd]ef)" << QStringList("ef");
    QTest::newRow("character code is not followed") << R"(\x0041BCD)" << nothing;
    QTest::newRow("back reference is not followed") << R"((a)\1bcd)" << nothing;
    QTest::newRow("only classes") << R"(\d\w.)" << nothing;
    QTest::newRow("empty") << "" << nothing;
    QTest::newRow("beyond ASCII") << QString::fromUtf8("^Übung?") << QStringList(QString::fromUtf8("Übun"));
}

void RequiredLiteralsTest::literalsAreFound()
{
    QFETCH(QString, pattern);

    QTEST(requiredLiterals(pattern), "literals");
}

QTEST_GUILESS_MAIN(RequiredLiteralsTest)
#include "tst_requiredliterals.moc"
