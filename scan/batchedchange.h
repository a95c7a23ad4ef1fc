// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "scan/rowbatches.h"

#include <QCoreApplication>
#include <QSqlDatabase>

class OperationReply;
class Transaction;

/// An operation that changes rows of a table, or of those that a view shows, batch by batch in one transaction: all
/// changes or none.
///
/// The reply tells the number of changed rows as "replacementsCount", or the error; it is ended last, since its owner
/// may release it as soon as it has ended.
///
/// Owner: the stack of one operation. Thread: the store's.
class BatchedChange
{
    Q_DECLARE_TR_FUNCTIONS(BatchedChange)

public:
    virtual ~BatchedChange() = default;
    Q_DISABLE_COPY(BatchedChange)

    void run();

protected:
    /// Of `parameters` only the filters count (see store/querycomposer.h).
    BatchedChange(
        const QSqlDatabase& connection, OperationReply* reply, int tableId, const QVariantMap& parameters = {});

    /// False when canceled or failed. Every query has ended when it returns, so that the transaction can be closed.
    virtual bool changeRows() = 0;

    const QSqlDatabase& connection() const { return m_connection; }
    OperationReply* reply() const { return m_reply; }
    int tableId() const { return m_tableId; }
    bool isAtEnd() const { return m_batches.atEnd(); }
    /// False when canceled or failed.
    bool readBatch(const QString& columns, QVector<RowBatches::Row>& rows);
    void showProgress();
    void addChangedRows(int count) { m_changedRows += count; }
    /// False, for the convenience of the caller.
    bool fail(const QString& error);

private:
    void finish(Transaction& transaction, bool isComplete);

    QSqlDatabase m_connection;
    OperationReply* m_reply;
    int m_tableId;
    RowBatches m_batches;
    int m_changedRows = 0;
    QString m_error;
};
