// SPDX-License-Identifier: GPL-3.0-or-later
#include "scan/batchedchange.h"

#include "store/operationreply.h"
#include "store/querycomposer.h"
#include "store/transaction.h"

BatchedChange::BatchedChange(
    const QSqlDatabase& connection, OperationReply* reply, int tableId, const QVariantMap& parameters)
    : m_connection(connection)
    , m_reply(reply)
    , m_tableId(tableId)
    , m_batches(m_connection, tableId, parameters)
{
}

void BatchedChange::run()
{
    m_reply->setProgress(0, -1);
    if (!m_batches.count()) {
        m_reply->setError(tr("Unable to get rows count: %1").arg(m_batches.errorText()));
        return;
    }
    m_reply->setProgress(0, m_batches.rowsCount());
    Transaction transaction(m_connection);
    if (!transaction.beginWriting(metaDataTableName(m_tableId))) {
        m_reply->setError(tr("Unable to begin replace transaction: %1").arg(transaction.errorText()));
        return;
    }
    const bool isComplete = changeRows() && !m_reply->isCanceled();
    finish(transaction, isComplete);
}

bool BatchedChange::readBatch(const QString& columns, QVector<RowBatches::Row>& rows)
{
    if (m_reply->isCanceled())
        return false;
    if (!m_batches.next(columns, rows))
        return fail(tr("Unable to select MetaData: %1").arg(m_batches.errorText()));
    return true;
}

void BatchedChange::showProgress()
{
    m_reply->setProgress(m_batches.processedCount(), m_batches.rowsCount());
}

bool BatchedChange::fail(const QString& error)
{
    m_error = error;
    return false;
}

void BatchedChange::finish(Transaction& transaction, bool isComplete)
{
    if (!isComplete) {
        transaction.rollback();
        m_reply->setError(m_error.isEmpty() ? tr("Canceled") : m_error);
    } else if (!transaction.commit()) {
        m_reply->setError(tr("Unable to commit replace transaction: %1").arg(transaction.errorText()));
    } else {
        m_reply->setResult(QStringLiteral("replacementsCount"), m_changedRows);
        m_reply->finish();
    }
}
