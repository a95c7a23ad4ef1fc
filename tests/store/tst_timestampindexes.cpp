// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/sqlitestatement.h"
#include "store/timestampindexes.h"
#include "tests/store/connectionfixture.h"

#include <QtTest>

#include <sqlite3.h>

namespace {

const QString indexesOfTable = QStringLiteral("SELECT name || ': ' || sql FROM sqlite_master WHERE type='index' AND "
                                              "tbl_name='%1' AND sql IS NOT NULL ORDER BY rowid");

bool neverCanceled()
{
    return false;
}

// Refuses to make one index.
int refuse(void* /*unused*/, int action, const char* name, const char*, const char*, const char*)
{
    return action == SQLITE_CREATE_INDEX && qstrcmp(name, "MetaData2_scanTimestamp_library") == 0 ? SQLITE_DENY
                                                                                                  : SQLITE_OK;
}

} // namespace

class TimestampIndexesTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void indexesOfTheTimestampAreDropped();
    void indexesComeBackInTheirOrder();
    void otherTablesKeepTheirIndexes();
    void oddNamesAndTextsComeBack();
    void tableWithoutSuchIndexesIsLeftAlone();
    void runningStatementKeepsItsIndexes();
    void canceledDropKeepsTheOthers();
    void canceledCreationIsTold();
    void failedCreationIsTold();
    void rollbackBringsAllBack();

private:
    QVariantList indexes(const QString& table = QStringLiteral("MetaData2")) const
    {
        return m_fixture->column(indexesOfTable.arg(table));
    }
    bool isSound() const { return m_fixture->value("PRAGMA integrity_check").toString() == QLatin1String("ok"); }

    std::unique_ptr<ConnectionFixture> m_fixture;
    sqlite3* m_handle = nullptr;
};

void TimestampIndexesTest::init()
{
    m_fixture = std::make_unique<ConnectionFixture>();
    m_handle = sqliteHandle(m_fixture->connection());
    QVERIFY(m_handle != nullptr);
    QCOMPARE(m_fixture->execute("INSERT INTO MetaData2 (filePath, fileName, fileType, library, description, duration) "
                                "WITH RECURSIVE numbers(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM numbers "
                                "WHERE i < 500) SELECT '/' || i, i, 'wav', 'l', 'd' || i % 7, i FROM numbers"),
        QString());
    QCOMPARE(m_fixture->execute("BEGIN TRANSACTION"), QString());
}

void TimestampIndexesTest::cleanup()
{
    m_fixture.reset();
}

// The partial ones stand behind them, and would otherwise come before.
void TimestampIndexesTest::indexesOfTheTimestampAreDropped()
{
    TimestampIndexes(m_handle, "MetaData2").drop(neverCanceled);

    QCOMPARE(indexes().size(), 6);
    QVERIFY(indexes().first().toString().startsWith("MetaData2_fileName: "));
    QVERIFY(indexes().last().toString().startsWith("MetaData2_rating: "));
}

void TimestampIndexesTest::indexesComeBackInTheirOrder()
{
    const QVariantList before = indexes();
    QCOMPARE(before.size(), 20);

    TimestampIndexes timestampIndexes(m_handle, "MetaData2");
    timestampIndexes.drop(neverCanceled);
    QVERIFY(timestampIndexes.create(neverCanceled));

    QCOMPARE(indexes(), before);
    QVERIFY(isSound());
}

void TimestampIndexesTest::otherTablesKeepTheirIndexes()
{
    const QVariantList before = indexes("MetaData12");

    TimestampIndexes(m_handle, "MetaData2").drop(neverCanceled);

    QCOMPARE(indexes("MetaData12"), before);
}

void TimestampIndexesTest::oddNamesAndTextsComeBack()
{
    QCOMPARE(m_fixture->execute("CREATE UNIQUE INDEX \"a \"\"é %1 'index\" ON MetaData2 (id DESC, scanTimestamp) "
                                "WHERE fileName <> '%2'"),
        QString());
    const QVariantList before = indexes();

    TimestampIndexes timestampIndexes(m_handle, "MetaData2");
    timestampIndexes.drop(neverCanceled);
    QCOMPARE(indexes().size(), 6);
    QVERIFY(timestampIndexes.create(neverCanceled));

    QCOMPARE(indexes(), before);
}

void TimestampIndexesTest::tableWithoutSuchIndexesIsLeftAlone()
{
    QCOMPARE(m_fixture->execute("CREATE TABLE plain (scanTimestamp INTEGER UNIQUE, other INTEGER)"), QString());
    QCOMPARE(m_fixture->execute("CREATE INDEX plain_other ON plain (other)"), QString());

    TimestampIndexes timestampIndexes(m_handle, "plain");
    timestampIndexes.drop(neverCanceled);

    QCOMPARE(indexes("plain").size(), 1);
    QVERIFY(timestampIndexes.create(neverCanceled));
}

void TimestampIndexesTest::runningStatementKeepsItsIndexes()
{
    const QVariantList before = indexes();
    SqliteStatement running(m_handle, "SELECT id FROM MetaData2");
    QVERIFY(running.next());

    TimestampIndexes timestampIndexes(m_handle, "MetaData2");
    timestampIndexes.drop(neverCanceled);

    QCOMPARE(indexes(), before);
    QVERIFY(timestampIndexes.create(neverCanceled));
}

void TimestampIndexesTest::canceledDropKeepsTheOthers()
{
    int questions = 0;
    TimestampIndexes timestampIndexes(m_handle, "MetaData2");
    timestampIndexes.drop([&questions]() { return ++questions > 3; });

    QCOMPARE(indexes().size(), 17);
    QVERIFY(timestampIndexes.create(neverCanceled));
    QCOMPARE(indexes().size(), 20);
}

void TimestampIndexesTest::canceledCreationIsTold()
{
    int questions = 0;
    TimestampIndexes timestampIndexes(m_handle, "MetaData2");
    timestampIndexes.drop(neverCanceled);

    QVERIFY(!timestampIndexes.create([&questions]() { return ++questions > 3; }));
    QCOMPARE(indexes().size(), 9);
}

void TimestampIndexesTest::failedCreationIsTold()
{
    TimestampIndexes timestampIndexes(m_handle, "MetaData2");
    timestampIndexes.drop(neverCanceled);
    sqlite3_set_authorizer(m_handle, refuse, nullptr);

    QVERIFY(!timestampIndexes.create(neverCanceled));

    sqlite3_set_authorizer(m_handle, nullptr, nullptr);
    QCOMPARE(indexes().size(), 9);
}

void TimestampIndexesTest::rollbackBringsAllBack()
{
    const QVariantList before = indexes();

    TimestampIndexes timestampIndexes(m_handle, "MetaData2");
    timestampIndexes.drop(neverCanceled);
    QCOMPARE(m_fixture->execute("ROLLBACK"), QString());

    QCOMPARE(indexes(), before);
    QVERIFY(isSound());
}

QTEST_GUILESS_MAIN(TimestampIndexesTest)

#include "tst_timestampindexes.moc"
