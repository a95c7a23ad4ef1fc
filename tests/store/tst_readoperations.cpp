// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/fieldcatalogue.h"
#include "store/operationreply.h"
#include "store/querycomposer.h"
#include "store/readoperations.h"
#include "store/recordwriter.h"
#include "tests/store/connectionfixture.h"
#include "tests/support/storefixture.h"

#include <QFile>
#include <QtTest>

#include <functional>

using TestSupport::sampleRecord;

namespace {

using Reply = std::unique_ptr<OperationReply>;

MetaData record(const QString& filePath, const QString& library, double rating, int playlist = 0)
{
    MetaData item = sampleRecord(filePath);
    item.setLibrary(library);
    item.setRating(rating);
    item.setDuration(rating + 0.5);
    item.setPlaylist(playlist);
    return item;
}

// Ties in every sort field, both cases of letters, two scans, a playlist.
MetaDataList earlierRecords()
{
    return { record("/one/kick.wav", "Drums", 5, 1), record("/one/Snare loop.wav", "drums", 5),
        record("/one/bass.aif", "", 1, 1), record("/two/Kick.mp3", "Loops", 80) };
}

MetaDataList laterRecords()
{
    return { record("/two/it's [odd]; why? at :id.wav", "Odd", 5, 1), record("/two/50%1_off.wav", "Odd", 33.5) };
}

QVariantMap lookup(const QString& text, const QStringList& fields = { "fileName", "library" })
{
    return { { "lookup", text }, { "lookupFields", fields } };
}

QVariantMap sorted(QVariantMap parameters, const QString& field, int order)
{
    parameters.insert("sortField", field);
    parameters.insert("sortOrder", order);
    return parameters;
}

// Writes over the page of the table that holds the row of this id; the pages before it stay as they are.
void damageRow(const ConnectionFixture& fixture, int id)
{
    constexpr char tableLeaf = 0x0d;
    const int pageSize = fixture.value("PRAGMA page_size").toInt();
    QFile file(fixture.filePath());
    QVERIFY(file.open(QIODevice::ReadWrite));
    const QByteArray contents = file.readAll();
    const QByteArray text = QByteArray::number(id) + QByteArray::number(id) + "Sound";
    int found = contents.indexOf(text);
    while (found >= 0 && contents.at(found / pageSize * pageSize) != tableLeaf)
        found = contents.indexOf(text, found + 1);
    QVERIFY(found >= 0);
    QVERIFY(file.seek(qint64(found / pageSize) * pageSize));
    QCOMPARE(file.write(QByteArray(pageSize, '\xff')), qint64(pageSize));
}

} // namespace

class ReadOperationsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void rowsAreCounted_data();
    void rowsAreCounted();
    void countFailureIsReported();
    void pullGivesWholeRecords();
    void pullGivesOneColumnInRowOrder();
    void everyFieldMayBeTheSingleField();
    void invalidSingleFieldIsRefused_data();
    void invalidSingleFieldIsRefused();
    void pullOfNothingGivesAnEmptyList();
    void pagesFollowOneAnother();
    void limitOfZeroGivesAllRows();
    void pullFailureIsReported_data();
    void pullFailureIsReported();
    void damagedPageIsNotTheEndOfTheRows_data();
    void damagedPageIsNotTheEndOfTheRows();
    void lookupsFindRows_data();
    void lookupsFindRows();
    void lookupWithADoubleQuoteFailsAndTheNextWorks();
    void tiesAreOrderedByIdInTheSameDirection();
    void textIsSortedWithoutRegardToCase();
    void rowOfEachRecordIsItsPosition_data();
    void rowOfEachRecordIsItsPosition();
    void rowOutsideTheFilterIsWhereItWouldStand();
    void unsortedRowIsCountedById();
    void unknownRecordHasNoRow();
    void rowFailureIsReported();
    void rowFailureTellsWhatIsWrongWithTheStatement();
    void otherSortOrderCountsDownwards();
    void pageQueriesUseTheirIndex_data();
    void pageQueriesUseTheirIndex();

private:
    using Body = void (*)(const QSqlDatabase&, OperationReply*, int, const QVariantMap&);
    Reply run(Body body, const QVariantMap& parameters, int tableId = 1) const;
    Reply lookupRow(int id, const QVariantMap& parameters, int tableId = 1) const;
    QVariantList pullColumn(const QString& field, QVariantMap parameters) const;

    std::unique_ptr<ConnectionFixture> m_fixture;
};

Reply ReadOperationsTest::run(Body body, const QVariantMap& parameters, int tableId) const
{
    auto reply = std::make_unique<OperationReply>();
    body(m_fixture->connection(), reply.get(), tableId, parameters);
    reply->waitForFinished();
    return reply;
}

Reply ReadOperationsTest::lookupRow(int id, const QVariantMap& parameters, int tableId) const
{
    auto reply = std::make_unique<OperationReply>();
    runLookupMetaDataRow(m_fixture->connection(), reply.get(), tableId, id, parameters);
    reply->waitForFinished();
    return reply;
}

QVariantList ReadOperationsTest::pullColumn(const QString& field, QVariantMap parameters) const
{
    parameters.insert("singleField", field);
    const Reply reply = run(runPullMetaData, parameters);
    return reply->hasError() ? QVariantList{ reply->errorString() } : reply->result("items").toList();
}

void ReadOperationsTest::initTestCase()
{
    m_fixture = std::make_unique<ConnectionFixture>();
    QVERIFY(writeMetaData(m_fixture->connection(), 1, earlierRecords(), 1000, false).isEmpty());
    QVERIFY(writeMetaData(m_fixture->connection(), 1, laterRecords(), 2000, false).isEmpty());
}

void ReadOperationsTest::cleanupTestCase()
{
    m_fixture.reset();
}

void ReadOperationsTest::rowsAreCounted_data()
{
    QTest::addColumn<QVariantMap>("parameters");
    QTest::addColumn<int>("count");

    QTest::newRow("all") << QVariantMap() << 6;
    QTest::newRow("last scanned") << QVariantMap{ { "lastScannedOnly", true } } << 2;
    QTest::newRow("playlist") << QVariantMap{ { "playlistOnly", true } } << 3;
    QTest::newRow("both") << QVariantMap{ { "lastScannedOnly", true }, { "playlistOnly", true } } << 1;
    QTest::newRow("lookup") << lookup("kick") << 2;
    QTest::newRow("page") << QVariantMap{ { "limit", 2 }, { "offset", 1 } } << 6;
    QTest::newRow("offset alone") << QVariantMap{ { "offset", 3 } } << 6;
    QTest::newRow("sorted") << sorted({}, "rating", 1) << 6;
    QTest::newRow("nothing") << lookup("nowhere") << 0;
}

void ReadOperationsTest::rowsAreCounted()
{
    QFETCH(QVariantMap, parameters);
    QFETCH(int, count);

    const Reply reply = run(runGetRowsCount, parameters);

    QCOMPARE(reply->errorString(), QString());
    QCOMPARE(reply->result("rowsCount"), QVariant(count));
}

void ReadOperationsTest::countFailureIsReported()
{
    const Reply reply = run(runGetRowsCount, {}, 16);

    QVERIFY2(reply->errorString().startsWith("Unable to get rows count: no such table: MetaData16"),
        qPrintable(reply->errorString()));
    QVERIFY(!reply->result("rowsCount").isValid());
}

void ReadOperationsTest::pullGivesWholeRecords()
{
    const Reply reply = run(runPullMetaData, {});

    QCOMPARE(reply->errorString(), QString());
    const auto items = reply->result("items").value<MetaDataList>();
    QCOMPARE(items.size(), 6);
    for (int index = 0; index < items.size(); ++index) {
        MetaData expected = (earlierRecords() + laterRecords()).at(index);
        expected.setId(index + 1);
        expected.setScanTimestamp(index < 4 ? 1000 : 2000);
        QCOMPARE(items.at(index).toVariantMap(), expected.toVariantMap());
    }
}

void ReadOperationsTest::pullGivesOneColumnInRowOrder()
{
    QCOMPARE(pullColumn("library", sorted({}, "filePath", 0)),
        QVariantList({ "", "Drums", "drums", "Odd", "Odd", "Loops" }));
    QCOMPARE(pullColumn("id", sorted({}, "rating", 0)), QVariantList({ 3, 1, 2, 5, 6, 4 }));
}

void ReadOperationsTest::everyFieldMayBeTheSingleField()
{
    for (const QString& field : allFieldNames())
        QCOMPARE(pullColumn(field, { { "limit", 4 } }).size(), 4);
}

void ReadOperationsTest::invalidSingleFieldIsRefused_data()
{
    QTest::addColumn<QString>("field");

    QTest::newRow("unknown") << "nope";
    QTest::newRow("never stored") << "error";
    QTest::newRow("other case") << "ID";
    QTest::newRow("two") << "id, title";
}

void ReadOperationsTest::invalidSingleFieldIsRefused()
{
    QFETCH(QString, field);

    const Reply reply = run(runPullMetaData, { { "singleField", field } });

    QCOMPARE(reply->errorString(), QStringLiteral("Invalid single field specified"));
    QVERIFY(!reply->result("items").isValid());
}

void ReadOperationsTest::pullOfNothingGivesAnEmptyList()
{
    const Reply records = run(runPullMetaData, {}, 2);
    const Reply column = run(runPullMetaData, { { "singleField", "id" } }, 2);

    QVERIFY(!records->hasError());
    QCOMPARE(records->result("items").userType(), qMetaTypeId<MetaDataList>());
    QVERIFY(records->result("items").value<MetaDataList>().isEmpty());
    QVERIFY(!column->hasError());
    QCOMPARE(column->result("items"), QVariant(QVariantList()));
}

void ReadOperationsTest::pagesFollowOneAnother()
{
    const QVariantList all = pullColumn("id", sorted({}, "fileName", 1));

    QVariantList pages;
    for (int offset = 0; offset < 6; offset += 2) {
        QVariantMap parameters = sorted({}, "fileName", 1);
        parameters.insert("limit", 2);
        parameters.insert("offset", offset);
        const QVariantList page = pullColumn("id", parameters);
        QCOMPARE(page.size(), 2);
        pages += page;
    }

    QCOMPARE(pages, all);
}

void ReadOperationsTest::limitOfZeroGivesAllRows()
{
    QCOMPARE(pullColumn("id", { { "limit", 0 } }).size(), 6);
}

void ReadOperationsTest::pullFailureIsReported_data()
{
    QTest::addColumn<int>("tableId");
    QTest::addColumn<QVariantMap>("parameters");

    QTest::newRow("no such table") << 16 << QVariantMap();
    QTest::newRow("table zero") << 0 << QVariantMap();
    QTest::newRow("offset without limit") << 1 << QVariantMap{ { "offset", 100 } };
    QTest::newRow("unknown lookup field") << 1 << lookup("x", { "nowhere" });
    QTest::newRow("double quote") << 1 << lookup("a\"b");
    QTest::newRow("double quotes that make a statement") << 1 << lookup("d%\"))--");
    QTest::newRow("two double quotes") << 1 << lookup("\"\"");
}

void ReadOperationsTest::pullFailureIsReported()
{
    QFETCH(int, tableId);
    QFETCH(QVariantMap, parameters);
    const QString frame = "Unable to select MetaData: ";

    const Reply reply = run(runPullMetaData, parameters, tableId);

    QVERIFY2(reply->errorString().startsWith(frame), qPrintable(reply->errorString()));
    QVERIFY(reply->errorString().size() > frame.size());
    QVERIFY(!reply->result("items").isValid());
}

void ReadOperationsTest::damagedPageIsNotTheEndOfTheRows_data()
{
    QTest::addColumn<QString>("singleField");
    QTest::newRow("records") << QString();
    QTest::newRow("one field") << "artist";
}

void ReadOperationsTest::damagedPageIsNotTheEndOfTheRows()
{
    QFETCH(QString, singleField);
    const ConnectionFixture fixture;
    QCOMPARE(fixture.execute("INSERT INTO MetaData1 (filePath, fileName, fileType, description) WITH RECURSIVE n(i) AS "
                             "(SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<5000) SELECT i, i, '', 'Sound' FROM n"),
        QString());
    damageRow(fixture, 4000);
    // It has nothing in its cache.
    const TestConnection other(fixture.filePath());

    OperationReply reply;
    runPullMetaData(other.connection(), &reply, 1, { { "singleField", singleField } });

    QVERIFY2(reply.errorString().startsWith("Unable to select MetaData: "), qPrintable(reply.errorString()));
    QVERIFY(!reply.result("items").isValid());
}

void ReadOperationsTest::lookupsFindRows_data()
{
    QTest::addColumn<QVariantMap>("parameters");
    QTest::addColumn<QVariantList>("ids");

    QTest::newRow("any case") << lookup("KICK") << QVariantList{ 1, 4 };
    QTest::newRow("any field") << lookup("loop") << QVariantList{ 2, 4 };
    QTest::newRow("every term") << lookup("loop kick") << QVariantList{ 4 };
    QTest::newRow("negated") << lookup("!drum") << QVariantList{ 3, 4, 5, 6 };
    QTest::newRow("negated in all fields") << lookup("!loop") << QVariantList{ 1, 3, 5, 6 };
    QTest::newRow("plain and negated") << lookup("kick !drum") << QVariantList{ 4 };
    QTest::newRow("no lookup fields") << lookup("kick", {}) << QVariantList{ 1, 2, 3, 4, 5, 6 };
    QTest::newRow("blanks") << lookup("  ") << QVariantList{ 1, 2, 3, 4, 5, 6 };
    QTest::newRow("percent is a wildcard") << lookup("k%k") << QVariantList{ 1, 4 };
    QTest::newRow("underscore is a wildcard") << lookup("k_ck") << QVariantList{ 1, 4 };
    QTest::newRow("place marker") << lookup("50%1") << QVariantList{ 6 };
    QTest::newRow("apostrophe") << lookup("it's") << QVariantList{ 5 };
    QTest::newRow("bracket") << lookup("[odd]") << QVariantList{ 5 };
    QTest::newRow("semicolon") << lookup("];") << QVariantList{ 5 };
    QTest::newRow("question mark") << lookup("why?") << QVariantList{ 5 };
    QTest::newRow("colon") << lookup(":id") << QVariantList{ 5 };
    QTest::newRow("all of them") << lookup("it's [odd]; why? :id") << QVariantList{ 5 };
}

void ReadOperationsTest::lookupsFindRows()
{
    QFETCH(QVariantMap, parameters);
    QFETCH(QVariantList, ids);

    QVariantList found = pullColumn("id", parameters);
    std::sort(found.begin(), found.end(), [](const QVariant& a, const QVariant& b) { return a.toInt() < b.toInt(); });

    QCOMPARE(found, ids);
    QCOMPARE(run(runGetRowsCount, parameters)->result("rowsCount").toInt(), ids.size());
    for (int row = 0; row < ids.size(); ++row)
        QCOMPARE(lookupRow(ids.at(row).toInt(), parameters)->result("row"), QVariant(row));
}

void ReadOperationsTest::lookupWithADoubleQuoteFailsAndTheNextWorks()
{
    QVERIFY(run(runPullMetaData, lookup("a\"b"))->hasError());
    QVERIFY(run(runGetRowsCount, lookup("a\"b"))->hasError());
    QVERIFY(lookupRow(1, lookup("a\"b"))->hasError());

    QCOMPARE(run(runGetRowsCount, lookup("kick"))->result("rowsCount").toInt(), 2);
}

void ReadOperationsTest::tiesAreOrderedByIdInTheSameDirection()
{
    QCOMPARE(pullColumn("id", sorted({}, "rating", 0)), QVariantList({ 3, 1, 2, 5, 6, 4 }));
    QCOMPARE(pullColumn("id", sorted({}, "rating", 1)), QVariantList({ 4, 6, 5, 2, 1, 3 }));
}

void ReadOperationsTest::textIsSortedWithoutRegardToCase()
{
    const QVariantList names = pullColumn("fileName", sorted({}, "fileName", 0));

    QCOMPARE(names,
        QVariantList(
            { "50%1_off.wav", "bass.aif", "it's [odd]; why? at :id.wav", "Kick.mp3", "kick.wav", "Snare loop.wav" }));
}

void ReadOperationsTest::rowOfEachRecordIsItsPosition_data()
{
    QTest::addColumn<QVariantMap>("parameters");

    const QMap<QString, QVariantMap> filters{ { "all", {} }, { "lookup", lookup("o") },
        { "apostrophe", lookup("it's !:sortFieldTerminator") }, { "playlist", { { "playlistOnly", true } } },
        { "last scanned", { { "lastScannedOnly", true } } } };
    for (auto filter = filters.begin(); filter != filters.end(); ++filter) {
        for (const QString& field : sortableFieldNames()) {
            QTest::newRow(qPrintable(filter.key() + ' ' + field + " up")) << sorted(filter.value(), field, 0);
            QTest::newRow(qPrintable(filter.key() + ' ' + field + " down")) << sorted(filter.value(), field, 1);
        }
    }
}

void ReadOperationsTest::rowOfEachRecordIsItsPosition()
{
    QFETCH(QVariantMap, parameters);
    const QVariantList ids = pullColumn("id", parameters);
    QVERIFY(!ids.isEmpty());

    for (int row = 0; row < ids.size(); ++row) {
        const Reply reply = lookupRow(ids.at(row).toInt(), parameters);
        QCOMPARE(reply->errorString(), QString());
        QCOMPARE(reply->result("row"), QVariant(row));
    }
}

void ReadOperationsTest::rowOutsideTheFilterIsWhereItWouldStand()
{
    // Record 3 (rating 1) is not found by "kick"; record 6 (33.5) would stand between 1 (5) and 4 (80).
    const QVariantMap parameters = sorted(lookup("kick"), "rating", 0);

    QCOMPARE(lookupRow(3, parameters)->result("row"), QVariant(0));
    QCOMPARE(lookupRow(6, parameters)->result("row"), QVariant(1));
}

void ReadOperationsTest::unsortedRowIsCountedById()
{
    for (const char* field : { "artist", "id", "" })
        QCOMPARE(lookupRow(4, sorted({}, field, 1))->result("row"), QVariant(3));
    QCOMPARE(lookupRow(4, lookup("kick"))->result("row"), QVariant(1));
}

void ReadOperationsTest::unknownRecordHasNoRow()
{
    QCOMPARE(lookupRow(99, {})->errorString(), QStringLiteral("Unable to find MetaData"));
    QCOMPARE(lookupRow(1, {}, 16)->errorString(), QStringLiteral("Unable to find MetaData"));
}

void ReadOperationsTest::rowFailureIsReported()
{
    const QString frame = "Unable to find MetaData: ";

    const Reply reply = lookupRow(1, lookup("a\"b"));

    QVERIFY2(reply->errorString().startsWith(frame), qPrintable(reply->errorString()));
    QVERIFY(reply->errorString().size() > frame.size());
}

void ReadOperationsTest::rowFailureTellsWhatIsWrongWithTheStatement()
{
    const Reply reply = lookupRow(1, lookup("x", { "nowhere" }));

    QVERIFY2(reply->errorString().startsWith("Unable to find MetaData: no such column: nowhere"),
        qPrintable(reply->errorString()));
}

void ReadOperationsTest::otherSortOrderCountsDownwards()
{
    const QVariantMap parameters = sorted({}, "rating", 2);

    QCOMPARE(pullColumn("id", parameters).first(), QVariant(3));
    QCOMPARE(lookupRow(3, parameters)->result("row"), QVariant(5));
}

void ReadOperationsTest::pageQueriesUseTheirIndex_data()
{
    QTest::addColumn<QVariantMap>("parameters");
    QTest::addColumn<QString>("index");

    for (const QString& field : sortableFieldNames()) {
        for (const int order : { 0, 1 }) {
            const QString direction = order == 0 ? " up" : " down";
            QTest::newRow(qPrintable("all " + field + direction)) << sorted({}, field,
                order) << (field == "filePath" ? QString("sqlite_autoindex_MetaData3_1") : "MetaData3_" + field);
            QTest::newRow(qPrintable("last scanned " + field + direction))
                << sorted({ { "lastScannedOnly", true } }, field, order) << "MetaData3_scanTimestamp_" + field;
            QTest::newRow(qPrintable("playlist " + field + direction))
                << sorted({ { "playlistOnly", true } }, field, order) << "MetaData3_playlist_" + field;
        }
    }
}

void ReadOperationsTest::pageQueriesUseTheirIndex()
{
    QFETCH(QVariantMap, parameters);
    QFETCH(QString, index);
    parameters.insert("limit", 50);

    const QStringList plan = m_fixture->queryPlan(composeSelect(3, "*", parameters));

    const QString text = plan.join('\n');
    QVERIFY2(text.contains(QRegularExpression("USING INDEX " + index + "\\b")), qPrintable(text));
    QVERIFY2(!text.contains("TEMP B-TREE"), qPrintable(text));
}

QTEST_GUILESS_MAIN(ReadOperationsTest)

#include "tst_readoperations.moc"
