// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/fieldcatalogue.h"
#include "store/indexedreads.h"
#include "store/operationreply.h"
#include "store/querycomposer.h"
#include "store/readoperations.h"
#include "store/recordwriter.h"
#include "store/writeoperations.h"
#include "tests/store/connectionfixture.h"
#include "tests/store/randomviews.h"

#include <QtTest>

// Held against the statements: whatever an IndexedReads answers, the statements must answer the same.
namespace {

constexpr int tableId = 1;
constexpr int otherTableId = 2;

// The end of a reply as one value.
QVariantList outcome(OperationReply& reply)
{
    reply.waitForFinished();
    QVariantList records;
    for (const MetaData& record : reply.result("items").value<MetaDataList>())
        records.append(record.toVariantMap());
    return { reply.errorString(), reply.result("rowsCount"), reply.result("row"), reply.result("items").toList(),
        records };
}

// Words are made for small tables, too.
RowIndex::Limits limitsWithWords()
{
    RowIndex::Limits limits;
    limits.perRow = 100000;
    limits.fewestRowsForWords = 1;
    return limits;
}

} // namespace

class IndexedReadsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void answersAreThoseOfTheStatements_data();
    void answersAreThoseOfTheStatements();
    void wordsAreMadeOfTextsThatAreSearchedTwice();
    void wordsAreNotMadeOfMoreMemoryThanAllowed();
    void changedRowsDoNotUseUpWhatTheWordsLeave();
    void answersFarFromTheStartAreThoseOfTheStatements();
    void fewHitsComeInTheOrderOfTheStatements();
    void orderOfAllRowsIsNotReadForFewHits();
    void missingValuesAndStrangeTextsAreNoHindrance_data();
    void missingValuesAndStrangeTextsAreNoHindrance();
    void changesOfAnotherConnectionAreSeenAtOnce();
    void ownChangesAreSeenAtOnce();
    void changesThatAreRolledBackAreNotSeen();
    void memoryIsBounded();
    void memoryIsGivenBackForAnotherTable();
    void tooLittleMemoryLeavesItToTheStatements();
    void tooLittleMemoryForPathsLeavesTheOtherLookups();
    void tooLittleMemoryForTheOrderLeavesTheLookups();
    void cheapReadsAreLeftToTheStatements();

private:
    using Body = void (*)(const QSqlDatabase&, OperationReply*, int, const QVariantMap&);
    using IndexedBody = bool (IndexedReads::*)(const QSqlDatabase&, OperationReply*, int, const QVariantMap&);

    bool isAnswered(IndexedBody body, const QVariantMap& parameters, int table = tableId);
    void makeReads(const RowIndex::Limits& limits);
    void insertRows(int count, const QString& description);
    void compare(Body body, IndexedBody indexedBody, const QVariantMap& parameters);
    void comparePlace(qint64 id, const QVariantMap& parameters);
    void compareView(Chance& chance, const QVariantMap& view);
    void writeSomething(Chance& chance);
    void writeThroughTheStore(Chance& chance, int kind);
    void writeElsewhere(Chance& chance, int kind);
    MetaDataList randomRecords(Chance& chance, int count);
    QVariantList someIds(Chance& chance);

    std::unique_ptr<ConnectionFixture> m_fixture;
    std::unique_ptr<TestConnection> m_other;
    std::unique_ptr<IndexedReads> m_reads;
    int m_nextNumber = 0;
    int m_answers = 0;
};

void IndexedReadsTest::init()
{
    m_fixture = std::make_unique<ConnectionFixture>();
    m_other = std::make_unique<TestConnection>(m_fixture->filePath());
    m_other->execute("PRAGMA synchronous=OFF");
    m_reads = std::make_unique<IndexedReads>(m_fixture->connection());
    m_nextNumber = 0;
    m_answers = 0;
}

void IndexedReadsTest::cleanup()
{
    m_reads.reset();
    m_other.reset();
    m_fixture.reset();
}

void IndexedReadsTest::makeReads(const RowIndex::Limits& limits)
{
    // There is one watch over the connection.
    m_reads = nullptr;
    m_reads = std::make_unique<IndexedReads>(m_fixture->connection(), limits);
}

bool IndexedReadsTest::isAnswered(IndexedBody body, const QVariantMap& parameters, int table)
{
    OperationReply reply;
    return (m_reads.get()->*body)(m_fixture->connection(), &reply, table, parameters);
}

void IndexedReadsTest::insertRows(int count, const QString& description)
{
    const QString statement
        = QString("INSERT INTO MetaData1 (filePath, fileName, fileType, library, description, duration, scanTimestamp) "
                  "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i+1 FROM n WHERE i+1<%1) SELECT '/s/' || i, "
                  "(i*7919) % %1 || '.wav', 'wav', 'Library ' || (i % 7), '%2' || i, 1 + i % 5, i % 3 FROM n");
    QCOMPARE(m_fixture->execute(statement.arg(QString::number(count), description)), QString());
}

void IndexedReadsTest::compare(Body body, IndexedBody indexedBody, const QVariantMap& parameters)
{
    OperationReply expected;
    body(m_fixture->connection(), &expected, tableId, parameters);
    OperationReply actual;
    if (!(m_reads.get()->*indexedBody)(m_fixture->connection(), &actual, tableId, parameters))
        return;
    ++m_answers;
    QVERIFY2(outcome(actual) == outcome(expected), qPrintable(composeSelect(tableId, "*", parameters)));
    m_reads->waitForWords();
}

void IndexedReadsTest::comparePlace(qint64 id, const QVariantMap& parameters)
{
    OperationReply expected;
    runLookupMetaDataRow(m_fixture->connection(), &expected, tableId, id, parameters);
    OperationReply actual;
    if (!m_reads->lookupMetaDataRow(m_fixture->connection(), &actual, tableId, id, parameters))
        return;
    ++m_answers;
    QVERIFY2(outcome(actual) == outcome(expected), qPrintable(composeSelect(tableId, "*", parameters)));
}

// The count, a page of ids, a page of records, and the places of a few records.
void IndexedReadsTest::compareView(Chance& chance, const QVariantMap& view)
{
    compare(runGetRowsCount, &IndexedReads::getRowsCount, view);
    QVariantMap page = view;
    page.insert("limit", 1 + chance.below(300));
    page.insert("offset", chance.oneIn(2) ? 0 : chance.below(40));
    compare(runPullMetaData, &IndexedReads::pullMetaData, page);
    page.insert("singleField", chance.pick({ "id", "filePath", "duration", "artist" }));
    compare(runPullMetaData, &IndexedReads::pullMetaData, page);
    const QVariantList ids = m_fixture->column("SELECT id FROM MetaData1");
    for (int i = 0; i < 3 && !ids.isEmpty(); ++i)
        comparePlace(ids.at(chance.below(ids.size())).toLongLong(), view);
}

QVariantList IndexedReadsTest::someIds(Chance& chance)
{
    const QVariantList all = m_fixture->column("SELECT id FROM MetaData1");
    QVariantList ids;
    for (int count = 1 + chance.below(3); count > 0 && !all.isEmpty(); --count)
        ids.append(all.at(chance.below(all.size())));
    return ids;
}

MetaDataList IndexedReadsTest::randomRecords(Chance& chance, int count)
{
    MetaDataList records;
    for (; count > 0; --count)
        records.append(randomRecord(chance, m_nextNumber++));
    return records;
}

void IndexedReadsTest::writeThroughTheStore(Chance& chance, int kind)
{
    const QSqlDatabase connection = m_fixture->connection();
    OperationReply reply;
    if (kind == 0) {
        writeMetaData(connection, tableId, randomRecords(chance, 1 + chance.below(5)), chance.below(3), false);
    } else if (kind == 1) {
        MetaDataList records = randomRecords(chance, 1);
        records.first().setId(someIds(chance).value(0).toLongLong());
        writeMetaData(connection, tableId, records, 0, false);
    } else if (kind == 2) {
        runSetMetaDataPlaylist(connection, &reply, tableId, someIds(chance), chance.below(2));
    } else if (kind == 3) {
        runDeleteMetaData(connection, &reply, tableId, someIds(chance));
    } else if (kind == 4 && chance.oneIn(8)) {
        runClearTable(connection, &reply, tableId);
    } else if (kind == 5 && chance.oneIn(4)) {
        runRebuild(connection, &reply);
    } else {
        const QString update = "UPDATE MetaData1 SET rating=rating+1, library=library || '%1' WHERE id=%2";
        const QString id = someIds(chance).value(0).toString();
        m_fixture->execute("UPDATE MetaData1 SET rating=" + QString::number(chance.below(4)) + " WHERE id=" + id);
        m_fixture->execute("BEGIN");
        m_fixture->execute(update.arg(chance.oneIn(2) ? "x" : "", id));
        m_fixture->execute(chance.oneIn(2) ? "ROLLBACK" : "COMMIT");
    }
}

void IndexedReadsTest::writeElsewhere(Chance& chance, int kind)
{
    if (kind == 0) {
        writeMetaData(m_other->connection(), tableId, randomRecords(chance, 30), chance.below(3), false);
    } else if (kind == 1) {
        // An id that the store would not give.
        const QString id = QString::number(1000 + 100 * chance.below(50));
        m_other->execute("UPDATE MetaData1 SET id=" + id + " WHERE id=" + someIds(chance).value(0).toString());
    } else {
        m_other->execute(QString("UPDATE MetaData1 SET description=description || '%1', scanTimestamp=%2 WHERE id%7=0")
                             .arg(chance.pick({ "a", "b", "loop" }), QString::number(chance.below(4))));
    }
}

void IndexedReadsTest::writeSomething(Chance& chance)
{
    const int kind = chance.below(10);
    if (kind < 7)
        writeThroughTheStore(chance, kind);
    else
        writeElsewhere(chance, kind - 7);
}

void IndexedReadsTest::answersAreThoseOfTheStatements_data()
{
    QTest::addColumn<uint>("seed");
    QTest::addColumn<bool>("areWordsMade");
    for (uint seed = 1; seed <= 20; ++seed)
        QTest::addRow("seed %u", seed) << seed << (seed % 2 == 0);
}

void IndexedReadsTest::answersAreThoseOfTheStatements()
{
    QFETCH(uint, seed);
    QFETCH(bool, areWordsMade);
    if (areWordsMade)
        makeReads(limitsWithWords());
    Chance chance(seed);
    writeMetaData(m_fixture->connection(), tableId, randomRecords(chance, chance.below(120)), 1, false);
    for (int step = 0; step < 60; ++step) {
        const QVariantMap view = randomView(chance);
        compareView(chance, view);
        if (QTest::currentTestFailed())
            return;
        writeSomething(chance);
        // The same view again: it must not be that of before.
        compareView(chance, view);
        if (QTest::currentTestFailed())
            return;
    }
    QVERIFY2(m_answers > 200, qPrintable(QString::number(m_answers)));
}

void IndexedReadsTest::wordsAreMadeOfTextsThatAreSearchedTwice()
{
    constexpr int rows = 5000;
    insertRows(rows, "Sound ");
    makeReads(limitsWithWords());
    const auto bytesAfter = [&](const QString& lookup) {
        compare(runGetRowsCount, &IndexedReads::getRowsCount,
            { { "lookup", lookup }, { "lookupFields", QStringList{ "library", "description" } } });
        return m_reads->bytes();
    };

    const size_t once = bytesAfter("sound");
    const size_t twice = bytesAfter("77");
    const size_t thrice = bytesAfter("library !7");
    QVERIFY(once > 0);
    QVERIFY(twice > once + rows * sizeof(quint32));
    QCOMPARE(thrice, twice);
    // A changed row does not need them anew.
    QCOMPARE(m_fixture->execute("UPDATE MetaData1 SET description='Sound of 77' WHERE id=3"), QString());
    QVERIFY(bytesAfter("77") >= twice);
    // They are gone with the texts.
    QCOMPARE(m_fixture->execute("UPDATE MetaData1 SET description='Sound'"), QString());
    QVERIFY(bytesAfter("sound") < once);
    QCOMPARE(m_answers, 5);
}

void IndexedReadsTest::wordsAreNotMadeOfMoreMemoryThanAllowed()
{
    constexpr int rows = 5000;
    insertRows(rows, "Sound ");
    const QStringList fields{ "library", "description" };
    compare(runGetRowsCount, &IndexedReads::getRowsCount, { { "lookup", "sound" }, { "lookupFields", fields } });
    RowIndex::Limits limits;
    limits.perRow = m_reads->bytes() / rows + 10;
    limits.fewestRowsForWords = 1;
    makeReads(limits);

    for (const char* lookup : { "sound", "77", "sound" })
        compare(runGetRowsCount, &IndexedReads::getRowsCount, { { "lookup", lookup }, { "lookupFields", fields } });

    QCOMPARE(m_answers, 4);
    QVERIFY(m_reads->bytes() <= limits.perRow * rows);
}

void IndexedReadsTest::changedRowsDoNotUseUpWhatTheWordsLeave()
{
    constexpr int rows = 50000;
    insertRows(rows, "Sound ");
    makeReads(limitsWithWords());
    const auto readBoth = [&]() {
        for (const char* lookup : { "sound", "77" })
            compare(runGetRowsCount, &IndexedReads::getRowsCount,
                { { "lookup", lookup }, { "lookupFields", QStringList{ "library", "description" } } });
        return m_reads->bytes();
    };
    RowIndex::Limits limits;
    limits.perRow = readBoth() / rows + 6;
    limits.besides = 1 << 16;
    limits.fewestRowsForWords = 1;
    makeReads(limits);
    const size_t withWords = readBoth();
    QVERIFY(withWords > 50 * rows);

    for (int id = 1; id <= 20; ++id) {
        m_fixture->execute(QString("UPDATE MetaData1 SET description='Sound of 77' WHERE id=%1").arg(id));
        const size_t bytes = readBoth();
        // All would have been read again, without words at first.
        QVERIFY(bytes >= withWords);
        QVERIFY(bytes <= withWords + limits.besides);
    }
    QCOMPARE(m_answers, 2 * 22);
}

void IndexedReadsTest::answersFarFromTheStartAreThoseOfTheStatements()
{
    insertRows(5000, "Sound ");
    for (const QString& field : sortableFieldNames()) {
        for (const int sortOrder : { 0, 1 }) {
            for (const int offset : { 1001, 2500, 4990, 5000, 6000 }) {
                compare(runPullMetaData, &IndexedReads::pullMetaData,
                    { { "sortField", field }, { "sortOrder", sortOrder }, { "limit", 50 }, { "offset", offset },
                        { "lastScannedOnly", offset == 1001 } });
            }
            comparePlace(2500, { { "sortField", field }, { "sortOrder", sortOrder } });
        }
    }
    QCOMPARE(m_answers, 7 * 2 * 6);
}

void IndexedReadsTest::fewHitsComeInTheOrderOfTheStatements()
{
    insertRows(5000, "Sound ");
    QCOMPARE(m_fixture->execute("UPDATE MetaData1 SET duration=NULL WHERE id%3=0"), QString());
    QCOMPARE(m_fixture->execute("UPDATE MetaData1 SET rating=id%4"), QString());
    for (const QString& field : sortableFieldNames()) {
        makeReads({});
        for (const int sortOrder : { 0, 1 }) {
            for (const int offset : { 0, 7 }) {
                compare(runPullMetaData, &IndexedReads::pullMetaData,
                    { { "lookup", "123" }, { "lookupFields", QStringList{ "library", "description" } },
                        { "sortField", field }, { "sortOrder", sortOrder }, { "limit", 10 }, { "offset", offset } });
            }
        }
    }
    QCOMPARE(m_answers, 7 * 2 * 2);
}

void IndexedReadsTest::orderOfAllRowsIsNotReadForFewHits()
{
    constexpr int rows = 5000;
    insertRows(rows, "Sound ");
    const QVariantMap view{ { "lookupFields", QStringList{ "description" } }, { "sortField", "fileName" },
        { "limit", 10 } };
    const auto bytesWith = [&](const QString& lookup) {
        QVariantMap parameters = view;
        parameters.insert("lookup", lookup);
        return isAnswered(&IndexedReads::pullMetaData, parameters) ? m_reads->bytes() : 0;
    };

    const size_t forFewHits = bytesWith("123");

    QVERIFY(forFewHits > 0);
    QVERIFY(bytesWith("1") >= forFewHits + rows * sizeof(quint32));
}

void IndexedReadsTest::missingValuesAndStrangeTextsAreNoHindrance_data()
{
    QTest::addColumn<QString>("assignment");
    QTest::newRow("no rating") << "rating=NULL";
    QTest::newRow("no duration") << "duration=NULL";
    QTest::newRow("a rating that is no number") << "rating='many'";
    QTest::newRow("a text that is not UTF-8") << "description=CAST(x'61ff62c3' AS TEXT)";
    QTest::newRow("an overlong character") << "description=CAST(x'61e0839f62' AS TEXT)";
    QTest::newRow("a text of bytes") << "description=CAST('sound' AS BLOB), library=x'00'";
    QTest::newRow("a text with a NUL") << "description='so' || char(0) || 'und', library='ab' || char(0)";
    QTest::newRow("a path with a NUL") << "filePath='/' || id || char(0) || 'x'";
}

void IndexedReadsTest::missingValuesAndStrangeTextsAreNoHindrance()
{
    QFETCH(QString, assignment);
    insertRows(40, "Sound ");
    QCOMPARE(m_other->execute("UPDATE MetaData1 SET " + assignment + " WHERE id%5=2"), QString());
    Chance chance(1);
    for (int round = 0; round < 150; ++round) {
        QVariantMap view = randomView(chance);
        if (chance.oneIn(2))
            view.insert("lookup", chance.pick({ "und", "!sound", "a", "ab", "ß", "_", "so_", "\u00df" }));
        compareView(chance, view);
        if (QTest::currentTestFailed())
            return;
    }
}

void IndexedReadsTest::changesOfAnotherConnectionAreSeenAtOnce()
{
    insertRows(20, "Sound ");
    const QVariantMap view{ { "lookup", "new" }, { "lookupFields", QStringList{ "description" } } };
    compare(runGetRowsCount, &IndexedReads::getRowsCount, view);
    QCOMPARE(m_other->execute("UPDATE MetaData1 SET description='New' WHERE id=3"), QString());

    OperationReply reply;
    QVERIFY(m_reads->getRowsCount(m_fixture->connection(), &reply, tableId, view));
    QCOMPARE(reply.result("rowsCount").toInt(), 1);
}

void IndexedReadsTest::ownChangesAreSeenAtOnce()
{
    insertRows(20, "Sound ");
    const QVariantMap page{ { "lookup", "sound" }, { "lookupFields", QStringList{ "description" } },
        { "sortField", "rating" }, { "sortOrder", 1 }, { "limit", 50 }, { "singleField", "id" } };
    compare(runPullMetaData, &IndexedReads::pullMetaData, page);
    QCOMPARE(m_fixture->execute("UPDATE MetaData1 SET rating=50 WHERE id=7"), QString());
    QCOMPARE(m_fixture->execute("DELETE FROM MetaData1 WHERE id=9"), QString());

    OperationReply reply;
    QVERIFY(m_reads->pullMetaData(m_fixture->connection(), &reply, tableId, page));
    QCOMPARE(reply.result("items").toList().size(), 19);
    QCOMPARE(reply.result("items").toList().first().toInt(), 7);
}

void IndexedReadsTest::changesThatAreRolledBackAreNotSeen()
{
    insertRows(20, "Sound ");
    const QVariantMap view{ { "lookup", "new" }, { "lookupFields", QStringList{ "description" } } };
    compare(runGetRowsCount, &IndexedReads::getRowsCount, view);
    m_fixture->execute("BEGIN");
    m_fixture->execute("UPDATE MetaData1 SET description='New'");
    m_fixture->execute("ROLLBACK");

    OperationReply reply;
    QVERIFY(m_reads->getRowsCount(m_fixture->connection(), &reply, tableId, view));
    QCOMPARE(reply.result("rowsCount").toInt(), 0);
}

void IndexedReadsTest::memoryIsBounded()
{
    constexpr int rows = 100000;
    constexpr size_t besides = 1 << 20;
    insertRows(rows, "A description of common length, number ");
    QVariantMap page{ { "lookup", "common" }, { "lookupFields", QStringList{ "library", "description" } },
        { "sortField", "fileName" }, { "limit", 50 }, { "offset", 90000 } };
    compare(runPullMetaData, &IndexedReads::pullMetaData, page);
    compare(runGetRowsCount, &IndexedReads::getRowsCount, page);
    page.insert("lookup", "number");
    compare(runGetRowsCount, &IndexedReads::getRowsCount, page);

    QCOMPARE(m_answers, 3);
    QVERIFY(m_reads->bytes() > 50 * rows);
    QVERIFY(m_reads->bytes() <= 120 * rows + besides);
}

void IndexedReadsTest::memoryIsGivenBackForAnotherTable()
{
    insertRows(1000, "Sound ");
    const QVariantMap view{ { "lookup", "sound" }, { "lookupFields", QStringList{ "description" } } };
    QVERIFY(isAnswered(&IndexedReads::getRowsCount, view));
    const size_t before = m_reads->bytes();

    isAnswered(&IndexedReads::getRowsCount, {}, otherTableId);

    QVERIFY(before > 10000);
    QCOMPARE(m_reads->bytes(), size_t(0));
}

void IndexedReadsTest::tooLittleMemoryLeavesItToTheStatements()
{
    insertRows(10000, "A description ");
    RowIndex::Limits limits;
    limits.perRow = 20;
    limits.besides = 1000;
    makeReads(limits);
    const QVariantMap view{ { "lookup", "description" }, { "lookupFields", QStringList{ "description" } } };

    QVERIFY(!isAnswered(&IndexedReads::getRowsCount, view));
    QCOMPARE(m_reads->bytes(), size_t(0));
    // Nor does a change of one row make it try again.
    m_fixture->execute("UPDATE MetaData1 SET rating=50 WHERE id=7");
    QVERIFY(!isAnswered(&IndexedReads::getRowsCount, view));
}

void IndexedReadsTest::tooLittleMemoryForPathsLeavesTheOtherLookups()
{
    insertRows(10000, "A description ");
    RowIndex::Limits limits;
    limits.perPath = 2;
    limits.besides = 1000;
    makeReads(limits);
    const QStringList fields{ "library", "description" };
    QVERIFY(isAnswered(&IndexedReads::getRowsCount, { { "lookup", "a" }, { "lookupFields", fields } }));

    const QStringList withPaths{ "library", "description", "filePath" };
    QVERIFY(!isAnswered(&IndexedReads::getRowsCount, { { "lookup", "a" }, { "lookupFields", withPaths } }));
    QVERIFY(isAnswered(&IndexedReads::getRowsCount, { { "lookup", "b" }, { "lookupFields", fields } }));
}

void IndexedReadsTest::tooLittleMemoryForTheOrderLeavesTheLookups()
{
    constexpr int rows = 20000;
    insertRows(rows, "Sound ");
    const QVariantMap view{ { "lookup", "777" }, { "lookupFields", QStringList{ "description" } },
        { "sortField", "fileName" } };
    QVERIFY(isAnswered(&IndexedReads::getRowsCount, view));
    RowIndex::Limits limits;
    // The texts and the rows of the view, but not four bytes a row.
    limits.perRow = m_reads->bytes() / rows + 2;
    limits.besides = 1000;
    makeReads(limits);
    QVariantMap page = view;
    page.insert("limit", 10);

    // The few hits are put in order without that of all rows, a place is not found without it.
    compare(runPullMetaData, &IndexedReads::pullMetaData, page);
    comparePlace(778, view);
    QCOMPARE(m_answers, 1);
    QVERIFY(m_reads->bytes() > 0);
    page.insert("offset", 10);
    compare(runPullMetaData, &IndexedReads::pullMetaData, page);
    compare(runGetRowsCount, &IndexedReads::getRowsCount, view);
    QCOMPARE(m_answers, 3);
    // Nor is that order tried for each view anew.
    page.insert("lookup", "sound");
    compare(runPullMetaData, &IndexedReads::pullMetaData, page);
    compare(runGetRowsCount, &IndexedReads::getRowsCount, page);
    QCOMPARE(m_answers, 4);
}

void IndexedReadsTest::cheapReadsAreLeftToTheStatements()
{
    insertRows(2000, "Sound ");
    const QVariantMap sorted{ { "sortField", "fileName" }, { "limit", 50 } };

    QVERIFY(!isAnswered(&IndexedReads::getRowsCount, sorted));
    QVERIFY(!isAnswered(&IndexedReads::pullMetaData, sorted));
    QCOMPARE(m_reads->bytes(), size_t(0));
}

QTEST_GUILESS_MAIN(IndexedReadsTest)

#include "tst_indexedreads.moc"
