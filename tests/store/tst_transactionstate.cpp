// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/transactionstate.h"
#include "tests/store/connectionfixture.h"

#include <QtTest>

class TransactionStateTest : public QObject
{
    Q_OBJECT

private slots:
    void freshConnectionHasNoTransaction();
    void begunTransactionIsActiveAndLeftAlone();
    void endedTransactionIsNotActive_data();
    void endedTransactionIsNotActive();
    void fullDiskEndsTheTransaction();
};

void TransactionStateTest::freshConnectionHasNoTransaction()
{
    const ConnectionFixture fixture(ConnectionFixture::Schema::None);

    QVERIFY(!isTransactionActive(fixture.connection()));
    QVERIFY(!isTransactionActive(fixture.connection()));
}

void TransactionStateTest::begunTransactionIsActiveAndLeftAlone()
{
    const ConnectionFixture fixture(ConnectionFixture::Schema::None);
    QCOMPARE(fixture.execute("CREATE TABLE numbers (n)"), QString());
    QCOMPARE(fixture.execute("BEGIN TRANSACTION"), QString());
    QCOMPARE(fixture.execute("INSERT INTO numbers VALUES (1)"), QString());

    QVERIFY(isTransactionActive(fixture.connection()));

    QCOMPARE(fixture.execute("COMMIT"), QString());
    QCOMPARE(fixture.value("SELECT COUNT(*) FROM numbers").toInt(), 1);
}

void TransactionStateTest::endedTransactionIsNotActive_data()
{
    QTest::addColumn<QString>("statement");

    QTest::newRow("commit") << "COMMIT";
    QTest::newRow("rollback") << "ROLLBACK";
}

void TransactionStateTest::endedTransactionIsNotActive()
{
    QFETCH(QString, statement);
    const ConnectionFixture fixture(ConnectionFixture::Schema::None);
    QCOMPARE(fixture.execute("BEGIN TRANSACTION"), QString());

    QCOMPARE(fixture.execute(statement), QString());

    QVERIFY(!isTransactionActive(fixture.connection()));
}

void TransactionStateTest::fullDiskEndsTheTransaction()
{
    const ConnectionFixture fixture(ConnectionFixture::Schema::None);
    QCOMPARE(fixture.execute("CREATE TABLE blobs (bytes)"), QString());
    QCOMPARE(fixture.execute("PRAGMA max_page_count=10"), QString());
    QCOMPARE(fixture.execute("BEGIN TRANSACTION"), QString());

    const QString error = fixture.execute("INSERT INTO blobs VALUES (zeroblob(1000000))");

    QVERIFY2(error.contains("full"), qPrintable(error));
    QVERIFY(!isTransactionActive(fixture.connection()));
}

QTEST_GUILESS_MAIN(TransactionStateTest)

#include "tst_transactionstate.moc"
