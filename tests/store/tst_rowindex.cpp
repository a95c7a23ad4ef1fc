// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/rowindex.h"

#include "store/fieldcatalogue.h"
#include "store/sqlitestatement.h"
#include "tests/store/connectionfixture.h"

#include <QtTest>

class RowIndexTest : public QObject
{
    Q_OBJECT

private slots:
    void changedRowsTakeTheirPlaces_data();
    void changedRowsTakeTheirPlaces();
    void fewChangesLeaveTheOrderInMemory_data();
    void fewChangesLeaveTheOrderInMemory();
    void orderIsReadAnewWhenThePlacesCannotBeFound();
};

namespace {

constexpr int rows = 1500;
constexpr int tableId = 1;

// Many rows of equal durations and ratings, every third without a duration.
std::unique_ptr<ConnectionFixture> makeTable()
{
    auto fixture = std::make_unique<ConnectionFixture>();
    const QString fault = fixture->execute(
        QString("INSERT INTO MetaData1 (id, filePath, fileName, fileType, library, description, duration, rating) "
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<%1) "
                "SELECT i, '/s/' || ((i*79)%%1), ((i*79)%%1) || '.wav', iif(i%2, 'wav', 'WAV'), 'Library ' || (i%7), "
                "'Sound ' || i, iif(i%3, 1+i%5, NULL), i%4 FROM n")
            .arg(rows));
    if (!fault.isEmpty())
        qFatal("%s", qPrintable(fault));
    return fixture;
}

std::vector<qint64> idsOf(RowIndex& index, const QString& field)
{
    std::vector<qint64> ids;
    if (const std::vector<quint32>* order = index.order(field)) {
        for (const quint32 row : *order)
            ids.push_back(index.id(row));
    }
    return ids;
}

std::vector<qint64> idsOf(const ConnectionFixture& fixture, const QString& field)
{
    std::vector<qint64> ids;
    for (const QVariant& id : fixture.column(QString("SELECT id FROM MetaData1 ORDER BY %1, id").arg(field)))
        ids.push_back(id.toLongLong());
    return ids;
}

std::vector<qint64> numbers(qint64 first, qint64 last)
{
    std::vector<qint64> ids;
    for (qint64 id = first; id <= last; ++id)
        ids.push_back(id);
    return ids;
}

} // namespace

Q_DECLARE_METATYPE(std::vector<qint64>)

void RowIndexTest::changedRowsTakeTheirPlaces_data()
{
    QTest::addColumn<QString>("statement");
    QTest::addColumn<std::vector<qint64>>("ids");
    const auto update = [](const char* name, const char* assignment, const std::vector<qint64>& ids) {
        QStringList texts;
        for (const qint64 id : ids)
            texts.append(QString::number(id));
        QTest::newRow(name) << QString("UPDATE MetaData1 SET %1 WHERE id IN (%2)").arg(assignment, texts.join(','))
                            << ids;
    };
    const auto insert = [](const char* name, const char* values) {
        QTest::newRow(name) << QString("INSERT INTO MetaData1 (id, filePath, fileName, fileType, library, description, "
                                       "duration, rating) VALUES (%1)")
                                   .arg(values)
                            << std::vector<qint64>{ 2000 };
    };
    update("less than all others", "duration=0.5, rating=-1, filePath='/a', fileName='a', description=''", { 500 });
    update("more than all others", "duration=99, rating=9, filePath='/z', fileName='z', description='z'", { 500 });
    update("equal to many, the least id", "duration=3, rating=2", { 1 });
    update("equal to many, the greatest id", "duration=3, rating=2", { rows });
    update("equal but for capitals", "fileType='WaV', library='LIBRARY 3'", { 700 });
    update("a value goes missing", "duration=NULL, rating=NULL", { 500 });
    update("a missing value comes", "duration=3", { 300 });
    update("a missing value is missed again", "rating=0, description='Sound of'", { 300 });
    update("nothing new", "rating=rating", { 500 });
    update("several", "duration=duration+1, rating=3-rating, filePath=filePath || 'x'", numbers(10, 20));
    update("too many to be placed one by one", "duration=1+id%11, rating=3-rating", numbers(10, 200));
    insert("a new row before all others", "2000, '', '', '', '', '', 0.1, -1");
    insert("a new row between others", "2000, '/s/5x', '77.wav', 'wav', 'Library 4', 'Sound 42', 3, 2");
    insert("a new row behind all others", "2000, 'z', 'z', 'z', 'z', 'z', 99, 9");
    insert("a new row without values", "2000, '', '', '', '', '', NULL, NULL");
    QTest::newRow("one row gone") << "DELETE FROM MetaData1 WHERE id=77" << std::vector<qint64>{ 77 };
    QTest::newRow("many rows gone") << "DELETE FROM MetaData1 WHERE id BETWEEN 77 AND 300" << numbers(77, 300);
}

void RowIndexTest::changedRowsTakeTheirPlaces()
{
    QFETCH(QString, statement);
    QFETCH(std::vector<qint64>, ids);
    const std::unique_ptr<ConnectionFixture> fixture = makeTable();
    for (const QString& field : sortableFieldNames()) {
        RowIndex index(sqliteHandle(fixture->connection()), tableId, {});
        QVERIFY2(idsOf(index, field) == idsOf(*fixture, field), qPrintable(field));
        fixture->execute("BEGIN");
        QCOMPARE(fixture->execute(statement), QString());

        QVERIFY(index.refresh(ids));

        QVERIFY2(idsOf(index, field) == idsOf(*fixture, field), qPrintable(field));
        fixture->execute("ROLLBACK");
    }
}

void RowIndexTest::fewChangesLeaveTheOrderInMemory_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("isLeft");
    QTest::newRow("one") << 1 << true;
    QTest::newRow("the most") << 64 << true;
    QTest::newRow("one more") << 65 << false;
}

void RowIndexTest::fewChangesLeaveTheOrderInMemory()
{
    QFETCH(int, count);
    const std::unique_ptr<ConnectionFixture> fixture = makeTable();
    RowIndex index(sqliteHandle(fixture->connection()), tableId, {});
    QVERIFY(index.order("rating") != nullptr);
    const size_t before = index.bytes();
    fixture->execute(QString("UPDATE MetaData1 SET rating=id WHERE id<=%1").arg(count));

    QVERIFY(index.refresh(numbers(1, count)));

    QTEST(index.bytes() >= before, "isLeft");
}

// The table is another one than the changes tell of.
void RowIndexTest::orderIsReadAnewWhenThePlacesCannotBeFound()
{
    const std::unique_ptr<ConnectionFixture> fixture = makeTable();
    RowIndex index(sqliteHandle(fixture->connection()), tableId, {});
    QVERIFY(index.order("rating") != nullptr);
    const size_t before = index.bytes();
    // Half of the others cannot be compared with.
    fixture->execute("DELETE FROM MetaData1 WHERE id%2=0");

    QVERIFY(index.refresh({ 1, 3 }));

    QVERIFY(index.bytes() < before);
}

QTEST_GUILESS_MAIN(RowIndexTest)
#include "tst_rowindex.moc"
