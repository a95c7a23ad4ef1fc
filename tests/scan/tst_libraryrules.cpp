// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/libraryrules.h"

#include <QtTest>

namespace {

QStringList namesOf(const LibraryRules& rules)
{
    QStringList names;
    for (const LibraryRule& rule : rules)
        names.append(rule.name);
    return names;
}

QStringList patternsOf(const LibraryRules& rules)
{
    QStringList patterns;
    for (const LibraryRule& rule : rules)
        patterns.append(rule.pattern.pattern());
    return patterns;
}

MetaData recordOf(const QString& filePath, const QString& fileName, const QString& library)
{
    MetaData record;
    record.setFilePath(filePath);
    record.setFileName(fileName);
    record.setLibrary(library);
    return record;
}

} // namespace

class LibraryRulesTest : public QObject
{
    Q_OBJECT

private slots:
    void linesAreParsed_data();
    void linesAreParsed();
    void lineEndsDoNotMatter();
    void fileNamesAreEvaluated_data();
    void fileNamesAreEvaluated();
    void noMatchGivesANullString();
    void invalidPatternIsKeptAndNeverMatches();
    void recordsGetTheLibraryOfTheirFileName();
    void recordWithoutMatchKeepsItsLibrary();
};

void LibraryRulesTest::linesAreParsed_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QStringList>("patterns");
    QTest::newRow("empty") << "" << QStringList() << QStringList();
    QTest::newRow("one rule") << "SFX: ^BOOM_" << QStringList{ "SFX" } << QStringList{ "^BOOM_" };
    QTest::newRow("blanks around") << "  My Sounds \t:  a b  " << QStringList{ "My Sounds" } << QStringList{ "a b" };
    QTest::newRow("colon in the pattern") << "A: x:y" << QStringList{ "A" } << QStringList{ "x:y" };
    QTest::newRow("leading colon") << ": x" << QStringList() << QStringList();
    QTest::newRow("no colon") << "just words" << QStringList() << QStringList();
    QTest::newRow("no comments") << "# A: x" << QStringList{ "# A" } << QStringList{ "x" };
    QTest::newRow("blank name") << " : x" << QStringList{ "" } << QStringList{ "x" };
    QTest::newRow("blank pattern") << "A:  " << QStringList{ "A" } << QStringList{ "" };
    QTest::newRow("order") << "B: 2\n\nA: 1\nB: 3" << QStringList{ "B", "A", "B" } << QStringList{ "2", "1", "3" };
    QTest::newRow("byte-order mark") << "\ufeffA: x" << QStringList{ "A" } << QStringList{ "x" };
}

void LibraryRulesTest::linesAreParsed()
{
    QFETCH(QString, text);

    const LibraryRules rules = parseLibraryRules(text);

    QTEST(namesOf(rules), "names");
    QTEST(patternsOf(rules), "patterns");
}

void LibraryRulesTest::lineEndsDoNotMatter()
{
    const QString text = QStringLiteral("A: 1\n\nB: 2\nC: 3\n");
    const LibraryRules expected = parseLibraryRules(text);
    QCOMPARE(namesOf(expected), QStringList({ "A", "B", "C" }));

    for (const char* lineEnd : { "\r\n", "\r", "\n\r" }) {
        const LibraryRules rules = parseLibraryRules(QString(text).replace(QLatin1Char('\n'), QLatin1String(lineEnd)));
        QCOMPARE(namesOf(rules), namesOf(expected));
        QCOMPARE(patternsOf(rules), patternsOf(expected));
    }
}

void LibraryRulesTest::fileNamesAreEvaluated_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("library");
    const QString boom = QStringLiteral("SFX: ^BOOM_.*\\.wav$");
    QTest::newRow("match") << boom << "BOOM_01.wav"
                           << "SFX";
    QTest::newRow("case counts") << boom << "boom_01.wav"
                                 << "";
    QTest::newRow("anywhere in the name") << "A: 01"
                                          << "take01.wav"
                                          << "A";
    QTest::newRow("first rule wins") << "A: 01\nB: \\.wav"
                                     << "take01.wav"
                                     << "A";
    QTest::newRow("second rule") << "A: 02\nB: \\.wav"
                                 << "take01.wav"
                                 << "B";
    QTest::newRow("white space and digits") << "L: \\sAB01_"
                                            << "Rain AB01_22.wav"
                                            << "L";
    QTest::newRow("digit counts") << "L: \\sAB\\d{2,2}-"
                                  << "Rain AB012-2.wav"
                                  << "";
    QTest::newRow("two digits") << "L: \\sAB\\d{2,2}-"
                                << "Rain AB01-2.wav"
                                << "L";
    QTest::newRow("colon in the pattern") << "A: x:y"
                                          << "x:y.wav"
                                          << "A";
    QTest::newRow("blank pattern matches every name") << "A:\nB: x"
                                                      << "x.wav"
                                                      << "A";
    QTest::newRow("invalid rule is passed over") << "A: (x\nB: x"
                                                 << "x.wav"
                                                 << "B";
    QTest::newRow("no rules") << ""
                              << "x.wav"
                              << "";
}

void LibraryRulesTest::fileNamesAreEvaluated()
{
    QFETCH(QString, text);
    QFETCH(QString, fileName);

    QTEST(evaluateLibrary(fileName, parseLibraryRules(text)), "library");
}

void LibraryRulesTest::noMatchGivesANullString()
{
    const LibraryRules rules = parseLibraryRules(QStringLiteral("A: x"));

    QVERIFY(evaluateLibrary(QStringLiteral("other.wav"), rules).isNull());
}

void LibraryRulesTest::invalidPatternIsKeptAndNeverMatches()
{
    const LibraryRules rules = parseLibraryRules(QStringLiteral("A: [a-\nB: *"));

    QCOMPARE(rules.size(), 2);
    for (const LibraryRule& rule : rules)
        QVERIFY(!rule.pattern.isValid());
    for (const char* name : { "", "a", "[a-", "*" })
        QVERIFY(evaluateLibrary(QLatin1String(name), rules).isNull());
}

void LibraryRulesTest::recordsGetTheLibraryOfTheirFileName()
{
    MetaDataList records{ recordOf("/BOOM/a.wav", "a.wav", {}), recordOf("/x/BOOM.wav", "BOOM.wav", "Old") };

    applyLibraryRules(records, parseLibraryRules(QStringLiteral("Booms: BOOM")));

    // The folder does not count.
    QVERIFY(records.at(0).library().isEmpty());
    QCOMPARE(records.at(1).library(), QStringLiteral("Booms"));
}

void LibraryRulesTest::recordWithoutMatchKeepsItsLibrary()
{
    MetaDataList records{ recordOf("/x/a.wav", "a.wav", "Mine") };

    applyLibraryRules(records, parseLibraryRules(QStringLiteral("Booms: BOOM")));

    QCOMPARE(records.first().library(), QStringLiteral("Mine"));
}

QTEST_GUILESS_MAIN(LibraryRulesTest)
#include "tst_libraryrules.moc"
