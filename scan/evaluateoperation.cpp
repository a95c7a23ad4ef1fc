// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/evaluateoperation.h"

#include "scan/libraryrules.h"
#include "scan/rowbatches.h"
#include "store/operationreply.h"
#include "store/querycomposer.h"
#include "store/transaction.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

namespace {

class Evaluation
{
    Q_DECLARE_TR_FUNCTIONS(Evaluation)

public:
    Evaluation(const QSqlDatabase& connection, OperationReply* reply, int tableId, const QString& rules)
        : m_connection(connection)
        , m_reply(reply)
        , m_batches(connection, tableId, {})
        , m_tableId(tableId)
        , m_rules(parseLibraryRules(rules))
    {
    }

    void run();

private:
    bool evaluateRows();
    bool evaluateBatch(QSqlQuery& update, const QVector<RowBatches::Row>& rows);
    bool updateRow(QSqlQuery& update, const QVariant& id, const QString& library);
    void finish(Transaction& transaction, bool isComplete);

    const QSqlDatabase& m_connection;
    OperationReply* m_reply;
    RowBatches m_batches;
    int m_tableId;
    LibraryRules m_rules;
    int m_replacementsCount = 0;
    QString m_error;
};

void Evaluation::run()
{
    m_reply->setProgress(0, -1);
    if (!m_batches.count()) {
        m_reply->setError(tr("Unable to get rows count: %1").arg(m_batches.errorText()));
        return;
    }
    m_reply->setProgress(0, m_batches.rowsCount());
    Transaction transaction(m_connection);
    if (!transaction.begin()) {
        m_reply->setError(tr("Unable to begin replace transaction: %1").arg(transaction.errorText()));
        return;
    }
    const bool isComplete = evaluateRows();
    finish(transaction, isComplete);
}

// False when canceled or failed. Every query has ended when it returns, so that the transaction can be closed.
bool Evaluation::evaluateRows()
{
    QSqlQuery update(m_connection);
    // A statement that cannot be prepared fails at its first execution, with its error text.
    update.prepare(QStringLiteral("UPDATE %1 SET library=:library WHERE id=:id").arg(metaDataTableName(m_tableId)));
    do {
        if (m_reply->isCanceled())
            return false;
        QVector<RowBatches::Row> rows;
        if (!m_batches.next(QStringLiteral("id, fileName, library"), rows)) {
            m_error = tr("Unable to select MetaData: %1").arg(m_batches.errorText());
            return false;
        }
        if (!evaluateBatch(update, rows))
            return false;
        m_reply->setProgress(m_batches.processedCount(), m_batches.rowsCount());
    } while (!m_batches.atEnd());
    return !m_reply->isCanceled();
}

bool Evaluation::evaluateBatch(QSqlQuery& update, const QVector<RowBatches::Row>& rows)
{
    enum Column
    {
        Id,
        FileName,
        Library
    };
    for (const RowBatches::Row& row : rows) {
        const QString library = evaluateLibrary(row.value(FileName).toString(), m_rules);
        if (library != row.value(Library).toString() && !updateRow(update, row.value(Id), library))
            return false;
    }
    return true;
}

bool Evaluation::updateRow(QSqlQuery& update, const QVariant& id, const QString& library)
{
    // A null string would be bound as NULL, which the column refuses.
    update.bindValue(QStringLiteral(":library"), library.isNull() ? QString::fromLatin1("") : library);
    update.bindValue(QStringLiteral(":id"), id);
    if (!update.exec()) {
        m_error = tr("Unable to update MetaData: %1").arg(update.lastError().text());
        return false;
    }
    ++m_replacementsCount;
    return true;
}

// The reply is ended last: its owner may release it as soon as it has ended.
void Evaluation::finish(Transaction& transaction, bool isComplete)
{
    if (!isComplete) {
        transaction.rollback();
        m_reply->setError(m_error.isEmpty() ? tr("Canceled") : m_error);
    } else if (!transaction.commit()) {
        m_reply->setError(tr("Unable to commit replace transaction: %1").arg(transaction.errorText()));
    } else {
        m_reply->setResult(QStringLiteral("replacementsCount"), m_replacementsCount);
        m_reply->finish();
    }
}

} // namespace

void runEvaluateLibraries(const QSqlDatabase& connection, OperationReply* reply, int tableId, const QString& rules)
{
    Evaluation(connection, reply, tableId, rules).run();
}
