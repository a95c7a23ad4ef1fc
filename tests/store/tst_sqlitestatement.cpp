// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/sqlitestatement.h"
#include "tests/store/connectionfixture.h"

#include <QtTest>

class SqliteStatementTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void rowsAreReadOneByOne();
    void boundStatementBeginsAnew();
    void valuesOfEachKindAreBound_data();
    void valuesOfEachKindAreBound();
    void changedRowsAreCounted();
    void wrongStatementFails();
    void failureWhileReadingIsTold();

private:
    std::unique_ptr<ConnectionFixture> m_fixture;
    sqlite3* m_handle = nullptr;
};

void SqliteStatementTest::initTestCase()
{
    m_fixture = std::make_unique<ConnectionFixture>(ConnectionFixture::Schema::None);
    m_handle = sqliteHandle(m_fixture->connection());
    QVERIFY(m_handle != nullptr);
}

void SqliteStatementTest::cleanupTestCase()
{
    m_fixture.reset();
}

void SqliteStatementTest::rowsAreReadOneByOne()
{
    SqliteStatement cursor(m_handle, "SELECT 7, 'é' || char(0) || 'x' UNION ALL SELECT 8, NULL");

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

void SqliteStatementTest::boundStatementBeginsAnew()
{
    SqliteStatement cursor(m_handle, "SELECT ?1 + 1");
    for (const qint64 value : { Q_INT64_C(1), Q_INT64_C(1) << 40 }) {
        cursor.bind(1, value);
        QVERIFY(cursor.next());
        QCOMPARE(cursor.integer(0), value + 1);
    }
}

void SqliteStatementTest::valuesOfEachKindAreBound_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("expected");
    QTest::newRow("nothing") << QVariant() << "null NULL";
    QTest::newRow("null text") << QVariant(QString()) << "null NULL";
    QTest::newRow("empty text") << QVariant(QStringLiteral("")) << "text ''";
    QTest::newRow("text") << QVariant(QStringLiteral("é'\n")) << "text 'é''\n'";
    QTest::newRow("double") << QVariant(0.5) << "real 0.5";
    QTest::newRow("number") << QVariant(-7) << "integer -7";
    QTest::newRow("large number") << QVariant(Q_INT64_C(1) << 40) << "integer 1099511627776";
}

void SqliteStatementTest::valuesOfEachKindAreBound()
{
    QFETCH(QVariant, value);
    QFETCH(QString, expected);
    SqliteStatement cursor(m_handle, "SELECT typeof(?1) || ' ' || quote(?1)");

    cursor.bind(1, QVariant(QStringLiteral("a longer text that was bound before")));
    cursor.bind(1, value);

    QVERIFY(cursor.next());
    const std::string_view text = cursor.text(0);
    QCOMPARE(QString::fromUtf8(text.data(), int(text.size())), expected);
}

void SqliteStatementTest::changedRowsAreCounted()
{
    QCOMPARE(m_fixture->execute("CREATE TABLE counted (value INTEGER CHECK (value < 10))"), QString());
    QCOMPARE(m_fixture->execute("INSERT INTO counted VALUES (1), (2), (3)"), QString());
    SqliteStatement cursor(m_handle, "UPDATE counted SET value=value + ?1 WHERE value > 1");

    cursor.bind(1, qint64(1));
    QCOMPARE(cursor.run(), 2);
    cursor.bind(1, qint64(100));
    QCOMPARE(cursor.run(), -1);

    QVERIFY(cursor.hasFailed());
    QCOMPARE(m_fixture->column("SELECT value FROM counted ORDER BY value"), QVariantList({ 1, 3, 4 }));
}

void SqliteStatementTest::wrongStatementFails()
{
    SqliteStatement cursor(m_handle, "SELECT x FROM nowhere");
    cursor.bind(1, 1);

    QVERIFY(cursor.hasFailed());
    QVERIFY(!cursor.next());
}

void SqliteStatementTest::failureWhileReadingIsTold()
{
    SqliteStatement cursor(m_handle, "SELECT abs(-9223372036854775808)");

    QVERIFY(!cursor.next());
    QVERIFY(cursor.hasFailed());
}

QTEST_GUILESS_MAIN(SqliteStatementTest)

#include "tst_sqlitestatement.moc"
