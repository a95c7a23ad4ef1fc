// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/transaction.h"
#include "tests/store/connectionfixture.h"

#include <QSqlQuery>
#include <QtTest>

class TransactionTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void committedChangesStay();
    void rolledBackChangesGo();
    void changesGoWithAnAbandonedTransaction();
    void beginFailsInsideATransaction();
    void failedBeginLeavesTheOtherTransactionAlone();
    void failedCommitIsRolledBack();
    void rollbackWithoutTransactionFails();
    void nothingHappensAfterTheEnd();
    void beginToWriteKeepsOtherWritersOut();
    void beginToWriteFailsWhileAnotherWrites();

private:
    int rowsCount() const { return m_fixture->value("SELECT COUNT(*) FROM parents").toInt(); }
    void insert() const { QCOMPARE(m_fixture->execute("INSERT INTO parents (id) VALUES (NULL)"), QString()); }
    // The constraint is looked at by COMMIT, which fails.
    void prepareOrphans() const
    {
        QCOMPARE(m_fixture->execute("PRAGMA foreign_keys=ON"), QString());
        QCOMPARE(m_fixture->execute("CREATE TABLE children (parent INTEGER REFERENCES parents (id) "
                                    "DEFERRABLE INITIALLY DEFERRED)"),
            QString());
    }

    std::unique_ptr<ConnectionFixture> m_fixture;
};

void TransactionTest::init()
{
    m_fixture = std::make_unique<ConnectionFixture>(ConnectionFixture::Schema::None);
    QCOMPARE(m_fixture->execute("CREATE TABLE parents (id INTEGER PRIMARY KEY)"), QString());
}

void TransactionTest::cleanup()
{
    m_fixture.reset();
}

void TransactionTest::committedChangesStay()
{
    {
        Transaction transaction(m_fixture->connection());
        QVERIFY(transaction.begin());
        insert();
        QVERIFY(transaction.commit());
        QVERIFY(transaction.errorText().isEmpty());
    }
    QCOMPARE(rowsCount(), 1);
}

void TransactionTest::rolledBackChangesGo()
{
    Transaction transaction(m_fixture->connection());
    QVERIFY(transaction.begin());
    insert();

    QVERIFY(transaction.rollback());

    QCOMPARE(rowsCount(), 0);
}

void TransactionTest::changesGoWithAnAbandonedTransaction()
{
    {
        Transaction transaction(m_fixture->connection());
        QVERIFY(transaction.begin());
        insert();
    }
    QCOMPARE(rowsCount(), 0);
    Transaction next(m_fixture->connection());
    QVERIFY(next.begin());
}

void TransactionTest::beginFailsInsideATransaction()
{
    Transaction first(m_fixture->connection());
    Transaction second(m_fixture->connection());
    QVERIFY(first.begin());

    QVERIFY(!second.begin());

    QVERIFY(second.errorText().contains("within a transaction"));
}

void TransactionTest::failedBeginLeavesTheOtherTransactionAlone()
{
    Transaction first(m_fixture->connection());
    QVERIFY(first.begin());
    insert();
    {
        Transaction second(m_fixture->connection());
        QVERIFY(!second.begin());
    }

    QVERIFY(first.commit());

    QCOMPARE(rowsCount(), 1);
}

void TransactionTest::failedCommitIsRolledBack()
{
    prepareOrphans();
    Transaction transaction(m_fixture->connection());
    QVERIFY(transaction.begin());
    insert();
    QCOMPARE(m_fixture->execute("INSERT INTO children VALUES (77)"), QString());

    QVERIFY(!transaction.commit());

    QVERIFY2(transaction.errorText().contains("FOREIGN KEY"), qPrintable(transaction.errorText()));
    QCOMPARE(rowsCount(), 0);
    Transaction next(m_fixture->connection());
    QVERIFY(next.begin());
    insert();
    QVERIFY(next.commit());
    QCOMPARE(rowsCount(), 1);
}

void TransactionTest::rollbackWithoutTransactionFails()
{
    Transaction transaction(m_fixture->connection());

    QVERIFY(!transaction.rollback());

    QVERIFY(!transaction.errorText().isEmpty());
}

void TransactionTest::nothingHappensAfterTheEnd()
{
    {
        Transaction transaction(m_fixture->connection());
        QVERIFY(transaction.begin());
        QVERIFY(transaction.commit());
        QCOMPARE(m_fixture->execute("BEGIN TRANSACTION"), QString());
        insert();
    }
    QCOMPARE(m_fixture->execute("COMMIT"), QString());
    QCOMPARE(rowsCount(), 1);
}

void TransactionTest::beginToWriteKeepsOtherWritersOut()
{
    const TestConnection other(m_fixture->filePath());
    other.execute("PRAGMA busy_timeout=1");
    Transaction transaction(m_fixture->connection());

    QVERIFY(transaction.beginWriting("parents"));

    QVERIFY(other.execute("INSERT INTO parents (id) VALUES (NULL)").contains("locked"));
    insert();
    QVERIFY(transaction.commit());
    QCOMPARE(other.execute("INSERT INTO parents (id) VALUES (NULL)"), QString());
    QCOMPARE(rowsCount(), 2);
}

void TransactionTest::beginToWriteFailsWhileAnotherWrites()
{
    const TestConnection other(m_fixture->filePath());
    m_fixture->execute("PRAGMA busy_timeout=1");
    QCOMPARE(other.execute("BEGIN IMMEDIATE"), QString());
    {
        Transaction transaction(m_fixture->connection());
        QVERIFY(!transaction.beginWriting("parents"));
        QVERIFY(transaction.errorText().contains("locked"));
    }
    QCOMPARE(other.execute("ROLLBACK"), QString());

    // Nothing is left open.
    Transaction next(m_fixture->connection());
    QVERIFY(next.beginWriting("parents"));
}

QTEST_GUILESS_MAIN(TransactionTest)

#include "tst_transaction.moc"
