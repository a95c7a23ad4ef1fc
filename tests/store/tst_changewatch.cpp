// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/changewatch.h"
#include "store/sqlitestatement.h"
#include "tests/store/connectionfixture.h"

#include <QtTest>

using Verdict = ChangeWatch::Verdict;

class ChangeWatchTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void nothingHasChangedAfterSettling();
    void ownChangesAreToldRowByRow();
    void changesOfOtherTablesAreNone();
    void changesOfAnotherConnectionAreAnything();
    void rowsThatGoWithoutANoteAreAnything();
    void tooManyRowsAreAnything();
    void aLockedFileIsUnknown();

private:
    std::unique_ptr<ConnectionFixture> m_fixture;
    std::unique_ptr<ChangeWatch> m_watch;
};

namespace {

const QString insertion = QStringLiteral(
    "INSERT INTO %1 (filePath, fileName, fileType, description) WITH RECURSIVE n(i) AS (SELECT 1 UNION "
    "ALL SELECT i+1 FROM n WHERE i<%2) SELECT '/' || i || random(), '', '', '' FROM n");

} // namespace

void ChangeWatchTest::init()
{
    m_fixture = std::make_unique<ConnectionFixture>();
    QCOMPARE(m_fixture->execute(insertion.arg("MetaData1", "10")), QString());
    m_watch = std::make_unique<ChangeWatch>(sqliteHandle(m_fixture->connection()));
    m_watch->setTable("MetaData1");
    m_watch->ask();
    m_watch->settle();
}

void ChangeWatchTest::cleanup()
{
    m_watch.reset();
    m_fixture.reset();
}

void ChangeWatchTest::nothingHasChangedAfterSettling()
{
    QCOMPARE(m_watch->ask(), Verdict::Nothing);
    m_fixture->execute("UPDATE MetaData1 SET rating=2");
    QCOMPARE(m_watch->ask(), Verdict::Rows);
    m_watch->settle();
    QCOMPARE(m_watch->ask(), Verdict::Nothing);
}

void ChangeWatchTest::ownChangesAreToldRowByRow()
{
    m_fixture->execute("UPDATE MetaData1 SET rating=2 WHERE id=3");
    m_fixture->execute("DELETE FROM MetaData1 WHERE id=5");
    m_fixture->execute(insertion.arg("MetaData1", "1"));

    QCOMPARE(m_watch->ask(), Verdict::Rows);
    QVERIFY(m_watch->changedRows() == (std::vector<qint64>{ 3, 5, 11 }));
}

void ChangeWatchTest::changesOfOtherTablesAreNone()
{
    m_fixture->execute(insertion.arg("MetaData2", "10"));
    m_fixture->execute("UPDATE MetaData2 SET rating=2");

    QCOMPARE(m_watch->ask(), Verdict::Nothing);
}

void ChangeWatchTest::changesOfAnotherConnectionAreAnything()
{
    const TestConnection other(m_fixture->filePath());
    QCOMPARE(other.execute("UPDATE MetaData1 SET rating=2 WHERE id=3"), QString());

    QCOMPARE(m_watch->ask(), Verdict::Anything);
    m_watch->settle();
    QCOMPARE(m_watch->ask(), Verdict::Nothing);
}

// SQLite clears a whole table without a look at its rows.
void ChangeWatchTest::rowsThatGoWithoutANoteAreAnything()
{
    m_fixture->execute("DELETE FROM MetaData1");

    QCOMPARE(m_watch->ask(), Verdict::Anything);
}

void ChangeWatchTest::tooManyRowsAreAnything()
{
    m_fixture->execute(insertion.arg("MetaData1", "2000"));
    QCOMPARE(m_watch->ask(), Verdict::Rows);
    m_fixture->execute(insertion.arg("MetaData1", "1"));

    QCOMPARE(m_watch->ask(), Verdict::Anything);
}

void ChangeWatchTest::aLockedFileIsUnknown()
{
    m_fixture->execute("PRAGMA busy_timeout=0");
    const TestConnection other(m_fixture->filePath());
    QCOMPARE(other.execute("BEGIN EXCLUSIVE"), QString());

    QCOMPARE(m_watch->ask(), Verdict::Unknown);
    QCOMPARE(other.execute("COMMIT"), QString());
    QCOMPARE(m_watch->ask(), Verdict::Nothing);
}

QTEST_GUILESS_MAIN(ChangeWatchTest)

#include "tst_changewatch.moc"
