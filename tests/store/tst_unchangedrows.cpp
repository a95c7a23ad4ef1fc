// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/fieldcatalogue.h"
#include "store/querycomposer.h"
#include "store/sqlitestatement.h"
#include "store/unchangedrows.h"
#include "tests/store/connectionfixture.h"

#include <QtTest>

#include <csignal>
#include <memory>
#include <sqlite3.h>
#include <sys/resource.h>

namespace {

constexpr int tableId = 2;
constexpr int rowsCount = 4000;
constexpr qint64 earlierScan = 1000;
constexpr qint64 laterScan = 1700000000123;

const QString tableIndexes
    = QStringLiteral("SELECT name || ': ' || sql FROM sqlite_master WHERE tbl_name='MetaData2' ORDER BY rowid");

bool neverCanceled()
{
    return false;
}

int refuseIndexes(void* /*unused*/, int action, const char*, const char*, const char*, const char*)
{
    return action == SQLITE_CREATE_INDEX ? SQLITE_DENY : SQLITE_OK;
}

// The rows that were refused for a constraint, or for another reason.
std::vector<qint64> failedIds(const UnchangedRows& unchangedRows, bool isConstraint)
{
    std::vector<qint64> ids;
    for (const UnchangedRows::Failure& failure : unchangedRows.failures()) {
        if (failure.isConstraint == isConstraint)
            ids.push_back(failure.id);
    }
    return ids;
}

// No file of the process can grow beyond a size while it lives.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        // Without the signal a write beyond the limit fails like any other.
        std::signal(SIGXFSZ, SIG_IGN);
        const bool isRead = ::getrlimit(RLIMIT_FSIZE, &m_earlier) == 0;
        const rlimit limit = { bytes, m_earlier.rlim_max };
        if (!isRead || ::setrlimit(RLIMIT_FSIZE, &limit) != 0)
            qFatal("Cannot limit the size of files");
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_earlier); }
    Q_DISABLE_COPY(FileSizeLimit)

private:
    rlimit m_earlier = {};
};

// One view of each kind, in each order.
QVector<QVariantMap> views()
{
    QVector<QVariantMap> views;
    for (const QString& field : sortableFieldNames()) {
        for (int kind = 0; kind < 8; ++kind) {
            views.append({ { "sortField", field }, { "sortOrder", kind & 1 }, { "lastScannedOnly", (kind & 2) != 0 },
                { "playlistOnly", (kind & 4) != 0 } });
        }
    }
    return views;
}

} // namespace

class UnchangedRowsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void onlyNotedRowsAreTouched_data();
    void onlyNotedRowsAreTouched();
    void noRowsChangeNothing();
    void rowNotedTwiceIsTouched();
    void newIndexesServeTheSameQueries();
    void withoutATransactionIndexesStay();
    void runningStatementKeepsIndexesAndRowsAreTouched();
    void cancelOnTheWay_data();
    void cancelOnTheWay();
    void refusedRowIsTold_data();
    void refusedRowIsTold();
    void failureToMakeIndexesIsTold();
    void lostTransactionIsTold_data();
    void lostTransactionIsTold();
    void nothingIsWrittenAfterAFullDisk_data();
    void nothingIsWrittenAfterAFullDisk();

private:
    UnchangedRows noted(int count) const;
    void begin() const { QCOMPARE(m_fixture->execute("BEGIN TRANSACTION"), QString()); }
    void commit() const { QCOMPARE(m_fixture->execute("COMMIT"), QString()); }
    QVariantList rows() const
    {
        return m_fixture->column("SELECT id || filePath || rating || scanTimestamp FROM MetaData2 ORDER BY id");
    }
    int touchedCount() const
    {
        return m_fixture->value("SELECT COUNT(*) FROM MetaData2 WHERE scanTimestamp=" + QString::number(laterScan))
            .toInt();
    }
    // Where the first one stands among all: it changes when it is made anew.
    int placeOfIndex() const
    {
        return m_fixture->value("SELECT rowid FROM sqlite_master WHERE name='MetaData2_scanTimestamp_filePath'")
            .toInt();
    }
    bool isSound() const { return m_fixture->value("PRAGMA integrity_check").toString() == QLatin1String("ok"); }

    std::unique_ptr<ConnectionFixture> m_fixture;
    sqlite3* m_handle = nullptr;
};

void UnchangedRowsTest::init()
{
    m_fixture = std::make_unique<ConnectionFixture>();
    m_handle = sqliteHandle(m_fixture->connection());
    QVERIFY(m_handle != nullptr);
    const QString fill = QStringLiteral(
        "INSERT INTO MetaData2 (filePath, fileName, fileType, library, description, duration, rating, playlist, "
        "scanTimestamp) WITH RECURSIVE numbers(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM numbers WHERE i < %1) "
        "SELECT '/' || i, i, 'wav', 'l' || i % 9, 'd' || i % 77, 1 + i % 50, i % 100, i % 10 = 0, %2 FROM numbers");
    QCOMPARE(m_fixture->execute(fill.arg(QString::number(rowsCount), QString::number(earlierScan))), QString());
}

void UnchangedRowsTest::cleanup()
{
    m_fixture.reset();
}

// The rows from the first on.
UnchangedRows UnchangedRowsTest::noted(int count) const
{
    UnchangedRows unchangedRows(m_handle, metaDataTableName(tableId));
    for (int id = 1; id <= count; ++id)
        unchangedRows.add(id);
    return unchangedRows;
}

void UnchangedRowsTest::onlyNotedRowsAreTouched_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("areIndexesNew");
    QTest::newRow("one") << 1 << false;
    QTest::newRow("some hundred") << 123 << false;
    QTest::newRow("just less than a quarter") << 999 << false;
    QTest::newRow("a quarter") << 1000 << true;
    QTest::newRow("most") << 3999 << true;
    QTest::newRow("all") << rowsCount << true;
}

void UnchangedRowsTest::onlyNotedRowsAreTouched()
{
    QFETCH(int, count);
    QFETCH(bool, areIndexesNew);
    const QVariantList indexes = m_fixture->column(tableIndexes);
    const int place = placeOfIndex();
    begin();

    UnchangedRows unchangedRows = noted(count);
    QVERIFY(unchangedRows.touch(laterScan, neverCanceled));
    QVERIFY(unchangedRows.failures().empty());
    commit();

    QCOMPARE(touchedCount(), count);
    QCOMPARE(m_fixture->value("SELECT COUNT(*) FROM MetaData2 WHERE scanTimestamp=1000").toInt(), rowsCount - count);
    QCOMPARE(m_fixture->value("SELECT MAX(id) FROM MetaData2 WHERE scanTimestamp>1000").toInt(), count);
    QCOMPARE(placeOfIndex() != place, areIndexesNew);
    QCOMPARE(m_fixture->column(tableIndexes), indexes);
    QVERIFY(isSound());
}

void UnchangedRowsTest::noRowsChangeNothing()
{
    const QVariantList before = rows();
    begin();

    QVERIFY(noted(0).touch(laterScan, neverCanceled));
    commit();

    QCOMPARE(rows(), before);
}

void UnchangedRowsTest::rowNotedTwiceIsTouched()
{
    begin();
    UnchangedRows unchangedRows = noted(rowsCount);
    unchangedRows.add(1);

    QVERIFY(unchangedRows.touch(laterScan, neverCanceled));
    commit();

    QCOMPARE(touchedCount(), rowsCount);
}

// SQLite takes the first of several indexes that look equally good.
void UnchangedRowsTest::newIndexesServeTheSameQueries()
{
    QVector<QStringList> plans;
    for (const QVariantMap& view : views())
        plans.append(m_fixture->queryPlan(composeSelect(tableId, "*", view)));
    begin();

    QVERIFY(noted(rowsCount).touch(laterScan, neverCanceled));
    commit();

    const TestConnection later(m_fixture->filePath());
    for (int index = 0; index < plans.size(); ++index) {
        const QString statement = composeSelect(tableId, "*", views().at(index));
        QCOMPARE(m_fixture->queryPlan(statement), plans.at(index));
        QCOMPARE(later.queryPlan(statement), plans.at(index));
    }
}

void UnchangedRowsTest::withoutATransactionIndexesStay()
{
    const int place = placeOfIndex();

    QVERIFY(noted(1500).touch(laterScan, neverCanceled));

    QCOMPARE(touchedCount(), 1500);
    QCOMPARE(placeOfIndex(), place);
}

void UnchangedRowsTest::runningStatementKeepsIndexesAndRowsAreTouched()
{
    const int place = placeOfIndex();
    begin();
    {
        SqliteStatement running(m_handle, "SELECT id FROM MetaData2");
        QVERIFY(running.next());

        QVERIFY(noted(rowsCount).touch(laterScan, neverCanceled));
    }
    commit();

    QCOMPARE(touchedCount(), rowsCount);
    QCOMPARE(placeOfIndex(), place);
    QVERIFY(isSound());
}

void UnchangedRowsTest::cancelOnTheWay_data()
{
    QTest::addColumn<int>("questions");
    QTest::newRow("before the first index is dropped") << 0;
    QTest::newRow("while they are dropped") << 5;
    QTest::newRow("before the first row") << 14;
    QTest::newRow("among the rows") << 16;
    QTest::newRow("before the first index is made") << 18;
    QTest::newRow("before the last index is made") << 31;
}

void UnchangedRowsTest::cancelOnTheWay()
{
    QFETCH(int, questions);
    const QVariantList before = rows();
    const QVariantList indexes = m_fixture->column(tableIndexes);
    begin();
    int asked = 0;

    QVERIFY(!noted(rowsCount).touch(laterScan, [&]() { return asked++ >= questions; }));
    QCOMPARE(m_fixture->execute("ROLLBACK"), QString());

    QCOMPARE(rows(), before);
    QCOMPARE(m_fixture->column(tableIndexes), indexes);
    QVERIFY(isSound());
}

void UnchangedRowsTest::refusedRowIsTold_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("few rows") << 20;
    QTest::newRow("some hundred rows") << 515;
    QTest::newRow("all rows") << rowsCount;
}

void UnchangedRowsTest::refusedRowIsTold()
{
    QFETCH(int, count);
    QCOMPARE(m_fixture->execute("CREATE TEMP TRIGGER refuse BEFORE UPDATE ON main.MetaData2 WHEN OLD.id IN (7, 9, 19) "
                                "BEGIN SELECT RAISE(ABORT, 'refused'); END"),
        QString());
    begin();

    UnchangedRows unchangedRows = noted(count);
    QVERIFY(unchangedRows.touch(laterScan, neverCanceled));
    commit();

    QCOMPARE(failedIds(unchangedRows, true), std::vector<qint64>({ 19, 9, 7 }));
    QCOMPARE(failedIds(unchangedRows, false), std::vector<qint64>());
    QCOMPARE(touchedCount(), count - 3);
    QVERIFY(isSound());
}

void UnchangedRowsTest::failureToMakeIndexesIsTold()
{
    const QVariantList before = rows();
    begin();
    sqlite3_set_authorizer(m_handle, refuseIndexes, nullptr);

    QVERIFY(!noted(rowsCount).touch(laterScan, neverCanceled));
    sqlite3_set_authorizer(m_handle, nullptr, nullptr);
    QCOMPARE(m_fixture->execute("ROLLBACK"), QString());

    QCOMPARE(rows(), before);
    QVERIFY(isSound());
}

void UnchangedRowsTest::lostTransactionIsTold_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("few rows") << 20;
    QTest::newRow("some hundred rows") << 500;
}

void UnchangedRowsTest::lostTransactionIsTold()
{
    QFETCH(int, count);
    QCOMPARE(m_fixture->execute("CREATE TEMP TRIGGER refuse BEFORE UPDATE ON main.MetaData2 WHEN OLD.id=7 "
                                "BEGIN SELECT RAISE(ROLLBACK, 'refused'); END"),
        QString());
    const QVariantList before = rows();
    begin();

    QVERIFY(!noted(count).touch(laterScan, neverCanceled));

    QVERIFY(!m_fixture->execute("COMMIT").isEmpty());
    QCOMPARE(rows(), before);
}

void UnchangedRowsTest::nothingIsWrittenAfterAFullDisk_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("while few rows are touched") << 500;
    QTest::newRow("while indexes are dropped") << rowsCount;
}

// The journal, into which goes what is changed, finds no room.
void UnchangedRowsTest::nothingIsWrittenAfterAFullDisk()
{
    QFETCH(int, count);
    const QVariantList before = rows();
    const QVariantList indexes = m_fixture->column(tableIndexes);
    begin();
    UnchangedRows unchangedRows = noted(count);
    auto limit = std::make_unique<FileSizeLimit>(100000);

    QVERIFY(!unchangedRows.touch(laterScan, neverCanceled));

    limit.reset();
    QVERIFY(!m_fixture->execute("COMMIT").isEmpty());
    QCOMPARE(rows(), before);
    QCOMPARE(m_fixture->column(tableIndexes), indexes);
    QVERIFY(isSound());
}

QTEST_GUILESS_MAIN(UnchangedRowsTest)

#include "tst_unchangedrows.moc"
