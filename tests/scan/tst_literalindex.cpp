// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/literalindex.h"

#include <QtTest>

class LiteralIndexTest : public QObject
{
    Q_OBJECT

private slots:
    void candidatesAreFound_data();
    void candidatesAreFound();
    void emptyIndexHasNoCandidates();
    void entryNamedTwiceInATextIsOneCandidate();
};

void LiteralIndexTest::candidatesAreFound_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVector<int>>("candidates");

    QTest::newRow("none but those without literals") << "nothing here" << QVector<int>{ 2 };
    QTest::newRow("first") << "xABC01" << QVector<int>{ 0, 2 };
    QTest::newRow("either literal of an entry") << "long text" << QVector<int>{ 1, 2 };
    QTest::newRow("other literal of an entry") << "a Z!" << QVector<int>{ 1, 2 };
    QTest::newRow("single character") << "#" << QVector<int>{ 2, 3 };
    QTest::newRow("case matters") << "abc01" << QVector<int>{ 2 };
    QTest::newRow("all, in order") << "# long Z! ABC" << QVector<int>{ 0, 1, 2, 3 };
    QTest::newRow("empty text") << "" << QVector<int>{ 2 };
    QTest::newRow("text shorter than the literals") << "A" << QVector<int>{ 2 };
}

void LiteralIndexTest::candidatesAreFound()
{
    QFETCH(QString, text);
    const LiteralIndex index({ { "ABC" }, { "long", "Z!" }, {}, { "#" } });

    QTEST(index.candidates(text), "candidates");
}

void LiteralIndexTest::emptyIndexHasNoCandidates()
{
    QVERIFY(LiteralIndex().candidates(QStringLiteral("any")).isEmpty());
}

void LiteralIndexTest::entryNamedTwiceInATextIsOneCandidate()
{
    const LiteralIndex index(QVector<QStringList>{ { "AB", "CD" } });

    QCOMPARE(index.candidates(QStringLiteral("AB CD AB")), QVector<int>{ 0 });
}

QTEST_GUILESS_MAIN(LiteralIndexTest)
#include "tst_literalindex.moc"
