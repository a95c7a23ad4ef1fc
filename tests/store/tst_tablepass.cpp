// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/sqlitestatement.h"
#include "store/tablepass.h"
#include "tests/store/connectionfixture.h"

#include <QtTest>

#include <memory>
#include <new>

class TablePassTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void rowsComeInTheOrderOfTheirIds();
    void emptyTableIsComplete();
    void textsComeAsStored();
    void visitorEndsThePass();
    void transactionGoesOnAfterAnEndedPass();
    void exceptionComesOut();
    void missingColumnFails();
    void passMayBeRepeated();

private:
    QVector<qint64> visitedIds(const QString& table = QStringLiteral("sounds")) const;

    std::unique_ptr<ConnectionFixture> m_fixture;
    sqlite3* m_handle = nullptr;
};

void TablePassTest::init()
{
    m_fixture = std::make_unique<ConnectionFixture>(ConnectionFixture::Schema::None);
    m_handle = sqliteHandle(m_fixture->connection());
    QVERIFY(m_handle != nullptr);
    QCOMPARE(m_fixture->execute("CREATE TABLE sounds (id INTEGER PRIMARY KEY, name TEXT)"), QString());
    // It holds all that a pass asks for, in another order.
    QCOMPARE(m_fixture->execute("CREATE INDEX sounds_name ON sounds (name)"), QString());
    QCOMPARE(m_fixture->execute("INSERT INTO sounds VALUES (9, 'a'), (2, 'c'), (5, 'b')"), QString());
}

void TablePassTest::cleanup()
{
    m_fixture.reset();
}

QVector<qint64> TablePassTest::visitedIds(const QString& table) const
{
    QVector<qint64> ids;
    const bool isComplete
        = TablePass(m_handle, table, { QStringLiteral("id"), QStringLiteral("name") }).run([&](const auto& row) {
              ids.append(row.integer(0));
              return true;
          });
    return isComplete ? ids : QVector<qint64>{ -1 };
}

void TablePassTest::rowsComeInTheOrderOfTheirIds()
{
    QCOMPARE(visitedIds(), QVector<qint64>({ 2, 5, 9 }));
}

void TablePassTest::emptyTableIsComplete()
{
    QCOMPARE(m_fixture->execute("DELETE FROM sounds"), QString());

    QCOMPARE(visitedIds(), QVector<qint64>());
}

void TablePassTest::textsComeAsStored()
{
    QCOMPARE(m_fixture->execute("DELETE FROM sounds"), QString());
    QCOMPARE(m_fixture->execute("INSERT INTO sounds VALUES (1, 'é' || char(0) || 'x'), (2, NULL), (3, x'61'), (4, '')"),
        QString());
    QStringList values;
    const bool isComplete
        = TablePass(m_handle, QStringLiteral("sounds"), { QStringLiteral("name") }).run([&](const auto& row) {
              const QString kind = row.isText(0) ? QStringLiteral("text ") : QStringLiteral("other ");
              const std::string_view text = row.text(0);
              values.append(kind + QString::fromUtf8(text.data(), int(text.size())));
              return true;
          });

    QVERIFY(isComplete);
    QCOMPARE(
        values, QStringList({ QStringLiteral("text é") + QChar(0) + QLatin1Char('x'), "other ", "other a", "text " }));
}

void TablePassTest::visitorEndsThePass()
{
    int visits = 0;
    const bool isComplete
        = TablePass(m_handle, QStringLiteral("sounds"), { QStringLiteral("id") }).run([&](const auto& row) {
              ++visits;
              return row.integer(0) < 5;
          });

    QVERIFY(!isComplete);
    QCOMPARE(visits, 2);
}

void TablePassTest::transactionGoesOnAfterAnEndedPass()
{
    QCOMPARE(m_fixture->execute("BEGIN"), QString());
    QCOMPARE(m_fixture->execute("INSERT INTO sounds VALUES (10, 'd')"), QString());
    const auto end = [](const TablePass::Row&) {
        return false;
    };
    QVERIFY(!TablePass(m_handle, QStringLiteral("sounds"), { QStringLiteral("id") }).run(end));

    QCOMPARE(m_fixture->execute("COMMIT"), QString());
    QCOMPARE(visitedIds(), QVector<qint64>({ 2, 5, 9, 10 }));
}

void TablePassTest::exceptionComesOut()
{
    TablePass pass(m_handle, QStringLiteral("sounds"), { QStringLiteral("id") });
    const auto fail = [](const TablePass::Row&) -> bool {
        throw std::bad_alloc();
    };

    QVERIFY_EXCEPTION_THROWN(pass.run(fail), std::bad_alloc);
    QCOMPARE(visitedIds(), QVector<qint64>({ 2, 5, 9 }));
}

void TablePassTest::missingColumnFails()
{
    QCOMPARE(m_fixture->execute("ALTER TABLE sounds RENAME COLUMN name TO title"), QString());

    QCOMPARE(visitedIds(), QVector<qint64>({ -1 }));
    QCOMPARE(visitedIds(QStringLiteral("nowhere")), QVector<qint64>({ -1 }));
}

void TablePassTest::passMayBeRepeated()
{
    TablePass pass(m_handle, QStringLiteral("sounds"), { QStringLiteral("id") });
    int visits = 0;
    const auto count = [&](const TablePass::Row&) {
        ++visits;
        return true;
    };

    QVERIFY(pass.run(count));
    QCOMPARE(m_fixture->execute("DELETE FROM sounds WHERE id=5"), QString());
    QVERIFY(pass.run(count));

    QCOMPARE(visits, 5);
}

QTEST_GUILESS_MAIN(TablePassTest)

#include "tst_tablepass.moc"
