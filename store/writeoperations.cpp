// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/writeoperations.h"

#include "store/operationreply.h"
#include "store/querycomposer.h"
#include "store/recordwriter.h"
#include "store/transaction.h"

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

namespace {

struct WriteOperations
{
    Q_DECLARE_TR_FUNCTIONS(Database)
};

const char* const deleteStatement = "DELETE FROM %1 WHERE id=:id";
const char* const playlistStatement = "UPDATE %1 SET playlist=:playlist WHERE id=:id";
const char* const clearStatement = "DELETE FROM %1";

constexpr int progressInterval = 1000;

// One statement that is executed for each of many ids, all in one transaction.
struct BatchWrite
{
    QString statement;
    // What is bound once for all ids, by place.
    QVariantMap commonValues;
    QString beginFailure;
    QString finalizeFailure;
    QString failure;
};

// False when a statement failed. The query is gone when it returns, as the end of the transaction needs it.
bool executeForEach(
    const QSqlDatabase& connection, OperationReply* reply, const BatchWrite& write, const QVariantList& ids)
{
    QSqlQuery query(connection);
    query.prepare(write.statement);
    for (auto value = write.commonValues.begin(); value != write.commonValues.end(); ++value)
        query.bindValue(value.key(), value.value());
    reply->setProgress(0, ids.size());
    int count = 0;
    for (const QVariant& id : ids) {
        if (reply->isCanceled())
            return true;
        query.bindValue(QStringLiteral(":id"), id);
        if (!query.exec())
            return false;
        ++count;
        if (count % progressInterval == 0)
            reply->setProgress(count, ids.size());
    }
    return true;
}

void runBatchWrite(
    const QSqlDatabase& connection, OperationReply* reply, const BatchWrite& write, const QVariantList& ids)
{
    reply->setProgress(0, -1);
    Transaction transaction(connection);
    if (!transaction.begin()) {
        reply->setError(write.beginFailure.arg(transaction.errorText()));
        return;
    }
    const bool isWritten = executeForEach(connection, reply, write, ids);
    // Asked once: a cancel that arrives later must not make a committed write look undone.
    const bool isCanceled = reply->isCanceled();
    const bool isFinalized = isCanceled || !isWritten ? transaction.rollback() : transaction.commit();
    if (!isFinalized)
        reply->setError(write.finalizeFailure.arg(transaction.errorText()));
    else if (!isWritten)
        reply->setError(write.failure);
    else if (isCanceled)
        reply->setError(WriteOperations::tr("Canceled"));
    else
        reply->finish();
}

} // namespace

void runPushMetaData(const QSqlDatabase& connection, OperationReply* reply, int tableId, const MetaDataList& items)
{
    // The caller reads its page again and sees there what was stored.
    writeMetaData(connection, tableId, items, 0, false);
    reply->notifyFinished();
}

void runDeleteMetaData(const QSqlDatabase& connection, OperationReply* reply, int tableId, const QVariantList& ids)
{
    const BatchWrite write{ QString::fromLatin1(deleteStatement).arg(metaDataTableName(tableId)), {},
        WriteOperations::tr("Unable to begin delete transaction: %1"),
        WriteOperations::tr("Unable to finalize delete transaction: %1"),
        WriteOperations::tr("MetaData delete failed") };
    runBatchWrite(connection, reply, write, ids);
}

void runSetMetaDataPlaylist(
    const QSqlDatabase& connection, OperationReply* reply, int tableId, const QVariantList& ids, int value)
{
    const BatchWrite write{ QString::fromLatin1(playlistStatement).arg(metaDataTableName(tableId)),
        { { QStringLiteral(":playlist"), value } }, WriteOperations::tr("Unable to begin update transaction: %1"),
        WriteOperations::tr("Unable to finalize update transaction: %1"),
        WriteOperations::tr("MetaData playlist update failed") };
    runBatchWrite(connection, reply, write, ids);
}

void runClearTable(const QSqlDatabase& connection, OperationReply* reply, int tableId)
{
    QSqlQuery query(connection);
    if (query.exec(QString::fromLatin1(clearStatement).arg(metaDataTableName(tableId))))
        reply->finish();
    else
        reply->setError(WriteOperations::tr("Unable to clear table: %1").arg(query.lastError().text()));
}

void runRebuild(const QSqlDatabase& connection, OperationReply* reply)
{
    reply->setProgress(0, -1);
    QSqlQuery query(connection);
    if (!query.exec(QStringLiteral("VACUUM"))) {
        reply->setError(WriteOperations::tr("Unable to rebuild database: %1").arg(query.lastError().text()));
        return;
    }
    reply->setProgress(0, 1);
    reply->finish();
}
