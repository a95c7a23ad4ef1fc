// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/libraryrules.h"

#include <QRandomGenerator>
#include <QtTest>

// The index of a rule list may only spare questions: the answer has to be that of every pattern asked in turn.

namespace {

constexpr int ruleSetsPerRow = 150;
constexpr int namesPerRuleSet = 150;

QString plainFirstMatch(const QString& fileName, const QStringList& names, const QVector<QRegExp>& patterns)
{
    for (int index = 0; index < patterns.size(); ++index) {
        if (patterns.at(index).isValid() && patterns.at(index).indexIn(fileName) >= 0)
            return names.at(index);
    }
    return QString();
}

QString oneOf(QRandomGenerator& random, const QStringList& choices)
{
    return choices.at(random.bounded(choices.size()));
}

QString repeated(QRandomGenerator& random, int most, const QStringList& choices)
{
    QString text;
    for (int left = random.bounded(most + 1); left > 0; --left)
        text += oneOf(random, choices);
    return text;
}

// The letters are few, so that patterns and names meet often.
const QStringList letters{ "A", "B", "C", "a", "b" };
const QStringList digits{ "0", "1", "2" };
const QStringList joints{ "_", "-", " ", "." };
const QStringList foreign{ QString::fromUtf8("é"), QString::fromUtf8("É"), QString::fromUtf8("ß"),
    QString::fromUtf8("音"), QString::fromUtf8("𝄞"), QString::fromUtf8("e\u0301") };

QString catalogueShape(QRandomGenerator& random)
{
    const QString code = oneOf(random, letters) + repeated(random, 2, letters);
    const QString number = oneOf(random, digits) + oneOf(random, digits);
    switch (random.bounded(6)) {
    case 0:
        return R"(\s)" + code + number + "_";
    case 1:
        return R"(\s)" + code + number;
    case 2:
        return code + R"(\d{2,2})";
    case 3:
        return "^" + code + R"(\d{2,2}-)";
    case 4:
        return "_" + code + "-";
    default:
        return "_" + code + oneOf(random, digits) + R"(\d{2,})";
    }
}

QString hostileAtom(QRandomGenerator& random)
{
    static const QStringList atoms{ R"(\s)", R"(\S)", R"(\d)", R"(\D)", R"(\w)", R"(\W)", R"(\b)", R"(\B)", ".", "^",
        "$", "[AB]", "[^A]", "[]A]", "[^]0]", R"([A\]B])", "[0-9a]", R"([\dB])", "(A|B)", "(?:AB)", "(?=A)", "(?!B)",
        "((A)|b)", "(A|)", R"((A\)|B))", "([)]A)", R"(\.)", R"(\-)", R"(\[)", R"(\\)", R"(\x41)", R"(\x0042)",
        R"(\0101)", R"(\1)", R"(\e)", "{", "}", "]", "(", ")", "[", "*", "\\", "|", "|", "A|B", ":", "wav" };
    return oneOf(random, atoms);
}

QString hostileShape(QRandomGenerator& random)
{
    static const QStringList quantifiers{ "?", "*", "+", "{2}", "{1,2}", "{,2}", "{2,}", "{0}", "+?", "*?", "??", "+*",
        "{1,2}{0,1}", "{x}", "{" };
    QString pattern;
    for (int left = random.bounded(7); left > 0; --left) {
        switch (random.bounded(4)) {
        case 0:
            pattern += hostileAtom(random);
            break;
        case 1:
            pattern += oneOf(random, random.bounded(3) ? joints : foreign);
            break;
        default:
            pattern += oneOf(random, letters + digits);
        }
        if (random.bounded(4) == 0)
            pattern += oneOf(random, quantifiers);
    }
    return pattern;
}

QString randomName(QRandomGenerator& random)
{
    static const QStringList pieces = letters + digits + letters + digits + joints + foreign + QStringList{ "]", "\\" };
    return repeated(random, 14, pieces) + oneOf(random, { ".wav", ".WAV", "", ".mp3" });
}

// A name of the kind that the catalogue shapes are made for.
QString catalogueName(QRandomGenerator& random)
{
    const QString code = oneOf(random, letters) + repeated(random, 1, letters);
    const QString number = oneOf(random, digits) + repeated(random, 2, digits);
    const QString start = random.bounded(3) ? oneOf(random, joints) : QString();
    return start + code + number + oneOf(random, joints) + repeated(random, 3, letters) + ".wav";
}

} // namespace

class LibraryRulesEquivalenceTest : public QObject
{
    Q_OBJECT

private slots:
    void indexedRulesAnswerAsPlainOnes_data();
    void indexedRulesAnswerAsPlainOnes();
};

void LibraryRulesEquivalenceTest::indexedRulesAnswerAsPlainOnes_data()
{
    QTest::addColumn<int>("hostilePercentage");
    QTest::addColumn<quint32>("seed");

    // 5 times 150 rule sets times 150 names: 112,500 pairs.
    QTest::newRow("catalogue codes") << 0 << 1U;
    QTest::newRow("mostly catalogue codes") << 20 << 2U;
    QTest::newRow("half and half") << 50 << 3U;
    QTest::newRow("hostile") << 100 << 4U;
    QTest::newRow("hostile again") << 100 << 5U;
}

void LibraryRulesEquivalenceTest::indexedRulesAnswerAsPlainOnes()
{
    QFETCH(int, hostilePercentage);
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    int matches = 0;
    for (int ruleSet = 0; ruleSet < ruleSetsPerRow; ++ruleSet) {
        QStringList names;
        QVector<QRegExp> patterns;
        QString text;
        for (int left = random.bounded(25); left >= 0; --left) {
            const bool isHostile = random.bounded(100) < hostilePercentage;
            const QString pattern = isHostile ? hostileShape(random) : catalogueShape(random);
            names.append(QString::number(left));
            patterns.append(QRegExp(pattern.trimmed(), Qt::CaseSensitive, QRegExp::RegExp));
            text += names.last() + ":" + pattern + "\n";
        }
        const LibraryRules rules = parseLibraryRules(text);
        QCOMPARE(rules.size(), patterns.size());
        for (int left = namesPerRuleSet; left > 0; --left) {
            const QString fileName = random.bounded(2) ? catalogueName(random) : randomName(random);
            const QString expected = plainFirstMatch(fileName, names, patterns);
            const QString actual = evaluateLibrary(fileName, rules);
            QVERIFY2(actual == expected && actual.isNull() == expected.isNull(), qPrintable(fileName + " by " + text));
            matches += expected.isNull() ? 0 : 1;
        }
    }
    // Both answers are frequent, or nothing would have been compared.
    const int pairs = ruleSetsPerRow * namesPerRuleSet;
    QVERIFY2(matches > pairs / 30 && matches < pairs - pairs / 50, qPrintable(QString::number(matches)));
}

QTEST_GUILESS_MAIN(LibraryRulesEquivalenceTest)
#include "tst_libraryrulesequivalence.moc"
