// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/replaceoperation.h"

#include "scan/storeoperations.h"
#include "store/sqlitestatement.h"
#include "tests/scan/operationrecorder.h"
#include "tests/scan/rowhook.h"
#include "tests/scan/sidelock.h"
#include "tests/support/storefixture.h"
#include "tests/support/testsupport.h"

#include <QSqlDatabase>
#include <QtTest>

#include <sqlite3.h>

using TestSupport::await;
using TestSupport::StoreFixture;

namespace {

constexpr int tableId = 4;

MetaData recordOf(const QString& filePath, const QString& description, const QString& library = {})
{
    MetaData record = TestSupport::sampleRecord(filePath);
    record.setDescription(description);
    record.setLibrary(library);
    return record;
}

MetaDataList numberedRecords(int count, const QString& description)
{
    MetaDataList records;
    for (int number = 0; number < count; ++number)
        records.append(recordOf(QStringLiteral("/sounds/%1.wav").arg(number), description));
    return records;
}

QVariantMap lookup(const QString& text, const QString& field)
{
    return { { QStringLiteral("lookup"), text }, { QStringLiteral("lookupFields"), QStringList{ field } } };
}

// Only to read a record as a whole takes this column.
int refuseScanTimestamp(void* /*unused*/, int action, const char*, const char* column, const char*, const char*)
{
    return action == SQLITE_READ && qstrcmp(column, "scanTimestamp") == 0 ? SQLITE_DENY : SQLITE_OK;
}

// Has SQLite ask it about each statement that the store prepares; null lets all pass again.
void setAuthorizer(
    StoreFixture& store, int (*authorizer)(void*, int, const char*, const char*, const char*, const char*))
{
    const auto set = [authorizer]() {
        const QSqlDatabase connection = QSqlDatabase::database(QStringLiteral("MetaDatabase"), false);
        sqlite3_set_authorizer(sqliteHandle(connection), authorizer, nullptr);
    };
    QMetaObject::invokeMethod(&store.database(), set, Qt::BlockingQueuedConnection);
}

} // namespace

class ReplaceOperationTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void cleanupTestCase();
    void textIsReplaced_data();
    void textIsReplaced();
    void changedRowCountsOnceHoweverManyFieldsChange();
    void untouchedColumnsStayAsTheyAre();
    void filePathBringsNameAndTypeAlong_data();
    void filePathBringsNameAndTypeAlong();
    void emptySearchTextFillsEmptyFields();
    void onlyRowsOfTheViewAreTouched();
    void rowsThatLeaveTheViewDoNotHideOthers();
    void sortingAndPagingOfTheViewDoNotMatter();
    void unknownFieldsAreIgnored();
    void refusedRecordsGiveWarningsAndAreCounted();
    void rowsThatAreNoRecordsAreRefused_data();
    void rowsThatAreNoRecordsAreRefused();
    void valuesOfAnotherTypeBecomeTheRecords_data();
    void valuesOfAnotherTypeBecomeTheRecords();
    void idIsIgnored();
    void scanTimestampCanBeReplaced();
    void onlyColumnsThatChangeAreWritten();
    void progressGoesInTenths();
    void canceledRunChangesNothing();
    void invalidLookupIsReported();
    void beginFailureIsReported();
    void writerElsewhereIsReportedOnce();
    void failedCommitIsReportedAndTheNextRunWorks();
    void rowThatCannotBeReadIsLeftAlone();
    void closedStoreIsReported();

private:
    std::unique_ptr<OperationReply> replace(const QStringList& fields, const QString& before, const QString& after,
        Qt::CaseSensitivity caseSensitivity = Qt::CaseInsensitive, const QVariantMap& parameters = {});
    QStringList descriptions();

    std::unique_ptr<StoreFixture> m_store;
};

// Making a database takes longer than a test, so all share one.
void ReplaceOperationTest::init()
{
    if (!m_store)
        m_store = std::make_unique<StoreFixture>(scanBulkOperations());
    m_store->openEmpty(tableId);
}

void ReplaceOperationTest::cleanup()
{
    // Ends what a test has left open, which closing does as well.
    m_store->database().close();
}

void ReplaceOperationTest::cleanupTestCase()
{
    m_store.reset();
}

std::unique_ptr<OperationReply> ReplaceOperationTest::replace(const QStringList& fields, const QString& before,
    const QString& after, Qt::CaseSensitivity caseSensitivity, const QVariantMap& parameters)
{
    return await(m_store->database().replace(tableId, fields, before, after, caseSensitivity, parameters));
}

QStringList ReplaceOperationTest::descriptions()
{
    QStringList descriptions;
    for (const MetaData& record : m_store->records(tableId))
        descriptions.append(record.description());
    return descriptions;
}

void ReplaceOperationTest::textIsReplaced_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<int>("caseSensitivity");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<int>("count");
    const int any = Qt::CaseInsensitive;
    const int exact = Qt::CaseSensitive;
    QTest::newRow("any case") << "DRUM loop"
                              << "Drum"
                              << "Perc" << any << "Perc loop" << 1;
    QTest::newRow("exact case, other case") << "DRUM loop"
                                            << "Drum"
                                            << "Perc" << exact << "DRUM loop" << 0;
    QTest::newRow("exact case") << "Drum loop"
                                << "Drum"
                                << "Perc" << exact << "Perc loop" << 1;
    QTest::newRow("every occurrence") << "a-A-b-a"
                                      << "a"
                                      << "xa" << any << "xa-xa-b-xa" << 1;
    QTest::newRow("removal") << "Drum loop"
                             << " loop"
                             << "" << any << "Drum" << 1;
    QTest::newRow("no pattern") << "a.b"
                                << "."
                                << "+" << any << "a+b" << 1;
    QTest::newRow("percent signs") << "50%1"
                                   << "%1"
                                   << "%2" << any << "50%2" << 1;
    QTest::newRow("absent") << "Drum"
                            << "Bell"
                            << "x" << any << "Drum" << 0;
    QTest::newRow("empty search, text there") << "Drum"
                                              << ""
                                              << "x" << any << "Drum" << 0;
    QTest::newRow("empty search, empty text") << ""
                                              << ""
                                              << "x" << any << "x" << 1;
}

void ReplaceOperationTest::textIsReplaced()
{
    QFETCH(QString, text);
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(int, caseSensitivity);
    m_store->insert(tableId, { recordOf("/a.wav", text) });

    const auto reply = replace({ "description" }, before, after, Qt::CaseSensitivity(caseSensitivity));

    QCOMPARE(reply->errorString(), QString());
    QTEST(descriptions().first(), "expected");
    QTEST(reply->result("replacementsCount").toInt(), "count");
}

void ReplaceOperationTest::changedRowCountsOnceHoweverManyFieldsChange()
{
    m_store->insert(tableId, { recordOf("/drum.wav", "drum drum", "drum"), recordOf("/x.wav", "x", "y") });

    const auto reply = replace({ "filePath", "description", "library" }, "drum", "perc");

    QCOMPARE(reply->result("replacementsCount").toInt(), 1);
    const MetaData record = m_store->records(tableId).first();
    QCOMPARE(record.filePath(), QStringLiteral("/perc.wav"));
    QCOMPARE(record.description(), QStringLiteral("perc perc"));
    QCOMPARE(record.library(), QStringLiteral("perc"));
}

void ReplaceOperationTest::untouchedColumnsStayAsTheyAre()
{
    MetaData record = recordOf("/a.wav", "drum", "Mine");
    record.setRating(42.5);
    record.setPlaylist(1);
    record.setDuration(0.123456789);
    record.setArtist("Somebody");
    m_store->insert(tableId, { record }, 987654321012);
    QVariantMap expected = m_store->records(tableId).first().toVariantMap();
    expected.insert(QStringLiteral("description"), QStringLiteral("perc"));

    replace({ "description" }, "drum", "perc");

    QCOMPARE(m_store->records(tableId).first().toVariantMap(), expected);
}

void ReplaceOperationTest::filePathBringsNameAndTypeAlong_data()
{
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("fileType");
    QTest::newRow("another suffix") << "E:/New/Snare.AIFF"
                                    << "Snare.AIFF"
                                    << "aiff";
    QTest::newRow("no suffix") << "/new/Snare"
                               << "Snare"
                               << "";
    QTest::newRow("no name") << "/new/"
                             << ""
                             << "";
}

void ReplaceOperationTest::filePathBringsNameAndTypeAlong()
{
    QFETCH(QString, after);
    m_store->insert(tableId, { recordOf("D:/Old/kick.wav", "x") });

    const auto reply = replace({ "filePath" }, "d:/old/kick.wav", after);

    QVERIFY(!reply->hasWarnings());
    const MetaData record = m_store->records(tableId).first();
    QCOMPARE(record.filePath(), after);
    QTEST(record.fileName(), "fileName");
    QTEST(record.fileType(), "fileType");
}

void ReplaceOperationTest::emptySearchTextFillsEmptyFields()
{
    m_store->insert(tableId, { recordOf("/a.wav", "x", "Mine"), recordOf("/b.wav", "x"), recordOf("/c.wav", "x") });

    const auto reply = replace({ "library", "artist" }, "", "Misc");

    QStringList libraries;
    for (const MetaData& record : m_store->records(tableId)) {
        libraries.append(record.library());
        QCOMPARE(record.artist(), QStringLiteral("Misc"));
    }
    QCOMPARE(libraries, QStringList({ "Mine", "Misc", "Misc" }));
    QCOMPARE(reply->result("replacementsCount").toInt(), 3);
}

void ReplaceOperationTest::onlyRowsOfTheViewAreTouched()
{
    m_store->insert(tableId, { recordOf("/a.wav", "drum one"), recordOf("/b.wav", "drum two") }, 1);
    m_store->insert(tableId, { recordOf("/c.wav", "drum one") }, 2);

    replace({ "description" }, "drum", "perc", Qt::CaseSensitive, lookup("ONE :x ?", "description"));
    QCOMPARE(descriptions(), QStringList({ "drum one", "drum two", "drum one" }));
    replace({ "description" }, "drum", "perc", Qt::CaseSensitive, lookup("ONE", "description"));
    QCOMPARE(descriptions(), QStringList({ "perc one", "drum two", "perc one" }));
    replace({ "description" }, "o", "0", Qt::CaseSensitive, { { "lastScannedOnly", true } });
    QCOMPARE(descriptions(), QStringList({ "perc one", "drum two", "perc 0ne" }));
    replace({ "description" }, "e", "3", Qt::CaseSensitive, { { "playlistOnly", true } });
    QCOMPARE(descriptions(), QStringList({ "perc one", "drum two", "perc 0ne" }));
}

void ReplaceOperationTest::rowsThatLeaveTheViewDoNotHideOthers()
{
    m_store->insert(tableId, numberedRecords(230, QStringLiteral("drum")));

    const auto reply = replace({ "description" }, "drum", "perc", Qt::CaseSensitive, lookup("drum", "description"));

    QCOMPARE(reply->result("replacementsCount").toInt(), 230);
    QCOMPARE(descriptions().count(QStringLiteral("perc")), 230);
}

void ReplaceOperationTest::sortingAndPagingOfTheViewDoNotMatter()
{
    m_store->insert(tableId, numberedRecords(120, QStringLiteral("drum")));
    const QVariantMap view{ { "sortField", "fileName" }, { "sortOrder", 1 }, { "limit", 10 }, { "offset", 20 } };

    replace({ "description" }, "drum", "perc", Qt::CaseSensitive, view);

    QCOMPARE(descriptions().count(QStringLiteral("perc")), 120);
}

void ReplaceOperationTest::unknownFieldsAreIgnored()
{
    m_store->insert(tableId, { recordOf("/a.wav", "drum") });

    const auto reply = replace({ "nonsense", "Description", "error", "description" }, "drum", "perc");

    QVERIFY(!reply->hasError());
    QCOMPARE(descriptions(), QStringList{ "perc" });
}

void ReplaceOperationTest::refusedRecordsGiveWarningsAndAreCounted()
{
    m_store->insert(tableId, { recordOf("/one.wav", "x"), recordOf("/two.wav", "x"), recordOf("/a one.wav", "x") });
    OperationReply* reply = m_store->database().replace(tableId, { "filePath" }, "one", "TWO", Qt::CaseInsensitive, {});
    OperationRecorder recorder(reply);

    const auto ended = await(reply);

    QVERIFY(!ended->hasError());
    QCOMPARE(ended->result("replacementsCount").toInt(), 2);
    QCOMPARE(recorder.events(),
        QStringList({ "progress 0 of -1", "progress 0 of 3", "progress 3 of 3", "warnings 1", "finished" }));
    QCOMPARE(recorder.sortedWarnings(), QStringList{ "Database constraint violation: /TWO.wav" });
    QCOMPARE(m_store->records(tableId).at(2).filePath(), QStringLiteral("/a TWO.wav"));
}

void ReplaceOperationTest::rowsThatAreNoRecordsAreRefused_data()
{
    QTest::addColumn<QString>("change");
    QTest::newRow("no duration") << "duration=NULL";
    QTest::newRow("a rate beyond any record") << "sampleRate=4294967296";
}

// Another program may have written what a record cannot hold; its other values cannot be written again.
void ReplaceOperationTest::rowsThatAreNoRecordsAreRefused()
{
    QFETCH(QString, change);
    m_store->insert(tableId, { recordOf("/a.wav", "drum") });
    QCOMPARE(m_store->execute("UPDATE MetaData4 SET " + change), QString());
    OperationReply* reply
        = m_store->database().replace(tableId, { "description" }, "drum", "perc", Qt::CaseInsensitive, {});
    OperationRecorder recorder(reply);

    const auto ended = await(reply);

    QCOMPARE(ended->result("replacementsCount").toInt(), 1);
    QCOMPARE(recorder.sortedWarnings(), QStringList{ "Database constraint violation: /a.wav" });
    QCOMPARE(descriptions(), QStringList{ "drum" });
}

void ReplaceOperationTest::valuesOfAnotherTypeBecomeTheRecords_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("expected");
    QTest::newRow("a blob for a text") << "comments"
                                       << "x'6162'"
                                       << "text ab";
    QTest::newRow("an empty blob for a text") << "comments"
                                              << "x''"
                                              << "text ";
    QTest::newRow("a missing text") << "comments"
                                    << "NULL"
                                    << "null ";
    QTest::newRow("a number for a text") << "comments"
                                         << "12"
                                         << "text 12";
    QTest::newRow("a text for a number") << "rating"
                                         << "'high'"
                                         << "real 0.0";
    QTest::newRow("a blob for a number") << "rating"
                                         << "x'61'"
                                         << "real 0.0";
    QTest::newRow("a missing number") << "rating"
                                      << "NULL"
                                      << "real 0.0";
    QTest::newRow("a whole number for a number") << "rating"
                                                 << "7"
                                                 << "real 7.0";
    QTest::newRow("a fraction for a whole number") << "playlist"
                                                   << "2.25"
                                                   << "integer 2";
    QTest::newRow("a text for a whole number") << "playlist"
                                               << "'yes'"
                                               << "integer 0";
    QTest::newRow("a missing whole number") << "playlist"
                                            << "NULL"
                                            << "integer 0";
    QTest::newRow("the greatest whole number") << "playlist"
                                               << "2147483647"
                                               << "integer 2147483647";
}

// Another program may have written them; the row is read as a record and written again.
void ReplaceOperationTest::valuesOfAnotherTypeBecomeTheRecords()
{
    QFETCH(QString, field);
    QFETCH(QString, stored);
    QFETCH(QString, expected);
    m_store->insert(tableId, { recordOf("/a.wav", "drum") });
    QCOMPARE(m_store->execute(QStringLiteral("UPDATE MetaData4 SET %1=%2").arg(field, stored)), QString());

    replace({ "description" }, "drum", "perc");

    QCOMPARE(descriptions(), QStringList{ "perc" });
    const QString statement = QStringLiteral("SELECT typeof(%1) || ' ' || coalesce(%1, '') FROM MetaData4").arg(field);
    QCOMPARE(TestSupport::firstValue(m_store->filePath(), statement).toString(), expected);
}

// The row's other fields go to the row of the new number.
void ReplaceOperationTest::idIsIgnored()
{
    m_store->insert(tableId, { recordOf("/one.wav", "first"), recordOf("/two.wav", "second") });
    const QString second = QString::number(m_store->records(tableId).at(1).id());

    const auto reply = replace({ "id", "filePath" }, second, "1");

    QCOMPARE(reply->result("replacementsCount").toInt(), 0);
    QVERIFY(!reply->hasWarnings());
    QCOMPARE(descriptions(), QStringList({ "first", "second" }));
}

void ReplaceOperationTest::scanTimestampCanBeReplaced()
{
    m_store->insert(tableId, { recordOf("/one.wav", "first") });
    QCOMPARE(m_store->execute("UPDATE MetaData4 SET scanTimestamp=77"), QString());

    const auto reply = replace({ "scanTimestamp" }, "77", "78");

    QCOMPARE(reply->result("replacementsCount").toInt(), 1);
    QCOMPARE(descriptions(), QStringList{ "first" });
}

void ReplaceOperationTest::onlyColumnsThatChangeAreWritten()
{
    m_store->insert(tableId, { recordOf("/a.wav", "drum") });
    QCOMPARE(m_store->execute("CREATE TRIGGER refuse BEFORE UPDATE OF rating ON MetaData4 BEGIN "
                              "SELECT RAISE(ABORT, 'no'); END"),
        QString());

    replace({ "description" }, "drum", "perc");

    QCOMPARE(descriptions(), QStringList{ "perc" });
    QCOMPARE(m_store->execute("DROP TRIGGER refuse"), QString());
}

void ReplaceOperationTest::progressGoesInTenths()
{
    m_store->insert(tableId, numberedRecords(120, QStringLiteral("drum")));
    OperationReply* reply
        = m_store->database().replace(tableId, { "description" }, "drum", "perc", Qt::CaseInsensitive, {});
    OperationRecorder recorder(reply);

    await(reply);

    QCOMPARE(recorder.events(),
        QStringList({ "progress 0 of -1", "progress 0 of 120", "progress 50 of 120", "progress 100 of 120",
            "progress 120 of 120", "finished" }));
}

void ReplaceOperationTest::canceledRunChangesNothing()
{
    m_store->insert(tableId, numberedRecords(120, QStringLiteral("drum")));
    QStringList events;
    {
        // In the second batch.
        RowCancellation cancellation(m_store->database(), tableId, 60);
        OperationReply* reply = cancellation.watch(
            m_store->database().replace(tableId, { "description" }, "drum", "perc", Qt::CaseInsensitive, {}));
        OperationRecorder recorder(reply);
        await(reply);
        QVERIFY(cancellation.wasHit());
        events = recorder.events();
    }

    QVERIFY(events.contains(QStringLiteral("progress 50 of 120")));
    QVERIFY(!events.contains(QStringLiteral("progress 120 of 120")));
    QCOMPARE(events.mid(events.size() - 2), QStringList({ "error Canceled", "finished" }));
    QCOMPARE(descriptions().count(QStringLiteral("drum")), 120);
}

void ReplaceOperationTest::invalidLookupIsReported()
{
    const auto reply = replace({ "description" }, "a", "b", Qt::CaseSensitive, lookup("\"", "description"));

    QVERIFY2(
        reply->errorString().startsWith(QLatin1String("Unable to get rows count: ")), qPrintable(reply->errorString()));
}

void ReplaceOperationTest::beginFailureIsReported()
{
    QCOMPARE(m_store->execute(QStringLiteral("BEGIN")), QString());

    const auto reply = replace({ "description" }, "a", "b");

    QVERIFY2(reply->errorString().startsWith(QLatin1String("Unable to begin replace transaction: ")),
        qPrintable(reply->errorString()));
}

void ReplaceOperationTest::writerElsewhereIsReportedOnce()
{
    m_store->insert(tableId, numberedRecords(3, QStringLiteral("drum")));
    const SideLock lock(m_store->filePath(), SideLock::Kind::Writing);

    const auto reply = replace({ "description" }, "drum", "perc");

    QVERIFY2(reply->errorString().startsWith(QLatin1String("Unable to begin replace transaction: ")),
        qPrintable(reply->errorString()));
    QVERIFY(!reply->hasWarnings());
}

void ReplaceOperationTest::failedCommitIsReportedAndTheNextRunWorks()
{
    m_store->insert(tableId, numberedRecords(3, QStringLiteral("drum")));
    {
        const SideLock lock(m_store->filePath(), SideLock::Kind::Reading);
        const auto reply = replace({ "description" }, "drum", "perc");
        QVERIFY2(reply->errorString().startsWith(QLatin1String("Unable to commit replace transaction: ")),
            qPrintable(reply->errorString()));
    }
    QCOMPARE(descriptions().count(QStringLiteral("drum")), 3);

    QVERIFY(!replace({ "description" }, "drum", "perc")->hasError());

    QCOMPARE(descriptions().count(QStringLiteral("perc")), 3);
}

// Its rating is no number, so it is read as a whole before it is written. Without what is stored there is nothing to
// write, and that is told, not a constraint that the lack of it would violate.
void ReplaceOperationTest::rowThatCannotBeReadIsLeftAlone()
{
    m_store->insert(tableId, { recordOf(QStringLiteral("/drum.wav"), QStringLiteral("drum"), QStringLiteral("Mine")) });
    QCOMPARE(m_store->execute(QStringLiteral("UPDATE MetaData4 SET rating='good'")), QString());
    const QString rows = QStringLiteral("SELECT filePath || description || library || rating FROM MetaData4");
    const QVariantList before = TestSupport::firstColumn(m_store->filePath(), rows);
    setAuthorizer(*m_store, refuseScanTimestamp);
    OperationReply* running
        = m_store->database().replace(tableId, { "filePath", "description" }, "drum", "perc", Qt::CaseSensitive, {});
    OperationRecorder recorder(running);

    const auto reply = await(running);

    setAuthorizer(*m_store, nullptr);
    QVERIFY(!reply->hasError());
    QCOMPARE(recorder.sortedWarnings(), QStringList{ "Unknown database error: /perc.wav" });
    QCOMPARE(TestSupport::firstColumn(m_store->filePath(), rows), before);
}

void ReplaceOperationTest::closedStoreIsReported()
{
    m_store->database().close();

    QCOMPARE(replace({ "description" }, "a", "b")->errorString(), QStringLiteral("Database is not opened"));
}

QTEST_GUILESS_MAIN(ReplaceOperationTest)
#include "tst_replaceoperation.moc"
