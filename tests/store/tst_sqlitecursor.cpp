// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/sqlitecursor.h"
#include "tests/store/connectionfixture.h"

#include <QtTest>

class SqliteCursorTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void rowsAreReadOneByOne();
    void boundStatementBeginsAnew();
    void wrongStatementFails();
    void failureWhileReadingIsTold();

private:
    std::unique_ptr<ConnectionFixture> m_fixture;
    sqlite3* m_handle = nullptr;
};

void SqliteCursorTest::initTestCase()
{
    m_fixture = std::make_unique<ConnectionFixture>(ConnectionFixture::Schema::None);
    m_handle = sqliteHandle(m_fixture->connection());
    QVERIFY(m_handle != nullptr);
}

void SqliteCursorTest::cleanupTestCase()
{
    m_fixture.reset();
}

void SqliteCursorTest::rowsAreReadOneByOne()
{
    SqliteCursor cursor(m_handle, "SELECT 7, 'é' || char(0) || 'x' UNION ALL SELECT 8, NULL");

    QVERIFY(cursor.next());
    QCOMPARE(cursor.integer(0), qint64(7));
    QVERIFY(!cursor.isText(0));
    QVERIFY(cursor.isText(1));
    QVERIFY(cursor.text(1) == std::string_view("\xc3\xa9\0x", 4));
    QVERIFY(cursor.next());
    QVERIFY(!cursor.isText(1));
    QVERIFY(cursor.text(1).empty());
    QVERIFY(!cursor.next());
    QVERIFY(!cursor.hasFailed());
}

void SqliteCursorTest::boundStatementBeginsAnew()
{
    SqliteCursor cursor(m_handle, "SELECT ?1 + 1");
    for (const qint64 value : { Q_INT64_C(1), Q_INT64_C(1) << 40 }) {
        cursor.bind(1, value);
        QVERIFY(cursor.next());
        QCOMPARE(cursor.integer(0), value + 1);
    }
}

void SqliteCursorTest::wrongStatementFails()
{
    SqliteCursor cursor(m_handle, "SELECT x FROM nowhere");
    cursor.bind(1, 1);

    QVERIFY(cursor.hasFailed());
    QVERIFY(!cursor.next());
}

void SqliteCursorTest::failureWhileReadingIsTold()
{
    SqliteCursor cursor(m_handle, "SELECT abs(-9223372036854775808)");

    QVERIFY(!cursor.next());
    QVERIFY(cursor.hasFailed());
}

QTEST_GUILESS_MAIN(SqliteCursorTest)

#include "tst_sqlitecursor.moc"
