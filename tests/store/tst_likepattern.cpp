// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/likepattern.h"
#include "tests/store/connectionfixture.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QtTest>

#include <algorithm>
#include <random>

class LikePatternTest : public QObject
{
    Q_OBJECT

private slots:
    void anchorIsTheLongestPieceWithoutWildcards_data();
    void anchorIsTheLongestPieceWithoutWildcards();
    void otherPiecesAreAllButTheAnchor();
    void termsOfUnsureMeaningAreRefused_data();
    void termsOfUnsureMeaningAreRefused();
    void matchesWhatSqliteMatches();
};

namespace {

std::string folded(const QString& text)
{
    std::string bytes = text.toStdString();
    std::transform(bytes.begin(), bytes.end(), bytes.begin(), foldedByte);
    return bytes;
}

// Whether the text matches around any occurrence of the anchor.
bool matchesAround(const LikePattern& pattern, const std::string& text)
{
    size_t position = text.find(pattern.anchor());
    while (position != std::string::npos && !pattern.matchesAround(text, position))
        position = text.find(pattern.anchor(), position + 1);
    return position != std::string::npos;
}

} // namespace

void LikePatternTest::anchorIsTheLongestPieceWithoutWildcards_data()
{
    QTest::addColumn<QString>("term");
    QTest::addColumn<QString>("anchor");
    QTest::addColumn<bool>("isPlain");
    QTest::newRow("a word") << "Drum"
                            << "drum" << true;
    QTest::newRow("only ASCII is folded") << "ÉTÉ"
                                          << "ÉtÉ" << true;
    QTest::newRow("pieces") << "a%loop_b"
                            << "loop" << false;
    QTest::newRow("a wildcard at the end") << "drum%"
                                           << "drum" << false;
    QTest::newRow("wildcards alone") << "%_"
                                     << "" << false;
}

void LikePatternTest::anchorIsTheLongestPieceWithoutWildcards()
{
    QFETCH(QString, term);
    QFETCH(QString, anchor);
    QFETCH(bool, isPlain);

    const std::optional<LikePattern> pattern = LikePattern::fromTerm(term);

    QVERIFY(pattern.has_value());
    QCOMPARE(QString::fromStdString(std::string(pattern->anchor())), anchor);
    QCOMPARE(pattern->isPlain(), isPlain);
}

void LikePatternTest::otherPiecesAreAllButTheAnchor()
{
    const auto pieces = [](const char* term) {
        QStringList texts;
        for (const LikePattern& piece : LikePattern::fromTerm(term)->otherPieces())
            texts.append(QString::fromStdString(std::string(piece.anchor())) + (piece.isPlain() ? "" : "!"));
        return texts;
    };

    QCOMPARE(pieces("drum"), QStringList());
    QCOMPARE(pieces("%_"), QStringList());
    QCOMPARE(pieces("a%loop_b"), (QStringList{ "a", "b" }));
    // The same text twice: both are needed.
    QCOMPARE(pieces("__42%%42"), QStringList{ "42" });
}

void LikePatternTest::termsOfUnsureMeaningAreRefused_data()
{
    QTest::addColumn<QString>("term");
    QTest::newRow("a double quote") << "a\"b";
    QTest::newRow("a NUL") << QString("a") + QChar() + "b";
    QTest::newRow("half a surrogate pair") << QString(QChar(0xd83d));
    QTest::newRow("the replacement character") << QString(QChar(0xfffd));
    QTest::newRow("what is read as that character") << QString(QChar(0xffff));
    QTest::newRow("longer than anyone types") << QString(1001, 'a');
}

void LikePatternTest::termsOfUnsureMeaningAreRefused()
{
    QFETCH(QString, term);

    QVERIFY(!LikePattern::fromTerm(term).has_value());
}

void LikePatternTest::matchesWhatSqliteMatches()
{
    const ConnectionFixture fixture(ConnectionFixture::Schema::None);
    QSqlQuery query(fixture.connection());
    QVERIFY(query.prepare("SELECT ? LIKE ?"));
    const QStringList pieces{ "a", "b", "A", "é", "漢", "😀", "%", "_", "ab" };
    std::mt19937 engine(1);
    const auto randomText = [&](uint greatestCount, uint kinds) {
        QString text;
        for (uint count = engine() % (greatestCount + 1); count > 0; --count)
            text += pieces.at(int(engine() % kinds));
        return text;
    };
    int matches = 0;
    for (int round = 0; round < 20000; ++round) {
        const QString term = randomText(5, uint(pieces.size())) + pieces.at(int(engine() % uint(pieces.size())));
        const QString text = randomText(8, 6) + QLatin1String("");
        query.bindValue(0, text);
        query.bindValue(1, "%%" + term + "%%");
        QVERIFY(query.exec() && query.next());
        const std::optional<LikePattern> pattern = LikePattern::fromTerm(term);
        QVERIFY(pattern.has_value());
        QVERIFY2(pattern->matches(folded(text)) == query.value(0).toBool(), qPrintable(text + " LIKE " + term));
        if (pattern->isRigid() && !pattern->anchor().empty())
            QVERIFY2(matchesAround(*pattern, folded(text)) == query.value(0).toBool(), qPrintable(term));
        matches += query.value(0).toInt();
    }
    QVERIFY2(matches > 1000, qPrintable(QString::number(matches)));
}

QTEST_GUILESS_MAIN(LikePatternTest)

#include "tst_likepattern.moc"
