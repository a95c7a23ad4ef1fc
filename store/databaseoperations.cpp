// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/database.h"

#include "store/indexedreads.h"
#include "store/operationreply.h"
#include "store/readoperations.h"
#include "store/writeoperations.h"

#include <QMutexLocker>

#include <algorithm>

// Each operation has two halves: the public one queues a call of the private slot of the same name and returns the
// reply, the private one runs the body in the store's thread.

template <typename... Arguments>
OperationReply* Database::request(const char* operation, const Arguments&... arguments)
{
    auto* reply = new OperationReply;
    {
        const QMutexLocker locker(&m_mutex);
        if (m_opened) {
            m_pendingReplies.append(reply);
            QMetaObject::invokeMethod(
                this, operation, Qt::QueuedConnection, Q_ARG(OperationReply*, reply), arguments...);
            return reply;
        }
    }
    reply->setError(tr("Database is not opened"));
    return reply;
}

void Database::run(OperationReply* reply, const std::function<void(const QSqlDatabase&)>& body)
{
    bool isReady = false;
    {
        const QMutexLocker locker(&m_mutex);
        m_pendingReplies.erase(
            std::remove(m_pendingReplies.begin(), m_pendingReplies.end(), reply), m_pendingReplies.end());
        isReady = m_opened;
    }
    if (isReady)
        body(connection());
    else
        reply->setError(tr("Database is not opened"));
}

template <typename Operation, typename... Arguments>
void Database::runBulkOperation(const Operation& operation, OperationReply* reply, const Arguments&... arguments)
{
    run(reply, [&](const QSqlDatabase& connection) {
        if (operation)
            operation(connection, reply, arguments...);
        else
            reply->setError(tr("Operation is not available"));
    });
}

OperationReply* Database::scan(int tableId, const QStringList& paths, const QString& libraryEvaluationRules)
{
    return request("scan", Q_ARG(int, tableId), Q_ARG(QStringList, paths), Q_ARG(QString, libraryEvaluationRules));
}

void Database::scan(OperationReply* reply, int tableId, const QStringList& paths, const QString& libraryEvaluationRules)
{
    runBulkOperation(m_bulkOperations.scan, reply, tableId, paths, libraryEvaluationRules);
}

OperationReply* Database::getRowsCount(int tableId, const QVariantMap& parameters)
{
    return request("getRowsCount", Q_ARG(int, tableId), Q_ARG(QVariantMap, parameters));
}

void Database::getRowsCount(OperationReply* reply, int tableId, const QVariantMap& parameters)
{
    run(reply, [&](const QSqlDatabase& connection) {
        if (!m_indexedReads->getRowsCount(connection, reply, tableId, parameters))
            runGetRowsCount(connection, reply, tableId, parameters);
    });
}

OperationReply* Database::pullMetaData(int tableId, const QVariantMap& parameters)
{
    return request("pullMetaData", Q_ARG(int, tableId), Q_ARG(QVariantMap, parameters));
}

void Database::pullMetaData(OperationReply* reply, int tableId, const QVariantMap& parameters)
{
    run(reply, [&](const QSqlDatabase& connection) {
        if (!m_indexedReads->pullMetaData(connection, reply, tableId, parameters))
            runPullMetaData(connection, reply, tableId, parameters);
    });
}

OperationReply* Database::pushMetaData(int tableId, const MetaDataList& items)
{
    return request("pushMetaData", Q_ARG(int, tableId), Q_ARG(MetaDataList, items));
}

void Database::pushMetaData(OperationReply* reply, int tableId, const MetaDataList& items)
{
    run(reply, [&](const QSqlDatabase& connection) { runPushMetaData(connection, reply, tableId, items); });
}

OperationReply* Database::deleteMetaData(int tableId, const QVariantList& ids)
{
    return request("deleteMetaData", Q_ARG(int, tableId), Q_ARG(QVariantList, ids));
}

void Database::deleteMetaData(OperationReply* reply, int tableId, const QVariantList& ids)
{
    run(reply, [&](const QSqlDatabase& connection) { runDeleteMetaData(connection, reply, tableId, ids); });
}

OperationReply* Database::setMetaDataPlaylist(int tableId, const QVariantList& ids, int value)
{
    return request("setMetaDataPlaylist", Q_ARG(int, tableId), Q_ARG(QVariantList, ids), Q_ARG(int, value));
}

void Database::setMetaDataPlaylist(OperationReply* reply, int tableId, const QVariantList& ids, int value)
{
    run(reply, [&](const QSqlDatabase& connection) { runSetMetaDataPlaylist(connection, reply, tableId, ids, value); });
}

OperationReply* Database::lookupMetaDataRow(int tableId, int metaDataId, const QVariantMap& parameters)
{
    return request("lookupMetaDataRow", Q_ARG(int, tableId), Q_ARG(int, metaDataId), Q_ARG(QVariantMap, parameters));
}

void Database::lookupMetaDataRow(OperationReply* reply, int tableId, int metaDataId, const QVariantMap& parameters)
{
    run(reply, [&](const QSqlDatabase& connection) {
        if (!m_indexedReads->lookupMetaDataRow(connection, reply, tableId, metaDataId, parameters))
            runLookupMetaDataRow(connection, reply, tableId, metaDataId, parameters);
    });
}

OperationReply* Database::evaluateLibraries(int tableId, const QString& libraryEvaluationRules)
{
    return request("evaluateLibraries", Q_ARG(int, tableId), Q_ARG(QString, libraryEvaluationRules));
}

void Database::evaluateLibraries(OperationReply* reply, int tableId, const QString& libraryEvaluationRules)
{
    runBulkOperation(m_bulkOperations.evaluateLibraries, reply, tableId, libraryEvaluationRules);
}

OperationReply* Database::replace(int tableId, const QStringList& fields, const QString& before, const QString& after,
    Qt::CaseSensitivity caseSensitivity, const QVariantMap& parameters)
{
    return request("replace", Q_ARG(int, tableId), Q_ARG(QStringList, fields), Q_ARG(QString, before),
        Q_ARG(QString, after), Q_ARG(Qt::CaseSensitivity, caseSensitivity), Q_ARG(QVariantMap, parameters));
}

void Database::replace(OperationReply* reply, int tableId, const QStringList& fields, const QString& before,
    const QString& after, Qt::CaseSensitivity caseSensitivity, const QVariantMap& parameters)
{
    runBulkOperation(m_bulkOperations.replace, reply, tableId, fields, before, after, caseSensitivity, parameters);
}

OperationReply* Database::clearTable(int tableId)
{
    return request("clearTable", Q_ARG(int, tableId));
}

void Database::clearTable(OperationReply* reply, int tableId)
{
    run(reply, [&](const QSqlDatabase& connection) { runClearTable(connection, reply, tableId); });
}

OperationReply* Database::rebuild()
{
    return request("rebuild");
}

void Database::rebuild(OperationReply* reply)
{
    run(reply, [&](const QSqlDatabase& connection) { runRebuild(connection, reply); });
}
