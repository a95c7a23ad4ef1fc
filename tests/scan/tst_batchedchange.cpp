// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/batchedchange.h"

#include "store/operationreply.h"
#include "store/querycomposer.h"
#include "tests/store/connectionfixture.h"

#include <QSqlQuery>
#include <QtTest>

#include <functional>

namespace {

constexpr int testedTable = 1;
constexpr int rowsCount = 120;

/// Gives each row of the batches a rating of 5.
class RatingChange final : public BatchedChange
{
public:
    RatingChange(const QSqlDatabase& connection, OperationReply* reply, const QVariantMap& parameters = {})
        : BatchedChange(connection, reply, testedTable, parameters)
    {
    }

    QString columns = "id";
    std::function<bool(RatingChange&)> afterBatch = [](RatingChange& /*change*/) {
        return true;
    };
    using BatchedChange::fail;

private:
    bool changeRows() override
    {
        while (!isAtEnd()) {
            QVector<RowBatches::Row> rows;
            if (!readBatch(columns, rows))
                return false;
            for (const RowBatches::Row& row : rows)
                rate(row.first().toLongLong());
            addChangedRows(rows.size());
            showProgress();
            if (!afterBatch(*this))
                return false;
        }
        return true;
    }
    void rate(qint64 id) const
    {
        connection().exec(
            QString("UPDATE %1 SET rating=5 WHERE id=%2").arg(metaDataTableName(testedTable), QString::number(id)));
    }
};

} // namespace

class BatchedChangeTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void allBatchesAreChanged();
    void onlyRowsOfTheViewAreChanged();
    void progressIsToldFromTheStart();
    void whatFailsLeavesAllAsItWas();
    void whatIsCanceledLeavesAllAsItWas();
    void cancelAfterTheLastBatchCounts();
    void batchThatCannotBeReadIsAnError();
    void rowsThatCannotBeCountedAreAnError();
    void writerElsewhereIsAnErrorAtOnce();

private:
    int ratedRows() const { return m_table->value("SELECT COUNT(*) FROM MetaData1 WHERE rating=5").toInt(); }

    std::unique_ptr<ConnectionFixture> m_table;
    std::unique_ptr<OperationReply> m_reply;
};

void BatchedChangeTest::init()
{
    m_table = std::make_unique<ConnectionFixture>();
    m_reply = std::make_unique<OperationReply>();
    const QString error = m_table->execute(
        QString("INSERT INTO MetaData1 (filePath, fileName, fileType, description) WITH RECURSIVE n(i) AS "
                "(SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<%1) SELECT i, i, '', 'Sound ' || i FROM n")
            .arg(rowsCount));
    QCOMPARE(error, QString());
}

void BatchedChangeTest::cleanup()
{
    m_reply.reset();
    m_table.reset();
}

void BatchedChangeTest::allBatchesAreChanged()
{
    RatingChange(m_table->connection(), m_reply.get()).run();

    QCOMPARE(m_reply->errorString(), QString());
    QCOMPARE(m_reply->result("replacementsCount").toInt(), rowsCount);
    QCOMPARE(ratedRows(), rowsCount);
}

void BatchedChangeTest::onlyRowsOfTheViewAreChanged()
{
    const QVariantMap parameters{ { "lookup", "11" }, { "lookupFields", QStringList{ "description" } } };

    RatingChange(m_table->connection(), m_reply.get(), parameters).run();

    // 11 and 110 to 119.
    QCOMPARE(m_reply->result("replacementsCount").toInt(), 11);
    QCOMPARE(ratedRows(), 11);
}

void BatchedChangeTest::progressIsToldFromTheStart()
{
    QStringList steps;
    connect(m_reply.get(), &OperationReply::progress, this,
        [&steps](int value, int total) { steps.append(QString("%1/%2").arg(value).arg(total)); });

    RatingChange(m_table->connection(), m_reply.get()).run();

    m_reply->waitForFinished();
    QCOMPARE(steps, (QStringList{ "0/-1", "0/120", "50/120", "100/120", "120/120" }));
}

void BatchedChangeTest::whatFailsLeavesAllAsItWas()
{
    RatingChange change(m_table->connection(), m_reply.get());
    change.afterBatch = [](RatingChange& failing) {
        return failing.fail("no more");
    };

    change.run();

    QCOMPARE(m_reply->errorString(), QString("no more"));
    QCOMPARE(m_reply->result("replacementsCount"), QVariant());
    QCOMPARE(ratedRows(), 0);
}

void BatchedChangeTest::whatIsCanceledLeavesAllAsItWas()
{
    int batches = 0;
    RatingChange change(m_table->connection(), m_reply.get());
    change.afterBatch = [&](RatingChange& /*canceled*/) {
        ++batches;
        m_reply->cancel();
        return true;
    };

    change.run();

    QCOMPARE(m_reply->errorString(), QString("Canceled"));
    QCOMPARE(batches, 1);
    QCOMPARE(ratedRows(), 0);
}

void BatchedChangeTest::cancelAfterTheLastBatchCounts()
{
    int batches = 0;
    RatingChange change(m_table->connection(), m_reply.get());
    change.afterBatch = [&](RatingChange& /*canceled*/) {
        if (++batches == 3)
            m_reply->cancel();
        return true;
    };

    change.run();

    QCOMPARE(batches, 3);
    QCOMPARE(m_reply->errorString(), QString("Canceled"));
    QCOMPARE(ratedRows(), 0);
}

void BatchedChangeTest::batchThatCannotBeReadIsAnError()
{
    int batches = 0;
    RatingChange change(m_table->connection(), m_reply.get());
    change.afterBatch = [&](RatingChange& broken) {
        ++batches;
        broken.columns = "id, noSuchColumn";
        return true;
    };

    change.run();

    QCOMPARE(batches, 1);
    QVERIFY2(m_reply->errorString().startsWith("Unable to select MetaData: "), qPrintable(m_reply->errorString()));
    QCOMPARE(ratedRows(), 0);
}

void BatchedChangeTest::rowsThatCannotBeCountedAreAnError()
{
    QCOMPARE(m_table->execute("DROP TABLE MetaData1"), QString());

    RatingChange(m_table->connection(), m_reply.get()).run();

    QVERIFY2(m_reply->errorString().startsWith("Unable to get rows count: "), qPrintable(m_reply->errorString()));
}

void BatchedChangeTest::writerElsewhereIsAnErrorAtOnce()
{
    int batches = 0;
    m_table->execute("PRAGMA busy_timeout=0");
    const TestConnection other(m_table->filePath());
    QCOMPARE(other.execute("BEGIN IMMEDIATE"), QString());
    RatingChange change(m_table->connection(), m_reply.get());
    change.afterBatch = [&](RatingChange& /*change*/) {
        ++batches;
        return true;
    };

    change.run();

    QVERIFY2(
        m_reply->errorString().startsWith("Unable to begin replace transaction: "), qPrintable(m_reply->errorString()));
    QCOMPARE(batches, 0);
}

QTEST_GUILESS_MAIN(BatchedChangeTest)
#include "tst_batchedchange.moc"
